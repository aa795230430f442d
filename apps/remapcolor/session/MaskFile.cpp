// A mask beside the picture that it is for.

#include "remapcolor/session/MaskFile.h"

#include "media/ImageFiles.h"
#include "shots/MaskWindows.h"

std::unique_ptr<ImageSource> openMask(MaskRequest const& request, ImageInfo const& picture,
                                      Reporter& reporter)
{
    if (!request.file.has_value()) {
        return nullptr;
    }
    auto mask = openImage(*request.file, makeReadOptions(request));
    std::string const windows = describeMaskWindows(mask->getInfo(), picture);
    if (!windows.empty()) {
        reporter.note(windows);
    }
    return mask;
}
