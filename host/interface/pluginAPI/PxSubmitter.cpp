// Those who wait for requests, by their numbers: events carry these through other threads.

#include "pluginAPI/PxSubmitter.h"

#include <unordered_map>
#include <utility>

namespace {

/// All that live, and whose scope is open; of the user-interface thread.
struct Submitters {
    std::unordered_map<std::uint64_t, PxSubmitter*> living;
    std::uint64_t nbMade = 0;
    PxSubmitter* current = nullptr;
};

Submitters& getSubmitters()
{
    static Submitters submitters;
    return submitters;
}

PxSubmitter* findSubmitter(EvSource const& source)
{
    auto const& living = getSubmitters().living;
    auto const found = living.find(source.owner);
    return found == living.end() ? nullptr : found->second;
}

} // namespace

PxSubmitter::PxSubmitter(LossReceiver lossReceiver)
    : id(++getSubmitters().nbMade), receiver(std::move(lossReceiver))
{
    getSubmitters().living.emplace(id, this);
}

PxSubmitter::~PxSubmitter()
{
    getSubmitters().living.erase(id);
}

PxSubmitter::Scope::Scope(PxSubmitter& submitter)
    : former(std::exchange(getSubmitters().current, &submitter))
{
}

PxSubmitter::Scope::~Scope()
{
    getSubmitters().current = former;
}

std::uint64_t PxSubmitter::findSourceOfEvent() const
{
    EvSource const source = EvSource::getCurrent();
    return source.owner == id ? source.number : 0;
}

EvSource PxSubmitter::describeNext(std::uint64_t request)
{
    PxSubmitter const* const current = getSubmitters().current;
    return {current == nullptr ? 0 : current->id, request};
}

void PxSubmitter::keepNewest(EvSource const& source)
{
    if (PxSubmitter* const submitter = findSubmitter(source)) {
        submitter->newest = source.number;
    }
}

bool PxSubmitter::tellLoss(bool isCancelled, std::string const& failure)
{
    EvSource const source = EvSource::getCurrent();
    PxSubmitter const* const submitter = findSubmitter(source);
    if (submitter == nullptr) {
        return false;
    }
    auto const told = submitter->receiver; // the submitter may go while it is called
    told({source.number, isCancelled, failure});
    return true;
}
