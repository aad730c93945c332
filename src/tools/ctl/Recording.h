// Cuts a capture into the blocks of a recording, each at the moment that its logs tell.
#pragma once

#include "platform/RecordingWriter.h"
#include "platform/Time.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Ctl {

/// Cuts a capture where the GPS time of its binary logs changes. What is between two logs goes with
/// the first one, what is before the first log with that. A log that is older than the one before,
/// as those are that tell when their content was made, goes with that; after many of them the
/// receiver's time itself has gone back, and goes on from where it was.
class CBlockSplitter {
public:
    using Take = std::function<void(Core::UnixTime time, std::string_view block)>;

    /// A longer block is cut into several of the same time.
    static constexpr std::size_t kMaxBlock = CRecordingWriter::kLongestBlock;
    static constexpr int kManyOlder = 200;

    explicit CBlockSplitter(Take take) : m_take(std::move(take)) {}

    void Add(std::string_view bytes);
    /// Hands out what is left. False when no log has told a time: then nothing was handed out.
    bool Finish();

private:
    struct SMoment {
        std::uint16_t week = 0;
        std::uint32_t milliseconds = 0;

        bool operator==(const SMoment&) const = default;
    };

    bool ScanLog(bool isEnd);
    void TakeMoment(const SMoment& moment, std::size_t at);
    void HandOut(std::size_t count);

    Take m_take;
    std::string m_buffer;      ///< what is not handed out yet
    std::size_t m_scanned = 0; ///< of which so much has been looked at
    std::optional<SMoment> m_moment;
    Core::UnixTime m_time;
    Core::Time m_shift; ///< what times that went back have added
    int m_older = 0;    ///< logs in a row that are older than the block that they are in
};

} // namespace Ctl
