#include "mux/Device.h"

#include "mux/SerialDevice.h"
#include "mux/TCPDevice.h"

namespace Mux {

std::unique_ptr<CDevice> MakeDevice(const std::string& device, std::int32_t baud) {
    if (const std::optional<STCPAddress> address = ReadTCPAddress(device)) {
        return std::make_unique<CTCPDevice>(device, *address, baud);
    }
    return std::make_unique<CSerialDevice>(device, baud);
}

} // namespace Mux
