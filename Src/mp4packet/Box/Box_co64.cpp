#include "mp4packet/Box/Box_co64.h"

#include <array>

#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

using Entry = std::array<unsigned char, 8>;

}  // namespace

CBox_co64::CBox_co64(uint32_t nMode) : CChunkOffsets(CO64, nMode, Entry{}.size()) {}

void CBox_co64::InputOffset(uint64_t nOffset)
{
    Entry entry;
    MSB_uint64_to_memory(entry.data(), nOffset);
    Append(entry);
}

}  // namespace Orbel::Wrapton
