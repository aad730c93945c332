// What a port's bytes come from and go to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Mux {

/// A device that can be away. Nothing here waits for it but a change of speed, which lets what was
/// written leave first, within Core::IO::Serial::kDrainLimit. It closes when it is lost.
class CDevice {
public:
    enum class EOpening {
        open,
        pending, ///< not decided yet: to be asked for again with the next pass
        failed,  ///< for now: LastError() says why
    };

    virtual ~CDevice() = default;

    virtual EOpening Open() = 0;
    virtual bool IsOpen() const = 0;
    /// To be watched also while the opening is pending; -1 when there is none.
    virtual int Descriptor() const = 0;
    virtual bool WantsToWrite() const = 0;

    /// Some of what is there; empty when nothing is, and when the device is lost.
    virtual std::string Read() = 0;
    /// All of it in order, now or later. False when there is no room for it, or the device is lost.
    virtual bool Write(const std::string& bytes) = 0;
    virtual void ContinueWriting() = 0;
    /// How many written bytes wait for the device.
    virtual std::size_t WaitingBytes() const = 0;

    /// False when it was refused, or when what was written before could not leave and was dropped;
    /// BaudRate() tells which.
    virtual bool SetBaudRate(std::int32_t baud) = 0;
    virtual std::int32_t BaudRate() const = 0;

    /// "<device>: <reason>".
    virtual const std::string& LastError() const = 0;
};

/// A device by its text, see DeviceName.h.
std::unique_ptr<CDevice> MakeDevice(const std::string& device, std::int32_t baud);

} // namespace Mux
