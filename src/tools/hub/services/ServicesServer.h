// The services that programs publish to: takes their messages and hands them to the observers.
#pragma once

#include "hub/Observer.h"
#include "hub/services/Categories.h"
#include "hub/services/SolutionChoice.h"
#include "platform/MPISocketServer.h"

#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace Hub {

/// Checks every message; a wrong one is answered when it is a request, and counted when not. What
/// it takes it hands to each observer, in the order in which messages came.
class CServicesServer : public MPISocketServerC {
public:
    /// All that is named here outlives it.
    CServicesServer(SocketCollectionC& sockets, CCategories& categories,
                    std::vector<CHubObserver*> observers);

    template <class T>
    void HandOn(T message) {
        if constexpr (std::is_base_of_v<SMessage, T>) {
            message.sender = Sender();
        }
        if constexpr (std::is_same_v<T, SSolution>) {
            if (!m_choice.Takes(message)) {
                PassOver(message);
                return;
            }
        }
        for (CHubObserver* const observer : m_observers) {
            observer->NewMessage(message);
        }
    }
    CCategories& Categories() { return m_categories; }

    void RequestRefused() override;

protected:
    void ConnectionClosed(MPISocketConnectionC& connection) override;

private:
    TProcess Sender();
    void PassOver(const SSolution& solution);

    CCategories& m_categories;
    std::vector<CHubObserver*> m_observers;
    CSolutionChoice m_choice;
    std::map<const MPISocketConnectionC*, TProcess> m_senders;
    TProcess m_lastSender = 0;
};

} // namespace Hub
