#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinarySatsLog.h"

#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

constexpr std::uint32_t kEntrySize = 16;

std::int32_t Frequency(std::uint32_t system, std::uint16_t raw) {
    return system == CNovatelSatsLog::kGLONASS ? static_cast<std::int16_t>(raw) : raw;
}

CNovatelSatsLog::SSatellite DecodeSatellite(const CBodyReader& entry) {
    const std::uint32_t system = entry.UInt32(0);
    return {.system = system,
            .id = entry.UInt16(4),
            .glonassFrequency = Frequency(system, entry.UInt16(6)),
            .status = entry.UInt32(8),
            .signalMask = entry.UInt32(12)};
}

} // namespace

CNovatelBinarySatsLog::CNovatelBinarySatsLog(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : CNovatelBinaryRecord(sentenceData, check) {
}

void CNovatelBinarySatsLog::DecodeSatellites(const Bytes::Sentence& sentenceData) {
    const CBodyReader body(sentenceData, m_header.m_headerLength);
    const auto announced = static_cast<std::int32_t>(body.UInt32(0));
    if (announced <= 0) {
        return;
    }
    const auto count = static_cast<std::uint32_t>(announced);
    if (SentenceSize(m_header.m_headerLength, 4 + 4, kEntrySize, count) > sentenceData.size()) {
        return;
    }
    m_satellites.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        m_satellites.push_back(DecodeSatellite(body.Block(4 + kEntrySize * i)));
    }
}

} // namespace Novatel
