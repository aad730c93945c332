// A trouble that the operator hears of once, however often it is met.
#pragma once

#include <set>
#include <string>

namespace Hub {

/// To be used by one thread.
class CComplaint {
public:
    /// `subject` begins each line, such as "The history".
    explicit CComplaint(std::string subject) : m_subject(std::move(subject)) {}

    /// Each reason once, until the trouble is over.
    void Tell(const std::string& why);
    /// Told with this text, if there was a trouble.
    void TellOver(const std::string& text);

private:
    const std::string m_subject;
    std::set<std::string> m_told;
};

} // namespace Hub
