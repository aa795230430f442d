// The module's one exported function.

#include "media/OiioModule.h"
#include "media/oiio/OiioDescription.h"
#include "media/oiio/OiioReader.h"
#include "media/oiio/OiioWriter.h"

#include <algorithm>

namespace {

class OiioModuleImplementation : public OiioModule {
public:
    std::unique_ptr<ImageSource> open(std::filesystem::path const& file,
                                      ReadOptions const& options) override
    {
        return std::make_unique<OiioReader>(file, options);
    }

    std::unique_ptr<ImageSink> create(std::filesystem::path const& file, ImageSource& source,
                                      IxPixelFormat const& format, WriteOptions const& options,
                                      MediaReport const& report) override
    {
        return std::make_unique<OiioWriter>(file, source, format, options, report);
    }

    PictureDescription describe(std::filesystem::path const& file) override
    {
        return describeOpenFile(OiioReader(file, {}));
    }

    void setThreads(int threads) override
    {
        // 0 would mean every core there is; 1 is the calling thread alone.
        OIIO::attribute("threads", std::max(threads, 1));
    }
};

} // namespace

extern "C" __attribute__((visibility("default"))) OiioModule*
remapMediaOiioModule(StandardFiles& standardFiles)
{
    StandardFiles::share(standardFiles);
    static OiioModuleImplementation module;
    return &module;
}
