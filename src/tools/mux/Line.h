// The device of a logical port, opened again whenever it has been away.
#pragma once

#include "mux/Device.h"
#include "mux/LateBytes.h"
#include "platform/SocketCollection.h"
#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace Mux {

/// What becomes of the device, and which bytes are dropped, is told on standard error, once for
/// each change.
class CLine : public SocketC {
public:
    static constexpr Core::Time kRetry = Core::Time::FromMilliseconds(500);
    /// While so many bytes wait for the device, its clients are not read.
    static constexpr std::size_t kCongestion = Core::IO::WriteTail::kCapacity / 2;
    /// Dropped bytes are told at most so often.
    static constexpr Core::Time kDropsTold = Core::Time::FromMilliseconds(10'000);

    using TDeliver = std::function<void(std::string_view)>;

    /// `label` begins each line on standard error; `deliver` gets what the device sends.
    CLine(std::string label, const std::string& device, std::int32_t baud, TDeliver deliver);

    /// Takes it whole, or drops it whole. While the device is away it is kept for a short while.
    void Write(const std::string& piece);
    bool IsCongested() const;

    /// An empty text: none.
    void SetDevice(const std::string& device);
    const std::string& Device() const { return m_deviceName; }
    /// What was written before leaves at the old speed. False when the speed is refused.
    bool SetBaudRate(std::int32_t baud);
    std::int32_t BaudRate() const { return m_baud; }

    bool IsOpen() const { return m_device != nullptr && m_device->IsOpen(); }
    std::uint64_t BytesIn() const { return m_bytesIn; }
    std::uint64_t BytesOut() const;
    std::uint64_t DroppedBytes() const { return m_droppedBytes; }
    /// Bytes that have not reached the device yet.
    std::size_t WaitingBytes() const;

    int Descriptor() const override;
    bool WantsToWrite() const override;
    void Service(bool readable, bool writable) override;

private:
    void TryToOpen();
    void BecomeOpen();
    void Read();
    void NoticeLoss();
    void Drop(std::size_t count, const std::string& why);
    void TellDrops();

    std::string m_label;
    std::string m_deviceName;
    std::int32_t m_baud;
    TDeliver m_deliver;
    std::unique_ptr<CDevice> m_device; ///< null when there is none

    bool m_wasOpen = false; ///< as was told last
    std::string m_toldReason;
    Core::MonotonicTime m_nextAttempt;

    CLateBytes m_late;
    std::uint64_t m_bytesIn = 0;
    std::uint64_t m_bytesTaken = 0;  ///< by devices, those that wait included
    std::size_t m_waitingBefore = 0; ///< for the device, when it was last seen open
    std::uint64_t m_droppedBytes = 0;
    std::uint64_t m_untoldDrops = 0;
    std::string m_whyDropped;
    Core::MonotonicTime m_nextDropsTold;
};

} // namespace Mux
