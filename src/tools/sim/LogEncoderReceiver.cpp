// What the receiver says of itself: components, states, ports, channels, the L-band service.
#include "LogBodies.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Sim {

namespace {

struct SSoftloadStatus {
    std::string_view text;
    std::uint32_t number;
};

constexpr SSoftloadStatus kSoftloadStatuses[] = {
    {"NOT_STARTED", 1},
    {"READY_FOR_SETUP", 2},
    {"READY_FOR_DATA", 3},
    {"DATA_VERIFIED", 4},
    {"WRITING_FLASH", 5},
    {"WROTE_FLASH", 6},
    {"WROTE_AUTHCODE", 7},
    {"COMPLETE", 8},
    {"VERIFYING_DATA", 9},
    {"COPIED_SIGNATURE_AUTH", 10},
    {"WROTE_TRANSACTION_TABLE", 11},
    {"MULTIPLE_IMAGES_IN_FLASH", 12},
    {"PROCESSING_FILE", 13},
    {"ERROR", 16},
    {"RESET_ERROR", 17},
    {"BAD_SRECORD", 18},
    {"BAD_PLATFORM", 19},
    {"BAD_MODULE", 20},
    {"BAD_AUTHCODE", 21},
    {"NOT_READY_FOR_SETUP", 22},
    {"NO_MODULE", 23},
    {"NO_PLATFORM", 24},
    {"NOT_READY_FOR_DATA", 25},
    {"MODULE_MISMATCH", 26},
    {"OUT_OF_MEMORY", 27},
    {"DATA_OVERLAP", 28},
    {"BAD_IMAGE_CRC", 29},
    {"IMAGE_OVERSIZE", 30},
    {"AUTHCODE_WRITE_ERROR", 31},
    {"BAD_FLASH_ERASE", 32},
    {"BAD_FLASH_WRITE", 33},
    {"TIMEOUT", 34},
    {"INCOMPATIBLE_FLASH", 35},
};

/// A text that the receiver does not have is the general error.
std::uint32_t SoftloadNumber(std::string_view text) {
    constexpr std::uint32_t kError = 16;
    const auto* const status = std::ranges::find(kSoftloadStatuses, text, &SSoftloadStatus::text);
    return status == std::end(kSoftloadStatuses) ? kError : status->number;
}

constexpr std::uint32_t kBeam = 1'547'547; ///< of the L-band service, kHz

} // namespace

namespace LogBodies {

void VERSION(CByteWriter& body, const SLogInput& input) {
    constexpr std::uint32_t kReceiverCard = 1;
    const SReceiverInfo& info = input.info;
    body.Count(1).U32(kReceiverCard);
    body.Text(info.model, 16).Text(info.serialNumber, 16).Text(info.hardwareVersion, 16);
    body.Text(info.softwareVersion, 16).Text(info.bootVersion, 16);
    body.Text(info.compileDate, 12).Text(info.compileTime, 12);
}

void RXSTATUS(CByteWriter& body, const SLogInput& input) {
    struct SWord {
        std::uint32_t status;
        std::uint32_t priority;
        std::uint32_t set;
        std::uint32_t clear;
    };
    // As a receiver in normal running has its auxiliary words.
    const SWord words[] = {{input.info.statusWord, 0, 0, 0},
                           {0x87, 0x08, 0, 0},
                           {0x20D, 0, 0x289, 0x289},
                           {0x10, 0x28, 0x6FF, 0x6FF}};
    body.U32(input.info.errorWord).Count(std::size(words));
    for (const SWord& word : words) {
        body.U32(word.status).U32(word.priority).U32(word.set).U32(word.clear);
    }
}

void COMCONFIG(CByteWriter& body, const SLogInput& input) {
    constexpr std::uint32_t kNone = 0;
    constexpr std::uint32_t kDataBits = 8;
    constexpr std::uint32_t kStopBits = 1;
    constexpr std::uint32_t kOff = 0;
    constexpr std::uint32_t kOn = 1;
    body.Count(input.info.ports.size());
    for (const SPortSettings& port : input.info.ports) {
        body.U32(port.port).U32(port.baud);
        body.U32(kNone).U32(kDataBits).U32(kStopBits).U32(kNone); // parity to handshake
        body.U32(kOff).U32(kOn);                                  // echo, break detection
        body.U32(port.receiveMode).U32(port.transmitMode).U32(port.hasResponses ? kOn : kOff);
    }
}

void CHANCONFIGLIST(CByteWriter& body, const SLogInput& input) {
    const SReceiverInfo& info = input.info;
    body.U32(info.channelConfigurationInUse).Count(info.channelConfigurations.size());
    for (const std::vector<SChannelGroup>& configuration : info.channelConfigurations) {
        body.Count(configuration.size());
        for (const SChannelGroup& group : configuration) {
            body.U32(group.channels).U32(group.signalType);
        }
    }
}

void SOFTLOADSTATUS(CByteWriter& body, const SLogInput& input) {
    body.U32(SoftloadNumber(input.info.softloadStatus));
}

// Without a subscription the L-band channel is idle.
void LBANDINFO(CByteWriter& body, const SLogInput&) {
    constexpr std::uint32_t kBaud = 1200;
    constexpr std::uint16_t kService = 0x0C68;
    constexpr std::uint32_t kSerialNumber = 397'081;
    body.U32(kBeam).U32(kBaud).U16(kService).U16(0).U32(kSerialNumber);
    body.U32(0).U32(0).U32(0); // VBS subscription: expired
    body.U32(0).U32(0).U32(0); // HP subscription: expired
    body.U32(0);
}

void LBANDSTAT(CByteWriter& body, const SLogInput&) {
    constexpr std::uint16_t kIdle = 3;
    constexpr std::uint16_t kSubscriptionExpired = 1;
    body.U32(kBeam * 1000).Float(0.0F).Float(0.0F).Float(0.0F);
    body.U16(kIdle).U16(kSubscriptionExpired);
    body.U32(0).U32(0).U32(0);
    body.U16(0).U16(0).U32(0).U32(kSubscriptionExpired).U32(0);
}

} // namespace LogBodies

} // namespace Sim
