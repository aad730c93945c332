#include "Logs/NovatelOEMV/NovatelLBANDSTAT.h"

#include "Logs/NamedBits.h"

#include <cinttypes>
#include <cstdio>

namespace Novatel {

std::string CNovatelLBANDSTAT::AsText() const {
    char text[512]; // eleven pairs of at most 45 characters
    std::snprintf(
        text, sizeof text,
        "[CNovatelLBANDSTAT]:Frequency=%" PRIu64 ",CNR=%g,Locktime=%g,"
        "RawSignalTracking=%u,RawVBSStatus=%u,Bytes=%" PRIu32 ",GoodDGPS=%" PRIu32
        ",BadData=%" PRIu32 ",RawHPAdditionalStatus=%u,HPBytes=%" PRIu32 ",RawHPStatus=%" PRIu32,
        m_frequency, static_cast<double>(m_carrierToNoise), static_cast<double>(m_lockTime),
        static_cast<unsigned>(m_signalTracking.GetWord()),
        static_cast<unsigned>(m_vbsStatus.GetWord()), m_vbsBytes, m_goodDGPSUpdates,
        m_badDataUpdates, static_cast<unsigned>(m_hpAdditionalStatus.GetWord()), m_hpBytes,
        m_hpStatus.GetWord());
    return text;
}

void CNovatelLBANDSTAT::Print() const {
    PrintLine(AsText());
}

} // namespace Novatel
