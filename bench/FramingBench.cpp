// Framers and CRC, each beside its literal model: framers/<stream>, model/<stream>, ...
#include "StageBench.h"

#include "Bytes/CRC32.h"
#include "support/FramingComparison.h"
#include "support/StreamMaker.h"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

using ByteVector = std::vector<std::uint8_t>;

/// What the daemon reads at once at most, unless told otherwise.
constexpr std::size_t kChunkSize = 65536;
constexpr std::size_t kStreamSize = std::size_t{1} << 20;

struct SStream {
    std::string name;
    std::vector<ByteVector> chunks;
    std::int64_t size;
};

SStream Cut(const std::string& name, const ByteVector& bytes) {
    SStream stream{name, {}, static_cast<std::int64_t>(bytes.size())};
    for (std::size_t begin = 0; begin < bytes.size(); begin += kChunkSize) {
        const std::size_t end = std::min(bytes.size(), begin + kChunkSize);
        stream.chunks.emplace_back(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                                   bytes.begin() + static_cast<std::ptrdiff_t>(end));
    }
    return stream;
}

/// The real capture where there is one, a stream like a receiver's, and all hostile ones.
const std::vector<SStream>& Streams() {
    static const std::vector<SStream> streams = [] {
        std::vector<SStream> all;
        const ByteVector capture = StreamMaker::ReadCapture("rtklib-oemv.gps");
        if (!capture.empty()) {
            all.push_back(Cut("capture", capture));
        }
        all.push_back(Cut("synthetic", StreamMaker::ReceiverStream(kStreamSize)));
        for (const StreamMaker::SHostileStream& hostile : StreamMaker::HostileStreams()) {
            all.push_back(Cut(std::string("hostile:") + hostile.name,
                              StreamMaker::Repeated(hostile.pattern, kStreamSize)));
        }
        return all;
    }();
    return streams;
}

/// As the port handler does: a chunk to each framer, then asking each until it gives 0.
template <typename Framer>
void Pass(const std::vector<Framer*>& framers, const SStream& stream, ByteVector& sentence) {
    for (const ByteVector& chunk : stream.chunks) {
        for (Framer* framer : framers) {
            framer->AddBytes(chunk);
            while (framer->GetSentence(sentence) != 0) {
                benchmark::DoNotOptimize(sentence.data());
            }
        }
    }
}

template <typename Framer>
void Measure(benchmark::State& state, const std::vector<Framer*>& framers, const SStream& stream) {
    ByteVector sentence;
    for (auto _ : state) {
        Pass(framers, stream, sentence);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * stream.size);
}

void MeasureFramers(benchmark::State& state, const SStream& stream) {
    std::vector<SFramerPair> pairs = MakeFramerPairs();
    std::vector<CSentenceConstructor*> framers;
    for (SFramerPair& pair : pairs) {
        framers.push_back(pair.framer.get());
    }
    Measure(state, framers, stream);
}

void MeasureModels(benchmark::State& state, const SStream& stream) {
    std::vector<SFramerPair> pairs = MakeFramerPairs();
    std::vector<Literal::CFramer*> models;
    for (SFramerPair& pair : pairs) {
        models.push_back(pair.model.get());
    }
    Measure(state, models, stream);
}

void MeasureFramer(benchmark::State& state, const SStream& stream, std::size_t index) {
    std::vector<SFramerPair> pairs = MakeFramerPairs();
    Measure(state, std::vector{pairs[index].framer.get()}, stream);
}

template <auto Function>
void MeasureCRC(benchmark::State& state) {
    const ByteVector bytes(static_cast<std::size_t>(state.range(0)), std::uint8_t{0x5A});
    for (auto _ : state) {
        benchmark::DoNotOptimize(Function(bytes.data(), bytes.size()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

} // namespace

void RegisterFramingBenchmarks() {
    for (const SStream& stream : Streams()) {
        benchmark::RegisterBenchmark(("framers/" + stream.name).c_str(),
                                     [&stream](auto& state) { MeasureFramers(state, stream); });
        benchmark::RegisterBenchmark(("model/" + stream.name).c_str(),
                                     [&stream](auto& state) { MeasureModels(state, stream); });
        const std::vector<SFramerPair> pairs = MakeFramerPairs();
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            benchmark::RegisterBenchmark(
                (std::string("framer:") + pairs[i].name + "/" + stream.name).c_str(),
                [&stream, i](auto& state) { MeasureFramer(state, stream, i); });
        }
    }
    // A response, a position, the channels of a receiver.
    for (const int size : {38, 104, 2244}) {
        benchmark::RegisterBenchmark("crc", MeasureCRC<Bytes::CalculateCRC32>)->Arg(size);
        benchmark::RegisterBenchmark("crc:bitwise", MeasureCRC<Literal::BitwiseCRC32>)->Arg(size);
    }
}
