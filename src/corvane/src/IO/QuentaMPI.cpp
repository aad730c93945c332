#include "IO/QuentaMPI.h"

namespace {

bool ReadAnswer(const BAtomC& answer, BListC& value) {
    const BListC* list = answer.AsList();
    if (list != nullptr) {
        value = *list;
    }
    return list != nullptr;
}

bool ReadAnswer(const BAtomC& answer, std::string& value) {
    const std::string* text = answer.AsText();
    if (text != nullptr) {
        value = *text;
    }
    return text != nullptr;
}

bool ReadAnswer(const BAtomC& answer, std::int32_t& value) {
    const std::optional<std::int32_t> integer = answer.AsInteger();
    value = integer.value_or(value);
    return integer.has_value();
}

} // namespace

bool CQuentaMPI::GetPortDump(BListC& ports) {
    return Ask("GetPortDump", BListC(), ports);
}

bool CQuentaMPI::GetPortMapping(std::int32_t port, std::string& device) {
    return Ask("GetPortMapping", BListC().Add(port), device);
}

bool CQuentaMPI::SetPortMapping(std::int32_t port, const std::string& device) {
    return Order("SetPortMapping", BListC().Add(port).Add(device));
}

bool CQuentaMPI::GetPortConfig(std::int32_t port, std::int32_t& baud) {
    return Ask("GetPortConfig", BListC().Add(port), baud);
}

bool CQuentaMPI::SetPortConfig(std::int32_t port, std::int32_t baud) {
    return Order("SetPortConfig", BListC().Add(port).Add(baud));
}

template <typename T>
bool CQuentaMPI::Ask(const char* method, const BListC& params, T& answer) {
    BAtomC result;
    if (!m_client.Call(method, params, result, m_lastError)) {
        return false;
    }
    if (!ReadAnswer(result, answer)) {
        m_lastError = "the answer is of another kind than expected";
        return false;
    }
    return true;
}

bool CQuentaMPI::Order(const char* method, const BListC& params) {
    std::int32_t isAccepted = 0;
    if (!Ask(method, params, isAccepted)) {
        return false;
    }
    if (isAccepted == 0) {
        m_lastError = "refused by the multiplexer";
    }
    return isAccepted != 0;
}
