#ifndef WRAPTON_MP4PACKET_BOX_BOX_FTYP_H
#define WRAPTON_MP4PACKET_BOX_BOX_FTYP_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// ftyp: file type and compatibility, ISO/IEC 14496-12 4.3; the QuickTime brand in the MOV modes.
class CBox_ftyp final : public CBox
{
public:
    explicit CBox_ftyp(uint32_t nMode);
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_FTYP_H
