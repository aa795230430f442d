// Bytes as a picture's file: refused with one line, or rendered to a file of the same kind that is
// whole. FUZZED_KIND is the file's extension.

#include "media/ImageFiles.h"

#include "runtime/engine/RenderEngine.h"
#include "support/Expect.h"
#include "support/Tool.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostBytes = std::size_t{64} << 20;

/// A folder of this process, gone with it.
class Folder {
public:
    Folder() { fs::create_directories(path); }
    ~Folder() { fs::remove_all(path); }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;

    fs::path const path = fs::temp_directory_path() / ("remapcolorFuzz" + std::to_string(getpid()));
};

void render(fs::path const& input, fs::path const& output)
{
    static RCShdPtr<HostGraph> const graph = makeShared<HostGraph>();
    static RCShdPtr<HostNode> const node = graph->createNode(getTool());
    auto const source = openImage(input, {.mostBytes = mostBytes});
    auto const build = [](PxNodePtr<SourceImageNode> const& start) {
        return castNode<PxImageProtocol const>(
            node->buildChain(PxNodePtr<PxImageProtocol const>(start)));
    };
    ResultFormat const formatOf = [&build](ImageInfo const& info) {
        return build(makeNode<SourceImageNode>(info))->getImageFormat().getPixelFormat();
    };
    auto const sink = createImage(output, *source, formatOf, {.keepsInputDepth = true}, {});
    for (;;) {
        auto const start = makeNode<SourceImageNode>(source->getInfo());
        renderImage(*build(start), *start, *source, *sink, {});
        if (!source->hasNextSection()) {
            return;
        }
        source->startNextSection();
        sink->startSection();
    }
}

void expectOneLine(std::string const& text)
{
    expect(!text.empty() && std::none_of(text.begin(), text.end(),
                                         [](unsigned char letter) { return letter < ' '; }),
           "a failure is one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static Folder const folder;
    fs::path const input = folder.path / "in." FUZZED_KIND;
    fs::path const output = folder.path / "out." FUZZED_KIND;
    std::ofstream(input, std::ios::binary)
        .write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
    try {
        render(input, output);
        expect(fs::remove(output), "a rendered picture is there");
    } catch (ImageFileError const& error) {
        expectOneLine(error.what());
    }
    fs::remove(input);
    expect(fs::is_empty(folder.path), "nothing else is left");
    return 0;
}
