#include "hub/http/Gate.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <unistd.h>

namespace Hub {

namespace {

constexpr char kCookie[] = "corvane_token=";
constexpr char kBearer[] = "Bearer ";

/// Takes the same time wherever the two differ.
bool AreEqual(std::string_view a, std::string_view b) {
    unsigned difference = a.size() == b.size() ? 0 : 1;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const char other = b.empty() ? '\0' : b[i % b.size()];
        difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(other);
    }
    return difference == 0;
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

std::string OwnHostName() {
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? Lower(name.data()) : std::string();
}

std::string TokenOfCookie(const std::string& cookies) {
    for (const std::string_view cookie : Core::Utilities::Split(cookies, ';')) {
        const std::string_view trimmed = Core::Utilities::Trim(cookie);
        if (trimmed.starts_with(kCookie)) {
            return std::string(trimmed.substr(std::string_view(kCookie).size()));
        }
    }
    return {};
}

bool IsOfCookie(char c) {
    return c > ' ' && c < 0x7F && c != '"' && c != ',' && c != ';' && c != '\\';
}

void Refuse(httplib::Response& response, int status, const std::string& why) {
    response.status = status;
    response.set_content(why + "\n", "text/plain; charset=utf-8");
}

} // namespace

std::optional<std::string> NameOfHost(std::string_view host) {
    std::size_t end = host.size();
    if (host.starts_with('[')) {
        end = host.find(']');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        ++end;
    } else if (const std::size_t colon = host.find(':'); colon != std::string_view::npos) {
        end = colon;
    }
    const std::string_view port = host.substr(end);
    const bool isPort =
        port.empty() || (port.size() > 1 && port.size() <= 6 && port[0] == ':' &&
                         std::all_of(port.begin() + 1, port.end(),
                                     [](unsigned char c) { return std::isdigit(c) != 0; }));
    if (end == 0 || !isPort) {
        return std::nullopt;
    }
    return Lower(host.substr(0, end));
}

CGate::CGate(std::string token, const std::string& listen, const std::string& names)
    : m_token(std::move(token)), m_names{"localhost", "127.0.0.1", "[::1]", Lower(listen)} {
    const std::string own = OwnHostName();
    if (!own.empty()) {
        m_names.insert(own);
        m_names.insert(own + ".local");
    }
    for (const std::string_view name : Core::Utilities::Split(names, ',')) {
        if (const std::string_view trimmed = Core::Utilities::Trim(name); !trimmed.empty()) {
            m_names.insert(Lower(trimmed));
        }
    }
}

bool CGate::LetIn(const httplib::Request& request, httplib::Response& response) const {
    if (!IsOwnName(request)) {
        Refuse(response, 421,
               "This is not the name of this machine. If it should be, add it to key \"names\" in "
               "section [http] of the hub's settings.");
        return false;
    }
    if (m_token.empty() || HasToken(request)) {
        return true;
    }
    if (TakeTokenFromAddress(request, response)) {
        return false;
    }
    response.set_header("WWW-Authenticate", "Bearer realm=\"corvane\"");
    Refuse(response, 401,
           "A token is needed: open /?token=TOKEN once, or send \"Authorization: Bearer TOKEN\".");
    return false;
}

/// An address in numbers cannot be made to mean another machine; so the one that the connection
/// has come to is its own name as well.
bool CGate::IsOwnName(const httplib::Request& request) const {
    if (request.get_header_value_count("Host") != 1) {
        return false;
    }
    const auto name = NameOfHost(request.get_header_value("Host"));
    return name && (m_names.contains(*name) || *name == request.local_addr ||
                    *name == "[" + request.local_addr + "]");
}

bool CGate::HasToken(const httplib::Request& request) const {
    const std::string authorization = request.get_header_value("Authorization");
    return (authorization.starts_with(kBearer) &&
            AreEqual(m_token, authorization.substr(std::string_view(kBearer).size()))) ||
           AreEqual(m_token, TokenOfCookie(request.get_header_value("Cookie")));
}

/// A browser keeps it as a cookie, and its address line loses it.
bool CGate::TakeTokenFromAddress(const httplib::Request& request,
                                 httplib::Response& response) const {
    if (!request.has_param("token") || !AreEqual(m_token, request.get_param_value("token")) ||
        !std::all_of(m_token.begin(), m_token.end(), IsOfCookie)) {
        return false;
    }
    response.set_header("Set-Cookie", kCookie + m_token +
                                          "; Path=/; HttpOnly; SameSite=Strict; Max-Age=31536000");
    response.set_redirect(request.path, 303);
    return true;
}

} // namespace Hub
