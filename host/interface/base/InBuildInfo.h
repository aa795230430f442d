#pragma once

#include "base/OPtr.h"

#include <cstddef>
#include <memory>
#include <vector>

/// Which build a library is.
class InBuildInfo {
public:
    virtual ~InBuildInfo() = default;

    virtual char const* getProductLine() const = 0;
    virtual char const* getLibraryName() const = 0;
    virtual char const* getYear() const = 0;
    virtual char const* getVersion() const = 0;
    virtual char const* getReleaseStage() const = 0;
    virtual int getMajorVersion() const = 0;
    virtual int getMinorVersion() const = 0;
    virtual int getReleaseCode() const = 0;
    virtual char const* getBuildNumber() const = 0;
    virtual char const* getBuildDate() const = 0;
    virtual char const* getConfiguration() const = 0;
};

/// The builds that libraries have registered. User-interface thread.
class InBuildInfoUtil {
public:
    /// Throws the null-pointer exception for an empty pointer.
    static void registerInfo(OPtr<InBuildInfo> info);
    static std::vector<std::unique_ptr<InBuildInfo>> const& getInfos();

    /// Lets all but the `count` oldest go: before the library that they come from is unloaded.
    static void keepFirst(std::size_t count);
};
