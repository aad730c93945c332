// Calls a server of remote procedures as fast as it answers, and tells how long answers took; or is
// the bare server that the daemon is compared with, which sends back what comes.
//
//   bench_rpc load PORT CLIENTS SECONDS    prints: calls a second, median and 99th percentile in us
//   bench_rpc echo PORT                    serves until it is killed
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kRequest =
    "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"novatel_GetSBASPRN\",\"params\":[]}\n";

[[noreturn]] void Fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

sockaddr_in Address(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void Watch(int poll, int descriptor) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    if (epoll_ctl(poll, EPOLL_CTL_ADD, descriptor, &event) != 0) {
        Fail("epoll_ctl");
    }
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

int Connect(int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = Address(port);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        Fail("connect");
    }
    return descriptor;
}

void Ask(int descriptor) {
    if (write(descriptor, kRequest.data(), kRequest.size()) !=
        static_cast<ssize_t>(kRequest.size())) {
        Fail("write");
    }
}

/// One call at a time for each client: the next one when the answer is there.
void Load(int port, int clients, double seconds) {
    const int poll = epoll_create1(0);
    std::vector<Clock::time_point> asked(4096);
    std::vector<double> latencies;
    std::vector<int> descriptors;
    for (int i = 0; i < clients; ++i) {
        descriptors.push_back(Connect(port));
        Watch(poll, descriptors.back());
    }
    const auto start = Clock::now();
    for (const int descriptor : descriptors) {
        asked.at(static_cast<std::size_t>(descriptor)) = Clock::now();
        Ask(descriptor);
    }
    std::array<epoll_event, 256> events;
    std::array<char, 4096> answer;
    const auto elapsed = [&] {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    while (elapsed() < seconds) {
        const int ready = epoll_wait(poll, events.data(), static_cast<int>(events.size()), 1000);
        for (int i = 0; i < ready; ++i) {
            const int descriptor = events.at(static_cast<std::size_t>(i)).data.fd;
            const ssize_t count = read(descriptor, answer.data(), answer.size());
            if (count <= 0) {
                Fail("read");
            }
            if (answer.at(static_cast<std::size_t>(count - 1)) != '\n') {
                continue;
            }
            auto& since = asked.at(static_cast<std::size_t>(descriptor));
            latencies.push_back(
                std::chrono::duration<double, std::micro>(Clock::now() - since).count());
            since = Clock::now();
            Ask(descriptor);
        }
    }
    std::sort(latencies.begin(), latencies.end());
    const auto at = [&](double part) {
        return latencies.at(static_cast<std::size_t>(part * static_cast<double>(latencies.size())));
    };
    std::printf("%.0f %.1f %.1f\n", static_cast<double>(latencies.size()) / elapsed(), at(0.5),
                at(0.99));
}

void Echo(int port) {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = Address(port);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 128) != 0) {
        Fail("listen");
    }
    const int poll = epoll_create1(0);
    Watch(poll, listener);
    std::array<epoll_event, 256> events;
    std::array<char, 4096> bytes;
    while (true) {
        const int ready = epoll_wait(poll, events.data(), static_cast<int>(events.size()), -1);
        for (int i = 0; i < ready; ++i) {
            const int descriptor = events.at(static_cast<std::size_t>(i)).data.fd;
            if (descriptor == listener) {
                Watch(poll, accept(listener, nullptr, nullptr));
                continue;
            }
            const ssize_t count = read(descriptor, bytes.data(), bytes.size());
            if (count <= 0 ||
                write(descriptor, bytes.data(), static_cast<std::size_t>(count)) < 0) {
                close(descriptor);
            }
        }
    }
}

} // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 4 && arguments[0] == "load") {
        Load(std::atoi(arguments[1].c_str()), std::atoi(arguments[2].c_str()),
             std::atof(arguments[3].c_str()));
        return 0;
    }
    if (arguments.size() == 2 && arguments[0] == "echo") {
        Echo(std::atoi(arguments[1].c_str()));
    }
    std::fprintf(stderr, "usage: bench_rpc load PORT CLIENTS SECONDS | echo PORT\n");
    return 2;
}
