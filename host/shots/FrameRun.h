#pragma once

#include "media/ImageFiles.h"
#include "runtime/engine/RenderPool.h"
#include "shots/FileStamp.h"
#include "shots/FrameChain.h"
#include "shots/ReducedSource.h"
#include "shots/ShotPlan.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// Something that was said about a frame while it was worked on.
struct FrameMessage {
    enum class Kind { Note, Warning };
    Kind kind;
    std::string text;
};

/// One frame on its way: the open pictures, the chain between them, what they say. Made and
/// destroyed on the user-interface thread, destroyed after its job has ended; unless the job was
/// finished, it leaves nothing behind.
class FrameRun {
public:
    /// Opens the pictures that are read. `frame` lives longer. Throws ImageFileError.
    FrameRun(FrameFiles const& frame, ReadOptions const& readOptions,
             ReadOptions const& maskOptions);
    ~FrameRun();
    FrameRun(FrameRun const&) = delete;
    FrameRun& operator=(FrameRun const&) = delete;

    FrameFiles const& getFiles() const { return files; }
    ImageSource const& getSource() const { return *source; }
    ImageSource const* getMask() const { return mask.get(); }
    double getMilliseconds() const;

    /// When the newest of the pictures that are read was written.
    std::int64_t getTimeOfSources() const;

    /// Builds the chains of the source's first section. Before all that follows; `chainNode` lives
    /// longer.
    void connect(HostNode& chainNode, MaskUse use);

    /// The format in which the tool's result comes for a layer. User-interface thread.
    ResultFormat getResultFormat() const;

    /// Begins the picture that is written; its folder is made if the frame's number is in its name.
    /// Throws ImageFileError.
    void create(WriteOptions const& writeOptions, std::filesystem::path const& fixedFolder);

    /// What workers have to do for the section that is on; for once. The sink refuses to finish
    /// when a picture that was read is another by then.
    RenderJob getJob();

    /// Goes on to the next section after a job has ended well. False when the frame is complete.
    bool startNextSection();

    /// The share of the frame that is done when `share` of the section is.
    double getShare(double share) const;

    /// What was said since the last call.
    std::vector<FrameMessage> takeMessages();

private:
    class CheckedSink;

    void makeFolder(std::filesystem::path const& fixedFolder);
    void connectSection();
    void checkUnchanged() const;
    void noteMaskInVain();

    FrameFiles const& files;
    std::chrono::steady_clock::time_point const started = std::chrono::steady_clock::now();
    FileStamp inputStamp;
    FileStamp maskStamp;

    std::mutex mutex;
    std::vector<FrameMessage> messages; // locked by mutex

    std::vector<std::filesystem::path> madeFolders; ///< outermost first
    bool isComplete = false;                        ///< written before the job ends
    std::unique_ptr<ImageSource> source;
    std::unique_ptr<ImageSource> mask; ///< null for none
    HostNode* node = nullptr;
    MaskUse maskUse = MaskUse::AsIs;
    std::vector<ImageSource::Section> sections;
    std::size_t sectionIndex = 0;
    std::vector<FrameChain> chains;              ///< of the section's layers
    std::optional<ReducedSource> reducedMask;    ///< where the section is a lower resolution
    std::optional<MaskFeed> maskFeed;            ///< of the section
    std::vector<PxNodePtr<MaskImageNode>> masks; ///< of all sections so far
    std::unique_ptr<ImageSink> sink;             ///< ends before the sources
};
