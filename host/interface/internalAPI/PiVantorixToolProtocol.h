#pragma once

#include <string>

/// What the tools of this house have in common. Any thread.
class PiVantorixToolProtocol {
public:
    static std::string getVantorixProductName();
    static std::string getVantorixManufacturer();
    static std::string getVantorixVersionString();
};
