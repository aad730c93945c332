// The base of the framers, which cut the receiver's byte stream into whole, checked sentences; the
// port handlers feed them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Each framer watches for one kind of sentence and skips everything else. Chunks may be cut
/// anywhere: a sentence may span many of them and one chunk may hold many sentences. Only sentences
/// whose checksum is right are delivered.
///
/// For one thread. Malformed input is never an error of the framer: it neither throws nor logs.
class CSentenceConstructor {
public:
    static constexpr int kCompleted = 1;
    static constexpr int kRejected = -1;
    static constexpr int kExhausted = 0;

    CSentenceConstructor() = default;
    CSentenceConstructor(const CSentenceConstructor&) = delete;
    CSentenceConstructor& operator=(const CSentenceConstructor&) = delete;
    virtual ~CSentenceConstructor() = default;

    /// Takes a copy of the chunk, behind what is still unread.
    void AddBytes(const std::vector<std::uint8_t>& chunk);

    /// Reads on to the next sentence; call it until it returns 0.
    ///   1: `out` is a whole sentence;
    ///  -1: a sentence was rejected (checksum, form or size), `out` is empty, reading can go on;
    ///   0: every byte is read, `out` is untouched; a sentence that has begun waits for more.
    int GetSentence(std::vector<std::uint8_t>& out);

protected:
    /// One step of the framer: reads up to the next completed or rejected sentence or the end of
    /// the input. Gives one of the three results above.
    virtual int ConstructSentence() = 0;

    /// The input that is not done with. A sentence under construction stays at its front, so the
    /// front is all the state that a framer has.
    std::span<const std::uint8_t> Unread() const {
        return {m_input.data() + m_begin, m_input.size() - m_begin};
    }

    void Drop(std::size_t count) { m_begin += count; }

    /// Drops everything before the first `start` and returns whether there is one. Where start
    /// bytes follow each other closely, a search would cost more than it skips.
    bool HuntFor(std::uint8_t start) {
        const std::span<const std::uint8_t> unread = Unread();
        return !unread.empty() && (unread.front() == start || SearchFor(start));
    }

    /// The sentence is the first `length` unread bytes; `count` bytes are done with.
    int Complete(std::size_t length, std::size_t count);

    /// The first `count` unread bytes are lost.
    int Reject(std::size_t count);

private:
    bool SearchFor(std::uint8_t start);

    std::vector<std::uint8_t> m_input;
    std::size_t m_begin = 0;
    /// A part of m_input, until GetSentence copies it.
    std::span<const std::uint8_t> m_completed;
};
