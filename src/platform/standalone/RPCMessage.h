// The messages of JSON-RPC 2.0 (jsonrpc.org) as a server reads and writes them.
#pragma once

#include "platform/BAtom.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace RPCMessage {

inline constexpr int kParseError = -32700;
inline constexpr int kInvalidRequest = -32600;
inline constexpr int kUnknownMethod = -32601;
inline constexpr int kInvalidParams = -32602;
inline constexpr int kInternalError = -32603;

struct SRequest {
    /// A text, a number or null; none for a notification, which gets no answer.
    std::optional<BAtomC> id;
    std::string method;
    /// The arguments in their places; or, when they have names, one dictionary of them.
    BListC params;
    bool hasNamedParams = false;
};

struct SError {
    int code;
    std::string message;
};

/// One request from one JSON text that is an object. An error is to be answered without an id.
std::variant<SRequest, SError> ReadRequest(std::string_view text);

/// What is wrong with a line that holds a batch: none when it is an array with something in it.
std::optional<SError> CheckBatch(std::string_view line);

/// Whether the line holds a batch, if it is JSON at all.
bool IsBatch(std::string_view line);

/// Whether it is the first line of an HTTP request (RFC 9112, section 3).
bool IsHTTPRequestLine(std::string_view line);

std::string Answer(const BAtomC& id, const BAtomC& result);
std::string Answer(const BAtomC& id, const SError& error);

/// Takes the elements of a batch that was checked, one after the other.
class CBatchReader {
public:
    explicit CBatchReader(std::string line);

    /// The text of the next element; nothing behind the last one. Valid while this lives.
    std::optional<std::string_view> Next();
    std::size_t HeldBytes() const { return m_line.capacity(); }

private:
    std::string m_line;
    std::size_t m_at;
};

} // namespace RPCMessage
