// The options of masks, which several commands share.

#include "remapcolor/options/MaskRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "remapcolor/reports/Failures.h"

void addMaskOptions(CommandOptions& options, MaskRequest& request)
{
    options.addOption("--mask", "FILE",
                      "Blend source and result by this picture: its alpha, its\n"
                      "only channel, or its first one; times --mix",
                      [&request](std::string const& text) { request.file = text; });
    options.addOption("--mask-layer", "NAME", "Take the mask from this layer of an EXR file",
                      [&request](std::string const& text) { request.layer = text; });
    options.addOption("--mask-channel", "NAME", "Take the mask from this channel, such as R or Z",
                      [&request](std::string const& text) { request.channel = text; });
    options.addFlag("--mask-invert", "Keep the source where the mask is 1, the result where 0",
                    [&request] { request.use = MaskUse::Inverted; });
}

void checkComplete(MaskRequest const& request)
{
    bool const isPlain =
        request.layer.empty() && request.channel.empty() && request.use == MaskUse::AsIs;
    if (!request.file.has_value() && !isPlain) {
        throw UsageError("--mask-layer, --mask-channel and --mask-invert need a mask; add "
                         "--mask FILE");
    }
}
