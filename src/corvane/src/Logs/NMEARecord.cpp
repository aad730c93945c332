#include "Logs/NMEARecord.h"

CNMEARecord::CNMEARecord(const Bytes::Sentence& sentence) : m_sentence(sentence) {
}

bool CNMEARecord::GetGPSTime(std::uint32_t& week, double& seconds) const {
    Core::UnixTime received;
    GetReceptionUnixTime(received);
    Core::GPSTime::FromUnixTime(received).AsGPSTime(week, seconds);
    return true;
}

std::uint16_t CNMEARecord::GetMessageID() const {
    return kMessageID;
}
