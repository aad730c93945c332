// One message to the services, kept in parts until it is sent: most are dropped or replaced before.
#pragma once

#include <cstddef>
#include <string>

/// A JSON-RPC notification or request in the making.
struct SLinkMessage {
    /// What `text` is and how it ends the params.
    enum class EText {
        none,   ///< there is no text
        value,  ///< a text, as member "value"
        base64, ///< raw bytes, as member "data"
    };

    const char* method = "";
    std::string members; ///< the first members of params, written as JSON already
    EText textKind = EText::none;
    std::string text;
    double time = 0.0; ///< seconds since the Unix epoch
    int id = 0;        ///< above 0 for a request

    /// The length of the line to come, as long as nothing in `text` has to be escaped.
    std::size_t EstimatedSize() const;
    /// Appends the whole line, its "\n" included.
    void AppendTo(std::string& out) const;
};

/// Appends `"key":"text"` with a comma before it if there is something before.
void AppendMember(std::string& members, const char* key, const std::string& text);
void AppendMember(std::string& members, const char* key, long long number);
void AppendMember(std::string& members, const char* key, double number);
