// Factory and decoder of each log, as the port handler calls them: record/<log>.
#include "StageBench.h"

#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

struct SLog {
    const char* name;
    Bytes::Sentence sentence;
};

/// A list log with so many blocks.
template <class TLog, class TAdd>
Bytes::Sentence Blocks(TLog log, int count, TAdd add) {
    for (int i = 0; i < count; ++i) {
        add(log);
    }
    return log;
}

Bytes::Sentence SatellitesOf(std::uint16_t logID) {
    return Blocks(Sentences::Sats(logID), 20, [](auto& log) { log.satellite({}); });
}

/// Each log that is decoded, with as many blocks as a receiver in the open sends.
std::vector<SLog> Logs() {
    using namespace Sentences;
    return {
        {"VERSION", Blocks(Version(), 4, [](auto& log) { log.component({}); })},
        {"BESTPOS", Bestpos()},
        {"RANGE", Blocks(Range(), 40, [](auto& log) { log.observation({}); })},
        {"TRACKSTAT", Blocks(Trackstat(), 55, [](auto& log) { log.channel({}); })},
        {"RXSTATUS", Blocks(Rxstatus(), 5, [](auto& log) { log.status({}); })},
        {"TIME", Time()},
        {"PSRDOP", Blocks(Psrdop(), 20, [](auto& log) { log.prn(7); })},
        {"REFSTATION", Refstation()},
        {"BESTXYZ", Cartesian(241)},
        {"PSRXYZ", Cartesian(243)},
        {"RTKXYZ", Cartesian(244)},
        {"COMCONFIG", Blocks(Comconfig(), 6, [](auto& log) { log.port({}); })},
        {"PDPXYZ", Cartesian(471)},
        {"OMNIHPPOS", Omnihppos()},
        {"LBANDINFO", BinaryLog(730).bodySize(40)},
        {"LBANDSTAT", BinaryLog(731).bodySize(48)},
        {"PDPSTAT", Pdpstat()},
        {"CHANCONFIGLIST", Chanconfiglist().set({{16, 0}, {4, 1}}).set({{14, 0}})},
        {"PSRSATS", SatellitesOf(1162)},
        {"RTKSATS", SatellitesOf(1174)},
        {"PDPSATS", SatellitesOf(1234)},
        {"response", Response(1).responseID(1).responseText("OK")},
        {"unknown", BinaryLog(9999).bodySize(100)},
        {"SOFTLOADSTATUSA", AsciiLog("SOFTLOADSTATUSA", "NOT_STARTED")},
        {"NMEA", Nmea("GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")},
    };
}

void Measure(benchmark::State& state, const Bytes::Sentence& sentence) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(CreateRecord(sentence, ECRCCheck::alreadyPassed));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(sentence.size()));
}

} // namespace

void RegisterRecordBenchmarks() {
    for (const SLog& log : Logs()) {
        benchmark::RegisterBenchmark(
            (std::string("record/") + log.name).c_str(),
            [sentence = log.sentence](auto& state) { Measure(state, sentence); });
    }
}
