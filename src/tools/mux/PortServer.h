// The remote procedures of the multiplexer: which device and which speed each port has.
#pragma once

#include "mux/Port.h"
#include "platform/MPISocketServer.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Mux {

class CPortServer : public MPISocketServerC {
public:
    using TPorts = std::vector<std::unique_ptr<CPort>>;

    /// The ports and the collection outlive it.
    CPortServer(SocketCollectionC& sockets, TPorts& ports);

private:
    BAtomC GetPortDump(const BListC& arguments);
    BAtomC GetPortMapping(const BListC& arguments);
    BAtomC SetPortMapping(const BListC& arguments);
    BAtomC GetPortConfig(const BListC& arguments);
    BAtomC SetPortConfig(const BListC& arguments);

    CPort* Find(std::int32_t number) const;
    bool IsFree(const std::string& device, const CPort& forPort) const;

    TPorts& m_ports;
};

} // namespace Mux
