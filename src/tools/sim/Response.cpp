#include "Response.h"

namespace Sim {

std::string SResponse::Text() const {
    switch (number) {
    case EResponse::ok:
        return "OK";
    case EResponse::noSuchLog:
        return "Requested log does not exist";
    case EResponse::noResources:
        return "Not enough resources in system";
    case EResponse::failed:
        return "Command failed on receiver";
    case EResponse::noSuchCommand:
        return "Invalid message ID";
    case EResponse::invalidField:
        return "Invalid message. Field = " + std::to_string(field);
    case EResponse::invalidChecksum:
        return "Invalid checksum";
    case EResponse::missingField:
        return "Message missing field";
    case EResponse::outOfRange:
        return "Parameter " + std::to_string(field) + " is out of range";
    case EResponse::triggerInvalid:
        return "Trigger " + std::to_string(field) + " not valid for this log";
    case EResponse::channelInvalid:
        return "Channel is invalid";
    case EResponse::rateInvalid:
        return "Requested rate is invalid";
    case EResponse::portNotSupported:
        return "COM port not supported";
    case EResponse::unknownPort:
        return "Unknown COM port requested";
    case EResponse::badHexString:
        return "Hex string not formatted correctly";
    case EResponse::baudInvalid:
        return "Invalid baud rate";
    case EResponse::notForModel:
        return "Message is invalid for this model";
    }
    return {};
}

} // namespace Sim
