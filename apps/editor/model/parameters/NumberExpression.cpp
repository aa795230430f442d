#include "editor/model/parameters/NumberExpression.h"

#include <charconv>
#include <cmath>

namespace {

/// Reads from the left; what is wrong makes it fail for good.
class Parser {
public:
    Parser(std::string_view expression, std::map<char, double> const& itsLetters)
        : rest(expression), letters(itsLetters)
    {
    }

    std::optional<double> parse()
    {
        double const value = parseSum();
        skipBlanks();
        bool const isWhole = !hasFailed && rest.empty() && std::isfinite(value);
        return isWhole ? std::optional(value) : std::nullopt;
    }

private:
    static constexpr int mostDepth = 100;

    void skipBlanks()
    {
        while (rest.starts_with(' ')) {
            rest.remove_prefix(1);
        }
    }

    bool take(char sign)
    {
        skipBlanks();
        bool const isNext = rest.starts_with(sign);
        rest.remove_prefix(isNext ? 1 : 0);
        return isNext;
    }

    double parseSum()
    {
        double value = parseProduct();
        for (;;) {
            if (take('+')) {
                value += parseProduct();
            } else if (take('-')) {
                value -= parseProduct();
            } else {
                return value;
            }
        }
    }

    double parseProduct()
    {
        double value = parseFactor();
        for (;;) {
            if (take('*')) {
                value *= parseFactor();
            } else if (take('/')) {
                value /= parseFactor();
            } else {
                return value;
            }
        }
    }

    double parseFactor()
    {
        if (++depth > mostDepth) {
            hasFailed = true;
            return 0.0;
        }
        double value = 0.0;
        if (take('-')) {
            value = -parseFactor();
        } else if (take('+')) {
            value = parseFactor();
        } else if (take('(')) {
            value = parseSum();
            hasFailed = !take(')') || hasFailed;
        } else if (!rest.empty() && letters.contains(rest.front())) {
            value = letters.at(rest.front());
            rest.remove_prefix(1);
        } else {
            value = parseNumber();
        }
        --depth;
        return value;
    }

    double parseNumber()
    {
        double value = 0.0;
        auto const [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
        hasFailed = hasFailed || error != std::errc();
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        return value;
    }

    std::string_view rest;
    std::map<char, double> const& letters;
    int depth = 0;
    bool hasFailed = false;
};

} // namespace

std::optional<double> evaluateExpression(std::string_view text,
                                         std::map<char, double> const& letters)
{
    return Parser(text, letters).parse();
}
