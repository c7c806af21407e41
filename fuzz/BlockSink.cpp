#include "BlockSink.h"

#include <utility>

#include "Require.h"
#include "support/FailingNew.h"

namespace Fuzz
{

using Orbel::Wrapton::SGOutputData;

void BlockSink::Receive(SGOutputData* block, void* user)
{
    const Support::Plenty account;
    static_cast<BlockSink*>(user)->Take(*block);
}

std::vector<Block> BlockSink::TakeBlocks()
{
    return std::exchange(m_blocks, {});
}

void BlockSink::Take(SGOutputData& block)
{
    Require(block.struct_size == 40, "a block says its record's size");
    Require(block.data_size >= 0, "a block has no negative size");
    Require(m_rules.emptyBlocks || block.data_size > 0, "a block is not empty");
    Require(block.data_pointer != nullptr, "a block has bytes");
    Require(block.offset_type == 0 || block.offset_type == 1, "a block counts from start or end");
    Require(block.offset_pos64 >= 0, "a position is not negative");
    Require(block.offset_pos == static_cast<uint32_t>(block.offset_pos64),
            "both positions are filled");
    Place(block);
    Reply(block);
    m_blocks.back().taken = block.data_size;
}

void BlockSink::Place(const SGOutputData& block)
{
    const auto position = static_cast<uint64_t>(block.offset_pos64);
    const auto size = static_cast<std::size_t>(block.data_size);
    m_blocks.push_back(
        {block.offset_type, position, Bytes(block.data_pointer, block.data_pointer + size)});
    m_offered += size;
    if (!Honest()) return;

    const uint64_t at = block.offset_type == 0 ? position : m_current + position;
    Require(at <= m_file.End() + m_rules.largestGap, "a block leaves no gap");
    if (m_rules.appendsOnly && at == 0 && m_file.End() != 0) return;
    m_file.Write(at, {block.data_pointer, size});
    m_current = at + size;
}

void BlockSink::Reply(SGOutputData& block) const
{
    switch (m_answer)
    {
        case Answer::kHonest:
        case Answer::kHonestToo:
        case Answer::kHonestAsWell:
            break;
        case Answer::kLower:
            block.data_size /= 2;
            break;
        case Answer::kNothing:
            block.data_size = 0;
            break;
        case Answer::kNegative:
            block.data_size = -block.data_size;
            break;
        case Answer::kRaise:
            block.data_size = INT32_MAX;
            break;
        case Answer::kLeast:
            block.data_size = INT32_MIN;
            break;
    }
}

}  // namespace Fuzz
