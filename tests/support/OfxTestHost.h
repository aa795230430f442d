#pragma once

/// A small OpenFX host for tests: loads the built bundle as hosts do, keeps what it describes, and
/// runs its actions. It can lack what hosts lack and lie as hosts lie.

#include "OfxAbi.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <variant>
#include <vector>

using OfxTestValue = std::variant<int, double, std::string, void*>;

struct OfxPropertySet {
    template <typename T>
    T get(std::string const& name, std::size_t index = 0) const
    {
        auto const found = values.find(name);
        bool const isThere = found != values.end() && index < found->second.size() &&
                             std::holds_alternative<T>(found->second[index]);
        return isThere ? std::get<T>(found->second[index]) : T{};
    }
    std::vector<std::string> getTexts(std::string const& name) const;

    std::map<std::string, std::vector<OfxTestValue>> values{};
    std::set<std::string> refused{}; ///< names that cannot be set
};

struct OfxParam {
    std::string name{};
    std::string type{};
    OfxPropertySet properties{};
    OfxTestValue value{};
    std::map<double, OfxTestValue> keys{}; ///< hold until the next one
    std::vector<std::map<double, double>> points{};
    std::function<double(int curve, double position)> curve{}; ///< identity if empty
};

struct OfxParamSet {
    OfxParam* find(std::string const& name) const;

    std::vector<std::unique_ptr<OfxParam>> params{};
    OfxPropertySet properties{};
    std::vector<std::string> edits{}; ///< labels of undo steps
    int depth = 0;
};

/// An image in memory between guard bytes: `check` tells whether anything was written beside its
/// pixels.
class OfxTestImage {
public:
    struct Layout {
        std::string depth = OfxText::Depth::single;
        std::string components = OfxText::Components::rgba;
        OfxRectI bounds{0, 0, 16, 8};
        int padding = 0; ///< bytes between rows
        bool isTopDown = false;
        int shift = 0; ///< bytes that the first pixel lies off a multiple of 64
    };
    explicit OfxTestImage(Layout const& imageLayout);

    std::byte* getPixel(int x, int y);
    std::size_t getPixelBytes() const;

    /// All pixels' bytes, row after row upwards.
    std::vector<std::byte> read();
    void write(std::vector<std::byte> const& bytes);
    bool hasCleanGuards() const;

    Layout layout;
    OfxPropertySet properties{};

private:
    std::size_t getRowSize() const;

    std::vector<std::byte> memory;
    std::ptrdiff_t rowBytes;
    std::size_t first;
};

struct OfxImageClip {
    std::string name{};
    OfxPropertySet properties{};
    OfxTestImage* image = nullptr;
    OfxStatus statusWithoutImage = OfxStat::failed;
};

struct OfxImageEffect {
    OfxImageClip& clip(std::string const& name);
    OfxParam& param(std::string const& name) { return *params.find(name); }

    OfxPropertySet properties{};
    OfxParamSet params{};
    std::map<std::string, std::unique_ptr<OfxImageClip>> clips{};
};

/// One host per process at a time.
class OfxTestHost {
public:
    struct Traits {
        bool hasCurves = true;
        bool hasThreads = true;
        bool hasMessages = true;
        bool hasNullMessages = false; ///< version 2 with null functions
        bool takesDepths = true;      ///< several depths at once
        std::vector<std::string> depths = {OfxText::Depth::byte, OfxText::Depth::word,
                                           OfxText::Depth::half, OfxText::Depth::single};
    };

    /// Loads the bundle's library and lets it describe itself. Throws std::runtime_error.
    explicit OfxTestHost(std::string const& library, Traits const& hostTraits);
    explicit OfxTestHost(std::string const& library) : OfxTestHost(library, Traits()) {}
    OfxTestHost(OfxTestHost const&) = delete;
    OfxTestHost& operator=(OfxTestHost const&) = delete;
    ~OfxTestHost();

    OfxStatus call(char const* action, OfxImageEffect* effect, OfxPropertySet* in = nullptr,
                   OfxPropertySet* out = nullptr) const;

    /// The context's descriptor.
    OfxImageEffect& getContext(std::string const& context);

    /// An instance made from it; the host's last act is to destroy it.
    OfxImageEffect& createInstance(std::string const& context = OfxText::Context::filter);
    void destroyInstance(OfxImageEffect& effect);

    OfxStatus render(OfxImageEffect& effect, OfxRectI const& window, double time = 0.0) const;

    /// The user gives a parameter a value.
    void edit(OfxImageEffect& effect, std::string const& param, OfxTestValue const& value);
    OfxStatus notifyEdited(OfxImageEffect& effect, std::string const& param, double time = 0.0);

    OfxPlugin const& getPlugin() const { return *plugin; }

    Traits traits;
    OfxImageEffect descriptor{};
    std::vector<std::string> messages{};
    std::function<bool()> wantsAbort = [] { return false; };
    std::atomic<int> nbLentImages = 0;

private:
    std::unique_ptr<void, int (*)(void*)> handle;
    OfxPlugin* plugin = nullptr;
    OfxPropertySet hostProperties{};
    OfxHost host{};
    std::map<std::string, std::unique_ptr<OfxImageEffect>> contexts{};
    std::vector<std::unique_ptr<OfxImageEffect>> instances{};
};
