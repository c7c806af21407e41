#ifndef WRAPTON_FUZZ_BLOCKSINK_H
#define WRAPTON_FUZZ_BLOCKSINK_H

#include <cstdint>
#include <vector>

#include "SparseImage.h"
#include "Wrapton.h"

namespace Fuzz
{

using Bytes = std::vector<unsigned char>;

/// One block as it was offered.
struct Block
{
    int32_t origin = 0;
    uint64_t position = 0;
    Bytes bytes;
    int64_t taken = 0;  ///< what the sink answered
};

/// How a sink answers a block.
enum class Answer
{
    kHonest,
    kHonestToo,
    kHonestAsWell,  // mostly
    kLower,
    kNothing,
    kNegative,
    kRaise,
    kLeast
};
constexpr unsigned kAnswers = 8;

/// What a container may do that most do not.
struct SinkRules
{
    bool emptyBlocks = false;
    uint64_t largestGap = 0;   ///< between the end of the output and a block behind it
    bool appendsOnly = false;  ///< a sink that cannot seek leaves what comes for the front later
};

/**
 * Receives blocks, checks what every container promises of them and answers in one way. Keeps the
 * file that they make, as one that seeks and appends gets it.
 */
class BlockSink
{
public:
    BlockSink(Answer answer, SinkRules rules) : m_answer(answer), m_rules(rules) {}

    static void Receive(Orbel::Wrapton::SGOutputData* block, void* user);

    /// Whether it took what it was offered, so that its file is one.
    [[nodiscard]] bool Honest() const { return m_answer <= Answer::kHonestAsWell; }
    [[nodiscard]] uint64_t Offered() const { return m_offered; }
    [[nodiscard]] const SparseImage& File() const { return m_file; }

    /// The blocks since the last call of this function.
    std::vector<Block> TakeBlocks();

private:
    void Take(Orbel::Wrapton::SGOutputData& block);
    void Place(const Orbel::Wrapton::SGOutputData& block);
    void Reply(Orbel::Wrapton::SGOutputData& block) const;

    Answer m_answer;
    SinkRules m_rules;
    uint64_t m_offered = 0;
    uint64_t m_current = 0;
    std::vector<Block> m_blocks;
    SparseImage m_file;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_BLOCKSINK_H
