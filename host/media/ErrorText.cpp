// How failures of image files become one clear line.

#include "media/ErrorText.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <new>
#include <system_error>

namespace {

constexpr std::size_t longestLibraryText = 200;
constexpr std::size_t mostListedNames = 24;

/// Control characters would break the line or a terminal. Bytes above 127 are letters in paths, but
/// may be anything in damaged files.
enum class Letters { Any, AsciiOnly };

std::string makePrintable(std::string text, Letters letters)
{
    std::replace_if(
        text.begin(), text.end(),
        [letters](unsigned char character) {
            return character < ' ' || character == 127 ||
                   (character > 127 && letters == Letters::AsciiOnly);
        },
        '?');
    return text;
}

std::string quote(std::filesystem::path const& file)
{
    return "\"" + makePrintable(file.string(), Letters::Any) + "\"";
}

std::string describeSystemError(int error)
{
    switch (error) {
    case ENOENT: return "there is no such file or folder";
    case EACCES:
    case EPERM: return "permission denied";
    case EROFS: return "the file system is read-only";
    case ENOSPC:
    case EDQUOT: return "no space left on the disk; free some and try again";
    case EISDIR: return "it is a folder";
    case ENAMETOOLONG: return "the name is too long";
    default: return std::generic_category().message(error);
    }
}

} // namespace

void throwReadError(ImageFailure kind, std::filesystem::path const& file, std::string const& reason)
{
    throw ImageFileError(kind, "cannot read " + quote(file) + ": " + reason);
}

void throwWriteError(ImageFailure kind, std::filesystem::path const& file,
                     std::string const& reason)
{
    throw ImageFileError(kind, "cannot write " + quote(file) + ": " + reason);
}

void throwSystemReadError(int error, std::filesystem::path const& file)
{
    bool const isMissing = error == ENOENT || error == ENOTDIR || error == EISDIR;
    throwReadError(isMissing ? ImageFailure::File : ImageFailure::Surroundings, file,
                   describeSystemError(error));
}

void throwSystemWriteError(int error, std::filesystem::path const& file)
{
    bool const isAsked =
        error == ENOENT || error == ENOTDIR || error == EISDIR || error == ENAMETOOLONG;
    throwWriteError(isAsked ? ImageFailure::Request : ImageFailure::Surroundings, file,
                    describeSystemError(error));
}

std::string trimLibraryText(std::string text, std::filesystem::path const& file)
{
    std::string const named = file.string();
    auto const found = named.empty() ? std::string::npos : text.rfind(named);
    if (found != std::string::npos) {
        auto const isLetter = [](unsigned char character) { return std::isalnum(character) != 0; };
        auto const after = text.begin() + static_cast<std::ptrdiff_t>(found + named.size());
        bool const saysMore = std::any_of(after, text.end(), isLetter);
        text = saysMore ? std::string(after, text.end()) : text.substr(0, found);
    }
    std::replace(text.begin(), text.end(), '\n', ' ');
    text = makePrintable(text, Letters::AsciiOnly);
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
        throwReadError(ImageFailure::Surroundings, file, "there is not enough memory");
    } catch (std::exception const& failure) {
        std::string const detail = trimLibraryText(failure.what(), file);
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
        throwWriteError(ImageFailure::Surroundings, file, "there is not enough memory");
    } catch (std::exception const& failure) {
        throwWriteError(ImageFailure::Surroundings, file, trimLibraryText(failure.what(), file));
    }
}

std::string quoteName(std::string const& name)
{
    return "\"" + makePrintable(name, Letters::AsciiOnly) + "\"";
}

std::string quoteList(std::vector<std::string> const& names)
{
    std::string list;
    for (std::size_t index = 0; index < std::min(names.size(), mostListedNames); ++index) {
        list += (index == 0 ? "" : ", ") + quoteName(names[index]);
    }
    return names.size() > mostListedNames ? list + ", ..." : list;
}
