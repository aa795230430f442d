#pragma once

#include <string>
#include <string_view>
#include <vector>

/// `text` with ASCII capitals made small, the same in every locale.
std::string toLower(std::string_view text);

/// The names that someone who typed `wanted` most likely meant, best first, at most three; none
/// where nothing is close. Case does not count. A name of several parts ("EXRDisplay.Exposure.Red")
/// is also found by some of them ("Exposure", "Exposure.Red", "EXRDisplay.Red"), and
/// one whose last part has several words by the first or last of them ("EXRDisplay.Knee").
std::vector<std::string> findNearestNames(std::string_view wanted,
                                          std::vector<std::string> const& names);

/// `; did you mean "A" or "B"?`, or "; " and `otherwise` where nothing is close.
std::string suggestNames(std::string_view wanted, std::vector<std::string> const& names,
                         std::string const& otherwise);
