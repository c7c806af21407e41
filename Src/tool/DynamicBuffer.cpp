#include "tool/DynamicBuffer.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

#include "Wrapton.h"

namespace Orbel::Wrapton
{
namespace
{

/// The capacity one step of the rule after @p capacity; 0 when it would pass 31 bits.
int NextCapacity(int capacity)
{
    const int64_t next = capacity > CDynamicBuffer::DOUBLE_SIZE_THRELOD
                             ? int64_t{capacity} + CDynamicBuffer::REALLOC_STEP
                             : int64_t{capacity} * 2;
    return next <= INT_MAX ? static_cast<int>(next) : 0;
}

}  // namespace

int CDynamicBuffer::Init(unsigned int size) noexcept
{
    m_nDataLen = 0;
    m_nMaxSize = 0;
    m_nStorage = 0;
    m_pBuffer.reset();
    if (size > INT_MAX) return SG_ERR_MEMORY_OUT;

    m_nMaxSize = static_cast<int>(size);
    m_pBuffer.reset(new (std::nothrow) unsigned char[size]());
    if (m_pBuffer == nullptr) return SG_ERR_MEMORY_OUT;
    m_nStorage = size;
    return SG_ERR_NOERR;
}

int CDynamicBuffer::Clear() noexcept
{
    m_nDataLen = 0;
    return SG_ERR_NOERR;
}

bool CDynamicBuffer::Fits(unsigned int len) const noexcept
{
    return len <= static_cast<unsigned int>(m_nMaxSize - m_nDataLen);
}

int CDynamicBuffer::StaticAppendBuffer(const unsigned char* data, unsigned int len) noexcept
{
    if (data == nullptr) return SG_ERR_EMPTY_POINTER;
    if (!Fits(len)) return SG_ERR_MEMORY_OUT;
    if (m_pBuffer == nullptr) return SG_ERR_MEMORY_OUT;

    std::memcpy(m_pBuffer.get() + m_nDataLen, data, len);
    m_nDataLen += static_cast<int>(len);
    return SG_ERR_NOERR;
}

int CDynamicBuffer::AppendBuffer(const unsigned char* data, unsigned int len) noexcept
{
    if (data == nullptr) return SG_ERR_EMPTY_POINTER;
    if (len == 0) return SG_ERR_NOERR;

    while (StaticAppendBuffer(data, len) != SG_ERR_NOERR)
    {
        const int result = ReAlloc();
        if (result != SG_ERR_NOERR) return result;
    }
    return SG_ERR_NOERR;
}

int CDynamicBuffer::ReAlloc() noexcept
{
    if (m_nMaxSize == 0) return Init(BUFFER_START_BASE);

    const int capacity = NextCapacity(m_nMaxSize);
    if (capacity == 0) return SG_ERR_MEMORY_OUT;
    if (Enlarge(capacity)) return SG_ERR_NOERR;

    m_pBuffer.reset();
    m_nMaxSize = capacity;
    m_nDataLen = 0;
    m_nStorage = 0;
    return SG_ERR_MEMORY_OUT;
}

int CDynamicBuffer::Reserve(unsigned int len) noexcept
{
    int capacity = m_nMaxSize;
    while (len > static_cast<unsigned int>(capacity - m_nDataLen))
    {
        capacity = capacity == 0 ? BUFFER_START_BASE : NextCapacity(capacity);
        if (capacity == 0) return SG_ERR_MEMORY_OUT;
    }
    if (m_pBuffer != nullptr && capacity == m_nMaxSize) return SG_ERR_NOERR;
    return Enlarge(capacity) ? SG_ERR_NOERR : SG_ERR_MEMORY_OUT;
}

/// Makes @p capacity the capacity and moves the content when the storage is smaller than it; false,
/// with nothing changed, when there is no memory.
bool CDynamicBuffer::Enlarge(int capacity) noexcept
{
    const size_t needed = static_cast<size_t>(capacity);
    if (m_pBuffer == nullptr || needed > m_nStorage)
    {
        const size_t storage = std::max(needed, 2 * m_nStorage);
        std::unique_ptr<unsigned char[]> larger(new (std::nothrow) unsigned char[storage]);
        if (larger == nullptr) return false;
        if (m_nDataLen != 0)
        {
            std::memcpy(larger.get(), m_pBuffer.get(), static_cast<size_t>(m_nDataLen));
        }
        m_pBuffer = std::move(larger);
        m_nStorage = storage;
    }
    m_nMaxSize = capacity;
    return true;
}

}  // namespace Orbel::Wrapton
