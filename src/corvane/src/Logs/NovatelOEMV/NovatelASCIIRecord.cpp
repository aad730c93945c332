#include "Logs/NovatelOEMV/NovatelASCIIRecord.h"

#include "Bytes/CRC32.h"

#include <algorithm>

namespace Novatel {

CNovatelASCIIRecord::CNovatelASCIIRecord(const Bytes::Sentence& sentenceData) {
    m_header.m_messageID = static_cast<std::uint16_t>(MessageIDOf(LogName(sentenceData)));
    m_valid = Bytes::HasValidCRC32(sentenceData);
}

bool CNovatelASCIIRecord::GetGPSTime(std::uint32_t& week, double& seconds) const {
    week = m_header.m_week;
    seconds = m_header.SecondsOfWeek();
    return m_valid;
}

std::uint16_t CNovatelASCIIRecord::GetWeek() const {
    return m_header.m_week;
}

double CNovatelASCIIRecord::GetSecondsOfWeek() const {
    return m_header.SecondsOfWeek();
}

std::uint16_t CNovatelASCIIRecord::GetMessageID() const {
    return m_header.m_messageID;
}

std::uint32_t CNovatelASCIIRecord::GetReceiverStatus() const {
    return m_header.m_receiverStatus;
}

std::uint8_t CNovatelASCIIRecord::GetIdleTime() const {
    return m_header.m_idleTime;
}

std::string_view CNovatelASCIIRecord::LogName(const Bytes::Sentence& sentenceData) {
    const auto comma = std::find(sentenceData.begin(), sentenceData.end(), ',');
    if (comma == sentenceData.end() || comma == sentenceData.begin()) {
        return {};
    }
    const char* const text = reinterpret_cast<const char*>(sentenceData.data());
    return {text + 1, static_cast<std::size_t>(comma - sentenceData.begin()) - 1};
}

int CNovatelASCIIRecord::MessageIDOf(std::string_view logName) {
    return logName == "SOFTLOADSTATUSA" ? kSoftLoadStatusID : kUnknownLogID;
}

} // namespace Novatel
