// What the encoders' tests share: a state with a value of its own in every field, and the way back
// through the daemon's framers and decoders.
#pragma once

#include "Framing/NMEASentenceConstructor.h"
#include "Framing/NovatelASCIISentenceConstructor.h"
#include "Framing/NovatelBinarySentenceConstructor.h"
#include "Framing/RecordFactory.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "sim/LogEncoder.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace SimTesting {

/// All that a framer delivers of a stream; nothing of it may be rejected.
template <class TFramer>
std::vector<Bytes::Sentence> Framed(const Bytes::Sentence& stream) {
    TFramer framer;
    framer.AddBytes(stream);
    std::vector<Bytes::Sentence> sentences;
    Bytes::Sentence sentence;
    for (int result = framer.GetSentence(sentence); result != 0;
         result = framer.GetSentence(sentence)) {
        EXPECT_EQ(result, 1) << "rejected after " << sentences.size() << " sentences";
        sentences.push_back(sentence);
    }
    return sentences;
}

template <class TFramer>
std::vector<Bytes::Sentence> Framed(std::string_view stream) {
    return Framed<TFramer>(Bytes::Sentence(stream.begin(), stream.end()));
}

inline Sim::SSolution Solution(double offset) {
    const auto small = static_cast<float>(offset);
    return {.status = 0,
            .type = 16,
            .x = 4262000.125 + offset,
            .y = 130000.25 + offset,
            .z = 4728000.5 + offset,
            .velocityX = 1.5 + offset,
            .velocityY = -2.25 - offset,
            .velocityZ = 0.125 + offset,
            .deviationX = 0.5F + small,
            .deviationY = 0.75F + small,
            .deviationZ = 1.25F + small,
            .velocityDeviation = 0.03F + small,
            .velocityLatency = 0.15F + small,
            .differentialAge = 0.0F,
            .solutionAge = 0.25F + small,
            .satellitesTracked = 19,
            .satellitesUsed = 17};
}

/// GPS 5 and 32 and GLONASS 47 used, GPS 9 below the mask, SBAS 124 tracked.
inline std::vector<Sim::SSatellite> Satellites() {
    using enum Sim::ESystem;
    return {
        {gps, 5, 0, 120.5, 45.25, 21.5e6, -350.5, 45.5F, 38.25F, true, 60.25F},
        {gps, 9, 0, 10.0, 3.5, 25.25e6, 612.0, 0.0F, 0.0F, false, 0.0F},
        {gps, 32, 0, 359.75, 75.0, 20.25e6, 12.5, 49.0F, 42.5F, true, 3000.5F},
        {glonass, 47, -7, 200.0, 30.0, 20.75e6, 700.25, 43.0F, 36.0F, true, 10.0F},
        {sbas, 124, 0, 154.25, 31.5, 38.5e6, 0.5, 39.5F, 0.0F, false, 100.0F},
    };
}

/// 2015-01-23 12:34:56.250 UTC: 16 leap seconds.
inline Sim::SState State() {
    Sim::SState state;
    state.time = {1828, 477312250};
    state.satellites = Satellites();
    state.pseudorange = Solution(1.0);
    state.rtk = Solution(0.0);
    state.rtk.type = 50;
    state.rtk.differentialAge = 1.25F;
    state.pdp = Solution(2.0);
    state.baseX = 4263000.5;
    state.baseY = -131000.75;
    state.baseZ = 4727000.125;
    state.undulation = 44.5F;
    state.clockOffset = 12.5e-9;
    return state;
}

/// The only sentence of a binary log.
inline Bytes::Sentence Binary(std::string_view name, const Sim::SState& state = State(),
                              const Sim::SReceiverInfo& info = {},
                              const Sim::SHeaderFields& header = {}) {
    const auto log = Sim::EncodeBinary(name, state, info, header);
    if (!log) {
        ADD_FAILURE() << name << " has no encoder";
        return {};
    }
    const auto sentences = Framed<Novatel::CNovatelBinarySentenceConstructor>(*log);
    EXPECT_EQ(sentences.size(), 1U) << name;
    EXPECT_EQ(*log, sentences.empty() ? Bytes::Sentence() : sentences[0]) << name;
    return *log;
}

/// A log as the daemon decodes it.
template <class TLog>
class CDecoded {
public:
    explicit CDecoded(std::string_view name, const Sim::SState& state = State(),
                      const Sim::SReceiverInfo& info = {}, const Sim::SHeaderFields& header = {})
        : m_record(CreateRecord(Binary(name, state, info, header))) {}

    const TLog& operator*() const { return dynamic_cast<const TLog&>(*m_record); }
    const TLog* operator->() const { return &**this; }

private:
    std::unique_ptr<CGPSRecord> m_record;
};

/// The fields of a text between commas.
inline std::vector<std::string> Fields(std::string_view text) {
    std::vector<std::string> fields(1);
    for (const char character : text) {
        if (character == ',') {
            fields.emplace_back();
        } else {
            fields.back() += character;
        }
    }
    return fields;
}

} // namespace SimTesting
