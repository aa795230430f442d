#pragma once

/// The value of a notification that carries none.
struct CbEmptyType {
    struct NoArgCallBase {
        /// What calling a handler of a real value type without a value comes to: a programming
        /// error. It is reported as an assertion failure by the event manager; the handlers after
        /// this one still get their call. User-interface thread.
        static void invalidNoArgCall();
    };
};
