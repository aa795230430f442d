#pragma once

#include "base/RCBase.h"
#include "base/RCShdPtr.h"

#include <string>
#include <utility>
#include <vector>

/// What a tool says about one of its inputs besides its type. Immutable once made; shared.
class PiInputPolicy : public RCBase<LkCounter<int>> {};

/// Limits and default of a number.
template <typename T>
class PiRangeInputPolicy : public PiInputPolicy {
public:
    /// `animatable` and `clamped` are kept: our host lets every number be animated and refuses
    /// values outside the range whatever `clamped` says.
    static RCShdPtr<PiRangeInputPolicy const>
    create(T const& minimum, T const& maximum, T const& defaultValue, bool animatable, bool clamped)
    {
        return RCShdPtr<PiRangeInputPolicy const>(
            new PiRangeInputPolicy(minimum, maximum, defaultValue, animatable, clamped));
    }

    T const& getMinimum() const { return minimum; }
    T const& getMaximum() const { return maximum; }
    T const& getDefault() const { return defaultValue; }
    bool isAnimatable() const { return animatable; }
    bool isClamped() const { return clamped; }

private:
    PiRangeInputPolicy(T const& theMinimum, T const& theMaximum, T const& theDefault,
                       bool isAnimatable, bool isClamped)
        : minimum(theMinimum), maximum(theMaximum), defaultValue(theDefault),
          animatable(isAnimatable), clamped(isClamped)
    {
    }

    T minimum;
    T maximum;
    T defaultValue;
    bool animatable;
    bool clamped;
};

/// A switch's default and what may be done with it.
class PiSwitchInputPolicy : public PiInputPolicy {
public:
    /// The second flag is the default's: a switch that does not start off starts on. `animatable`
    /// and `inverted` are kept: our host lets every switch change over time and shows it as it is.
    static RCShdPtr<PiSwitchInputPolicy const> create(bool animatable, bool startsOff,
                                                      bool inverted);

    bool isAnimatable() const { return animatable; }
    bool isOnByDefault() const { return !startsOff; }
    bool isInverted() const { return inverted; }

private:
    PiSwitchInputPolicy(bool isAnimatable, bool isOffAtStart, bool isInverted)
        : animatable(isAnimatable), startsOff(isOffAtStart), inverted(isInverted)
    {
    }

    bool animatable;
    bool startsOff;
    bool inverted;
};

/// A choice of labelled integers.
class PiEnumPolicy : public PiInputPolicy {
public:
    using Pair = std::pair<int, std::string>;

    /// Collects the choices of an enumeration; used once.
    class Builder {
    public:
        void addPair(int value, std::string const& label) { pairs.emplace_back(value, label); }
        void addPair(int value, char const* label) { pairs.emplace_back(value, label); }
        void setDefaultValue(int value) { defaultValue = value; }
        void setAnimatable(bool isAnimatable) { animatable = isAnimatable; }
        RCShdPtr<PiEnumPolicy const> create() const;

    private:
        std::vector<Pair> pairs;
        int defaultValue = 0;
        bool animatable = true;
    };

    /// In the order in which they were added.
    std::vector<Pair> const& getPairs() const { return pairs; }
    int getDefault() const { return defaultValue; }
    bool isAnimatable() const { return animatable; }

private:
    PiEnumPolicy(std::vector<Pair> thePairs, int theDefault, bool isAnimatable)
        : pairs(std::move(thePairs)), defaultValue(theDefault), animatable(isAnimatable)
    {
    }

    std::vector<Pair> pairs;
    int defaultValue;
    bool animatable;
};

/// What pictures an image input takes.
class PiImageInputPolicy : public PiInputPolicy {
public:
    /// What a reset does to the input. Our host leaves connections alone.
    enum ResetType { KeepConnection = 0 };

    /// The policy of a tool's primary picture. The numbers are kept, and shown as they are: our
    /// host takes pictures of every depth and of 1, 3 or 4 components whatever they say.
    static RCShdPtr<PiImageInputPolicy const> createPrimary(int componentCode, int depthCode,
                                                            int streamCode, ResetType resetType,
                                                            bool optional);

    bool isPrimary() const { return true; }
    int getComponentCode() const { return componentCode; }
    int getDepthCode() const { return depthCode; }
    int getStreamCode() const { return streamCode; }
    ResetType getResetType() const { return resetType; }
    bool isOptional() const { return optional; }

private:
    PiImageInputPolicy(int theComponents, int theDepths, int theStreams, ResetType theReset,
                       bool isOptional)
        : componentCode(theComponents), depthCode(theDepths), streamCode(theStreams),
          resetType(theReset), optional(isOptional)
    {
    }

    int componentCode;
    int depthCode;
    int streamCode;
    ResetType resetType;
    bool optional;
};
