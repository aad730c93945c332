#include "platform/SocketCollection.h"

#include <algorithm>
#include <cstddef>

void SocketCollectionC::Add(SocketC* socket) {
    m_sockets.push_back(socket);
}

void SocketCollectionC::Remove(SocketC* socket) {
    std::erase(m_sockets, socket);
}

int SocketCollectionC::AddToSets(fd_set& readSet, fd_set& writeSet) const {
    int highest = -1;
    for (const SocketC* socket : m_sockets) {
        const int descriptor = socket->Descriptor();
        if (descriptor < 0 || descriptor >= FD_SETSIZE) {
            continue;
        }
        if (socket->WantsToRead()) {
            FD_SET(descriptor, &readSet);
        }
        if (socket->WantsToWrite()) {
            FD_SET(descriptor, &writeSet);
        }
        highest = std::max(highest, descriptor);
    }
    return highest;
}

void SocketCollectionC::Service(const fd_set& readSet, const fd_set& writeSet) {
    // By index: serving one socket may add others.
    for (std::size_t i = 0; i < m_sockets.size(); ++i) {
        SocketC* const socket = m_sockets[i];
        const int descriptor = socket->Descriptor();
        const bool fits = descriptor >= 0 && descriptor < FD_SETSIZE;
        socket->Service(fits && FD_ISSET(descriptor, &readSet),
                        fits && FD_ISSET(descriptor, &writeSet));
    }
    for (std::size_t i = 0; i < m_sockets.size(); ++i) {
        m_sockets[i]->AfterService();
    }
}

int SocketCollectionC::WaitAndService(const timespec& longest, const sigset_t& blocked) {
    fd_set readSet;
    fd_set writeSet;
    FD_ZERO(&readSet);
    FD_ZERO(&writeSet);
    const int highest = AddToSets(readSet, writeSet);
    const int ready = pselect(highest + 1, &readSet, &writeSet, nullptr, &longest, &blocked);
    if (ready >= 0) { // else the sets say nothing
        Service(readSet, writeSet);
    }
    return ready;
}

void SocketCollectionC::EndPass() {
    for (std::size_t i = 0; i < m_sockets.size(); ++i) {
        m_sockets[i]->EndPass();
    }
}
