// A services' end of the link for unit tests: listens on a port of its own and keeps what it reads.
#pragma once

#include <string>
#include <vector>

class CTestHub {
public:
    /// Listens on a free port of 127.0.0.1.
    CTestHub();
    ~CTestHub();
    CTestHub(const CTestHub&) = delete;
    CTestHub& operator=(const CTestHub&) = delete;

    int Port() const { return m_port; }

    /// Accepts a client that is there, and reads what is there.
    void Serve();
    /// The same until the client has closed its side, waiting for it.
    void ServeUntilTheEnd();
    void SetReading(bool isReading) { m_isReading = isReading; }
    void Send(const std::string& line);
    /// Closes the client's connection; what was not read is lost.
    void Hangup();
    /// The client is never accepted any more.
    void StopListening();

    bool HasClient() const { return m_client >= 0; }
    bool ClientHasClosed() const { return m_clientClosed; }
    const std::vector<std::string>& Lines() const { return m_lines; }
    /// The "value" or "text" members of the lines of one method, in order.
    std::vector<std::string> Texts(const std::string& method) const;
    /// How many lines of the method arrived.
    int Count(const std::string& method) const;

private:
    void Take(const char* bytes, std::size_t count);

    struct SMessage {
        std::string method;
        std::string text;
    };

    int m_listener = -1;
    int m_client = -1;
    int m_port = 0;
    bool m_isReading = true;
    bool m_clientClosed = false;
    std::string m_partialLine;
    std::vector<std::string> m_lines;
    std::vector<SMessage> m_messages; ///< of the lines, parsed as they came
};
