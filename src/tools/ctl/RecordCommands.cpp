// Captures and recordings: what is in them, and one made of the other.

#include "CaptureSummary.h"
#include "Commands.h"
#include "Progress.h"
#include "Recording.h"
#include "platform/LogFileReader.h"
#include "platform/RecordingWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>

namespace Ctl {

namespace {

constexpr std::size_t kChunk = std::size_t{16} * 1024;
constexpr double kSecondsPerWeek = 604'800.0;

/// The first bytes of a recording: microseconds or nanoseconds, in either byte order.
constexpr std::string_view kMagics[] = {"\xA1\xB2\xC3\xD4", "\xD4\xC3\xB2\xA1", "\xA1\xB2\x3C\x4D",
                                        "\x4D\x3C\xB2\xA1"};

struct SConvertArguments {
    std::string capture;
    std::string recording;
    bool mayReplace = false;
};

/// The file, open, and its size; told when it cannot be read.
bool OpenFile(SContext& context, const std::string& path, std::ifstream& file,
              std::uintmax_t& size) {
    std::error_code failure;
    size = std::filesystem::file_size(path, failure);
    if (!failure) {
        file.open(path, std::ios::binary);
        failure = file ? std::error_code() : std::error_code(errno, std::generic_category());
    }
    if (failure) {
        context.output.Fail(EStatus::refused, path + ": " + failure.message());
    }
    return !failure;
}

bool IsRecording(std::ifstream& file) {
    std::array<char, 4> magic{};
    file.read(magic.data(), magic.size());
    file.clear();
    file.seekg(0);
    const std::string_view found(magic.data(), magic.size());
    return std::find(std::begin(kMagics), std::end(kMagics), found) != std::end(kMagics);
}

/// Hands out the file's bytes and shows how far that is. Returns why it could not be read whole.
std::string ReadAll(SContext& context, std::ifstream& file, std::uintmax_t size,
                    const std::function<std::string(std::string_view)>& take) {
    constexpr std::uintmax_t kLongWork = std::uintmax_t{32} * 1024 * 1024;
    std::unique_ptr<CProgress> progress;
    if (size > kLongWork && !context.output.IsJSON()) {
        progress = std::make_unique<CProgress>(stderr);
    }
    std::vector<char> chunk(kChunk);
    std::uintmax_t taken = 0;
    while (file) {
        file.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        const auto count = static_cast<std::size_t>(file.gcount());
        if (std::string why = take({chunk.data(), count}); !why.empty()) {
            return why;
        }
        taken += count;
        if (progress != nullptr) {
            progress->Show(static_cast<std::int32_t>(taken * 100 / size));
        }
    }
    return file.bad() ? std::strerror(errno) : "";
}

void Convert(SContext& context, const SConvertArguments& given) {
    std::ifstream file;
    std::uintmax_t size = 0;
    if (!OpenFile(context, given.capture, file, size)) {
        return;
    }
    if (IsRecording(file)) {
        context.output.Fail(EStatus::usage, given.capture + " is a recording already");
        return;
    }
    if (!given.mayReplace && std::filesystem::exists(given.recording)) {
        context.output.Fail(EStatus::refused, given.recording + " exists already",
                            "--force replaces it.");
        return;
    }
    CRecordingWriter writer;
    std::string why = writer.Open(given.recording);
    std::uint64_t blocks = 0;
    std::optional<Core::UnixTime> first;
    Core::UnixTime last;
    CBlockSplitter splitter([&](Core::UnixTime time, std::string_view block) {
        why = why.empty() ? writer.Write(time, block) : why;
        first = first.value_or(time);
        last = time;
        ++blocks;
    });
    const auto take = [&](std::string_view bytes) {
        splitter.Add(bytes);
        return why;
    };
    why = why.empty() ? ReadAll(context, file, size, take) : why;
    const bool hasTime = why.empty() && splitter.Finish();
    if (why.empty() && !hasTime) {
        why = given.capture + " has no binary log with a GPS time, which alone tells its pace";
    }
    why = why.empty() ? writer.Finish() : why;
    if (!why.empty()) {
        context.output.Fail(EStatus::refused, why);
        return;
    }
    const double seconds = (last - *first).AsSeconds();
    std::array<char, 64> length{};
    std::snprintf(length.data(), length.size(), "%.1f", seconds);
    context.output.Tell(given.recording + ": " + std::to_string(blocks) + " blocks over " +
                            length.data() + " s",
                        {{"recording", given.recording}, {"blocks", blocks}, {"seconds", seconds}});
}

/// Of a recording alone.
struct SBlocks {
    std::uint64_t count = 0;
    double first = 0.0; ///< seconds since the Unix epoch
    double last = 0.0;
};

std::optional<SBlocks> SummariseRecording(SContext& context, const std::string& path,
                                          CCaptureSummary& summary) {
    CLogFileReader reader(path);
    if (!reader.IsOpen()) {
        context.output.Fail(EStatus::refused, path + " cannot be read as a recording");
        return std::nullopt;
    }
    SBlocks blocks;
    std::string data;
    for (double time = 0.0; reader.GetNextBinary(time, data);) {
        blocks.first = blocks.count++ == 0 ? time : blocks.first;
        blocks.last = time;
        summary.Add(data);
    }
    return blocks;
}

std::string GPSText(std::int64_t milliseconds) {
    const double seconds = static_cast<double>(milliseconds) / 1000.0;
    const auto week = static_cast<std::int64_t>(seconds / kSecondsPerWeek);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "week %lld, %.3f s", static_cast<long long>(week),
                  seconds - static_cast<double>(week) * kSecondsPerWeek);
    return text.data();
}

TJSON Document(const CCaptureSummary& summary, const std::optional<SBlocks>& blocks) {
    TJSON logs = TJSON::object();
    for (const auto& [name, log] : summary.Logs()) {
        const auto rate = log.Rate();
        logs[name] = {{"count", log.Count()},
                      {"rate", rate ? TJSON(*rate) : TJSON()},
                      {"gaps", log.Gaps()},
                      {"longestGap", log.LongestGap()}};
    }
    const auto framing = [](const CCaptureSummary::SFraming& each) {
        return TJSON{{"good", each.good}, {"rejected", each.rejected}};
    };
    TJSON document = {{"bytes", summary.Bytes()},
                      {"logs", logs},
                      {"binary", framing(summary.Binary())},
                      {"ascii", framing(summary.ASCII())},
                      {"nmea", framing(summary.NMEA())}};
    if (blocks) {
        document["blocks"] = blocks->count;
        document["seconds"] = blocks->last - blocks->first;
    }
    return document;
}

std::string LogLine(const std::string& name, const CLogStatistics& log) {
    std::array<char, 128> line{};
    const auto rate = log.Rate();
    std::array<char, 32> perSecond{"-"};
    if (rate) {
        std::snprintf(perSecond.data(), perSecond.size(), "%.3f", *rate);
    }
    std::snprintf(line.data(), line.size(), "%-20s %10llu %10s %8llu %10.3f\n", name.c_str(),
                  static_cast<unsigned long long>(log.Count()), perSecond.data(),
                  static_cast<unsigned long long>(log.Gaps()), log.LongestGap());
    return line.data();
}

std::string Text(const CCaptureSummary& summary, const std::optional<SBlocks>& blocks) {
    std::string text = "log                       count   a second     gaps  longest, s\n";
    std::int64_t first = 0;
    std::int64_t last = 0;
    for (const auto& [name, log] : summary.Logs()) {
        text += LogLine(name, log);
        if (log.First() != 0) {
            first = first == 0 ? log.First() : std::min(first, log.First());
            last = std::max(last, log.Last());
        }
    }
    text +=
        first == 0 ? "no GPS time\n" : "from " + GPSText(first) + "\nto   " + GPSText(last) + "\n";
    const auto framing = [](const char* kind, const CCaptureSummary::SFraming& each) {
        return std::string(kind) + ": " + std::to_string(each.good) + " good, " +
               std::to_string(each.rejected) + " rejected\n";
    };
    text += framing("binary logs", summary.Binary()) + framing("ASCII logs", summary.ASCII()) +
            framing("NMEA sentences", summary.NMEA()) +
            "(a '#' or '$' within a binary log counts as a text that is rejected)\n";
    if (blocks) {
        text += std::to_string(blocks->count) + " recorded blocks\n";
    }
    return text;
}

void Inform(SContext& context, const std::string& path) {
    std::ifstream file;
    std::uintmax_t size = 0;
    if (!OpenFile(context, path, file, size)) {
        return;
    }
    CCaptureSummary summary;
    std::optional<SBlocks> blocks;
    if (IsRecording(file)) {
        blocks = SummariseRecording(context, path, summary);
        if (!blocks) {
            return;
        }
    } else {
        const std::string why = ReadAll(context, file, size, [&](std::string_view bytes) {
            summary.Add(bytes);
            return std::string();
        });
        if (!why.empty()) {
            context.output.Fail(EStatus::refused, path + ": " + why);
            return;
        }
    }
    context.output.Tell(Text(summary, blocks), Document(summary, blocks));
}

} // namespace

void AddRecordCommands(CLI::App& app, SContext& context) {
    CLI::App& command = AddCommand(app,
                                   {.name = "record",
                                    .summary = "Captures and recordings of a receiver's bytes",
                                    .examples = "record info capture.gps\n"
                                                "record convert capture.gps recording.pcap"},
                                   kToolGroup);
    command.require_subcommand(1);
    const auto path = std::make_shared<std::string>();
    CLI::App& info = AddCommand(
        command, {.name = "info",
                  .summary = "What is in a capture or a recording",
                  .details = "Logs with their counts, rates and gaps by GPS time, the time span, "
                             "and what was rejected.",
                  .examples = "record info capture.gps\n--json record info recording.pcap"});
    info.add_option("FILE", *path, "A capture of raw bytes, or a recording")
        ->type_name("")
        ->required();
    OnRun(info, context, [&context, path] { Inform(context, *path); });

    const auto given = std::make_shared<SConvertArguments>();
    CLI::App& convert = AddCommand(
        command,
        {.name = "convert",
         .summary = "Makes a recording of a capture",
         .details = "The GPS time of its binary logs paces it. \"corvane -r\" plays it; any pcap "
                    "tool reads it.",
         .examples = "record convert capture.gps recording.pcap\n"
                     "record convert --force capture.gps recording.pcap"});
    convert.add_option("CAPTURE", given->capture, "The capture of raw bytes")
        ->type_name("")
        ->required();
    convert.add_option("RECORDING", given->recording, "The file that is made")
        ->type_name("")
        ->required();
    convert.add_flag("--force", given->mayReplace, "Replace a file that is there");
    OnRun(convert, context, [&context, given] { Convert(context, *given); });
}

} // namespace Ctl
