#include "mux/PortServer.h"

#include "mux/DeviceName.h"

#include <algorithm>
#include <limits>

namespace Mux {

namespace {

using EType = MPICallbackBase::EType;
using ECost = MPICallbackBase::ECost;
using TCallback = MPICallback<CPortServer, BAtomC>;

/// As a double where it does not fit an integer of the wire.
BAtomC Count(std::uint64_t value) {
    return value <= std::numeric_limits<std::int32_t>::max()
               ? BAtomC(static_cast<std::int32_t>(value))
               : BAtomC(static_cast<double>(value));
}

} // namespace

CPortServer::CPortServer(SocketCollectionC& sockets, TPorts& ports)
    : MPISocketServerC(sockets), m_ports(ports) {
    const MPICallbackBase::SArgument port = {"port", EType::integer};
    Register(std::make_unique<TCallback>("GetPortDump", std::vector<MPICallbackBase::SArgument>{},
                                         ECost::light, *this, &CPortServer::GetPortDump));
    Register(std::make_unique<TCallback>("GetPortMapping", std::vector{port}, ECost::light, *this,
                                         &CPortServer::GetPortMapping));
    Register(std::make_unique<TCallback>(
        "SetPortMapping", std::vector{port, MPICallbackBase::SArgument{"device", EType::text}},
        ECost::pause, *this, &CPortServer::SetPortMapping));
    Register(std::make_unique<TCallback>("GetPortConfig", std::vector{port}, ECost::light, *this,
                                         &CPortServer::GetPortConfig));
    Register(std::make_unique<TCallback>(
        "SetPortConfig", std::vector{port, MPICallbackBase::SArgument{"baud rate", EType::integer}},
        ECost::pause, *this, &CPortServer::SetPortConfig));
}

CPort* CPortServer::Find(std::int32_t number) const {
    const auto found = std::find_if(m_ports.begin(), m_ports.end(), [number](const auto& port) {
        return port->Number() == number;
    });
    return found == m_ports.end() ? nullptr : found->get();
}

/// Two ports never share a device: each would get a part of its bytes.
bool CPortServer::IsFree(const std::string& device, const CPort& forPort) const {
    return device.empty() || std::none_of(m_ports.begin(), m_ports.end(), [&](const auto& port) {
               return port.get() != &forPort && port->Line().Device() == device;
           });
}

BAtomC CPortServer::GetPortDump(const BListC&) {
    BListC dump;
    for (const auto& port : m_ports) {
        const CLine& line = port->Line();
        dump.Add(BListC()
                     .AddInt(port->Number())
                     .AddString(port->Name())
                     .AddString(line.Device())
                     .AddInt(line.BaudRate())
                     .AddInt(line.IsOpen() ? 1 : 0)
                     .AddInt(static_cast<std::int32_t>(port->ClientCount()))
                     .Add(Count(line.BytesIn()))
                     .Add(Count(line.BytesOut())));
    }
    return dump;
}

BAtomC CPortServer::GetPortMapping(const BListC& arguments) {
    const CPort* const port = Find(arguments.GetInt(0));
    return port == nullptr ? std::string() : port->Line().Device();
}

BAtomC CPortServer::SetPortMapping(const BListC& arguments) {
    CPort* const port = Find(arguments.GetInt(0));
    const std::string device = arguments.GetString(1);
    if (port == nullptr || (!device.empty() && !WhyNoDevice(device).empty()) ||
        !IsFree(device, *port)) {
        return 0;
    }
    if (device != port->Line().Device()) {
        port->TakeAll();
        port->Line().SetDevice(device);
    }
    return 1;
}

BAtomC CPortServer::GetPortConfig(const BListC& arguments) {
    const CPort* const port = Find(arguments.GetInt(0));
    return port == nullptr ? 0 : port->Line().BaudRate();
}

BAtomC CPortServer::SetPortConfig(const BListC& arguments) {
    CPort* const port = Find(arguments.GetInt(0));
    if (port == nullptr) {
        return 0;
    }
    port->TakeAll(); // a client that has written and then calls means that order
    return port->Line().SetBaudRate(arguments.GetInt(1)) ? 1 : 0;
}

} // namespace Mux
