#pragma once

#include "callbacks/CbHandler.h"

#include <functional>
#include <utility>

/// Handler that hands each value to a function.
template <class T>
class CbFunction : public CbHandler<T> {
public:
    using Function = std::function<void(T& value)>;

    explicit CbFunction(Function handlerFunction) : function(std::move(handlerFunction)) {}
    ~CbFunction() override = default;

    using CbHandler<T>::call;
    /// The function may destroy the handler.
    void call(T& value) override
    {
        auto const called = function;
        called(value);
    }

private:
    Function function; // never empty
};
