// "render": values into the node, a picture through its chain.

#include "remapcolor/RenderCommand.h"

#include "media/ImageFiles.h"
#include "remapcolor/Failures.h"
#include "remapcolor/RenderRequest.h"
#include "remapcolor/StopSignals.h"
#include "remapcolor/ToolKeys.h"
#include "remapcolor/ToolSession.h"
#include "remapcolor/UsableCores.h"
#include "runtime/engine/RenderEngine.h"

#include <filesystem>
#include <optional>
#include <system_error>

namespace {

/// A node's way from a picture to a picture.
struct Chain {
    PxNodePtr<SourceImageNode> start;
    PxNodePtr<SourceImageNode> mask; ///< empty for none
    PxNodePtr<PxImageProtocol const> end;

    IxPixelFormat getPixelFormat() const { return end->getImageFormat().getPixelFormat(); }
};

/// `maskInfo` is null for no mask.
Chain buildChain(HostNode& node, ImageInfo const& info, ImageInfo const* maskInfo)
{
    Chain chain;
    chain.start = makeNode<SourceImageNode>(info);
    if (maskInfo != nullptr) {
        chain.mask = makeNode<SourceImageNode>(*maskInfo);
    }
    chain.end = castNode<PxImageProtocol const>(
        node.buildChain(PxNodePtr<PxImageProtocol const>(chain.start),
                        PxNodePtr<PxImageProtocol const>(chain.mask)));
    return chain;
}

/// Depth of what the node makes of a float picture: known before the input is.
IxPixelFormat::Depth foreseeDepth(HostNode& node)
{
    ImageInfo info;
    info.format = IxPixelFormat(IxPixelFormat::RGBA, IxPixelFormat::FLOAT32, Rational(1, 1), false);
    return buildChain(node, info, nullptr).getPixelFormat().getDepth();
}

bool keepsInputDepth(HostNode const& node)
{
    auto const state = node.getValue(ToolKeys::outputDepth)->getState();
    auto const& depth = std::get<Animated<int>>(*state);
    return depth.getKeys().front().value == ToolKeys::depthOfInput;
}

/// The path without links, also where there is nothing yet.
std::filesystem::path findRealPath(std::filesystem::path const& file)
{
    std::error_code failure;
    std::filesystem::path const whole = std::filesystem::absolute(file, failure);
    std::filesystem::path const real = std::filesystem::weakly_canonical(whole, failure);
    return failure ? whole.lexically_normal() : real;
}

/// Also through links of both kinds.
bool areSameFile(std::filesystem::path const& a, std::filesystem::path const& b)
{
    std::error_code failure;
    bool const isSameNode = std::filesystem::equivalent(a, b, failure) && !failure;
    return isSameNode || findRealPath(a) == findRealPath(b);
}

void checkFiles(RenderRequest const& request, IxPixelFormat::Depth depth)
{
    auto const refuse = [&request](char const* what) {
        throw UsageError("the output " + quote(request.output.string()) + " is the " + what +
                         " itself; choose another name");
    };
    if (areSameFile(request.input, request.output)) {
        refuse("input");
    }
    if (request.mask.has_value() && areSameFile(*request.mask, request.output)) {
        refuse("mask");
    }
    checkOutput(request.output, depth);
}

void renderPicture(HostNode& node, RenderRequest const& request, int threads, Reporter& reporter)
{
    StopSignals const signals;
    MediaNote const note = [&reporter](std::string const& text) { reporter.note(text); };
    ReadOptions readOptions;
    readOptions.layer = request.layer;
    auto const source = openImage(request.input, readOptions, note);
    auto const mask = request.mask.has_value() ? openImage(*request.mask, {}, note) : nullptr;
    reporter.startPicture(request.input, request.output, source->getInfo(), threads);

    Chain const chain =
        buildChain(node, source->getInfo(), mask == nullptr ? nullptr : &mask->getInfo());
    auto const sink =
        createImage(request.output, *source, chain.getPixelFormat(), keepsInputDepth(node), note);
    RenderOptions options;
    std::optional<MaskFeed> maskFeed;
    if (mask != nullptr) {
        options.mask = &maskFeed.emplace(*chain.mask, *mask);
    }
    options.threads = threads;
    options.progress = [&reporter](double done) { reporter.showProgress(done); };
    options.cancelled = &StopSignals::getFlag();
    try {
        renderImage(*chain.end, *chain.start, *source, *sink, options);
    } catch (RenderCancelled const&) {
        throw Interrupted{StopSignals::getSignal()};
    }
    reporter.finishPicture();
}

} // namespace

void runRender(RenderRequest const& request, Reporter& reporter)
{
    ToolSession const session(request.node);
    HostNode& node = session.getNode();
    checkFiles(request, foreseeDepth(node));

    int const threads = request.threads > 0 ? request.threads : countUsableCores();
    setMediaThreads(threads > 1 ? threads : 0);
    renderPicture(node, request, threads, reporter);
}
