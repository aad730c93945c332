#include "hub/Complaint.h"

#include "platform/DebugPrint.h"

namespace Hub {

void CComplaint::Tell(const std::string& why) {
    constexpr std::size_t kMostReasons = 20;
    if (m_told.size() < kMostReasons && m_told.insert(why).second) {
        deprintf("%s: %s\n", m_subject.c_str(), why.c_str());
    }
}

void CComplaint::TellOver(const std::string& text) {
    if (!m_told.empty()) {
        deprintf("%s: %s\n", m_subject.c_str(), text.c_str());
        m_told.clear();
    }
}

} // namespace Hub
