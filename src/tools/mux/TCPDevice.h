// A TCP peer as a port's device: a terminal server, or a receiver on the network.
#pragma once

#include "mux/Device.h"
#include "mux/DeviceName.h"
#include "mux/NameLookup.h"
#include "platform/Time.h"
#include "platform/WriteTail.h"

namespace Mux {

/// It has no speed; one that is set is kept, for whoever asks.
class CTCPDevice : public CDevice {
public:
    /// How long a peer may take to answer the call.
    static constexpr Core::Time kConnectLimit = Core::Time::FromMilliseconds(5000);

    CTCPDevice(std::string name, STCPAddress address, std::int32_t baud);
    ~CTCPDevice() override { Close(); }
    CTCPDevice(const CTCPDevice&) = delete;
    CTCPDevice& operator=(const CTCPDevice&) = delete;

    /// Tries each of the host's addresses before it fails; the next attempt looks them up again.
    EOpening Open() override;
    bool IsOpen() const override { return m_isOpen; }
    int Descriptor() const override { return m_descriptor; }
    bool WantsToWrite() const override;

    std::string Read() override;
    bool Write(const std::string& bytes) override;
    void ContinueWriting() override;
    std::size_t WaitingBytes() const override { return m_tail.Size(); }

    bool SetBaudRate(std::int32_t baud) override;
    std::int32_t BaudRate() const override { return m_baud; }

    const std::string& LastError() const override { return m_lastError; }

private:
    void Close();
    void Lose(const std::string& reason);
    EOpening Fail(const std::string& reason);
    EOpening ConnectToNext();
    EOpening FinishConnecting();
    EOpening TryNext(const std::string& reason);
    bool HasTaken(Core::IO::WriteTail::EResult result);

    std::string m_name;
    STCPAddress m_address;
    std::int32_t m_baud;
    CNameLookup m_lookup;
    bool m_isLookingUp = false;
    std::size_t m_nextAddress = 0;
    int m_descriptor = -1;
    bool m_isOpen = false; ///< a descriptor without it is being connected
    Core::MonotonicTime m_deadline;
    Core::IO::WriteTail m_tail;
    std::string m_lastError;
};

} // namespace Mux
