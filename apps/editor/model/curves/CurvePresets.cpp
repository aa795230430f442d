#include "editor/model/curves/CurvePresets.h"

#include "files/PrintableText.h"
#include "runtime/project/Project.h"
#include "session/Failures.h"
#include "session/ProjectFiles.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace {

constexpr char const* presetEnding = ".json";
constexpr std::size_t longestPresetName = 200; // bytes; files have 255

[[noreturn]] void throwRefused(std::string const& action, std::filesystem::path const& file,
                               std::error_code const& error)
{
    throw SurroundingsError("cannot " + action + " " + quoteFile(file) + ": " + error.message());
}

} // namespace

CurvePresets::CurvePresets(Document& itsDocument, std::filesystem::path itsFolder)
    : document(itsDocument), copy(document.getNode().getTool()), folder(std::move(itsFolder))
{
}

std::filesystem::path CurvePresets::getFile(std::string const& name) const
{
    return folder / (name + presetEnding);
}

CurvePresets::Curves CurvePresets::load(std::filesystem::path const& file) const
{
    NodeValues const values = loadProject(file, copy.getNode());
    Curves curves;
    for (int channel = 0; channel < ControllerLink::nbChannels; ++channel) {
        auto const value = values.find(document.getLink().getCurveInputName(channel));
        if (value == values.end()) {
            throw UsageError("the preset " + quoteFile(file) + " has no three curves");
        }
        curves[static_cast<std::size_t>(channel)] =
            std::get<Animated<CurvePoints>>(value->second).evaluate(document.getTime()).getValue();
    }
    return curves;
}

std::vector<CurvePresets::Preset> CurvePresets::list()
{
    std::vector<Preset> presets;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::filesystem::path const& file = entry->path();
        std::error_code unknown;
        if (file.extension() != presetEnding || file.filename().string().starts_with('.') ||
            !entry->is_regular_file(unknown)) {
            continue;
        }
        try {
            presets.push_back({file.stem().string(), load(file)});
        } catch (std::exception const& failure) {
            if (told.insert(file).second) {
                complaints.emplace_back(failure.what());
            }
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        throwRefused("read the folder", folder, error);
    }
    std::sort(presets.begin(), presets.end(),
              [](Preset const& a, Preset const& b) { return a.name < b.name; });
    return presets;
}

std::string CurvePresets::takeComplaint()
{
    std::vector<std::string> const all = std::exchange(complaints, {});
    return all.empty()       ? std::string()
           : all.size() == 1 ? all.front()
                             : all.front() + ", and " + std::to_string(all.size() - 1) +
                                   " more presets cannot be used";
}

std::string CurvePresets::refuse(std::string const& name) const
{
    if (name.empty() || name.find_first_not_of(' ') == std::string::npos) {
        return "a preset needs a name";
    }
    if (name.front() == '.' || name.front() == ' ' || name.back() == ' ') {
        return "a name begins with no dot, and has no space at its ends";
    }
    if (name.find('/') != std::string::npos || makePrintable(name) != name) {
        return "a name has no slash and no control character";
    }
    if (name.size() > longestPresetName) {
        return "the name is too long";
    }
    std::error_code unknown;
    if (std::filesystem::symlink_status(getFile(name), unknown).type() !=
        std::filesystem::file_type::not_found) {
        return "there is a preset of that name";
    }
    return {};
}

void CurvePresets::checkName(std::string const& name) const
{
    std::string const refusal = refuse(name);
    if (!refusal.empty()) {
        throw UsageError(refusal);
    }
}

void CurvePresets::save(Preset const& preset)
{
    checkName(preset.name);
    NodeValues values;
    std::vector<std::string> const names = document.listCurveNames();
    for (std::size_t channel = 0; channel < names.size(); ++channel) {
        values.emplace(names[channel], Animated<CurvePoints>(preset.curves[channel]));
    }
    copy.getNode().setValues(values);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throwRefused("make the folder", folder, error);
    }
    saveText(getFile(preset.name), "preset", writeProject(copy.getNode(), names));
    told.erase(getFile(preset.name));
}

void CurvePresets::rename(std::string const& name, std::string const& newName)
{
    checkName(newName);
    std::error_code error;
    std::filesystem::rename(getFile(name), getFile(newName), error);
    if (error) {
        throwRefused("rename", getFile(name), error);
    }
}

void CurvePresets::remove(std::string const& name)
{
    std::error_code error;
    std::filesystem::remove(getFile(name), error); // another program may have been faster
    if (error) {
        throwRefused("delete", getFile(name), error);
    }
}
