// One errand at a time is on its way: finding out what a name means, the picture to be opened, or a
// frame. One that has been overtaken is left to come to its end, which may take as long as a disk
// does; nobody waits for that.

#include "editor/model/picture/Plate.h"

#include "base/Assertions.h"
#include "runtime/engine/RenderPool.h"
#include "shots/MachineLimits.h"
#include "shots/ShotError.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t shareOfMemory = 4;

bool isThere(std::filesystem::path const& file)
{
    std::error_code ignored; // who opens it says what is wrong
    return std::filesystem::exists(file, ignored);
}

std::optional<FoundSequence> find(std::filesystem::path const& name)
{
    if (isThere(name)) {
        return findSequence(name);
    }
    FramePattern const pattern(name.string());
    if (!pattern.isSequence()) {
        return {}; // reading it will say that it is not there
    }
    std::vector<Frame> frames = pattern.scan();
    if (frames.empty()) {
        throwNothingMatches(pattern);
    }
    Frame const first = frames.front();
    return FoundSequence{pattern, std::move(frames), first};
}

bool isCancellation(std::exception_ptr const& failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (RenderCancelled const&) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

Plate::Plate(int nbReaders, PictureLoader::Opener pictureOpener)
    : Plate(nbReaders, findUsableMemory() / shareOfMemory, std::move(pictureOpener))
{
}

Plate::Plate(int nbReaders, std::size_t mostBytes, PictureLoader::Opener pictureOpener)
    : threads(nbReaders), cache(mostBytes), opener(std::move(pictureOpener))
{
}

void Plate::open(std::filesystem::path const& name)
{
    wish({.name = name, .isStill = false});
}

void Plate::openStill(std::filesystem::path const& file)
{
    wish({.name = file, .isStill = true});
}

void Plate::reload()
{
    if (opening == 0) {
        return;
    }
    if (isSequence()) {
        wish({.name = sequence->pattern.getText(),
              .isStill = false,
              .isReload = true,
              .frame = place.wanted});
    } else {
        wish({.name = pictureFile, .isStill = true, .isReload = true});
    }
}

void Plate::wish(Wish const& newWish)
{
    leaveErrand();
    wanted = newWish;
    startNext();
    tellProgress();
}

void Plate::giveUp()
{
    if (!isReading()) {
        return;
    }
    leaveErrand();
    wanted.reset();
    place.wanted = shownFrame;
    handlers.call(PlateNotice{std::make_exception_ptr(RenderCancelled())});
    startNext(); // what lies ahead
    tellFrames();
}

void Plate::tellProgress()
{
    if (isReading()) {
        progressHandlers.call(std::as_const(*this));
    }
}

/// Whether somebody waits for it.
bool Plate::endErrand(std::uint64_t number)
{
    if (number != errand) {
        leaving.erase(number);
        return false;
    }
    finding.reset();
    loader.reset(); // closes the file
    loadingAhead.reset();
    share.reset();
    return true;
}

void Plate::leaveErrand()
{
    if (loader != nullptr) {
        loader->cancel();
        leaving.emplace(errand, std::move(loader));
    } else if (finding != nullptr) {
        leaving.emplace(errand, std::move(finding));
    }
    loadingAhead.reset();
    share.reset();
    ++errand;
}

bool Plate::isReading() const
{
    return wanted.has_value() || (isSequence() && shownFrame != place.wanted);
}

Plate::Path Plate::getAwaited() const
{
    if (!wanted.has_value()) {
        return isSequence() ? Path(sequence->pattern.expand(place.wanted)) : Path();
    }
    auto const& found = wanted->sequence;
    return found.has_value() ? Path(found->pattern.expand(found->frame)) : wanted->name;
}

std::string Plate::getName() const
{
    return isSequence() ? sequence->pattern.getText() : escapePattern(pictureFile.string());
}

FrameState Plate::getState(Frame frame) const
{
    if (cache.find(frame) != nullptr) {
        return FrameState::Held;
    }
    if (reasons.contains(frame)) {
        return FrameState::Unreadable;
    }
    bool const isListed =
        std::binary_search(sequence->frames.begin(), sequence->frames.end(), frame);
    return isListed ? FrameState::Waiting : FrameState::Missing;
}

void Plate::showFrame(Frame frame)
{
    if (!isSequence() || frame == place.wanted) {
        return;
    }
    place.direction = frame > place.wanted ? 1 : -1;
    place.wanted = frame;
    lost.erase(frame);
    if (cache.find(frame) != nullptr) {
        showFrameOf(frame);
    } else if (loadingAhead.has_value() && loadingAhead != frame) {
        loader->cancel();
    }
    startNext();
    tellFrames();
    tellProgress();
}

void Plate::setBound(std::size_t mostBytes)
{
    cache.setBound(mostBytes);
    startNext();
    tellFrames();
}

void Plate::startNext()
{
    if (finding != nullptr || loader != nullptr) {
        return; // goes on from there
    }
    try {
        if (wanted.has_value()) {
            wanted->isStill || wanted->isFound ? startOpening() : startFinding();
        } else if (isSequence()) {
            startFrame();
        }
    } catch (...) { // no thread to be had
        fail(std::current_exception());
    }
}

void Plate::startFinding()
{
    auto const found = std::make_shared<std::optional<FoundSequence>>();
    finding = std::make_unique<AsideTask>(
        [found, name = wanted->name](std::atomic<bool> const&) { *found = find(name); },
        [this, found, number = ++errand](std::exception_ptr const& failure) {
            if (endErrand(number)) {
                takeFound(*found, failure);
                startNext();
            }
        });
}

/// `take` gets what somebody waits for still.
void Plate::startLoading(PictureLoader::Wish what,
                         std::function<void(PictureLoader::Result const&)> take)
{
    std::uint64_t const number = ++errand;
    what.threads = threads;
    what.open = opener;
    what.progressed = [this, number](double newShare) {
        if (number == errand) {
            share = newShare;
            tellProgress();
        }
    };
    loader = std::make_unique<PictureLoader>(
        std::move(what),
        [this, number, take = std::move(take)](PictureLoader::Result const& result) {
            if (endErrand(number)) {
                take(result);
                startNext();
            }
        });
}

void Plate::takeFound(std::optional<FoundSequence> const& found, std::exception_ptr const& failure)
{
    if (failure) {
        fail(failure);
        return;
    }
    wanted->isFound = true;
    wanted->sequence = found;
    if (found.has_value() && wanted->frame.has_value()) {
        wanted->sequence->frame = *wanted->frame;
    }
}

void Plate::startOpening()
{
    startLoading({.file = getAwaited()},
                 [this](PictureLoader::Result const& result) { takeOpened(result); });
}

/// A pattern has been found to have frames: one that cannot be read is a gap. A picture that was
/// named itself has to be read.
void Plate::takeOpened(PictureLoader::Result const& result)
{
    bool const isNamed = !wanted->sequence.has_value() || isThere(wanted->name);
    if (result.failure && isNamed) {
        fail(result.failure);
        return;
    }
    Wish const opened = *std::exchange(wanted, {});
    opening += opened.isReload ? 0 : 1;
    cache.clear();
    lost.clear();
    reasons.clear();
    sequence = opened.sequence;
    if (isSequence()) {
        place = {.wanted = sequence->frame};
        shownFrame = place.wanted;
        keepOrLose(place.wanted, false, result);
    } else {
        pictureFile = opened.name;
        show(result.picture, {});
    }
    tellFrames();
}

void Plate::startFrame()
{
    bool const isWaiting = shownFrame != place.wanted;
    place.kept = isWaiting && picture != nullptr ? std::optional(shownFrame) : std::nullopt;
    auto released = std::make_shared<std::vector<FrameCache::Picture>>();
    auto const next = cache.plan(sequence->frames, place, lost, *released);
    if (!next.has_value()) {
        return;
    }
    bool const isAhead = next->frame != place.wanted;
    startLoading({.file = sequence->pattern.expand(next->frame),
                  .mostBytes = next->room,
                  .isAhead = isAhead,
                  .replaced = std::move(released)},
                 [this, isAhead, frame = next->frame](PictureLoader::Result const& result) {
                     takeFrame(frame, isAhead, result);
                 });
    if (isAhead) {
        loadingAhead = next->frame;
    }
}

void Plate::takeFrame(Frame frame, bool isAhead, PictureLoader::Result const& result)
{
    if (result.neededBytes > 0) {
        cache.expect(frame, result.neededBytes);
    } else if (!result.failure || !isCancellation(result.failure)) {
        keepOrLose(frame, isAhead, result);
        tellFrames();
    }
}

void Plate::keepOrLose(Frame frame, bool isAhead, PictureLoader::Result const& result)
{
    reasons.erase(frame);
    if (!result.failure) {
        lost.erase(frame);
        cache.insert(frame, result.picture);
        listFrame(frame, true);
    } else {
        lost.insert(frame);
        bool const isInFolder = isThere(sequence->pattern.expand(frame));
        if (isInFolder) {
            reasons.emplace(frame, describeFailure(result.failure).text);
        }
        listFrame(frame, isInFolder);
    }
    bool const isInterim = !result.failure && !isAhead && shownFrame != place.wanted;
    if (frame == place.wanted || isInterim) {
        showFrameOf(frame);
    }
}

/// The frame's picture, or why there is none.
void Plate::showFrameOf(Frame frame)
{
    shownFrame = frame;
    pictureFile = sequence->pattern.expand(frame);
    auto const reason = reasons.find(frame);
    if (auto const held = cache.find(frame)) {
        show(held, {});
    } else if (reason != reasons.end()) {
        show(nullptr, reason->second);
    } else {
        show(nullptr, "frame " + std::to_string(frame) + " is missing");
    }
}

void Plate::show(FrameCache::Picture const& newPicture, std::string const& newGap)
{
    picture = newPicture;
    gap = newGap;
    handlers.call(PlateNotice{});
}

void Plate::listFrame(Frame frame, bool isInFolder)
{
    std::vector<Frame>& frames = sequence->frames;
    auto const at = std::lower_bound(frames.begin(), frames.end(), frame);
    bool const isListed = at != frames.end() && *at == frame;
    if (isInFolder && !isListed) {
        frames.insert(at, frame);
    } else if (!isInFolder && isListed) {
        frames.erase(at);
    }
}

void Plate::fail(std::exception_ptr const& failure)
{
    wanted.reset();
    handlers.call(PlateNotice{failure});
}
