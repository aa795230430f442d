// The options of masks, which several commands share.

#include "remapcolor/options/MaskRequest.h"

#include "remapcolor/options/CommandOptions.h"
#include "session/Failures.h"

void addMaskOptions(CommandOptions& options, MaskRequest& request)
{
    options.addOption("--mask", "FILE",
                      "Blend source and result by this picture, times --mix\n\n"
                      "By its alpha, its only channel, or its first one of colour.",
                      [&request](std::string const& text) { request.file = text; },
                      {ValueHint::Kind::File});
    options.addOption("--mask-layer", "NAME", "Take the mask from this layer",
                      [&request](std::string const& text) { request.layer = text; });
    options.addOption("--mask-part", "N|NAME", "Take the mask from this part",
                      [&request](std::string const& text) { request.part = text; });
    options.addOption("--mask-channel", "NAME", "Take the mask from this channel",
                      [&request](std::string const& text) { request.channel = text; });
    options.addFlag("--mask-invert", "Keep the source where the mask is 1",
                    [&request] { request.use = MaskUse::Inverted; });
}

ReadOptions makeReadOptions(MaskRequest const& request)
{
    return {.layers = {request.layer}, .part = request.part, .maskChannel = request.channel};
}

void checkComplete(MaskRequest const& request)
{
    bool const isPlain = request.layer.empty() && request.part.empty() && request.channel.empty() &&
                         request.use == MaskUse::AsIs;
    if (!request.file.has_value() && !isPlain) {
        throw UsageError("--mask-layer, --mask-part, --mask-channel and --mask-invert need a "
                         "mask; add --mask FILE");
    }
}
