#include "pluginAPI/PxRequest.h"

#include "base/RCExUtil.h"
#include "pluginAPI/PxRequestMgr.h"

#include <new>
#include <typeinfo>

void* PxRequest::operator new(std::size_t size)
{
    return ::operator new(size);
}

void PxRequest::operator delete(void* memory) noexcept
{
    ::operator delete(memory);
}

std::string PxRequest::getRequestType() const
{
    return RCExUtil::readableName(typeid(*this));
}

int PxRequest::getPriorityLevel() const
{
    return 0;
}

PxRequest::~PxRequest() noexcept(false) = default;

void PxRequest::completeExecution() {}

void PxRequest::postResult() {}

void PxRequest::performCleanUp() {}

std::exception_ptr PxRequest::getFailure() const
{
    return PxRequestMgr::getInstance().getFailure(*this);
}
