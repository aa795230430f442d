#pragma once

#include "media/ImageFailure.h"

#include <filesystem>
#include <string>
#include <vector>

// How failures of image files become one clear line. All functions may be called on any thread.

/// Throws ImageFileError with `cannot read "FILE": REASON`; "-" is standard input, and output.
[[noreturn]] void throwReadError(ImageFailure kind, std::filesystem::path const& file,
                                 std::string const& reason);

/// Throws ImageFileError with `cannot write "FILE": REASON`.
[[noreturn]] void throwWriteError(ImageFailure kind, std::filesystem::path const& file,
                                  std::string const& reason);

/// As throwReadError, for an error number of the system: a missing file is the file's fault,
/// everything else that of the surroundings.
[[noreturn]] void throwSystemReadError(int error, std::filesystem::path const& file);

/// As throwWriteError, for an error number of the system.
[[noreturn]] void throwSystemWriteError(int error, std::filesystem::path const& file);

/// What a library said, as part of a sentence: one line without control characters, without the
/// file's name and what precedes it, without a full stop, at most some 200 characters.
std::string trimLibraryText(std::string text, std::filesystem::path const& file);

/// To be called while an exception is handled; throws it as a reading failure of `file`.
/// `systemError` is the error number that the file's stream met, 0 for none.
[[noreturn]] void rethrowAsReadError(std::filesystem::path const& file, int systemError);

/// As rethrowAsReadError, for writing.
[[noreturn]] void rethrowAsWriteError(std::filesystem::path const& file, int systemError);

/// A name out of a file, in quotes, with a question mark for what is not plain ASCII.
std::string quoteName(std::string const& name);

/// `"a", "b", "c"`: for error texts that list choices.
std::string quoteList(std::vector<std::string> const& names, std::size_t most = 24);
