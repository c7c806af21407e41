#ifndef WRAPTON_MP4PACKET_BOX_BOX_FRMA_H
#define WRAPTON_MP4PACKET_BOX_BOX_FRMA_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// frma: the data format of a sound description, QuickTime File Format, "siDecompressionParam
/// Atom".
class CBox_frma final : public CBox
{
public:
    explicit CBox_frma(uint32_t nMode);

protected:
    void PutData(CMsbCursor& w) const override;

private:
    eBoxType m_Data = MP4A;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_FRMA_H
