#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// `text` on one line and harmless to a terminal: a question mark for each control character.
std::string makePrintable(std::string text);

/// A file's name between double quotes, printable.
std::string quoteFile(std::filesystem::path const& file);

/// Words as a line that a shell takes.
std::string formatShellLine(std::vector<std::string> const& words);
