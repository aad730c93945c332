// What a command says: its result and its failures, to people and to programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace Ctl {

using TJSON = nlohmann::ordered_json;

/// The exit statuses, which the man page promises.
enum class EStatus {
    done = 0,
    refused = 1,     ///< by the daemon or the receiver, or it has failed
    usage = 2,       ///< the command line is wrong
    unreachable = 3, ///< no daemon, or no answer of a daemon
};

/// Results go to standard output, as text or as one JSON document a line; everything else goes to
/// standard error, as text. Control characters, which a peer might send, go nowhere.
class COutput {
public:
    void SetJSON(bool isJSON) { m_isJSON = isJSON; }
    bool IsJSON() const { return m_isJSON; }

    /// A result: the text, without its last line end, to people, the document to programs.
    void Tell(const std::string& text, const TJSON& document);
    /// A remark to people.
    void Note(const std::string& text) const;
    /// The reason goes to people and, as {"error":{"status","message"}}, to programs; the advice,
    /// which may be empty, to people alone. The status is that of the first failure.
    void Fail(EStatus status, const std::string& reason, const std::string& advice = "");

    EStatus Status() const { return m_status; }
    /// Notices a result that could not be written. Returns the exit status.
    int Finish();

private:
    bool m_isJSON = false;
    EStatus m_status = EStatus::done;
};

/// The text with control characters but line feeds replaced.
std::string Printable(std::string text);

} // namespace Ctl
