#pragma once

/// What flows through an input or output. Plug-ins pass the codes as numbers.
class PiSocketType {
public:
    enum Code { Switch = 0, Double = 1, IntegerEnumeration = 2, Image = 5, Curve = 11 };

    /// How many values one socket takes. Our host knows one.
    enum Cardinality { Single = 0 };

    PiSocketType(int socketCode) : code(static_cast<Code>(socketCode)) {}
    Code getCode() const { return code; }
    bool operator==(PiSocketType const&) const = default;

private:
    Code code;
};

/// What a stored value holds. Plug-ins pass the codes as numbers.
class PiValueType {
public:
    enum Code { Boolean = 0, Double = 1, Integer = 2, DoubleArray = 6 };

    PiValueType(int valueCode) : code(static_cast<Code>(valueCode)) {}
    Code getCode() const { return code; }
    bool operator==(PiValueType const&) const = default;

private:
    Code code;
};
