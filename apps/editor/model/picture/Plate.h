#pragma once

#include "callbacks/CbDispatcher.h"
#include "editor/model/picture/FrameCache.h"
#include "editor/model/picture/PictureLoader.h"
#include "shots/FrameName.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// What became of what the plate was asked for.
struct PlateNotice {
    /// Why it could not be opened, RenderCancelled if it was given up: what was there stays. Null
    /// where another picture is shown, or none for a gap in a sequence.
    std::exception_ptr failure;
};

/// What is known of a frame.
enum class FrameState { Missing, Waiting, Held, Unreadable };

/// The picture that is worked on, in memory, and the reading of the next one: a still, or a frame
/// of a sequence, of which as many are held as the bound allows. Reading goes on aside, one picture
/// at a time, the one that is wanted first and then what lies ahead. User-interface thread.
class Plate {
public:
    using Path = std::filesystem::path;

    /// Reads on so many threads; holds a quarter of the memory that the process may use.
    explicit Plate(int nbReaders,
                   PictureLoader::Opener pictureOpener = &PictureLoader::openPlainly);
    Plate(int nbReaders, std::size_t mostBytes,
          PictureLoader::Opener pictureOpener = &PictureLoader::openPlainly);

    /// A picture, with the sequence that it is a frame of, or a pattern (see FramePattern).
    /// Handlers are told later on what became of it, unless another one is opened meanwhile.
    void open(std::filesystem::path const& name);

    /// A picture by itself, whatever lies beside it.
    void openStill(std::filesystem::path const& file);

    /// Looks for frames again and forgets what has been read.
    void reload();

    /// What is shown: null before the first one, and where a frame is missing or unreadable.
    std::shared_ptr<HeldPicture const> const& getPicture() const { return picture; }

    /// The file of what is shown, or is not there to be shown.
    std::filesystem::path const& getFile() const { return pictureFile; }

    /// Why there is no picture where the plate has a gap; empty otherwise.
    std::string const& getGap() const { return gap; }

    /// Whether something is on its way that will be shown.
    bool isReading() const;

    /// What is on its way, and how much of it has been read, 0 to 1; nothing before that is known.
    Path getAwaited() const;
    std::optional<double> getShare() const { return share; }

    /// What is on its way is not to be shown any more; what is shown stays. Handlers are told that
    /// it was cancelled. Returns at once, however long the disk takes.
    void giveUp();

    /// Another number for each plate that was opened; 0 before the first one.
    std::uint64_t getOpening() const { return opening; }

    /// The input as the command line takes it: a pattern, in which a still is escaped.
    std::string getName() const;

    bool isSequence() const { return sequence.has_value(); }

    // ---- Of sequences ----

    /// The frames that have a file, rising.
    std::vector<Frame> const& getFrames() const { return sequence->frames; }
    FrameState getState(Frame frame) const;

    /// What is shown goes to that frame as soon as it can; the newest wish counts. A frame that is
    /// not there is tried again. Does nothing for a still.
    void showFrame(Frame frame);

    /// The one that is wanted, and the one that is shown until that is there.
    Frame getFrame() const { return place.wanted; }
    Frame getShownFrame() const { return shownFrame; }

    void setBound(std::size_t mostBytes);
    std::size_t getBound() const { return cache.getBound(); }
    std::size_t getHeldBytes() const { return cache.getBytes(); }

    /// Told of another picture, and of what cannot be opened. Subscribes until the handler leaves
    /// or dies, or the plate goes.
    void addHandler(CbHandler<PlateNotice const>* handler) { handlers.addHandler(handler); }

    /// Told when something else is known of the frames.
    void addFramesHandler(CbHandler<Plate const>* handler) { framesHandlers.addHandler(handler); }

    /// Told when more is known of what is on its way that will be shown.
    void addProgressHandler(CbHandler<Plate const>* handler)
    {
        progressHandlers.addHandler(handler);
    }

private:
    /// What is to be opened.
    struct Wish {
        Path name;
        bool isStill;
        bool isReload = false;
        std::optional<Frame> frame{};            ///< to begin with; without: what the name says
        bool isFound = false;                    ///< out what the name means
        std::optional<FoundSequence> sequence{}; ///< if it is one
    };

    void wish(Wish const& newWish);
    void tellProgress();
    bool endErrand(std::uint64_t number);
    void leaveErrand();
    void startLoading(PictureLoader::Wish what,
                      std::function<void(PictureLoader::Result const&)> take);
    void startNext();
    void startFinding();
    void startOpening();
    void startFrame();
    void takeFound(std::optional<FoundSequence> const& found, std::exception_ptr const& failure);
    void takeOpened(PictureLoader::Result const& result);
    void takeFrame(Frame frame, bool isAhead, PictureLoader::Result const& result);
    void keepOrLose(Frame frame, bool isAhead, PictureLoader::Result const& result);
    void showFrameOf(Frame frame);
    void show(FrameCache::Picture const& newPicture, std::string const& newGap);
    void listFrame(Frame frame, bool isInFolder);
    void fail(std::exception_ptr const& failure);
    void tellFrames() { framesHandlers.call(*this); }

    int threads;
    std::shared_ptr<HeldPicture const> picture;
    Path pictureFile;
    std::string gap;
    std::uint64_t opening = 0;

    std::optional<FoundSequence> sequence;
    FrameCache cache;
    FrameCache::Place place;
    Frame shownFrame = 0;
    std::set<Frame> lost;                 ///< frames that could not be read
    std::map<Frame, std::string> reasons; ///< of those of them that have a file

    std::optional<Wish> wanted;
    PictureLoader::Opener const opener;
    std::uint64_t errand = 0;                               ///< counts what goes on aside
    std::unique_ptr<AsideTask> finding;                     ///< out what a name means
    std::unique_ptr<PictureLoader> loader;                  ///< of the picture on its way
    std::optional<Frame> loadingAhead;                      ///< the frame, if nobody waits for it
    std::optional<double> share;                            ///< of what `loader` reads
    std::map<std::uint64_t, std::shared_ptr<void>> leaving; ///< errands that nobody waits for
    CbDispatcher<PlateNotice const> handlers;
    CbDispatcher<Plate const> framesHandlers;
    CbDispatcher<Plate const> progressHandlers;
};
