// A program that is connected to a logical port.
#pragma once

#include "mux/Line.h"
#include "platform/SocketCollection.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Mux {

class CClient : public SocketC {
public:
    /// So much may wait for one that reads slowly.
    static constexpr std::size_t kMaxWaiting = std::size_t{1024} * 1024;
    /// How much one read takes at most.
    static constexpr std::size_t kReadSize = std::size_t{64} * 1024;

    /// Takes over the connection; it is read while the line has room.
    CClient(int descriptor, const CLine& line);
    ~CClient() override;
    CClient(const CClient&) = delete;
    CClient& operator=(const CClient&) = delete;

    /// "<process number> (<its program>)", as they were when it connected.
    const std::string& Name() const { return m_name; }

    /// Sends, now or as it reads. One for which too much waits then has ended.
    void Send(std::string_view bytes);

    /// How many bytes it has written that were not read yet.
    std::size_t BytesThere() const;
    /// Whether this pass found something to read; the end is something, too.
    bool IsReadable() const { return m_isReadable; }
    /// Reads up to `count` bytes; empty when there is none, and at the end.
    std::string Read(std::size_t count);

    bool HasEnded() const { return m_hasInputEnded && m_hasOutputEnded; }
    /// How many bytes were never sent to it, because it was too slow.
    std::size_t LostBytes() const { return m_lostBytes; }

    int Descriptor() const override { return m_descriptor; }
    bool WantsToRead() const override { return !m_hasInputEnded && !m_line.IsCongested(); }
    bool WantsToWrite() const override { return !m_hasOutputEnded && m_sent < m_waiting.size(); }
    void Service(bool readable, bool writable) override;

private:
    void Flush();
    void EndOutput();
    void NoticeHangUp();

    int m_descriptor;
    const CLine& m_line;
    std::string m_name;
    bool m_isReadable = false;
    bool m_hasInputEnded = false;
    bool m_hasOutputEnded = false;
    std::size_t m_lostBytes = 0;
    std::string m_waiting;
    std::size_t m_sent = 0; ///< bytes of those that have left
};

} // namespace Mux
