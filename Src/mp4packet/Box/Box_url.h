#ifndef WRAPTON_MP4PACKET_BOX_BOX_URL_H
#define WRAPTON_MP4PACKET_BOX_BOX_URL_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// url: data entry that says the media is in this file, ISO/IEC 14496-12 8.7.2.
class CBox_url final : public CBox
{
public:
    explicit CBox_url(uint32_t nMode);

protected:
    void PutData(CMsbCursor& w) const override;

private:
    uint8_t m_nVersion = 0;
    uint32_t m_nFlag = 0x000001;  // self-contained
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_URL_H
