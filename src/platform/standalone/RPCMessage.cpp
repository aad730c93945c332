#include "RPCMessage.h"

#include "JSONText.h"
#include "JSONValue.h"

#include <cmath>
#include <utility>

namespace RPCMessage {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
/// Whole numbers up to here come back as they were; JSON-RPC needs no larger id.
constexpr double kLargestId = 9007199254740992.0;

SError Fault(JSONValue::EFault fault) {
    switch (fault) {
    case JSONValue::EFault::tooDeep:
        return {kInvalidRequest, "nested deeper than 32 levels"};
    case JSONValue::EFault::tooManyValues:
        return {kInvalidRequest, "more than 10000 values in one request"};
    default:
        return {kParseError, "not JSON"};
    }
}

bool IsId(const BAtomC& id) {
    const std::optional<double> number = id.AsDouble();
    return id.IsNull() || id.AsText() != nullptr || (number && std::fabs(*number) <= kLargestId);
}

std::string Begin(const BAtomC& id) {
    std::string text = R"({"jsonrpc":"2.0","id":)";
    JSONValue::Append(text, id);
    return text;
}

bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

std::variant<SRequest, SError> ToRequest(const BDictionaryC& members) {
    const BAtomC* const version = members.Find("jsonrpc");
    const BAtomC* const method = members.Find("method");
    const BAtomC* const params = members.Find("params");
    const BAtomC* const id = members.Find("id");
    if (version == nullptr || version->AsText() == nullptr || *version->AsText() != "2.0") {
        return SError{kInvalidRequest, R"("jsonrpc" must be "2.0")"};
    }
    if (method == nullptr || method->AsText() == nullptr) {
        return SError{kInvalidRequest, R"("method" must be a text)"};
    }
    if (id != nullptr && !IsId(*id)) {
        return SError{kInvalidRequest, R"("id" must be a text, a number up to 2^53 or null)"};
    }
    SRequest request;
    if (id != nullptr) {
        request.id = *id;
    }
    request.method = *method->AsText();
    if (params != nullptr && params->AsList() != nullptr) {
        request.params = *params->AsList();
    } else if (params != nullptr && params->AsDictionary() != nullptr) {
        request.hasNamedParams = true;
        request.params.Add(*params);
    } else if (params != nullptr) {
        return SError{kInvalidRequest, R"("params" must be an array or an object)"};
    }
    return request;
}

} // namespace

std::variant<SRequest, SError> ReadRequest(std::string_view text) {
    JSONValue::EFault fault = JSONValue::EFault::none;
    const std::optional<BAtomC> value = JSONValue::Read(text, &fault);
    if (!value) {
        return Fault(fault);
    }
    const BDictionaryC* const members = value->AsDictionary();
    if (members == nullptr) {
        return SError{kInvalidRequest, "a request must be an object"};
    }
    return ToRequest(*members);
}

bool IsBatch(std::string_view line) {
    const std::size_t first = line.find_first_not_of(kBlanks);
    return first != std::string_view::npos && line[first] == '[';
}

std::optional<SError> CheckBatch(std::string_view line) {
    const JSONValue::EFault fault = JSONValue::Check(line);
    if (fault != JSONValue::EFault::none) {
        return Fault(fault);
    }
    const std::size_t open = line.find('[');
    if (line[line.find_first_not_of(kBlanks, open + 1)] == ']') {
        return SError{kInvalidRequest, "a batch must not be empty"};
    }
    return std::nullopt;
}

bool IsHTTPRequestLine(std::string_view line) {
    std::size_t end = 0;
    while (end < line.size() && IsUpper(line[end])) {
        ++end;
    }
    return end > 0 && end < line.size() && line[end] == ' ' &&
           line.find(" HTTP/", end) != std::string_view::npos;
}

std::string Answer(const BAtomC& id, const BAtomC& result) {
    std::string text = Begin(id) + R"(,"result":)";
    JSONValue::Append(text, result);
    return text + '}';
}

std::string Answer(const BAtomC& id, const SError& error) {
    std::string text = Begin(id) + R"(,"error":{"code":)";
    JSONText::AppendInteger(text, error.code);
    text += R"(,"message":)";
    JSONText::AppendString(text, error.message);
    return text + "}}";
}

CBatchReader::CBatchReader(std::string line) : m_line(std::move(line)), m_at(m_line.find('[') + 1) {
}

std::optional<std::string_view> CBatchReader::Next() {
    const std::size_t start = m_at;
    int depth = 0;
    bool isInText = false;
    for (; m_at < m_line.size(); ++m_at) {
        const char c = m_line[m_at];
        if (isInText) {
            if (c == '\\') {
                ++m_at;
            } else if (c == '"') {
                isInText = false;
            }
        } else if (c == '"') {
            isInText = true;
        } else if (c == '[' || c == '{') {
            ++depth;
        } else if (depth > 0 && (c == ']' || c == '}')) {
            --depth;
        } else if (depth == 0 && (c == ',' || c == ']')) {
            const std::string_view element = std::string_view(m_line).substr(start, m_at - start);
            m_at = c == ',' ? m_at + 1 : m_line.size();
            return element;
        }
    }
    return std::nullopt;
}

} // namespace RPCMessage
