#pragma once

#include "files/StandardFiles.h"
#include "remapcolor/options/NodeRequest.h"
#include "remapcolor/options/OptionText.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Standard input and output where files are asked for, as "-".

/// Options and the files that they name; an empty name for none.
using NamedFiles = std::vector<std::pair<std::string, std::filesystem::path>>;

/// Throws UsageError where more than one of them is standard input, projects included.
void checkStandardInput(NodeRequest const& node, NamedFiles files);

/// Adds --format, which fills `format`; it lives longer than `options`, and so do `formats`.
template <typename T>
void addFormatOption(CommandOptions& options, Words<T> const& formats, std::optional<T>& format)
{
    options.addOption(
        "--format", "NAME", "Of standard output, -o -: " + listWords(formats),
        [&formats, &format](std::string const& text) {
            format = chooseWord("--format", formats, text);
        },
        hintWords(formats));
}

/// Throws UsageError unless --format was given for standard output, and for nothing else.
template <typename T>
void checkFormat(std::filesystem::path const& output, Words<T> const& formats,
                 std::optional<T> const& format)
{
    if (isStandardStream(output) && !format.has_value()) {
        throw UsageError("standard output has no name that says the format; add --format " +
                         listWords(formats));
    }
    if (!isStandardStream(output) && format.has_value()) {
        throw UsageError("--format is for standard output, -o -; of " + quote(output.string()) +
                         " the extension says the format");
    }
}

/// What --format or else the extension says; nothing for an extension that is none of `formats`.
/// Throws as checkFormat.
template <typename T>
std::optional<T> findFormat(std::filesystem::path const& output, Words<T> const& formats,
                            std::optional<T> const& format)
{
    checkFormat(output, formats, format);
    std::string const extension = toLower(output.extension().string());
    for (auto const& [name, meaning] : formats) {
        if (extension == "." + name) {
            return meaning;
        }
    }
    return format;
}
