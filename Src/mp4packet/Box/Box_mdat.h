#ifndef WRAPTON_MP4PACKET_BOX_BOX_MDAT_H
#define WRAPTON_MP4PACKET_BOX_BOX_MDAT_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/**
 * mdat: media data, ISO/IEC 14496-12 8.1.1. Only the header is written here, the samples follow it.
 *
 * One box holds all samples; in the no-seek modes each sample has one of its own. The 64-bit modes
 * write a large size from the start, so that it need not grow into place.
 */
class CBox_mdat final : public CBox
{
public:
    explicit CBox_mdat(uint32_t nMode);

    /// @param nType length of a sample in bytes
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutAtom(CMsbCursor& w) const override;

private:
    static constexpr uint32_t kLargeHeaderLen = 16;

    uint64_t m_nDataLen64 = kLargeHeaderLen;  // the large size: header and samples
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MDAT_H
