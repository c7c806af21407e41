#ifndef WRAPTON_PSPACKET_QVPS_QVPSPACKET_H
#define WRAPTON_PSPACKET_QVPS_QVPSPACKET_H

#include <cstdint>

#include "pspacket/SplitPsPacket.h"

namespace Orbel::Wrapton
{

/**
 * The QV flavour: video split at its start codes, AAC and MPEG layer II audio with a clock of its
 * own, and a map that tells sizes, rates, encodings and the date.
 */
class CQvPsPacket final : public CSplitPsPacket
{
public:
    CQvPsPacket();

    /// Every 25th frame carries the map, whatever @p bWithMap asks for.
    int Packet_Audio_frame(const SGFrameInfo* pFrame,
                           CPsOutput& output,
                           int& nLength,
                           bool bWithMap) override;

private:
    void PutMap(CMsbCursor& w, const SGFrameInfo& frame) const override;
    /// The packed date of a frame: its own, else from its time or the count of pictures.
    [[nodiscard]] uint32_t Date(const SGFrameInfo& frame) const;

    /// What an audio frame changes; one that is refused changes nothing.
    struct Sound
    {
        uint32_t m_nAudioPts = 60000;
        // Of the last audio frame.
        uint16_t m_nAudioEncode = 0;
        uint32_t m_nSampleRate = 16000;
        uint16_t m_nBitPerSample = 16;
        uint16_t m_nChannels = 1;
        uint32_t m_AudioCount = 0;
    };
    Sound m_sound;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_QVPS_QVPSPACKET_H
