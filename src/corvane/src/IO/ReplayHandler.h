// The byte source over a recording: each block comes at the pace at which it was recorded.
#pragma once

#include "IO/InputOutputHandler.h"
#include "platform/LogFileReader.h"

#include <memory>

/// Plays a recording, one block a read. The pauses between blocks run inside the read; the read
/// size and the read time-out mean nothing here, and what is written goes nowhere.
class CReplayHandler : public CInputOutputHandler {
public:
    /// Gaps of this length and above, in seconds of the recording, are played without a pause.
    static constexpr double kLongGap = 10.0;
    /// A replay that is late by no more than this catches up; a later one goes on from where it is.
    static constexpr Core::Time kMostLateness = Core::Time::FromMilliseconds(1000);

    using CInputOutputHandler::Read;

    /// False without a path, and when the file is no recording: the reader tells why.
    bool Open() override;
    bool Close() override;
    bool IsOpen() const override { return m_reader != nullptr; }

    /// The next block, whole, once it is due; empty after the last.
    std::string Read(std::int32_t count) override;

    /// Stores the path for the next Open().
    bool SetDevice(const std::string& path) override;
    bool SetReadTimeout(Core::Time timeout) override;
    /// That of the recording, so that select() always finds it readable.
    int FileDescriptor() const override;
    bool IsAtEnd() const override { return m_isAtEnd; }

private:
    void WaitUntilDue(Core::Time span);

    std::unique_ptr<CLogFileReader> m_reader;
    std::string m_path;
    double m_lastTimestamp = 0.0; ///< of the block played last, seconds
    Core::MonotonicTime m_due;    ///< when that block was to be played; zero: nothing is scheduled
    bool m_isAtEnd = false;
};
