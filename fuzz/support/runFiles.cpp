// Runs a fuzz target on the files and folders of files that are named, for builds without
// libFuzzer.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

void runFile(std::filesystem::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> const bytes{std::istreambuf_iterator<char>(stream),
                                  std::istreambuf_iterator<char>()};
    std::fprintf(stderr, "%s\n", file.c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
}

} // namespace

int main(int nbArguments, char** arguments)
{
    for (int argument = 1; argument < nbArguments; ++argument) {
        std::filesystem::path const path = arguments[argument];
        if (!std::filesystem::is_directory(path)) {
            runFile(path);
            continue;
        }
        for (auto const& entry : std::filesystem::directory_iterator(path)) {
            runFile(entry.path());
        }
    }
}
