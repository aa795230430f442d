#pragma once

#include "base/EvEventManager.h"

#include <cstdint>
#include <functional>
#include <string>

/// Somebody who has requests run, perhaps by a plug-in, and wants to know which result is which and
/// what became of those that gave none. Requests are numbered in the order in which the process
/// submits them. User-interface thread.
class PxSubmitter {
public:
    /// A request that gave no result.
    struct Loss {
        std::uint64_t request = 0;
        bool isCancelled = false; ///< by whoever may cancel it, before it had a result
        std::string failure;      ///< what it threw; empty for a cancelled one
    };
    using LossReceiver = std::function<void(Loss const& loss)>;

    /// `receiver`, which must not be empty, is called by events. Losses that come when the
    /// submitter is gone are those of requests without one: failures go to the manager's report.
    explicit PxSubmitter(LossReceiver receiver);
    ~PxSubmitter();
    PxSubmitter(PxSubmitter const&) = delete;
    PxSubmitter& operator=(PxSubmitter const&) = delete;

    /// Requests that are submitted while the innermost scope lives are its submitter's.
    class Scope {
    public:
        explicit Scope(PxSubmitter& submitter);
        ~Scope();
        Scope(Scope const&) = delete;
        Scope& operator=(Scope const&) = delete;

    private:
        PxSubmitter* former;
    };

    /// The last request that was submitted for it; 0 before the first.
    std::uint64_t getNewest() const { return newest; }

    /// Which of its requests the event that runs now comes of; 0 if of none.
    std::uint64_t findSourceOfEvent() const;

private:
    friend class PxRequestMgr;

    /// What events of the request that is about to be submitted come of.
    static EvSource describeNext(std::uint64_t request);
    /// It has been submitted.
    static void keepNewest(EvSource const& source);
    /// Hands the loss to the submitter that the event which runs now comes of, if it is there.
    static bool tellLoss(bool isCancelled, std::string const& failure);

    std::uint64_t id;
    std::uint64_t newest = 0;
    LossReceiver receiver;
};
