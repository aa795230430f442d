#pragma once

#include <utility>

/// Sets a flag for a scope and gives it back what it was. The flag lives longer.
class FlagScope {
public:
    explicit FlagScope(bool& scopedFlag) : flag(scopedFlag), former(std::exchange(scopedFlag, true))
    {
    }
    ~FlagScope() { flag = former; }
    FlagScope(FlagScope const&) = delete;
    FlagScope& operator=(FlagScope const&) = delete;

private:
    bool& flag;
    bool former;
};
