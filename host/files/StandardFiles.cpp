#include "files/StandardFiles.h"

#include "files/PrintableText.h"

#include <utility>

namespace {

std::string name(std::filesystem::path const& file, char const* stream)
{
    return isStandardStream(file) ? stream : quoteFile(file);
}

StandardFiles*& sharedFiles()
{
    static StandardFiles own;
    static StandardFiles* shared = &own;
    return shared;
}

} // namespace

bool isStandardStream(std::filesystem::path const& file)
{
    return file == "-";
}

std::string nameInput(std::filesystem::path const& file)
{
    return name(file, "standard input");
}

std::string nameOutput(std::filesystem::path const& file)
{
    return name(file, "standard output");
}

StandardFiles& StandardFiles::get()
{
    return *sharedFiles();
}

void StandardFiles::share(StandardFiles& ofProcess)
{
    sharedFiles() = &ofProcess;
}

void StandardFiles::offerInput(std::function<MemoryFile()> read)
{
    readInput = std::move(read);
}

MemoryFile const* StandardFiles::openInput()
{
    if (!input.has_value() && readInput) {
        input.emplace(readInput());
    }
    return input.has_value() ? &*input : nullptr;
}

void StandardFiles::keepOutput(MemoryFile written)
{
    std::lock_guard const lock(mutex);
    output.reset();
    output.emplace(std::move(written));
}

std::optional<MemoryFile> StandardFiles::takeOutput()
{
    std::lock_guard const lock(mutex);
    return std::exchange(output, std::nullopt);
}
