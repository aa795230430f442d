// The module for views by OpenColorIO. It is loaded on first use because the library costs a start
// more than most need it.

#include "editor/model/picture/DisplayConfig.h"

#include <OpenColorIO/OpenColorIO.h>
#include <algorithm>

namespace ocio = OCIO_NAMESPACE;

namespace {

/// In one line.
[[noreturn]] void fail(std::string text)
{
    constexpr char const* blanks = " \t\r\n";
    for (std::size_t at = 0; (at = text.find_first_of(blanks, at)) != std::string::npos; ++at) {
        text.replace(at, text.find_first_not_of(blanks, at) - at, " ");
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '.')) {
        text.pop_back();
    }
    throw DisplayError(text);
}

class Processor : public DisplayProcessor {
public:
    Processor(ocio::ConstCPUProcessorRcPtr const& itsProcessor, std::string const& itsName)
        : processor(itsProcessor), name(itsName)
    {
    }

    void apply(std::span<CoRgbaColorTyped<float>> row) const override
    {
        constexpr long nbChannels = 4;
        ocio::PackedImageDesc pixels(row.data(), static_cast<long>(row.size()), 1, nbChannels);
        processor->apply(pixels);
    }
    std::string const& getName() const override { return name; }

private:
    ocio::ConstCPUProcessorRcPtr processor;
    std::string name;
};

/// To the front, if it is there.
void moveFirst(auto& list, char const* name, auto const& getName)
{
    auto const found = std::find_if(list.begin(), list.end(),
                                    [&](auto const& item) { return getName(item) == name; });
    if (found != list.end()) {
        std::rotate(list.begin(), found, std::next(found));
    }
}

class Config : public DisplayConfig {
public:
    explicit Config(ocio::ConstConfigRcPtr const& itsConfig) : config(itsConfig)
    {
        config->validate();
        for (int display = 0; display < config->getNumDisplays(); ++display) {
            addDisplay(config->getDisplay(display));
        }
        moveFirst(displays, config->getDefaultDisplay(),
                  [](Display const& display) { return display.name; });
        for (int look = 0; look < config->getNumLooks(); ++look) {
            looks.emplace_back(config->getLookNameByIndex(look));
        }
        if (displays.empty()) {
            throw DisplayError("it has no displays");
        }
        if (!config->hasRole(ocio::ROLE_SCENE_LINEAR)) {
            throw DisplayError("it does not say which colour space is scene_linear");
        }
    }

    std::vector<Display> const& getDisplays() const override { return displays; }
    std::vector<std::string> const& getLooks() const override { return looks; }

    std::shared_ptr<DisplayProcessor const> makeProcessor(DisplayView const& view) const override
    {
        try {
            auto const transform = ocio::DisplayViewTransform::Create();
            transform->setSrc(ocio::ROLE_SCENE_LINEAR);
            transform->setDisplay(view.display.c_str());
            transform->setView(view.view.c_str());
            auto const pipeline = ocio::LegacyViewingPipeline::Create();
            pipeline->setDisplayViewTransform(transform);
            pipeline->setLooksOverrideEnabled(view.look.has_value());
            pipeline->setLooksOverride(view.look.value_or("").c_str());
            auto const processor = pipeline->getProcessor(config)->getOptimizedCPUProcessor(
                ocio::OPTIMIZATION_DEFAULT);
            return std::make_shared<Processor>(processor, nameOf(view));
        } catch (ocio::Exception const& error) {
            fail(error.what());
        }
    }

private:
    void addDisplay(std::string const& name)
    {
        Display display{name, {}};
        for (int view = 0; view < config->getNumViews(name.c_str()); ++view) {
            display.views.emplace_back(config->getView(name.c_str(), view));
        }
        moveFirst(display.views, config->getDefaultView(name.c_str()),
                  [](std::string const& view) { return view; });
        displays.push_back(display);
    }

    static std::string nameOf(DisplayView const& view)
    {
        std::string name = view.display + " / " + view.view;
        if (view.look.has_value()) {
            name += view.look->empty() ? ", no look" : ", look " + *view.look;
        }
        return name;
    }

    ocio::ConstConfigRcPtr config;
    std::vector<Display> displays;
    std::vector<std::string> looks;
};

} // namespace

extern "C" __attribute__((visibility("default"))) void
remapReadDisplayConfig(std::string const& file, std::shared_ptr<DisplayConfig const>& config)
{
    ocio::SetLoggingLevel(ocio::LOGGING_LEVEL_NONE); // what is wrong is told once
    try {
        config = std::make_shared<Config>(ocio::Config::CreateFromFile(file.c_str()));
    } catch (ocio::Exception const& error) {
        fail(error.what());
    }
}
