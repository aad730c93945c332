#include "Output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

bool IsControl(char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\n') || c == 0x7F;
}

/// At once, also into a pipe: who watches waits for it.
void WriteLine(std::FILE* stream, const std::string& line) {
    std::fputs((line + '\n').c_str(), stream);
    std::fflush(stream);
}

} // namespace

std::string Printable(std::string text) {
    std::replace_if(text.begin(), text.end(), IsControl, '?');
    return text;
}

void COutput::Tell(const std::string& text, const TJSON& document) {
    if (m_isJSON) {
        WriteLine(stdout, document.dump(-1, ' ', false, TJSON::error_handler_t::replace));
    } else {
        WriteLine(stdout, Printable(text));
    }
}

void COutput::Note(const std::string& text) const {
    WriteLine(stderr, "corvanectl: " + Printable(text));
}

void COutput::Fail(EStatus status, const std::string& reason, const std::string& advice) {
    Note(reason + (advice.empty() ? "" : "\n" + advice));
    if (m_status != EStatus::done) {
        return;
    }
    m_status = status;
    if (m_isJSON) {
        Tell("", {{"error", {{"status", static_cast<int>(status)}, {"message", reason}}}});
    }
}

int COutput::Finish() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        Note(std::string("standard output cannot be written: ") + std::strerror(errno));
        m_status = m_status == EStatus::done ? EStatus::refused : m_status;
    }
    return static_cast<int>(m_status);
}

} // namespace Ctl
