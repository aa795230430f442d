#pragma once

#include <string_view>
#include <vector>

/// `text` without the white space around it.
std::string_view trim(std::string_view text);

/// The parts of `text` between the separators, trimmed; as many as there are separators and one.
std::vector<std::string_view> split(std::string_view text, char separator);

/// The parts of `text` between runs of white space; none is empty.
std::vector<std::string_view> splitWords(std::string_view text);
