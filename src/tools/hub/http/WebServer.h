// The web server: dashboard, JSON interface, live stream, metrics.
#pragma once

#include "hub/Reply.h"
#include "hub/Settings.h"
#include "hub/http/Frames.h"
#include "hub/http/Gate.h"

#include <atomic>
#include <functional>
#include <httplib.h>
#include <map>
#include <string>
#include <thread>

namespace Hub {

class CBoundedStream;

/// Serves in threads of its own until it is destroyed. It reads finished texts alone, so that
/// nothing that a client does delays the main loop.
class CWebServer : private httplib::Server {
public:
    static constexpr std::size_t kMostStreams = 128;

    using TParameters = std::multimap<std::string, std::string>;
    /// Answers what is asked of the history: the path behind "/api/history/" and the parameters.
    /// Called by several threads at once.
    using THistory = std::function<SReply(const std::string& what, const TParameters&)>;

    /// The frames outlive it.
    CWebServer(const SSettings& settings, CFrames& frames, THistory history);
    ~CWebServer() override;

    /// Begins to serve; an address that cannot be had now is tried again every 10 s, and `report`
    /// is told why, once for each reason. It may be called by another thread.
    void Start(std::function<void(const std::string&)> report);
    /// 0 until it listens.
    int Port() const { return m_port; }

private:
    bool process_and_close_socket(socket_t descriptor) override;
    bool ServeRequest(CBoundedStream& stream, bool isLast);

    void AddRoutes();
    void AddAssets();
    void AddFrame(const std::string& path, CFrames::EFrame frame, const char* type);
    void AnswerHealth(httplib::Response& response) const;
    void AnswerHistory(const httplib::Request& request, httplib::Response& response) const;
    void BeginStream(httplib::Response& response);
    bool SendFrames(CFrames::SNumbers& seen, httplib::DataSink& sink) const;
    void Run(const std::function<void(const std::string&)>& report);
    bool Listen(std::string& reason);

    std::string m_listen;
    int m_wantedPort;
    CFrames& m_frames;
    THistory m_history;
    CGate m_gate;
    std::atomic<int> m_port = 0;
    std::atomic<std::size_t> m_streams = 0;
    std::atomic<bool> m_isCrowded = false;
    std::atomic<bool> m_hasRunEnded = true;
    std::thread m_thread;
};

} // namespace Hub
