#include "hub/services/MessageReader.h"

#include "hub/services/Base64.h"
#include "platform/MPISocketConnection.h"

#include <array>
#include <cstdint>
#include <limits>

namespace Hub {

namespace {

constexpr std::size_t kLongestValue = std::size_t{64} * 1024;
constexpr std::size_t kLongestSentence = 8192; ///< twice what a port cuts out
/// A receiver of this kind has some 120 channels.
constexpr std::size_t kMostChannels = 512;
/// What a double still counts in ones.
constexpr std::int64_t kLargestCount = std::int64_t{1} << 53;

void ReadCommon(CFields& fields, SMessage& message) {
    message.name = fields.Name("name");
    message.time = fields.FiniteNumber("time");
}

/// One of two words, which tells an enumeration's values apart.
template <class T>
T Either(CFields& fields, const char* name, const char* first, T firstValue, const char* second,
         T secondValue) {
    const std::string word = fields.Text(name, kLongestValue);
    if (word != first && word != second) {
        fields.Refuse(std::string("\"") + name + "\" must be \"" + first + "\" or \"" + second +
                      "\"");
    }
    return word == first ? firstValue : secondValue;
}

SSky::SChannel ReadChannel(CFields& fields, const BAtomC& value) {
    SSky::SChannel channel;
    const BDictionaryC* const members = value.AsDictionary();
    if (members == nullptr) {
        fields.Refuse("each of \"satellites\" must be an object");
        return channel;
    }
    constexpr std::int64_t kWord = std::numeric_limits<std::uint32_t>::max();
    CFields inner(*members);
    channel.prn = static_cast<std::uint8_t>(inner.Count("prn", 255));
    channel.word1 = static_cast<std::uint32_t>(inner.Count("word1", kWord));
    channel.word2 = static_cast<std::uint32_t>(inner.Count("word2", kWord));
    const double cn0 = inner.Number("cn0");
    if (cn0 == cn0) {
        channel.cn0 = cn0;
    }
    if (!inner.WhyWrong().empty()) {
        fields.Refuse("in \"satellites\": " + inner.WhyWrong());
    }
    return channel;
}

void ReadUsed(CFields& fields, std::array<std::int32_t, 3>& satellites) {
    const BListC list = fields.List("satellites");
    bool areAllWhole = list.Size() == satellites.size();
    for (std::size_t i = 0; i < satellites.size(); ++i) {
        const auto number = list.At(i).AsInteger();
        areAllWhole = areAllWhole && number;
        satellites[i] = number.value_or(0);
    }
    if (!areAllWhole) {
        fields.Refuse("\"satellites\" must be three whole numbers");
    }
}

void ReadIdentity(CFields& fields, SDiagnostic& message) {
    ReadCommon(fields, message);
    message.code = fields.Integer("code");
    message.sub = fields.Integer("sub");
}

} // namespace

void Read(CFields& fields, SRegistration& message) {
    ReadCommon(fields, message);
    message.process = fields.Name("process");
    message.pid = fields.Integer("pid");
    message.version = fields.Name("version");
}

void Read(CFields& fields, SStatus& message) {
    ReadCommon(fields, message);
    message.level =
        Either(fields, "level", "essential", EStatusLevel::essential, "info", EStatusLevel::info);
    message.key = fields.Name("key");
    message.value = fields.Text("value", kLongestValue);
}

void Read(CFields& fields, SDataLine& message) {
    ReadCommon(fields, message);
    message.key = fields.Name("key");
    message.value = fields.Text("value", kLongestValue);
}

void Read(CFields& fields, SEvent& message) {
    ReadCommon(fields, message);
    message.level =
        Either(fields, "level", "warning", EEventLevel::warning, "error", EEventLevel::error);
    message.text = fields.Text("text", kLongestValue);
}

void Read(CFields& fields, SRawBlock& message) {
    ReadCommon(fields, message);
    auto bytes = FromBase64(fields.Text("data", MPISocketConnectionC::kMaxLine));
    if (!bytes) {
        fields.Refuse("\"data\" must be base64");
    } else {
        message.bytes = std::move(*bytes);
    }
}

void Read(CFields& fields, SSolution& message) {
    ReadCommon(fields, message);
    Position::SECEFPositionSolutionData& data = message.data;
    data.x = fields.Number("x");
    data.y = fields.Number("y");
    data.z = fields.Number("z");
    data.velocityX = fields.Number("vx");
    data.velocityY = fields.Number("vy");
    data.velocityZ = fields.Number("vz");
    data.standardDeviationX = fields.Number("sx");
    data.standardDeviationY = fields.Number("sy");
    data.standardDeviationZ = fields.Number("sz");
    data.week = fields.Integer("week");
    data.seconds = fields.Number("seconds");
    data.hostTime = fields.Number("hostTime");
    data.positionQuality = fields.Integer("positionQuality");
    data.fixQuality = fields.Integer("fixQuality");
    data.differentialAge = fields.Number("differentialAge");
    ReadUsed(fields, data.satellites);
    data.hdop = fields.Number("hdop");
    data.vdop = fields.Number("vdop");
    data.solutionClass = fields.Integer("solutionClass");
    data.velocityLatency = fields.Number("velocityLatency");
}

void Read(CFields& fields, SSky& message) {
    ReadCommon(fields, message);
    const BListC list = fields.List("satellites");
    if (list.Size() > kMostChannels) {
        fields.Refuse("\"satellites\" must be at most " + std::to_string(kMostChannels));
        return;
    }
    message.channels.reserve(list.Size());
    for (const BAtomC& value : list) {
        message.channels.push_back(ReadChannel(fields, value));
    }
}

void Read(CFields& fields, SBase& message) {
    ReadCommon(fields, message);
    message.x = fields.Number("x");
    message.y = fields.Number("y");
    message.z = fields.Number("z");
}

void Read(CFields& fields, SReference& message) {
    ReadCommon(fields, message);
    message.week = fields.Integer("week");
    message.seconds = fields.Number("seconds");
    message.x = fields.Number("x");
    message.y = fields.Number("y");
    message.z = fields.Number("z");
    message.gps = fields.Integer("gps");
    message.glonass = fields.Integer("glonass");
    message.other = fields.Integer("other");
}

void Read(CFields& fields, SSentence& message) {
    ReadCommon(fields, message);
    message.id = fields.Name("id");
    message.gpsTime = fields.Count("gpsTime", kLargestCount);
    message.sentence = fields.Text("sentence", kLongestSentence);
}

void Read(CFields& fields, SGeoid& message) {
    ReadCommon(fields, message);
    message.separation = fields.Number("separation");
}

void Read(CFields& fields, SActivity& message) {
    ReadCommon(fields, message);
    message.received = fields.Count("received", kLargestCount);
    message.sentences = fields.Count("sentences", kLargestCount);
}

void ReadRaised(CFields& fields, SDiagnostic& message) {
    ReadIdentity(fields, message);
    message.isRaised = true;
    message.value = fields.Number("value");
}

void ReadCleared(CFields& fields, SDiagnostic& message) {
    ReadIdentity(fields, message);
    message.isRaised = false;
}

} // namespace Hub
