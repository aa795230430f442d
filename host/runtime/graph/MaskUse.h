#pragma once

/// How a mask's values are meant: as the shares of the result, or as those of the source.
enum class MaskUse { AsIs, Inverted };

/// What a mask's image node may be, too: the one that says how its values are meant. A node that is
/// not has them as they are.
class MaskMeaning {
public:
    virtual ~MaskMeaning() noexcept(false) = default;
    virtual MaskUse getMaskUse() const = 0;

    /// Told of each part that is blended: whether the mask let anything through. Any thread.
    virtual void noteBlended(bool hadEffect) const = 0;
};
