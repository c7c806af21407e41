#ifndef WRAPTON_MP4PACKET_BOX_BOX_WAVE_H
#define WRAPTON_MP4PACKET_BOX_BOX_WAVE_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_esds.h"
#include "mp4packet/Box/Box_frma.h"
#include "mp4packet/Box/Box_mp4a.h"

namespace Orbel::Wrapton
{

/// wave: what a decoder needs, in the sound description of a QuickTime file, QuickTime File Format,
/// "siDecompressionParam Atom". Kept: no terminator box ends it.
class CBox_wave final : public CBox
{
public:
    explicit CBox_wave(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    std::unique_ptr<CBox_frma> m_pFrma;
    std::unique_ptr<CBox_mp4a> m_pMp4a;  // an empty one
    std::unique_ptr<CBox_esds> m_pEsds;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_WAVE_H
