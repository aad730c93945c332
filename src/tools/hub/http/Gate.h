// Who may read what the web server has.
#pragma once

#include <httplib.h>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace Hub {

/// Refuses requests under a name that is not the server's own, so that no web page from elsewhere
/// reads it through the user's browser (DNS rebinding), and those without the token if there is
/// one.
class CGate {
public:
    /// The token may be empty: then there is none. `names` lie between commas.
    CGate(std::string token, const std::string& listen, const std::string& names);

    /// Whether the request may go on; if not, the response says why.
    bool LetIn(const httplib::Request& request, httplib::Response& response) const;

private:
    bool IsOwnName(const httplib::Request& request) const;
    bool HasToken(const httplib::Request& request) const;
    bool TakeTokenFromAddress(const httplib::Request& request, httplib::Response& response) const;

    std::string m_token;
    std::set<std::string> m_names;
};

/// The name in a Host header, in small letters, without its port; nothing when it is no host.
std::optional<std::string> NameOfHost(std::string_view host);

} // namespace Hub
