#include "implement/StreamDataImpl.h"

namespace Orbel::Wrapton
{

CWraptonDataImpl::CWraptonDataImpl(const unsigned char* pData, uint32_t nLen) noexcept
    : m_pData(pData), m_nLen(nLen)
{
}

const unsigned char* CWraptonDataImpl::getBuffer() const noexcept
{
    return m_pData;
}

unsigned int CWraptonDataImpl::getLen() const noexcept
{
    return m_nLen;
}

void CWraptonDataImpl::setBuffer(const unsigned char* pData, uint32_t nLen) noexcept
{
    setPointer(pData);
    setLen(nLen);
}

void CWraptonDataImpl::setPointer(const unsigned char* pData) noexcept
{
    m_pData = pData;
}

void CWraptonDataImpl::setLen(uint32_t nLen) noexcept
{
    m_nLen = nLen;
}

}  // namespace Orbel::Wrapton
