#include "mp4packet/Box/Box_stco.h"

#include <array>

#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

using Entry = std::array<unsigned char, 4>;

}  // namespace

CBox_stco::CBox_stco(uint32_t nMode) : CChunkOffsets(STCO, nMode, Entry{}.size()) {}

void CBox_stco::InputData(uint32_t nType, void* /*pInfo*/)
{
    Entry entry;
    MSB_uint32_to_memory(entry.data(), nType);
    Append(entry);
}

}  // namespace Orbel::Wrapton
