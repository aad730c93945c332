// The logging service's categories: whether it records the raw blocks of a name.
#pragma once

#include <string>

/// Switches recording on or off without waiting for the answer.
class CLogClient {
public:
    /// Asks for the category's state and, on the answer, sets it where it differs. Asked for while
    /// no service is there, it is done when one comes; of several wishes the last one holds.
    void SetCategory(const std::string& category, bool enabled);
};
