// What the hub shows, as finished texts that the threads of the web server hand out.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace Hub {

/// The main loop sets the texts; any thread takes them.
class CFrames {
public:
    enum EFrame { live, panel, metrics, health, count };
    using TText = std::shared_ptr<const std::string>;

    void Set(EFrame frame, std::string text);
    /// Empty, not null, before the first one.
    TText Get(EFrame frame) const;

    /// Seconds since the main loop has set any of them.
    double Age() const;

    struct SNumbers {
        std::uint64_t live = 0;
        std::uint64_t panel = 0;

        bool operator==(const SNumbers&) const = default;
    };
    /// How many there were of each.
    SNumbers Numbers() const;
    /// Waits until there are others than `seen`, until the timeout, or until End().
    SNumbers WaitForNew(const SNumbers& seen, std::chrono::milliseconds timeout) const;

    /// Nobody waits any more.
    void End();
    bool HasEnded() const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_hasNew;
    TText m_texts[count] = {Empty(), Empty(), Empty(), Empty()};
    SNumbers m_numbers;
    std::chrono::steady_clock::time_point m_lastSet = std::chrono::steady_clock::now();
    bool m_hasEnded = false;

    static TText Empty() { return std::make_shared<const std::string>(); }
};

} // namespace Hub
