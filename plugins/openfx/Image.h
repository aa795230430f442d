#pragma once

#include "Frame.h"

/// An image that the host lends for an action; given back once, when this dies.
class Image {
public:
    enum class State { Present, Missing, OutOfMemory, Unusable };

    /// The clip's image at a time. A null clip has none.
    Image(OfxImageClip* clip, OfxTime time);
    Image(Image const&) = delete;
    Image& operator=(Image const&) = delete;
    ~Image();

    State getState() const { return state; }

    /// Its pixels, when it is present.
    Frame const& getFrame() const { return frame; }

private:
    State readFrame();

    OfxPropertySet* handle = nullptr;
    State state = State::Missing;
    Frame frame;
};
