// Fuzzes the RPC service with what a client sends: lines, batches, calls of every method.
#include "Clock.h"
#include "Control/CommandManager.h"
#include "Control/SoftloadManager.h"
#include "JSONValue.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "RPC/NovatelMPIServer.h"
#include "ServedClient.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace {

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "Not so: %s\n", what);
        std::abort();
    }
}

/// What the methods work on, without a receiver; settings go to a file in memory.
struct SManagers {
    CConfig config{"/dev/shm/corvane-fuzz-" + std::to_string(getpid()) + ".conf"};
    CRemoteLogger logger{"Fuzz"};
    CReceiverStatusObserver receiverStatus;
};

SManagers& Managers() {
    static SManagers managers;
    return managers;
}

/// Both ends of a client's connection.
struct SPair {
    SPair() {
        Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()) == 0, "a pair");
    }
    ~SPair() { close(ends[1]); }

    std::array<int, 2> ends{}; ///< the first one is closed by the server's client
};

void ReadInto(std::string& text, int descriptor) {
    std::array<char, 65536> chunk;
    ssize_t count = 0;
    while ((count = read(descriptor, chunk.data(), chunk.size())) > 0) {
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

/// Answers all that has come, pass by pass, until nothing more will come; returns the answers.
std::string Serve(CServedClient& client, CNovatelMPIServer& server, const SPair& pair,
                  std::size_t size) {
    std::string answers;
    for (std::size_t steps = 0; !client.HasEnded(); ++steps) {
        Require(steps < 4 * size + 100, "every pass takes the client further");
        client.Service(true, true);
        server.AfterService(); // as at the beginning of a pass
        client.Step();
        client.Flush();
        Require(client.HeldBytes() < 8 * 1024 * 1024, "what a client holds is bounded");
        ReadInto(answers, pair.ends[1]);
    }
    return answers;
}

void RequireAnswers(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        Require(end != std::string_view::npos, "an answer is a whole line");
        Require(JSONValue::Check(text.substr(0, end)) == JSONValue::EFault::none,
                "an answer is JSON");
        text.remove_prefix(end + 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Core::ClockHooks().sleep = [](Core::Time) {};
    Managers();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SPair pair;
    CCommandManager commands(Managers().config);
    SoftloadManager upgrade(nullptr, Managers().logger);
    SocketCollectionC sockets;
    CNovatelMPIServer server(sockets, &commands, &upgrade, &Managers().receiverStatus);
    CServedClient client(pair.ends[0], server);
    Require(write(pair.ends[1], data, size) == static_cast<ssize_t>(size), "the input fits");
    shutdown(pair.ends[1], SHUT_WR);
    RequireAnswers(Serve(client, server, pair, size));
    return 0;
}
