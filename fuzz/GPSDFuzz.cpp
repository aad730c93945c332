// Fuzzes the hub's gpsd server with what a client sends: commands and policies, whole and broken.
#include "JSONValue.h"
#include "hub/gpsd/GPSDServer.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Hub::CGPSDServer;
using Hub::GPSD::CClient;

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "Not so: %s\n", what);
        std::abort();
    }
}

/// Both ends of a client's connection.
struct SPair {
    SPair() {
        Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()) == 0, "a pair");
    }
    ~SPair() { close(ends[1]); }

    std::array<int, 2> ends{}; ///< the first one is closed by the server's client
};

/// So that there is something to be told.
void Publish(CGPSDServer& server) {
    const double now = Core::UnixTime::Now().AsSeconds();
    Hub::SSolution solution;
    solution.time = now;
    solution.data.x = 6378137.0;
    solution.data.positionQuality = 1;
    server.NewMessage(solution);
    Hub::SSky sky;
    sky.time = now;
    sky.channels = {{7, 0, 0, 40.0}, {38, 0, 0, 41.0}};
    server.NewMessage(sky);
}

void ReadInto(std::string& text, int descriptor) {
    std::array<char, 65536> chunk;
    ssize_t count = 0;
    while ((count = read(descriptor, chunk.data(), chunk.size())) > 0) {
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

/// Answers all that has come, pass by pass, until nothing more will come; returns the answers.
std::string Serve(CClient& client, const SPair& pair, std::size_t size) {
    std::string answers;
    for (std::size_t steps = 0; !client.HasEnded(); ++steps) {
        Require(steps < 4 * size + 100, "every pass takes the client further");
        client.Service(true, true);
        if (client.HasWork()) {
            client.Step();
        }
        client.Flush();
        Require(client.HeldBytes() < 256 * 1024, "what a client holds is bounded");
        ReadInto(answers, pair.ends[1]);
    }
    return answers;
}

void RequireReports(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find("\r\n");
        Require(end != std::string_view::npos, "a report is a whole line");
        Require(JSONValue::Check(text.substr(0, end)) == JSONValue::EFault::none,
                "a report is JSON");
        Require(text.starts_with("{\"class\":\""), "a report has a class");
        text.remove_prefix(end + 2);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SPair pair;
    SocketCollectionC sockets;
    CGPSDServer server(sockets);
    Publish(server);
    CClient client(pair.ends[0], server);
    Require(write(pair.ends[1], data, size) == static_cast<ssize_t>(size), "the input fits");
    shutdown(pair.ends[1], SHUT_WR);
    RequireReports(Serve(client, pair, size));
    return 0;
}
