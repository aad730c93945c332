// Where trace lines go: a descriptor that is written to without ever waiting.
#pragma once

#include "RepeatedLines.h"

#include <mutex>
#include <string_view>

/// Writes what the descriptor takes at once and drops the rest; a closed descriptor, a full disk
/// and a reader that has gone are harmless (SIGPIPE must be ignored). The descriptor is not owned,
/// and looked at anew for each text, so it may be redirected at any time.
class CTraceSink {
public:
    explicit CTraceSink(int descriptor) : m_descriptor(descriptor) {}

    /// Whole lines (text that begins a line and ends one) are folded by CRepeatedLines; what is
    /// not a whole line is written as it is.
    void Write(std::string_view text);

    /// Tells the counts that are still owed; from now on every line is written.
    void StopFolding();

private:
    const int m_descriptor;
    std::mutex m_mutex;
    CRepeatedLines m_lines;
    bool m_isAtLineStart = true;
    bool m_isFolding = true;
};
