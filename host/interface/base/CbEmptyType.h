#pragma once

/// The value of a notification that carries none.
struct CbEmptyType {
    struct NoArgCallBase {
        /// What calling a handler of a real value type without a value ends in: a programming
        /// error, thrown as an assertion failure.
        [[noreturn]] static void invalidNoArgCall();
    };
};
