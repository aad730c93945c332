// The receiver's answer to a command; the command manager and the screen dump read it.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <string>

namespace Novatel {

class CNovatelResponse : public virtual CNovatelRecord {
public:
    /// The receiver's response code; 1 is "OK".
    std::uint32_t GetResponseID() const { return m_responseID; }
    /// The text as received, ended by one zero byte that is part of it; empty when there is none.
    std::string GetResponseText() const { return m_responseText; }

protected:
    CNovatelResponse() = default;

    std::uint32_t m_responseID = 0;
    std::string m_responseText;
};

} // namespace Novatel
