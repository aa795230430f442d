#pragma once

#include <cstddef>
#include <exception>
#include <string>

/// Something to be computed on a worker thread; see PxRequestMgr for who owns it when. Made and
/// destroyed on the user-interface thread, because requests hold node handles.
class PxRequest {
public:
    PxRequest() = default;
    PxRequest(PxRequest const&) = delete;
    PxRequest& operator=(PxRequest const&) = delete;

    /// Requests come from and return to the host's own memory, whichever library made them.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory) noexcept;

    /// The kind of request, for messages: the run-time type's name as written in source code.
    virtual std::string getRequestType() const;

    /// The request's own idea of its priority: 0, interactive. Our host goes by what
    /// PxRequestMgr::submit is given.
    virtual int getPriorityLevel() const;

    // Members of derived classes may be node handles, whose release can throw.
    virtual ~PxRequest() noexcept(false);

    // The four steps, called in this order on one worker thread. What a step throws is kept (see
    // getFailure) and reported; the steps after it are called all the same.

    /// Computes.
    virtual void performExecute() = 0;

    /// Closes the computation, whether it succeeded or not. Here: nothing.
    virtual void completeExecution();

    /// Tells whoever asked, unless the request was cancelled meanwhile. Must not wait for the
    /// user-interface thread, which may be waiting in PxRequestMgr::cancel. Here: nothing.
    virtual void postResult();

    /// Gives back what only the run needed. Here: nothing.
    virtual void performCleanUp();

    /// The first thing that a step has thrown so far, or null. Any thread that may use the request.
    std::exception_ptr getFailure() const;
};
