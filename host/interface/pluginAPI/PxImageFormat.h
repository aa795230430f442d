#pragma once

#include "pluginAPI/IxPixelFormat.h"

/// What a node's pictures are made of: their pixels, and how many come in a second.
class PxImageFormat {
public:
    PxImageFormat(IxPixelFormat const& imagePixelFormat, Rational const& imageFrameRate)
        : pixelFormat(imagePixelFormat), frameRate(imageFrameRate)
    {
    }
    IxPixelFormat const& getPixelFormat() const { return pixelFormat; }
    Rational const& getFrameRate() const { return frameRate; }
    bool operator==(PxImageFormat const&) const = default;

private:
    IxPixelFormat pixelFormat;
    Rational frameRate;
};
