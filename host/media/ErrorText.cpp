// How failures of image files become one clear line.

#include "media/ErrorText.h"

#include "files/FileError.h"
#include "files/PrintableText.h"
#include "files/StandardFiles.h"

#include <algorithm>
#include <cctype>
#include <new>

namespace {

constexpr std::size_t longestLibraryText = 200;

/// Bytes above 127 are letters in paths, but may be anything in damaged files.
std::string makePlain(std::string text)
{
    constexpr unsigned char lastPlain = 127;
    std::replace_if(
        text.begin(), text.end(), [](unsigned char character) { return character > lastPlain; },
        '?');
    return makePrintable(text);
}

/// Libraries turn a failed allocation into failures of their own.
bool speaksOfMemory(std::string const& libraryText)
{
    return libraryText.find("allocate memory") != std::string::npos ||
           libraryText.find("bad_alloc") != std::string::npos;
}

constexpr char const* noMemory = "there is not enough memory";

} // namespace

void throwReadError(ImageFailure kind, std::filesystem::path const& file, std::string const& reason)
{
    throw ImageFileError(kind, "cannot read " + nameInput(file) + ": " + reason);
}

void throwWriteError(ImageFailure kind, std::filesystem::path const& file,
                     std::string const& reason)
{
    throw ImageFileError(kind, "cannot write " + nameOutput(file) + ": " + reason);
}

void throwSystemReadError(int error, std::filesystem::path const& file)
{
    bool const isMissing = FileError(error).getFault() == FileError::Fault::Request;
    throwReadError(isMissing ? ImageFailure::File : ImageFailure::Surroundings, file,
                   describeSystemError(error));
}

void throwSystemWriteError(int error, std::filesystem::path const& file)
{
    bool const isAsked = FileError(error).getFault() == FileError::Fault::Request;
    throwWriteError(isAsked ? ImageFailure::Request : ImageFailure::Surroundings, file,
                    describeSystemError(error));
}

std::string trimLibraryText(std::string text, std::filesystem::path const& file)
{
    std::string const named = isStandardStream(file) ? "\"-\"" : file.string();
    auto const found = named.empty() ? std::string::npos : text.rfind(named);
    if (found != std::string::npos) {
        auto const isLetter = [](unsigned char character) { return std::isalnum(character) != 0; };
        auto const after = text.begin() + static_cast<std::ptrdiff_t>(found + named.size());
        bool const saysMore = std::any_of(after, text.end(), isLetter);
        text = saysMore ? std::string(after, text.end()) : text.substr(0, found);
    }
    std::replace(text.begin(), text.end(), '\n', ' ');
    text = makePlain(text);
    text.erase(0, text.find_first_not_of("\"'.:;,) "));
    if (text.size() > longestLibraryText) {
        text = text.substr(0, longestLibraryText) + "...";
    }
    text.erase(text.find_last_not_of("\"'.:;,( ") + 1);
    return text;
}

void rethrowAsReadError(std::filesystem::path const& file, int systemError)
{
    if (systemError != 0) {
        throwSystemReadError(systemError, file);
    }
    try {
        throw;
    } catch (ImageFileError const&) {
        throw;
    } catch (std::bad_alloc const&) {
        throwReadError(ImageFailure::Surroundings, file, noMemory);
    } catch (std::exception const& failure) {
        std::string const detail = trimLibraryText(failure.what(), file);
        if (speaksOfMemory(detail)) {
            throwReadError(ImageFailure::Surroundings, file, noMemory);
        }
        throwReadError(ImageFailure::File, file,
                       "the file is damaged or incomplete" +
                           (detail.empty() ? std::string() : " (" + detail + ")"));
    }
}

void rethrowAsWriteError(std::filesystem::path const& file, int systemError)
{
    if (systemError != 0) {
        throwSystemWriteError(systemError, file);
    }
    try {
        throw;
    } catch (ImageFileError const&) {
        throw;
    } catch (std::bad_alloc const&) {
        throwWriteError(ImageFailure::Surroundings, file, noMemory);
    } catch (std::exception const& failure) {
        throwWriteError(ImageFailure::Surroundings, file, trimLibraryText(failure.what(), file));
    }
}

std::string quoteName(std::string const& name)
{
    return "\"" + makePlain(name) + "\"";
}

std::string quoteList(std::vector<std::string> const& names, std::size_t most)
{
    std::string list;
    for (std::size_t index = 0; index < std::min(names.size(), most); ++index) {
        list += (index == 0 ? "" : ", ") + quoteName(names[index]);
    }
    return names.size() > most ? list + ", ..." : list;
}
