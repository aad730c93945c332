#include "LinkMessage.h"

#include "JSONText.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t kFixedLength =
    sizeof(R"({"jsonrpc":"2.0","method":"","params":{,"value":"","time":1700000000.123456}})");

std::size_t Base64Length(std::size_t bytes) {
    return (bytes + 2) / 3 * 4;
}

/// RFC 4648, section 4.
void AppendBase64(std::string& out, const std::string& bytes) {
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto byteAt = [&bytes](std::size_t i) {
        return i < bytes.size() ? static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]))
                                : 0U;
    };
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::uint32_t group = byteAt(i) << 16 | byteAt(i + 1) << 8 | byteAt(i + 2);
        const char digits[4] = {kDigits[group >> 18], kDigits[group >> 12 & 63],
                                i + 1 < bytes.size() ? kDigits[group >> 6 & 63] : '=',
                                i + 2 < bytes.size() ? kDigits[group & 63] : '='};
        out.append(digits, sizeof digits);
    }
}

void AppendKey(std::string& members, const char* key) {
    members += members.empty() ? "\"" : ",\"";
    members += key;
    members += "\":";
}

} // namespace

std::size_t SLinkMessage::EstimatedSize() const {
    const std::size_t textLength =
        textKind == EText::base64 ? Base64Length(text.size()) : text.size();
    return kFixedLength + std::strlen(method) + members.size() + textLength;
}

void SLinkMessage::AppendTo(std::string& out) const {
    out += R"({"jsonrpc":"2.0",)";
    if (id > 0) {
        out += R"("id":)";
        JSONText::AppendInteger(out, id);
        out += ',';
    }
    out += R"("method":")";
    out += method;
    out += R"(","params":{)";
    out += members;
    if (textKind == EText::value) {
        out += R"(,"value":)";
        JSONText::AppendString(out, text);
    } else if (textKind == EText::base64) {
        out += R"(,"data":")";
        AppendBase64(out, text);
        out += '"';
    }
    out += R"(,"time":)";
    JSONText::AppendDouble(out, time);
    out += "}}\n";
}

void AppendMember(std::string& members, const char* key, const std::string& text) {
    AppendKey(members, key);
    JSONText::AppendString(members, text);
}

void AppendMember(std::string& members, const char* key, long long number) {
    AppendKey(members, key);
    JSONText::AppendInteger(members, number);
}

void AppendMember(std::string& members, const char* key, double number) {
    AppendKey(members, key);
    JSONText::AppendDouble(members, number);
}
