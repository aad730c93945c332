// How tests look at the ends that a damaged log orders.
#pragma once

#include "Framing/RecordFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

/// The record of a sentence, with the trace going to standard error whatever the environment says.
inline void Decode(const Bytes::Sentence& sentence) {
    ::unsetenv("CORVANE_TRACE");
    CreateRecord(sentence);
}

/// `assertion` is everything behind the program's name; `before` is what is printed ahead of it.
inline void ExpectFailedAssertion(const Bytes::Sentence& sentence, const std::string& assertion,
                                  const std::string& before = "") {
    const std::string line = std::string(program_invocation_short_name) + ": " + assertion + "\n";
    EXPECT_EXIT(Decode(sentence), testing::KilledBySignal(SIGABRT),
                testing::StartsWith(before + line));
}

inline void ExpectExitOne(const Bytes::Sentence& sentence, const std::string& output) {
    EXPECT_EXIT(Decode(sentence), testing::ExitedWithCode(1), testing::Eq(output));
}
