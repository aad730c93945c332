#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"

#include "Bytes/CRC32.h"
#include "Logs/NovatelOEMV/NovatelBinary/BodyReader.h"

namespace Novatel {

namespace {

SNovatelHeader DecodeHeader(const Bytes::Sentence& sentenceData) {
    const CBodyReader bytes(sentenceData, 0);
    SNovatelHeader header;
    header.m_sync = {bytes.UInt8(0), bytes.UInt8(1), bytes.UInt8(2)};
    header.m_headerLength = bytes.UInt8(3);
    header.m_messageID = bytes.UInt16(4);
    header.m_messageType = bytes.UInt8(6);
    header.m_portAddress = bytes.UInt8(7);
    header.m_messageLength = bytes.UInt16(8);
    header.m_sequence = bytes.UInt16(10);
    header.m_idleTime = bytes.UInt8(12);
    header.m_timeStatus = static_cast<ETimeStatus>(bytes.UInt8(13));
    header.m_week = bytes.UInt16(14);
    header.m_milliseconds = bytes.UInt32(16);
    header.m_receiverStatus = bytes.UInt32(20);
    header.m_reserved = bytes.UInt16(24);
    header.m_softwareVersion = bytes.UInt16(26);
    return header;
}

} // namespace

CNovatelBinaryRecord::CNovatelBinaryRecord(const Bytes::Sentence& sentenceData, ECRCCheck check)
    : m_header(DecodeHeader(sentenceData)) {
    m_valid = check == ECRCCheck::alreadyPassed || Bytes::HasValidCRC32(sentenceData);
}

bool CNovatelBinaryRecord::GetGPSTime(std::uint32_t& week, double& seconds) const {
    week = m_header.m_week;
    seconds = m_header.SecondsOfWeek();
    return m_valid;
}

std::uint16_t CNovatelBinaryRecord::GetWeek() const {
    return m_header.m_week;
}

double CNovatelBinaryRecord::GetSecondsOfWeek() const {
    return m_header.SecondsOfWeek();
}

std::uint16_t CNovatelBinaryRecord::GetMessageID() const {
    return m_header.m_messageID;
}

std::uint32_t CNovatelBinaryRecord::GetReceiverStatus() const {
    return m_header.m_receiverStatus;
}

std::uint8_t CNovatelBinaryRecord::GetIdleTime() const {
    return m_header.m_idleTime;
}

} // namespace Novatel
