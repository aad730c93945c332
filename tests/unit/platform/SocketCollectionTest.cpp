#include "platform/SocketCollection.h"

#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

class CFakeSocket : public SocketC {
public:
    CFakeSocket(int descriptor, bool wantsToWrite)
        : m_descriptor(descriptor), m_wantsToWrite(wantsToWrite) {}

    int Descriptor() const override { return m_descriptor; }
    bool WantsToRead() const override { return wantsToRead; }
    bool WantsToWrite() const override { return m_wantsToWrite; }
    void Service(bool readable, bool writable) override {
        ++services;
        wasReadable = readable;
        wasWritable = writable;
        log += name;
        if (onService) {
            onService();
        }
    }
    void AfterService() override { log += "after " + name; }
    void EndPass() override { ++endedPasses; }

    bool wantsToRead = true;
    std::string name;
    std::function<void()> onService;
    static inline std::string log; ///< what all of them were called for, in order
    int services = 0;
    int endedPasses = 0;
    bool wasReadable = false;
    bool wasWritable = false;

private:
    int m_descriptor;
    bool m_wantsToWrite;
};

class SocketCollection : public testing::Test {
protected:
    SocketCollection() {
        FD_ZERO(&m_readSet);
        FD_ZERO(&m_writeSet);
        CFakeSocket::log.clear();
    }

    SocketCollectionC m_collection;
    fd_set m_readSet;
    fd_set m_writeSet;
};

} // namespace

TEST_F(SocketCollection, has_no_highest_descriptor_when_it_is_empty) {
    EXPECT_EQ(m_collection.AddToSets(m_readSet, m_writeSet), -1);
}

TEST_F(SocketCollection, watches_every_member_for_reading_and_writers_for_writing) {
    CFakeSocket reader(5, false);
    CFakeSocket writer(3, true);
    m_collection.Add(&reader);
    m_collection.Add(&writer);
    EXPECT_EQ(m_collection.AddToSets(m_readSet, m_writeSet), 5);
    EXPECT_TRUE(FD_ISSET(5, &m_readSet));
    EXPECT_TRUE(FD_ISSET(3, &m_readSet));
    EXPECT_FALSE(FD_ISSET(5, &m_writeSet));
    EXPECT_TRUE(FD_ISSET(3, &m_writeSet));
}

TEST_F(SocketCollection, leaves_out_what_has_no_descriptor_or_does_not_fit_a_set) {
    CFakeSocket absent(-1, true);
    CFakeSocket tooHigh(FD_SETSIZE, true);
    m_collection.Add(&absent);
    m_collection.Add(&tooHigh);
    EXPECT_EQ(m_collection.AddToSets(m_readSet, m_writeSet), -1);
    m_collection.Service(m_readSet, m_writeSet);
    EXPECT_EQ(tooHigh.services, 1);
    EXPECT_FALSE(tooHigh.wasReadable);
}

TEST_F(SocketCollection, serves_every_member_once_a_pass_ready_or_not) {
    CFakeSocket ready(4, false);
    CFakeSocket idle(6, true);
    m_collection.Add(&ready);
    m_collection.Add(&idle);
    FD_SET(4, &m_readSet);
    FD_SET(6, &m_writeSet);
    m_collection.Service(m_readSet, m_writeSet);
    EXPECT_EQ(ready.services, 1);
    EXPECT_TRUE(ready.wasReadable);
    EXPECT_FALSE(ready.wasWritable);
    EXPECT_EQ(idle.services, 1);
    EXPECT_FALSE(idle.wasReadable);
    EXPECT_TRUE(idle.wasWritable);
}

TEST_F(SocketCollection, tells_members_the_end_of_a_pass_until_they_are_removed) {
    CFakeSocket socket(4, false);
    m_collection.Add(&socket);
    m_collection.EndPass();
    m_collection.Remove(&socket);
    m_collection.EndPass();
    EXPECT_EQ(socket.endedPasses, 1);
    EXPECT_EQ(m_collection.AddToSets(m_readSet, m_writeSet), -1);
}

TEST_F(SocketCollection, does_not_watch_for_reading_who_does_not_want_to_read) {
    CFakeSocket writer(3, true);
    CFakeSocket neither(5, false);
    writer.wantsToRead = false;
    neither.wantsToRead = false;
    m_collection.Add(&writer);
    m_collection.Add(&neither);
    m_collection.AddToSets(m_readSet, m_writeSet);
    for (const int descriptor : {3, 5}) {
        EXPECT_FALSE(FD_ISSET(descriptor, &m_readSet));
    }
    EXPECT_TRUE(FD_ISSET(3, &m_writeSet));
    EXPECT_FALSE(FD_ISSET(5, &m_writeSet));
}

TEST_F(SocketCollection, lets_members_share_out_work_when_all_have_been_served) {
    CFakeSocket first(4, false);
    CFakeSocket second(-1, false);
    first.name = "1 ";
    second.name = "2 ";
    m_collection.Add(&first);
    m_collection.Add(&second);
    m_collection.Service(m_readSet, m_writeSet);
    EXPECT_EQ(CFakeSocket::log, "1 2 after 1 after 2 ");
}

TEST_F(SocketCollection, serves_a_member_that_joins_while_another_is_served) {
    CFakeSocket first(4, false);
    CFakeSocket joining(6, false);
    first.name = "1 ";
    joining.name = "2 ";
    first.onService = [&] { m_collection.Add(&joining); };
    m_collection.Add(&first);
    m_collection.Service(m_readSet, m_writeSet);
    EXPECT_EQ(CFakeSocket::log, "1 2 after 1 after 2 ");
    EXPECT_FALSE(joining.wasReadable);
}

TEST(SocketCollectionWaiting, waits_until_a_member_is_ready_and_serves_it) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], "x", 1), 1);
    CFakeSocket socket(ends[0], false);
    SocketCollectionC sockets;
    sockets.Add(&socket);
    sigset_t none;
    sigemptyset(&none);
    EXPECT_EQ(sockets.WaitAndService({60, 0}, none), 1);
    EXPECT_TRUE(socket.wasReadable);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(SocketCollectionWaiting, serves_its_members_also_when_none_has_become_ready) {
    CFakeSocket socket(-1, false);
    SocketCollectionC sockets;
    sockets.Add(&socket);
    sigset_t none;
    sigemptyset(&none);
    EXPECT_EQ(sockets.WaitAndService({0, 1'000'000}, none), 0);
    EXPECT_EQ(socket.services, 1);
    EXPECT_FALSE(socket.wasReadable);
}

TEST(SocketCollectionWaiting, serves_nobody_when_a_signal_comes_while_it_waits) {
    CFakeSocket socket(-1, false);
    SocketCollectionC sockets;
    sockets.Add(&socket);
    sigset_t wanted;
    sigset_t before;
    sigemptyset(&wanted);
    sigaddset(&wanted, SIGUSR1);
    ::sigprocmask(SIG_BLOCK, &wanted, &before);
    struct sigaction caught {};
    struct sigaction usual {};
    caught.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &caught, &usual);
    std::raise(SIGUSR1);
    EXPECT_LT(sockets.WaitAndService({60, 0}, before), 0);
    EXPECT_EQ(socket.services, 0);
    ::sigaction(SIGUSR1, &usual, nullptr);
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
}
