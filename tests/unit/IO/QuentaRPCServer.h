// The multiplexer's remote procedure calls as a test plays them.
#pragma once

#include "JSONValue.h"
#include "platform/ScriptedServer.h"

#include <mutex>
#include <string>
#include <vector>

/// Answers every request with the same result, given as JSON, and keeps what was asked.
class CQuentaRPCServer {
public:
    explicit CQuentaRPCServer(std::string result)
        : m_result(std::move(result)), m_server([this](CScriptedPeer& peer) { Converse(peer); }) {}

    std::uint16_t Port() const { return m_server.Port(); }

    /// What is answered from now on.
    void SetResult(const std::string& result) {
        const std::lock_guard lock(m_mutex);
        m_result = result;
    }

    /// Each request as `<method><params>`, such as "GetPortConfig[50]".
    std::vector<std::string> Requests() {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    void Converse(CScriptedPeer& peer) {
        for (std::string line = peer.ReadLine(); !line.empty(); line = peer.ReadLine()) {
            const BAtomC request = JSONValue::Read(line).value_or(BAtomC());
            if (const BDictionaryC* members = request.AsDictionary()) {
                peer.Send(Answer(*members));
            }
        }
    }

    std::string Answer(const BDictionaryC& request) {
        const std::lock_guard lock(m_mutex);
        std::string asked = *request.Find("method")->AsText();
        JSONValue::Append(asked, *request.Find("params"));
        m_requests.push_back(asked);
        std::string answer = R"({"jsonrpc":"2.0","id":)";
        JSONValue::Append(answer, *request.Find("id"));
        return answer + ",\"result\":" + m_result + "}\n";
    }

    std::mutex m_mutex;
    std::string m_result;
    std::vector<std::string> m_requests;
    CScriptedServer m_server;
};
