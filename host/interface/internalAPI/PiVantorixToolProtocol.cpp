#include "internalAPI/PiVantorixToolProtocol.h"

std::string PiVantorixToolProtocol::getVantorixProductName()
{
    return "Vantorix Morvo";
}

std::string PiVantorixToolProtocol::getVantorixManufacturer()
{
    return "Vantorix";
}

std::string PiVantorixToolProtocol::getVantorixVersionString()
{
    return "8.0";
}
