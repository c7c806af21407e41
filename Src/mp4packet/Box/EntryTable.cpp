#include "mp4packet/Box/EntryTable.h"

#include <cstring>
#include <new>
#include <utility>

#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{

bool CEntryTable::Reserve() noexcept
{
    if (m_nEntryCount < m_maxCount) return true;
    if (m_maxCount == 0) return Grow(kFirstCount);
    if (m_maxCount > UINT32_MAX / 2) return false;
    return Grow(m_maxCount * 2);
}

void CEntryTable::Append(uint32_t entry) noexcept
{
    if (!Reserve()) return;

    MSB_uint32_to_memory(m_pData.get() + size_t{m_nEntryCount} * kEntryLen, entry);
    ++m_nEntryCount;
}

bool CEntryTable::Grow(uint32_t count) noexcept
{
    std::unique_ptr<unsigned char[]> larger(
        new (std::nothrow) unsigned char[size_t{count} * kEntryLen]);
    if (larger == nullptr) return false;

    if (m_nEntryCount != 0) std::memcpy(larger.get(), m_pData.get(), Bytes().size());
    m_pData = std::move(larger);
    m_maxCount = count;
    return true;
}

}  // namespace Orbel::Wrapton
