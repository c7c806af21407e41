#include "tool/Buffer.h"

#include <new>

namespace Orbel::Wrapton
{

int CAutoBuffer::Init(int size) noexcept
{
    if (m_bHadInit) return -1;
    if (size < 1) return -1;

    m_bHadInit = true;
    m_pBuffer.reset(new (std::nothrow) char[static_cast<uint32_t>(size)]());
    if (m_pBuffer == nullptr) return -1;
    m_nBufferLen = static_cast<uint32_t>(size);
    return 0;
}

}  // namespace Orbel::Wrapton
