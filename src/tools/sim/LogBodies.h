// The bodies of the receiver's binary logs, topic by topic; LogEncoder puts headers around them.
#pragma once

#include "ByteWriter.h"
#include "LogEncoder.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Sim {

/// What a body is made of.
struct SLogInput {
    const SState& state;
    const SReceiverInfo& info;
    const SHeaderFields& header;
};

using BodyEncoder = void (*)(CByteWriter&, const SLogInput&);

/// A log that has a binary form.
struct SBinaryLog {
    std::string_view name;
    std::uint16_t messageID;
    std::uint16_t check; ///< the header's check value of the log's definition
    BodyEncoder encode;
};

/// Nothing for a log without one.
const SBinaryLog* FindBinaryLog(std::string_view name);

/// The one of RTK and pseudorange solution that is better.
const SSolution& BestSolution(const SState& state);

/// The station whose corrections are used.
inline constexpr std::string_view kStationID = "0001";

namespace LogBodies {

// Positions
void BESTPOS(CByteWriter& body, const SLogInput& input);
void PSRPOS(CByteWriter& body, const SLogInput& input);
void RTKPOS(CByteWriter& body, const SLogInput& input);
void PDPPOS(CByteWriter& body, const SLogInput& input);
void OMNIHPPOS(CByteWriter& body, const SLogInput& input);
void BESTXYZ(CByteWriter& body, const SLogInput& input);
void PSRXYZ(CByteWriter& body, const SLogInput& input);
void RTKXYZ(CByteWriter& body, const SLogInput& input);
void PDPXYZ(CByteWriter& body, const SLogInput& input);
void PDPSTAT(CByteWriter& body, const SLogInput& input);
void PSRDOP(CByteWriter& body, const SLogInput& input);
void REFSTATION(CByteWriter& body, const SLogInput& input);
void TIME(CByteWriter& body, const SLogInput& input);

// Satellites and measurements
void RANGE(CByteWriter& body, const SLogInput& input);
void TRACKSTAT(CByteWriter& body, const SLogInput& input);
void PSRSATS(CByteWriter& body, const SLogInput& input);
void RTKSATS(CByteWriter& body, const SLogInput& input);
void PDPSATS(CByteWriter& body, const SLogInput& input);

// The receiver itself
void VERSION(CByteWriter& body, const SLogInput& input);
void RXSTATUS(CByteWriter& body, const SLogInput& input);
void COMCONFIG(CByteWriter& body, const SLogInput& input);
void CHANCONFIGLIST(CByteWriter& body, const SLogInput& input);
void SOFTLOADSTATUS(CByteWriter& body, const SLogInput& input);
void LBANDINFO(CByteWriter& body, const SLogInput& input);
void LBANDSTAT(CByteWriter& body, const SLogInput& input);

} // namespace LogBodies

} // namespace Sim
