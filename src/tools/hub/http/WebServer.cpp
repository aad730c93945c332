#include "hub/http/WebServer.h"

#include "hub/http/Assets.h"
#include "hub/http/BoundedStream.h"
#include "hub/http/ConnectionThreads.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace Hub {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kListenRetry{10'000};
constexpr milliseconds kLook{100};
constexpr milliseconds kBeginning{1};
/// A stream says so much at least, which finds out clients that are gone.
constexpr milliseconds kStreamPulse{1000};
/// Over one connection; then the client makes another one.
constexpr int kMostRequests = 1000;
/// Connections that wait to be accepted; more have to ask again a second later.
constexpr int kBacklog = 128;
/// What a stream writes at once: a client that does not read holds no more.
constexpr std::size_t kPiece = std::size_t{16} * 1024;
/// The main loop makes frames five times a second; one that has not for so long hangs.
constexpr double kHungAfter = 5.0;

constexpr char kJSON[] = "application/json";
constexpr char kPlain[] = "text/plain; charset=utf-8";

const httplib::Headers& DefaultHeaders() {
    static const httplib::Headers headers = {
        {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'; base-uri 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
        {"Cross-Origin-Resource-Policy", "same-origin"},
        {"Cache-Control", "no-store"},
    };
    return headers;
}

/// Not SO_REUSEPORT, the library's own choice, with which a second hub would take half of the
/// connections and nobody would be told.
void SetListenerOptions(socket_t descriptor) {
    const int on = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

bool HasBody(const httplib::Request& request) {
    return request.has_header("Content-Length") || request.has_header("Transfer-Encoding");
}

bool IsRead(const httplib::Request& request) {
    return request.method == "GET" || request.method == "HEAD";
}

/// An address of IPv6 stands in brackets in a URL.
std::string InURL(const std::string& host) {
    return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

} // namespace

CWebServer::CWebServer(const SSettings& settings, CFrames& frames, THistory history)
    : m_listen(settings.httpListen),
      m_wantedPort(settings.httpPort),
      m_frames(frames),
      m_history(std::move(history)),
      m_gate(settings.httpToken, settings.httpListen, settings.httpNames) {
    new_task_queue = [this] { return new CConnectionThreads(m_isCrowded); };
    set_default_headers(DefaultHeaders());
    set_tcp_nodelay(true);
    set_socket_options(SetListenerOptions);
    set_keep_alive_max_count(kMostRequests);
    set_keep_alive_timeout(CBoundedStream::kIdleTime.count());
    set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        using enum HandlerResponse;
        if (!m_gate.LetIn(request, response)) {
            return Handled;
        }
        if (!IsRead(request)) {
            response.status = 405;
            response.set_header("Allow", "GET, HEAD");
            response.set_content("There is nothing to change here.\n", kPlain);
            return Handled;
        }
        return Unhandled;
    });
    set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (response.body.empty()) {
            response.set_content(response.status == 404 ? "There is no such page.\n"
                                                        : "The request could not be answered.\n",
                                 kPlain);
        }
    });
    AddRoutes();
}

CWebServer::~CWebServer() {
    m_frames.End();
    while (!m_hasRunEnded && !is_running()) {
        std::this_thread::sleep_for(kBeginning); // until it can be stopped
    }
    stop();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CWebServer::AddRoutes() {
    AddAssets();
    AddFrame("/api/live", CFrames::live, kJSON);
    AddFrame("/api/panel", CFrames::panel, kJSON);
    AddFrame("/metrics", CFrames::metrics, "text/plain; version=0.0.4; charset=utf-8");
    Get("/healthz",
        [this](const httplib::Request&, httplib::Response& response) { AnswerHealth(response); });
    Get("/api/stream",
        [this](const httplib::Request&, httplib::Response& response) { BeginStream(response); });
    Get("/api/history/(\\w+)",
        [this](const httplib::Request& request, httplib::Response& response) {
            AnswerHistory(request, response);
        });
}

void CWebServer::AddAssets() {
    for (const SAsset& asset : Assets()) {
        Get(std::string(asset.path),
            [&asset](const httplib::Request&, httplib::Response& response) {
                response.set_content(asset.content.data(), asset.content.size(),
                                     std::string(asset.type));
                if (asset.type.starts_with("image/")) {
                    // A page that has lost its hub still shows so in its tab.
                    response.headers.erase("Cache-Control");
                    response.set_header("Cache-Control", "max-age=86400");
                }
            });
    }
}

void CWebServer::AddFrame(const std::string& path, CFrames::EFrame frame, const char* type) {
    Get(path, [this, frame, type](const httplib::Request&, httplib::Response& response) {
        response.set_content(*m_frames.Get(frame), type);
    });
}

void CWebServer::AnswerHealth(httplib::Response& response) const {
    const std::string why =
        m_frames.Age() > kHungAfter ? "The hub hangs" : *m_frames.Get(CFrames::health);
    response.status = why.empty() ? 200 : 503;
    response.set_content((why.empty() ? "ok" : why) + "\n", kPlain);
}

void CWebServer::AnswerHistory(const httplib::Request& request, httplib::Response& response) const {
    const SReply reply =
        m_history(request.matches[1], TParameters(request.params.begin(), request.params.end()));
    response.status = reply.status;
    response.set_content(reply.body, reply.status == 200 ? kJSON : kPlain);
}

void CWebServer::BeginStream(httplib::Response& response) {
    if (m_streams >= kMostStreams) {
        response.status = 503;
        response.set_header("Retry-After", "10");
        response.set_content("Too many pages are open already.\n", kPlain);
        return;
    }
    ++m_streams;
    auto seen = std::make_shared<CFrames::SNumbers>();
    response.set_chunked_content_provider(
        "text/event-stream",
        [this, seen](std::size_t, httplib::DataSink& sink) { return SendFrames(*seen, sink); },
        [this](bool) { --m_streams; });
}

bool CWebServer::SendFrames(CFrames::SNumbers& seen, httplib::DataSink& sink) const {
    const CFrames::SNumbers numbers = m_frames.WaitForNew(seen, kStreamPulse);
    if (m_frames.HasEnded()) {
        sink.done();
        return true;
    }
    const auto send = [&](std::string_view text) {
        bool isSent = true;
        for (std::size_t i = 0; i < text.size() && isSent; i += kPiece) {
            const std::string_view piece = text.substr(i, kPiece);
            isSent = sink.write(piece.data(), piece.size());
        }
        return isSent;
    };
    const auto sendEvent = [&](std::string_view head, CFrames::EFrame frame) {
        const CFrames::TText text = m_frames.Get(frame);
        return send(head) && send(*text) && send("\n\n");
    };
    bool isSent = true;
    if (numbers == seen) {
        isSent = send(":\n\n"); // a comment, which clients ignore
    }
    if (numbers.live != seen.live) {
        isSent = isSent && sendEvent("event: live\ndata: ", CFrames::live);
    }
    if (numbers.panel != seen.panel) {
        isSent = isSent && sendEvent("event: panel\ndata: ", CFrames::panel);
    }
    seen = numbers;
    return isSent;
}

bool CWebServer::process_and_close_socket(socket_t descriptor) {
    CBoundedStream stream(descriptor, [this] { return m_frames.HasEnded(); });
    int left = kMostRequests;
    while (stream.WaitForRequest([this] { return m_isCrowded.load(); })) {
        --left;
        if (!ServeRequest(stream, left == 0)) {
            stream.BidFarewell();
            break;
        }
    }
    ::shutdown(descriptor, SHUT_RDWR);
    ::close(descriptor);
    return true;
}

/// Whether another request may follow. None may when it is unknown where this one ends: else a web
/// page from elsewhere could hide a request in its own one's body, past the gate.
bool CWebServer::ServeRequest(CBoundedStream& stream, bool isLast) {
    bool isClosed = false;
    bool isUnderstood = false;
    const auto lookAt = [&](httplib::Request& request) {
        isUnderstood = true;
        request.ranges.clear(); // of which one request could ask for thousands
        if (HasBody(request) || !IsRead(request)) {
            isClosed = true;
            request.headers.erase("Connection");
            request.set_header("Connection", "close");
        }
    };
    return process_request(stream, isLast, isClosed, lookAt) && isUnderstood && !isClosed &&
           !isLast;
}

void CWebServer::Start(std::function<void(const std::string&)> report) {
    m_hasRunEnded = false;
    m_thread = std::thread([this, report = std::move(report)] {
        Run(report);
        m_hasRunEnded = true;
    });
}

bool CWebServer::Listen(std::string& reason) {
    errno = 0;
    const int port = m_wantedPort == 0                      ? bind_to_any_port(m_listen)
                     : bind_to_port(m_listen, m_wantedPort) ? m_wantedPort
                                                            : -1;
    if (port < 0) {
        reason = errno == 0 ? "not an address of this machine" : std::strerror(errno);
        return false;
    }
    ::listen(svr_sock_, kBacklog); // the library's own is five
    m_port = port;
    return true;
}

void CWebServer::Run(const std::function<void(const std::string&)>& report) {
    std::string told;
    while (!m_frames.HasEnded()) {
        std::string reason;
        if (Listen(reason)) {
            report("serving on http://" + InURL(m_listen) + ":" + std::to_string(m_port) + "/");
            listen_after_bind();
            m_port = 0;
            reason = "it was closed";
        }
        if (reason != told && !m_frames.HasEnded()) {
            told = reason;
            report("cannot listen on " + InURL(m_listen) + ":" + std::to_string(m_wantedPort) +
                   ": " + reason + "; trying again every 10 s");
        }
        const auto next = std::chrono::steady_clock::now() + kListenRetry;
        while (!m_frames.HasEnded() && std::chrono::steady_clock::now() < next) {
            std::this_thread::sleep_for(kLook);
        }
    }
}

} // namespace Hub
