#ifndef WRAPTON_PSPACKET_PS_STDSPSPACKET_H
#define WRAPTON_PSPACKET_PS_STDSPSPACKET_H

#include <cstdint>

#include "pspacket/SplitPsPacket.h"

namespace Orbel::Wrapton
{

/**
 * The standard flavour: video split at its start codes, and MPEG layer II audio.
 *
 * Kept: audio has no clock of its own, it is stamped with the time of the last picture.
 */
class CStdsPsPacket final : public CSplitPsPacket
{
public:
    CStdsPsPacket();

    /// @return for a refused frame SG_ERR_ENCODE_UNSUPPORT (another encoding) or SG_ERR_PARAM_ERR
    ///         (no data, no room)
    int Packet_Audio_frame(const SGFrameInfo* pFrame,
                           CPsOutput& output,
                           int& nLength,
                           bool bWithMap) override;

private:
    void PutMap(CMsbCursor& w, const SGFrameInfo& frame) const override;

    uint32_t m_AudioCount = 0;  // maps written with audio
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_PS_STDSPSPACKET_H
