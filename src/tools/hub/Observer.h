// Whoever wants to hear what programs tell the hub.
#pragma once

#include "hub/Messages.h"

namespace Hub {

/// Called in the main loop's thread, in the order in which messages come. Nothing in it may wait.
class CHubObserver {
public:
    virtual ~CHubObserver() = default;

    virtual void NewMessage(const SRegistration&) {}
    virtual void NewMessage(const SStatus&) {}
    virtual void NewMessage(const SDataLine&) {}
    virtual void NewMessage(const SEvent&) {}
    virtual void NewMessage(const SRawBlock&) {}
    /// The solution to go by; of several at the same time, the best.
    virtual void NewMessage(const SSolution&) {}
    /// Another one beside it.
    virtual void SolutionPassedOver(const SSolution&) {}
    virtual void NewMessage(const SSky&) {}
    virtual void NewMessage(const SBase&) {}
    virtual void NewMessage(const SReference&) {}
    virtual void NewMessage(const SSentence&) {}
    virtual void NewMessage(const SGeoid&) {}
    virtual void NewMessage(const SDiagnostic&) {}
    virtual void NewMessage(const SActivity&) {}
    /// A category has been set anew.
    virtual void NewMessage(const SCategory&) {}
    /// A program's connection has ended.
    virtual void ProcessGone(TProcess) {}
    /// A notification was wrong and is not handed on.
    virtual void MessageRefused() {}
    /// Once a pass of the main loop, after its messages.
    virtual void EndPass() {}
};

} // namespace Hub
