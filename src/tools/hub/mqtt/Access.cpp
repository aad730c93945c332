#include "hub/mqtt/Access.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <mosquitto.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <unistd.h>

namespace Hub {

namespace {

/// One level of a topic, as it is.
bool IsTopicLevel(const std::string& text) {
    constexpr std::size_t kLongest = 100;
    const bool isPlain = std::none_of(text.begin(), text.end(), [](char byte) {
        return byte == '+' || byte == '#' || byte == '/' ||
               static_cast<unsigned char>(byte) < ' ' || byte == '\x7F';
    });
    return !text.empty() && text.size() <= kLongest && isPlain &&
           mosquitto_validate_utf8(text.data(), static_cast<int>(text.size())) == MOSQ_ERR_SUCCESS;
}

std::string HostName() {
    std::array<char, 256> name{};
    ::gethostname(name.data(), name.size() - 1);
    return name.data();
}

std::string ReadPassword(const std::string& path, std::string& password) {
    std::ifstream file(path);
    if (!std::getline(file, password) || password.empty()) {
        return path + (file.is_open() ? ": its first line, the password, is empty"
                                      : std::string(": ") + std::strerror(errno));
    }
    if (password.ends_with('\r')) {
        password.pop_back();
    }
    return "";
}

/// The last thing that the library has stumbled over.
std::string TLSError() {
    const unsigned long code = ERR_peek_last_error();
    const char* const reason = ERR_reason_error_string(code);
    ERR_clear_error();
    return reason == nullptr ? "it cannot be used" : reason;
}

/// A key that asks for a pass phrase would wait for somebody at a terminal.
int NoPassphrase(char*, int, int, void*) {
    return -1;
}

/// Tries the files as the connection will use them.
std::string TryFiles(const SMQTTAccess& access) {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(
        SSL_CTX_new(TLS_client_method()), &SSL_CTX_free);
    SSL_CTX_set_default_passwd_cb(context.get(), NoPassphrase);
    if (SSL_CTX_load_verify_locations(context.get(), access.caFile.c_str(), nullptr) != 1) {
        return access.caFile + ": no certificates: " + TLSError();
    }
    if (access.certificate.empty()) {
        return "";
    }
    if (SSL_CTX_use_certificate_chain_file(context.get(), access.certificate.c_str()) != 1) {
        return access.certificate + ": no certificate: " + TLSError();
    }
    if (SSL_CTX_use_PrivateKey_file(context.get(), access.key.c_str(), SSL_FILETYPE_PEM) != 1) {
        return access.key + ": no private key of " + access.certificate +
               " (one with a pass phrase cannot be used): " + TLSError();
    }
    return "";
}

std::string WhyUnreadable(const std::string& path) {
    return std::ifstream(path).is_open() ? "" : path + ": " + std::strerror(errno);
}

std::string CheckTLS(const SMQTTAccess& access) {
    if (access.certificate.empty() != access.key.empty()) {
        return "a certificate and its key belong together, and only one of them is set";
    }
    if (access.caFile.empty()) {
        return access.certificate.empty()
                   ? ""
                   : "a certificate is shown over TLS alone, which takes a file of CAs";
    }
    for (const std::string& path : {access.caFile, access.certificate, access.key}) {
        if (std::string why = path.empty() ? "" : WhyUnreadable(path); !why.empty()) {
            return why;
        }
    }
    return TryFiles(access);
}

} // namespace

std::string ReadAccess(const SSettings& settings, SMQTTAccess& access) {
    access = {.host = settings.mqttHost,
              .port = settings.mqttPort,
              .device = settings.mqttDevice.empty() ? HostName() : settings.mqttDevice,
              .user = settings.mqttUser,
              .password = "",
              .caFile = settings.mqttCAFile,
              .certificate = settings.mqttCertificate,
              .key = settings.mqttKey};
    if (!IsTopicLevel(access.device)) {
        return "'" + access.device +
               "' is no device's name: 1 to 100 characters, none of them '+', '#', '/' or a "
               "control character";
    }
    if (!settings.mqttPasswordFile.empty()) {
        if (access.user.empty()) {
            return "a password is of no use without a user";
        }
        if (std::string why = ReadPassword(settings.mqttPasswordFile, access.password);
            !why.empty()) {
            return why;
        }
    }
    return CheckTLS(access);
}

} // namespace Hub
