#ifndef WRAPTON_IMPLEMENT_STREAMDATAIMPL_H
#define WRAPTON_IMPLEMENT_STREAMDATAIMPL_H

#include <cstdint>

#include "IWrapton.h"

namespace Orbel::Wrapton
{

/// Bytes of a packager: neither owned nor copied.
class CWraptonDataImpl final : public IWraptonData
{
public:
    CWraptonDataImpl() noexcept = default;
    CWraptonDataImpl(const unsigned char* pData, uint32_t nLen) noexcept;

    [[nodiscard]] const unsigned char* getBuffer() const noexcept override;
    [[nodiscard]] unsigned int getLen() const noexcept override;

    void setBuffer(const unsigned char* pData, uint32_t nLen) noexcept;
    void setPointer(const unsigned char* pData) noexcept;
    void setLen(uint32_t nLen) noexcept;

private:
    const unsigned char* m_pData = nullptr;
    uint32_t m_nLen = 0;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_IMPLEMENT_STREAMDATAIMPL_H
