// Fuzzes the hub's services with what programs publish, and what is shown of it.
#include "Clock.h"
#include "JSONValue.h"
#include "ServedClient.h"
#include "hub/http/Metrics.h"
#include "hub/services/ServicesServer.h"
#include "hub/state/Presentation.h"

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

/// They go to a file in memory; each input finds those that the ones before have set.
Hub::CCategories& Categories() {
    static Hub::CCategories categories("/dev/shm/corvane-fuzz-hub-" + std::to_string(getpid()) +
                                       ".conf");
    return categories;
}

/// Both ends of a program's connection.
struct SPair {
    SPair() {
        Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()) == 0, "a pair");
    }
    ~SPair() { close(ends[1]); }

    std::array<int, 2> ends{}; ///< the first one is closed by the server's client
};

void Drain(int descriptor) {
    std::array<char, 65536> chunk;
    while (read(descriptor, chunk.data(), chunk.size()) > 0) {
    }
}

/// Takes all that has come, pass by pass, until nothing more will come.
void Serve(CServedClient& client, Hub::CServicesServer& server, const SPair& pair,
           std::size_t size) {
    for (std::size_t steps = 0; !client.HasEnded(); ++steps) {
        Require(steps < 4 * size + 100, "every pass takes the client further");
        client.Service(true, true);
        server.AfterService(); // as at the beginning of a pass
        client.Step();
        client.Flush();
        Drain(pair.ends[1]);
    }
}

void RequireJSONLine(const std::string& text) {
    Require(text.find('\n') == std::string::npos, "a frame is one line");
    Require(JSONValue::Check(text) == JSONValue::EFault::none, "a frame is JSON");
}

/// Every line of it is a comment or a name, labels in braces if any, and a number.
void RequireMetrics(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        Require(end != std::string_view::npos, "the metrics end with a whole line");
        const std::string_view line = text.substr(0, end);
        if (!line.starts_with("# ")) {
            const std::string number(line.substr(line.rfind(' ') + 1));
            char* rest = nullptr;
            std::strtod(number.c_str(), &rest);
            Require(line.starts_with("corvane_") && !number.empty() && *rest == '\0', "a sample");
        }
        text.remove_prefix(end + 1);
    }
}

void RequireBounds(const Hub::CState& state) {
    std::size_t bytes = 0;
    for (const auto& [key, kept] : state.Statuses()) {
        bytes += key.first.size() + key.second.size() + kept.message.value.size();
    }
    Require(bytes <= Hub::CState::kMostStatusBytes, "the statuses are bounded");
    Require(state.Events().size() <= Hub::CState::kMostEvents, "the events are bounded");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Core::ClockHooks().unix = [] { return Core::Time::FromSeconds(1'763'834'800.0); };
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    SPair pair;
    Hub::CState state;
    SocketCollectionC sockets;
    Hub::CServicesServer server(sockets, Categories(), {&state});
    CServedClient client(pair.ends[0], server);
    Require(write(pair.ends[1], data, size) == static_cast<ssize_t>(size), "the input fits");
    shutdown(pair.ends[1], SHUT_WR);
    Serve(client, server, pair, size);

    const Hub::SNow now = Hub::SNow::Get();
    RequireJSONLine(Hub::LiveText(state, now));
    RequireJSONLine(Hub::PanelText(state, now, 1.0));
    RequireMetrics(Hub::MetricsText(state, now, 1.0));
    RequireBounds(state);
    return 0;
}
