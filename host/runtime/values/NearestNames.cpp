// What a mistyped name was meant to be.

#include "runtime/values/NearestNames.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace {

constexpr std::size_t mostSuggestions = 3;
constexpr std::size_t longestName = 100; // nobody mistypes more; comparing takes time and memory

/// Letters to insert, remove, replace or swap with their neighbour to turn one text into the other
/// (the optimal string alignment distance).
std::size_t editDistance(std::string_view a, std::string_view b)
{
    std::vector<std::vector<std::size_t>> costs(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    for (std::size_t row = 0; row <= a.size(); ++row) {
        for (std::size_t column = 0; column <= b.size(); ++column) {
            std::size_t& cost = costs[row][column];
            if (row == 0 || column == 0) {
                cost = row + column;
                continue;
            }
            bool const isSame = a[row - 1] == b[column - 1];
            cost = std::min({costs[row - 1][column] + 1, costs[row][column - 1] + 1,
                             costs[row - 1][column - 1] + (isSame ? 0 : 1)});
            bool const isSwapped =
                row > 1 && column > 1 && a[row - 1] == b[column - 2] && a[row - 2] == b[column - 1];
            if (isSwapped) {
                cost = std::min(cost, costs[row - 2][column - 2] + 1);
            }
        }
    }
    return costs[a.size()][b.size()];
}

std::vector<std::string> splitParts(std::string const& name)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t stop; (stop = name.find('.', start)) != std::string::npos; start = stop + 1) {
        parts.push_back(name.substr(start, stop - start));
    }
    parts.push_back(name.substr(start));
    return parts;
}

/// How far a name is from the wanted one: edits, then parts left out. Smaller is nearer.
struct Distance {
    std::size_t edits;
    std::size_t partsLeftOut;

    auto operator<=>(Distance const&) const = default;
};

std::string joinParts(std::vector<std::string> const& parts)
{
    std::string text;
    for (std::string const& part : parts) {
        text += (text.empty() ? "" : ".") + part;
    }
    return text;
}

/// Whether the names are the same but for words that are left out of the last part, at its start or
/// end: "EXRDisplay.Knee" for "EXRDisplay.Knee Low".
bool isShortened(std::vector<std::string> const& wanted, std::vector<std::string> const& parts)
{
    bool const isSamePath = !wanted.back().empty() && wanted.size() == parts.size() &&
                            std::equal(wanted.begin(), wanted.end() - 1, parts.begin());
    return isSamePath && (parts.back().starts_with(wanted.back() + " ") ||
                          parts.back().ends_with(" " + wanted.back()));
}

/// Over every choice of the name's parts. Names have four parts at most. Words left out are a
/// mistake like that of one letter.
Distance measure(std::string const& wanted, std::string const& name)
{
    std::vector<std::string> const wantedParts = splitParts(wanted);
    std::vector<std::string> const parts = splitParts(toLower(name));
    Distance best{wanted.size() + name.size(), parts.size()};
    for (unsigned choice = 1; choice < 1U << parts.size(); ++choice) {
        std::vector<std::string> chosen;
        for (std::size_t part = 0; part < parts.size(); ++part) {
            if ((choice >> part & 1U) != 0) {
                chosen.push_back(parts[part]);
            }
        }
        std::size_t const edits =
            isShortened(wantedParts, chosen) ? 1 : editDistance(wanted, joinParts(chosen));
        best = std::min(best, Distance{edits, parts.size() - chosen.size()});
    }
    return best;
}

} // namespace

std::string toLower(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

std::vector<std::string> findNearestNames(std::string_view wanted,
                                          std::vector<std::string> const& names)
{
    // A third of the letters may be wrong, and one in any case.
    std::size_t const mostEdits = std::max<std::size_t>(wanted.size() / 3, 1);
    std::vector<std::string> nearest;
    if (wanted.size() > longestName) {
        return nearest;
    }
    Distance best{mostEdits, std::numeric_limits<std::size_t>::max()};
    for (std::string const& name : names) {
        Distance const distance = measure(toLower(wanted), name);
        if (distance < best) {
            best = distance;
            nearest.clear();
        }
        if (distance == best && nearest.size() < mostSuggestions) {
            nearest.push_back(name);
        }
    }
    return nearest;
}

std::string suggestNames(std::string_view wanted, std::vector<std::string> const& names,
                         std::string const& otherwise)
{
    std::vector<std::string> const nearest = findNearestNames(wanted, names);
    if (nearest.empty()) {
        return "; " + otherwise;
    }
    std::string list;
    for (std::string const& name : nearest) {
        bool const isLast = &name == &nearest.back();
        list += (list.empty() ? "\"" : isLast ? " or \"" : ", \"") + name + "\"";
    }
    return "; did you mean " + list + "?";
}
