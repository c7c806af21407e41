#ifndef WRAPTON_MP4PACKET_BOX_BOX_MP4A_H
#define WRAPTON_MP4PACKET_BOX_BOX_MP4A_H

#include <memory>

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// The fields of an audio sample entry.
struct Mp4_MP4A
{
    uint16_t m_Refindex = 1;
    uint16_t version = 0;  // of the sound description: 1 in the QuickTime modes
    uint16_t revision_level = 0;
    uint32_t reserved = 0;  // vendor
    uint16_t channelcount = 2;
    uint16_t samplesize = 16;   // bits
    uint16_t pre_defined1 = 0;  // compression ID
    uint16_t reserved2 = 0;     // packet size
    uint16_t samplerate = 0;    // Hz; a higher rate keeps its low 16 bits
};

/// mp4a: audio sample entry, ISO/IEC 14496-12 12.2.3; in the QuickTime modes a sound description of
/// version 1, QuickTime File Format, "Sound Media". Mode BoxMode_Empty makes the empty box that
/// stands inside a wave box.
class CBox_mp4a final : public CBox
{
public:
    explicit CBox_mp4a(uint32_t nMode);
    ~CBox_mp4a() override;
    void Init(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_MP4A m_Data;
    std::unique_ptr<CBox> m_pChild;  // esds, or wave in the QuickTime modes; null in the empty box
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MP4A_H
