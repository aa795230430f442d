#pragma once

#include "editor/model/picture/HeldPicture.h"
#include "editor/model/picture/NodeChain.h"
#include "editor/model/picture/ValueTables.h"
#include "editor/model/picture/ViewImage.h"
#include "editor/model/picture/ViewTransform.h"
#include "editor/model/picture/WorkCrew.h"

#include <memory>

/// What one image is made of. The chains, which live longer, are null for the picture as it is.
struct ViewTask {
    std::shared_ptr<HeldPicture const> picture;
    NodeChain const* chain = nullptr;
    NodeChain const* valueChain = nullptr; ///< for ValueTables
    double time = 0.0;
    ViewTransform transform{};
    std::shared_ptr<ViewImage> image{}; ///< its grid lies over the data window
};

/// At once: a pixel of the picture for each one that is shown, by look-ups if possible.
std::unique_ptr<WorkCrew::Job> makeQuickPass(ViewTask const& task);

/// All pixels of what is visible through the chain; means of the results are shown.
std::unique_ptr<WorkCrew::Job> makeThoroughPass(ViewTask const& task);
