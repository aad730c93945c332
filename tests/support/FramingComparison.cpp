#include "support/FramingComparison.h"

#include "Framing/NMEASentenceConstructor.h"
#include "Framing/NovatelASCIISentenceConstructor.h"
#include "Framing/NovatelBinarySentenceConstructor.h"

#include <algorithm>

namespace {

using ByteVector = std::vector<std::uint8_t>;

template <typename Framer, typename Model>
SFramerPair MakePair(const char* name) {
    return {name, std::make_unique<Framer>(), std::make_unique<Model>()};
}

struct SOutcome {
    int result = 0;
    ByteVector out;
    bool operator==(const SOutcome&) const = default;
};

/// The vector is not empty before, so that leaving it alone and emptying it differ.
template <typename Framer>
void Ask(Framer& framer, SOutcome& outcome) {
    outcome.out.assign({1, 2, 3});
    outcome.result = framer.GetSentence(outcome.out);
}

std::string Describe(const SOutcome& outcome) {
    return std::to_string(outcome.result) + " (" + std::to_string(outcome.out.size()) + " bytes)";
}

/// Asks framers and models in turn; what they answer is kept only to save allocations.
class CQuestioner {
public:
    /// Asks all pairs once, or each of them until one of it gives 0.
    CDifference Compare(std::vector<SFramerPair>& pairs, bool once) {
        for (SFramerPair& pair : pairs) {
            do {
                Ask(*pair.framer, m_given);
                Ask(*pair.model, m_expected);
                if (m_given != m_expected) {
                    return std::string(pair.name) + ": " + Describe(m_given) + " instead of " +
                           Describe(m_expected);
                }
            } while (m_given.result != 0 && !once);
        }
        return {};
    }

private:
    SOutcome m_given;
    SOutcome m_expected;
};

} // namespace

std::vector<SFramerPair> MakeFramerPairs() {
    std::vector<SFramerPair> pairs;
    pairs.push_back(
        MakePair<Novatel::CNovatelBinarySentenceConstructor, Literal::CBinaryFramer>("binary"));
    pairs.push_back(
        MakePair<Novatel::CNovatelASCIISentenceConstructor, Literal::CASCIIFramer>("ASCII"));
    pairs.push_back(MakePair<CNMEASentenceConstructor, Literal::CNMEAFramer>("NMEA"));
    return pairs;
}

CDifference CompareFramers(const ByteVector& stream, const CChunkLengths& nextLength, bool drains) {
    std::vector<SFramerPair> pairs = MakeFramerPairs();
    CQuestioner questioner;
    ByteVector chunk;
    for (auto begin = stream.begin(); begin != stream.end(); begin += std::ssize(chunk)) {
        const auto left = static_cast<std::size_t>(stream.end() - begin);
        chunk.assign(begin, begin + static_cast<std::ptrdiff_t>(std::min(nextLength(), left)));
        for (SFramerPair& pair : pairs) {
            pair.framer->AddBytes(chunk);
            pair.model->AddBytes(chunk);
        }
        if (const CDifference difference = questioner.Compare(pairs, !drains);
            !difference.empty()) {
            return difference + " at " + std::to_string(begin - stream.begin());
        }
    }
    return questioner.Compare(pairs, false);
}
