// The framers written down as slowly and plainly as they are described: one byte at a time from a
// double-ended queue, CRCs bit by bit; tests, fuzz targets and benchmarks hold the fast ones
// against them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

/// They share no line with the framers that they judge. Results and `out` as
/// CSentenceConstructor gives them.
namespace Literal {

using Sentence = std::vector<std::uint8_t>;

std::uint32_t BitwiseCRC32(const std::uint8_t* bytes, std::size_t length);

class CFramer {
public:
    virtual ~CFramer() = default;
    void AddBytes(const std::vector<std::uint8_t>& chunk);
    int GetSentence(Sentence& out);

protected:
    virtual int ConstructSentence() = 0;

    std::uint8_t TakeByte();
    int Finish(bool isValid);

    std::deque<std::uint8_t> m_queue;
    Sentence m_sentence;
    Sentence m_completed;
    unsigned m_state = 0;
};

class CBinaryFramer : public CFramer {
protected:
    int ConstructSentence() override;

private:
    void TakeSync(std::uint8_t byte);
    void TakeHeader(std::uint8_t byte);

    std::uint32_t m_expectedLength = 0;
    std::uint32_t m_messageLength = 0;
    std::uint32_t m_headerLength = 0;
};

class CTextFramer : public CFramer {
protected:
    CTextFramer(std::uint8_t start, std::size_t sizeLimit)
        : m_start(start), m_sizeLimit(sizeLimit) {}
    int ConstructSentence() override;
    virtual bool Verify() const = 0;

private:
    std::uint8_t m_start;
    std::size_t m_sizeLimit;
};

class CASCIIFramer : public CTextFramer {
public:
    CASCIIFramer() : CTextFramer('#', 4096) {}

protected:
    bool Verify() const override;
};

class CNMEAFramer : public CTextFramer {
public:
    CNMEAFramer() : CTextFramer('$', 1024) {}

protected:
    bool Verify() const override;
};

} // namespace Literal
