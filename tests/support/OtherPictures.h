#pragma once

#include <filesystem>
#include <map>
#include <string>

// In a module of its own: loading OpenImageIO takes longer than most tests do.

extern "C" {

/// Whether it was written; see writeOther.
bool writeOtherPicture(std::filesystem::path const& file, int width, int channels, int bits,
                       std::string const& samples,
                       std::map<std::string, std::string> const& attributes);

/// Leaves `attributes` empty where the file cannot be read; see loadOtherAttributes.
void loadAttributesOfOther(std::filesystem::path const& file,
                           std::map<std::string, std::string>& attributes);
}
