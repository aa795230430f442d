#pragma once

#include <filesystem>

/// Where programs of this user keep things, as XDG names them; each with our own folder in it,
/// which may not be there yet. Empty if there is no home. Any thread.
std::filesystem::path getConfigFolder(); ///< what the user has chosen
std::filesystem::path getStateFolder();  ///< what outlives a run
std::filesystem::path getDataFolder();   ///< what the user has made
