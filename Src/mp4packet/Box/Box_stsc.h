#ifndef WRAPTON_MP4PACKET_BOX_BOX_STSC_H
#define WRAPTON_MP4PACKET_BOX_BOX_STSC_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// stsc: sample to chunk, ISO/IEC 14496-12 8.7.4. One entry: each chunk holds one sample.
class CBox_stsc final : public CBox
{
public:
    explicit CBox_stsc(uint32_t nMode);

protected:
    void PutData(CMsbCursor& w) const override;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STSC_H
