#include "Logs/NovatelOEMV/NovatelRXSTATUS.h"

#include "Logs/NovatelOEMV/ReceiverStatusWords.h"

namespace Novatel {

std::string CNovatelRXSTATUS::GetErrorText() const {
    return ReceiverErrorText(m_errorWord);
}

std::string CNovatelRXSTATUS::GetStatusText() const {
    return m_statuses.empty() ? std::string() : ReceiverStatusText(m_statuses.front().status);
}

} // namespace Novatel
