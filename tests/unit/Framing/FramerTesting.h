// What the framers' tests say everything with: what a framer answers to a stream.
#pragma once

#include "Framing/SentenceConstructor.h"
#include "support/SentenceMaker.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

/// Stands for one rejected sentence among the delivered ones; no framer delivers it.
inline const std::string kRejection = "(rejected)";

inline std::string Text(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

/// Asks until nothing is left.
inline std::vector<std::string> Drain(CSentenceConstructor& framer) {
    std::vector<std::string> answers;
    std::vector<std::uint8_t> sentence;
    for (int result = framer.GetSentence(sentence); result != 0;
         result = framer.GetSentence(sentence)) {
        answers.push_back(result == 1 ? Text(sentence) : kRejection);
    }
    return answers;
}

/// Adds one chunk and asks until nothing is left.
inline std::vector<std::string> Feed(CSentenceConstructor& framer, std::string_view chunk) {
    framer.AddBytes(SentenceMaker::Bytes(chunk));
    return Drain(framer);
}

/// What a new framer answers to the stream in one chunk.
template <typename Framer>
std::vector<std::string> Answers(std::string_view stream) {
    Framer framer;
    return Feed(framer, stream);
}

/// The same with the stream cut into single bytes; the answers to each byte but the last, then
/// those to the last one.
struct SBytewiseAnswers {
    std::vector<std::string> before;
    std::vector<std::string> atLast;
};

template <typename Framer>
SBytewiseAnswers BytewiseAnswers(std::string_view stream) {
    Framer framer;
    SBytewiseAnswers answers;
    for (const char& byte : stream) {
        answers.before.insert(answers.before.end(), answers.atLast.begin(), answers.atLast.end());
        answers.atLast = Feed(framer, {&byte, 1});
    }
    return answers;
}
