#include "support/Sinks.h"

#include <algorithm>

namespace Support
{

using Orbel::Wrapton::SGOutputData;

::testing::AssertionResult IsBlockAt(const Block& block, uint64_t position, const Bytes& bytes)
{
    if (block.structSize != 40 || block.origin != 0 ||
        block.position != static_cast<int64_t>(position) ||
        block.narrow != static_cast<uint32_t>(position) ||
        block.size != static_cast<int32_t>(bytes.size()))
    {
        return ::testing::AssertionFailure()
               << "struct_size " << block.structSize << ", size " << block.size << ", origin "
               << block.origin << ", positions " << block.narrow << " and " << block.position
               << " where 40, " << bytes.size() << ", 0 and " << position << " are due";
    }
    return Support::Same(block.data, bytes);
}

void Sink::Callback(SGOutputData* block, void* user)
{
    auto& sink = *static_cast<Sink*>(user);
    Block seen;
    seen.structSize = block->struct_size;
    seen.size = block->data_size;
    seen.origin = block->offset_type;
    seen.narrow = block->offset_pos;
    seen.position = block->offset_pos64;
    if (block->data_size > 0)
    {
        const std::size_t kept = sink.Kept(static_cast<std::size_t>(block->data_size));
        seen.data.assign(block->data_pointer, block->data_pointer + kept);
    }
    sink.m_blocks.push_back(std::move(seen));
    sink.Place(*block);
}

void SeekingSink::Place(SGOutputData& block)
{
    const auto end = static_cast<int64_t>(m_image.size());
    const int64_t origin = block.offset_type == 0 ? 0 : block.offset_type == 1 ? m_current : end;
    const int64_t at = origin + block.offset_pos64;
    const int64_t count = std::max(block.data_size, 0);
    // A position far beyond everything written is a fault of the output, not a sparse file.
    if (at < 0 || at > end + (int64_t{128} << 20))
    {
        ADD_FAILURE() << "a block came for position " << at << " of a file of " << end << " bytes";
        return;
    }
    m_image.resize(static_cast<std::size_t>(std::max(end, at + count)));
    std::copy_n(block.data_pointer, count, m_image.begin() + at);
    m_current = at + count;
}

void AppendingSink::Place(SGOutputData& block)
{
    if (block.data_size > 0)
    {
        m_image.insert(m_image.end(), block.data_pointer, block.data_pointer + block.data_size);
    }
}

void ResizingSink::Place(SGOutputData& block)
{
    const int32_t answer = m_policy(Blocks().size() - 1, block.data_size);
    SGOutputData stored = block;
    stored.data_size = std::clamp(answer, 0, block.data_size);
    SeekingSink::Place(stored);
    block.data_size = answer;
}

std::size_t DiscardingSink::Kept(std::size_t size) const
{
    return size <= 65536 ? size : 0;
}

void DiscardingSink::Place(SGOutputData&) {}

}  // namespace Support
