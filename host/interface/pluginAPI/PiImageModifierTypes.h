#pragma once

/// Codes of image modifiers; plug-ins pass them as numbers.
class PiImageModifierTypes {
public:
    /// What of a pixel is changed. The pixel loop gives every channel that is not affected the
    /// source's bits.
    enum AffectType { AffectColour = 1, AffectColourAndAlpha = 2, AffectAlpha = 4 };

    /// Whether the host blends source and result by a mask after the chain.
    enum MaskingMode { NoMasking = 0, MaskAfterChain = 1 };
};
