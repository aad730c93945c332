// The sockets that the main loop serves beside the receiver's ports.
#pragma once

#include <csignal>
#include <ctime>
#include <sys/select.h>
#include <vector>

/// One socket, or one that comes and goes, in the main loop. Nothing in it may wait.
class SocketC {
public:
    virtual ~SocketC() = default;

    /// The descriptor to watch, -1 while there is none.
    virtual int Descriptor() const = 0;
    /// Whether the descriptor belongs in the read set now.
    virtual bool WantsToRead() const { return true; }
    /// Whether the descriptor belongs in the write set now.
    virtual bool WantsToWrite() const = 0;
    /// Called once a pass, ready or not, so that timers run.
    virtual void Service(bool readable, bool writable) = 0;
    /// Called once a pass when every member has been served: work that they share out.
    virtual void AfterService() {}
    /// Called at the end of each pass: what the pass produced may leave now.
    virtual void EndPass() {}
};

/// The collection itself; it does not own its members.
class SocketCollectionC {
public:
    void Add(SocketC* socket);
    void Remove(SocketC* socket);

    /// Adds every member's descriptor to the sets; returns the highest, -1 when there is none.
    /// A descriptor that does not fit a set (FD_SETSIZE and above) is left out.
    int AddToSets(fd_set& readSet, fd_set& writeSet) const;

    /// Serves every member, telling it what the sets say of its descriptor.
    void Service(const fd_set& readSet, const fd_set& writeSet);

    /// For a program that has nothing else to wait for: waits until a member is ready, at most so
    /// long, with only these signals blocked, and serves every member. Returns how many were ready;
    /// a negative number, and nobody was served, when a signal has come.
    int WaitAndService(const timespec& longest, const sigset_t& blocked);

    void EndPass();

private:
    std::vector<SocketC*> m_sockets;
};
