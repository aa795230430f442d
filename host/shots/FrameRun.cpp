// One frame on its way.

#include "shots/FrameRun.h"

#include "files/StandardFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace {

[[noreturn]] void throwChanged(std::filesystem::path const& file)
{
    throw ImageFileError(ImageFailure::Surroundings,
                         "cannot use " + nameInput(file) +
                             ": it was replaced or written to while it was read; render this "
                             "frame again");
}

} // namespace

/// The sink of a frame: passes everything on, and is not finished where a source has changed.
class FrameRun::CheckedSink : public ImageSink {
public:
    CheckedSink(FrameRun& owner, std::unique_ptr<ImageSink> target)
        : run(owner), sink(std::move(target))
    {
    }
    void packStrip(IxTile const& result, ImageStrip& strip) const override
    {
        sink->packStrip(result, strip);
    }
    void writeStrip(IxTile const& result, ImageStrip const& strip) override
    {
        sink->writeStrip(result, strip);
    }
    void endSection() override { sink->endSection(); }
    void startSection() override { sink->startSection(); }
    void finish() override
    {
        run.checkUnchanged();
        sink->finish();
        run.isComplete = true;
        run.noteMaskInVain();
    }

private:
    FrameRun& run;
    std::unique_ptr<ImageSink> sink;
};

FrameRun::FrameRun(FrameFiles const& frame, ReadOptions const& readOptions,
                   ReadOptions const& maskOptions)
    : files(frame), inputStamp(readFileStamp(frame.input)),
      source(openImage(frame.input, readOptions))
{
    if (files.mask.has_value()) {
        maskStamp = readFileStamp(*files.mask);
        mask = openImage(*files.mask, maskOptions);
    }
}

FrameRun::~FrameRun()
{
    sink.reset();
    if (!isComplete) {
        std::error_code ignored; // a folder that others write to is not empty
        for (auto folder = madeFolders.rbegin(); folder != madeFolders.rend(); ++folder) {
            std::filesystem::remove(*folder, ignored);
        }
    }
}

double FrameRun::getMilliseconds() const
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started)
        .count();
}

std::int64_t FrameRun::getTimeOfSources() const
{
    return std::max(inputStamp.written, mask == nullptr ? inputStamp.written : maskStamp.written);
}

void FrameRun::connect(HostNode& chainNode, MaskUse use)
{
    node = &chainNode;
    maskUse = use;
    sections = source->listSections();
    connectSection();
}

void FrameRun::connectSection()
{
    ImageSource::Section const& section = sections[sectionIndex];
    PxNodePtr<MaskImageNode> maskNode;
    if (mask != nullptr) {
        ImageSource* sectionMask = mask.get();
        if (section.levelX > 0 || section.levelY > 0) {
            sectionMask = &reducedMask.emplace(*mask, section);
        }
        maskNode = makeNode<MaskImageNode>(sectionMask->getInfo(), maskUse);
        maskFeed.emplace(*maskNode, *sectionMask);
        masks.push_back(maskNode);
    }
    chains.clear();
    chains.push_back(buildFrameChain(*node, source->getInfo(), maskNode));
    for (ImageInfo const& layer : source->getFurtherLayers()) {
        chains.push_back(buildFrameChain(*node, layer, maskNode));
    }
}

ResultFormat FrameRun::getResultFormat() const
{
    return
        [this](ImageInfo const& info) { return buildFrameChain(*node, info, {}).getPixelFormat(); };
}

bool FrameRun::startNextSection()
{
    if (!source->hasNextSection()) {
        return false;
    }
    source->startNextSection();
    sink->startSection();
    ++sectionIndex;
    connectSection();
    return true;
}

double FrameRun::getShare(double share) const
{
    double done = 0.0;
    double all = 0.0;
    for (std::size_t index = 0; index < sections.size(); ++index) {
        GeRectangle<int> const& window = sections[index].dataWindow;
        double const pixels = static_cast<double>(window.getWidth()) * window.getHeight();
        all += pixels;
        if (index <= sectionIndex) {
            done += pixels * (index < sectionIndex ? 1.0 : share);
        }
    }
    return done / all;
}

void FrameRun::create(WriteOptions const& writeOptions, std::filesystem::path const& fixedFolder)
{
    auto const keep = [this](FrameMessage::Kind kind) {
        return [this, kind](std::string const& text) {
            std::lock_guard const lock(mutex);
            messages.push_back({kind, text});
        };
    };
    makeFolder(fixedFolder);
    MediaReport const report = {.note = keep(FrameMessage::Kind::Note),
                                .warn = keep(FrameMessage::Kind::Warning)};
    sink = std::make_unique<CheckedSink>(
        *this, createImage(files.output, *source, getResultFormat(), writeOptions, report));
}

/// Makes what is missing of the folders below `fixedFolder`.
void FrameRun::makeFolder(std::filesystem::path const& fixedFolder)
{
    std::error_code ignored;
    std::vector<std::filesystem::path> missing;
    std::filesystem::path folder = files.output.parent_path();
    while (!folder.empty() && folder != fixedFolder && !std::filesystem::exists(folder, ignored)) {
        missing.push_back(folder);
        folder = folder.parent_path();
    }
    if (!std::filesystem::is_directory(fixedFolder, ignored)) {
        return; // whoever opens the file says what is wrong
    }
    for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
        if (std::filesystem::create_directory(*next, ignored)) {
            madeFolders.push_back(*next);
        }
    }
}

RenderJob FrameRun::getJob()
{
    RenderJob job{*chains[0].end,
                  *chains[0].start,
                  *source,
                  *sink,
                  maskFeed.has_value() ? &*maskFeed : nullptr,
                  files.time};
    for (std::size_t layer = 1; layer < chains.size(); ++layer) {
        job.furtherLayers.push_back({*chains[layer].end, *chains[layer].start});
    }
    return job;
}

/// On the worker that finishes.
void FrameRun::checkUnchanged() const
{
    if (!(readFileStamp(files.input) == inputStamp)) {
        throwChanged(files.input);
    }
    if (mask != nullptr && !(readFileStamp(*files.mask) == maskStamp)) {
        throwChanged(*files.mask);
    }
}

/// On the worker that finishes.
void FrameRun::noteMaskInVain()
{
    bool const isInVain =
        !masks.empty() && std::all_of(masks.begin(), masks.end(),
                                      [](auto const& maskNode) { return maskNode->isInVain(); });
    if (!isInVain) {
        return;
    }
    std::lock_guard const lock(mutex);
    messages.push_back(
        {FrameMessage::Kind::Note, "no effect: the mask " + nameInput(*files.mask) +
                                       " lets nothing through where the picture is"});
}

std::vector<FrameMessage> FrameRun::takeMessages()
{
    std::lock_guard const lock(mutex);
    return std::exchange(messages, {});
}
