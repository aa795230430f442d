#pragma once

/// A fraction, such as a pixel aspect ratio or a frame rate. The denominator is never 0.
class Rational {
public:
    constexpr Rational() = default;
    constexpr Rational(int theNumerator, int theDenominator)
        : numerator(theNumerator), denominator(theDenominator)
    {
    }

    constexpr int getNumerator() const { return numerator; }
    constexpr int getDenominator() const { return denominator; }
    constexpr float getFloat() const
    {
        return static_cast<float>(numerator) / static_cast<float>(denominator);
    }
    constexpr bool operator==(Rational const&) const = default;

private:
    int numerator = 1;
    int denominator = 1;
};
