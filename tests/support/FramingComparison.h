// Feeds the same chunks to a framer and to its literal model and tells where they part; for the
// randomised tests and the fuzz target.
#pragma once

#include "Framing/SentenceConstructor.h"
#include "support/LiteralFraming.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct SFramerPair {
    const char* name;
    std::unique_ptr<CSentenceConstructor> framer;
    std::unique_ptr<Literal::CFramer> model;
};

/// A new framer of each kind with its model.
std::vector<SFramerPair> MakeFramerPairs();

/// Where two framers part, empty when they do not.
using CDifference = std::string;

/// How long the next chunk is, 0 included; what passes the stream's end is cut.
using CChunkLengths = std::function<std::size_t()>;

/// Feeds the stream in chunks to each framer and its model. With `drains`, both are asked after
/// each chunk until they give 0, else once after each chunk and until 0 only at the end.
CDifference CompareFramers(const std::vector<std::uint8_t>& stream, const CChunkLengths& nextLength,
                           bool drains);
