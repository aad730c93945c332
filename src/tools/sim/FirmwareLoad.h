// The receiver's side of a firmware load.
#pragma once

#include "LogSchedule.h"

#include <string>
#include <string_view>

namespace Sim {

/// Takes S-records, verifies them, writes them into a flash that does not exist, and tells the
/// states on the way. The image is never looked at; metadata records tell its version.
class CFirmwareLoad {
public:
    /// With the name of an error, the load ends with it where it belongs: RESET_ERROR at the reset,
    /// BAD_SRECORD and its like with the data, the others after the commit.
    explicit CFirmwareLoad(std::string error) : m_error(std::move(error)) {}

    static bool IsError(std::string_view status);
    /// The names that IsError knows, with commas.
    static std::string Errors();

    SResponse Reset();
    SResponse TakeRecord(std::string_view record);
    SResponse Commit(Milliseconds now);

    /// Takes the steps that are due.
    void Advance(Milliseconds now);
    Milliseconds NextStep() const { return m_nextStep; }

    std::string_view Status() const { return m_status; }
    /// From the reset command to the end, good or bad.
    bool IsUnderWay() const;
    /// Written, so that the next start runs it. Empty when the file told none.
    bool IsWritten() const { return m_isWritten; }
    const std::string& Version() const { return m_version; }

private:
    bool IsReady() const;
    SResponse Fail(std::string_view status, EResponse response);
    bool FailsHere(std::string_view stage);
    void TakeMetadata(std::string_view record);

    std::string m_error;
    std::string m_status = "NOT_STARTED";
    std::string m_version;
    std::size_t m_step = 0;
    Milliseconds m_nextStep = kNever;
    bool m_isWritten = false;
};

} // namespace Sim
