#ifndef WRAPTON_MP4PACKET_BOX_BOX_OMFR_H
#define WRAPTON_MP4PACKET_BOX_BOX_OMFR_H

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/VisualEntry.h"

namespace Orbel::Wrapton
{

/// OMFR: sample entry of native frames; a visual entry whose last field has one byte.
class CBox_omfr final : public CBox
{
public:
    explicit CBox_omfr(uint32_t nMode);

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_AVC1 m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_OMFR_H
