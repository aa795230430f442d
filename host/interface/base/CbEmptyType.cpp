#include "base/CbEmptyType.h"

#include "base/Assertions.h"

void CbEmptyType::NoArgCallBase::invalidNoArgCall()
{
    Assertions::throwAssertionFailed("host/interface/base/CbEmptyType", __LINE__,
                                     "handler of a value called without a value");
}
