// The bundle's entry points and the way of the host's actions to what answers them.

#include "Description.h"
#include "HostAccess.h"
#include "Render.h"

#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <unordered_map>

namespace {

namespace Action = OfxText::Action;
namespace Prop = OfxText::Prop;

// Saved projects of hosts name these: the major version stays as long as they can be loaded.
constexpr unsigned int majorVersion = 1;
constexpr unsigned int minorVersion = 0;

/// Everything that lives from load to unload.
class Plugin {
public:
    Plugin() : table(std::make_unique<ParamTable>()) {}
    ~Plugin()
    {
        instances.clear(); // those that the host forgot
        nodes.clear();
    }

    ParamTable const& getTable() const { return *table; }
    ToolNodePool& getNodes() { return nodes; }

    void createInstance(OfxImageEffect* effect)
    {
        auto instance = std::make_unique<Instance>(effect, *table);
        Instance* const raw = instance.get();
        {
            std::lock_guard const lock(mutex);
            instances[raw] = std::move(instance);
        }
        propertiesOf(effect).put(Prop::instanceData, raw);
    }

    /// The effect's instance; null where the host has lost it or never made one.
    Instance* findInstance(OfxImageEffect* effect)
    {
        auto* const instance =
            static_cast<Instance*>(propertiesOf(effect).getPointer(Prop::instanceData));
        std::lock_guard const lock(mutex);
        return instances.contains(instance) ? instance : nullptr;
    }

    void destroyInstance(OfxImageEffect* effect)
    {
        Instance* const instance = findInstance(effect);
        std::lock_guard const lock(mutex);
        instances.erase(instance);
    }

private:
    std::unique_ptr<ParamTable> table;
    ToolNodePool nodes;
    std::mutex mutex;
    std::unordered_map<Instance*, std::unique_ptr<Instance>> instances; // locked by mutex
};

/// Left alone at the end of a process whose host never unloads: what the plug-in refers to may be
/// gone by then.
std::unique_ptr<Plugin>& plugin()
{
    static auto* const loaded = new std::unique_ptr<Plugin>();
    return *loaded;
}

void setHost(OfxHost* host)
{
    HostAccess::get().host = host;
}

OfxStatus load()
{
    if (plugin() != nullptr) {
        return OfxStat::ok;
    }
    if (!HostAccess::get().load()) {
        return OfxStat::missingHostFeature;
    }
    startPackages();
    std::lock_guard const lock(uiMutex());
    plugin() = std::make_unique<Plugin>();
    return OfxStat::ok;
}

OfxStatus unload()
{
    if (plugin() != nullptr) {
        plugin().reset();
        stopPackages();
        HostAccess::get().unload();
    }
    return OfxStat::ok;
}

OfxStatus instanceChanged(Instance& instance, OfxPropertySet* inArgs)
{
    Properties const arguments(inArgs);
    bool const isEdit = arguments.getString(Prop::changeReason) == OfxText::Reason::userEdited &&
                        arguments.getString(Prop::type) == OfxText::Type::parameter;
    if (!isEdit) {
        return OfxStat::replyDefault;
    }
    instance.paramEdited(arguments.getString(Prop::name).value_or(""),
                         arguments.getDouble(Prop::time).value_or(0.0));
    return OfxStat::ok;
}

OfxStatus answerIdentity(Instance const& instance, OfxPropertySet* inArgs, OfxPropertySet* outArgs)
{
    double const time = Properties(inArgs).getDouble(Prop::time).value_or(0.0);
    Properties const answer(outArgs);
    if (!isIdentity(instance, time) || !answer.put(Prop::name, OfxText::Clip::source)) {
        return OfxStat::replyDefault;
    }
    answer.put(Prop::time, time);
    return OfxStat::ok;
}

/// What an instance answers.
OfxStatus act(std::string_view action, Instance& instance, OfxPropertySet* inArgs,
              OfxPropertySet* outArgs)
{
    if (action == Action::render) {
        return render(instance, plugin()->getNodes(), inArgs);
    }
    if (action == Action::isIdentity) {
        return answerIdentity(instance, inArgs, outArgs);
    }
    if (action == Action::getClipPreferences) {
        return chooseOutputDepth(instance, outArgs) ? OfxStat::ok : OfxStat::replyDefault;
    }
    return instanceChanged(instance, inArgs);
}

bool needsInstance(std::string_view action)
{
    return action == Action::render || action == Action::isIdentity ||
           action == Action::getClipPreferences || action == Action::instanceChanged;
}

OfxStatus describeOne(OfxImageEffect* effect, OfxPropertySet* inArgs)
{
    std::string const context =
        Properties(inArgs).getString(Prop::context).value_or(OfxText::Context::filter);
    if (context != OfxText::Context::filter && context != OfxText::Context::general) {
        return OfxStat::unsupported;
    }
    describeInContext(effect, context, plugin()->getTable());
    return OfxStat::ok;
}

OfxStatus dispatch(std::string_view action, OfxImageEffect* effect, OfxPropertySet* inArgs,
                   OfxPropertySet* outArgs)
{
    if (action == Action::load) {
        return load();
    }
    if (action == Action::unload) {
        return unload();
    }
    if (plugin() == nullptr) {
        return OfxStat::failed; // nothing before load
    }
    if (action == Action::describe) {
        describeEffect(effect);
        return OfxStat::ok;
    }
    if (action == Action::describeInContext) {
        return describeOne(effect, inArgs);
    }
    if (action == Action::createInstance) {
        plugin()->createInstance(effect);
        return OfxStat::ok;
    }
    if (action == Action::destroyInstance) {
        plugin()->destroyInstance(effect);
        return OfxStat::ok;
    }
    if (!needsInstance(action)) {
        return OfxStat::replyDefault;
    }
    Instance* const instance = plugin()->findInstance(effect);
    return instance == nullptr ? OfxStat::failed : act(action, *instance, inArgs, outArgs);
}

/// Says why an action failed, if it can be said.
void report(OfxImageEffect* effect, char const* text) noexcept
{
    try {
        HostAccess::get().tell(effect, OfxText::Message::log, std::string("Remap Color: ") + text);
    } catch (...) {
        return; // out of memory: the status says it
    }
}

/// No exception leaves the bundle.
OfxStatus answer(char const* action, void const* handle, OfxPropertySet* inArgs,
                 OfxPropertySet* outArgs)
{
    // The interface hands effects over as constant and takes them as variable.
    auto* const effect = static_cast<OfxImageEffect*>(const_cast<void*>(handle));
    try {
        return action == nullptr ? OfxStat::failed : dispatch(action, effect, inArgs, outArgs);
    } catch (std::bad_alloc const&) {
        return OfxStat::memory;
    } catch (std::exception const& error) {
        report(effect, error.what());
    } catch (...) {
        report(effect, "a failure of an unknown kind");
    }
    return OfxStat::failed;
}

} // namespace

#define REMAPCOLOR_OFX_EXPORT extern "C" __attribute__((visibility("default")))

// The standard's names. NOLINTBEGIN(readability-identifier-naming)

REMAPCOLOR_OFX_EXPORT int OfxGetNumberOfPlugins()
{
    return 1;
}

REMAPCOLOR_OFX_EXPORT OfxPlugin* OfxGetPlugin(int nth)
{
    static OfxPlugin description = {OfxText::apiName, OfxText::apiVersion, openFxNames::plugin,
                                    majorVersion,     minorVersion,        &setHost,
                                    &answer};
    return nth == 0 ? &description : nullptr;
}

REMAPCOLOR_OFX_EXPORT OfxStatus OfxSetHost(OfxHost const* host)
{
    if (host == nullptr || host->fetchSuite == nullptr) {
        return OfxStat::failed;
    }
    HostAccess::get().host = host;
    return OfxStat::ok;
}

// NOLINTEND(readability-identifier-naming)
