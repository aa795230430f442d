#include "base/EvRequestEvent.h"

#include "base/RCExUtil.h"

#include <ostream>
#include <typeinfo>

EvRequestEvent::~EvRequestEvent() noexcept(false) = default;

std::string EvRequestEvent::getTypeName() const
{
    return RCExUtil::readableName(typeid(*this));
}

void EvRequestEvent::dump(std::ostream& out) const
{
    out << getTypeName() << '\n';
}

void EvRequestEvent::read(std::istream&) {}

OPtrRet<EvRequestEvent> EvRequestEvent::clone() const
{
    return {};
}
