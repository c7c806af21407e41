#ifndef WRAPTON_TSPACKET_TSPACKET_H
#define WRAPTON_TSPACKET_TSPACKET_H

#include <cstddef>
#include <cstdint>

#include "Package.h"

namespace Orbel::Wrapton
{

/**
 * Packages frames as an MPEG-2 transport stream, ISO/IEC 13818-1, with one program of one video and
 * one audio stream, into a packet of the caller.
 *
 * Kept: every call answers 0, for refused frames, too. Nothing is sent ahead of the first I frame,
 * and frames other than I and P frames never are.
 */
class CTsPacket final : public CPackage
{
public:
    explicit CTsPacket(const SGCreateParam* pCreateParam);
    ~CTsPacket() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    /// Kept: converts into a buffer of its own and gives it to nobody. A frame that does not fit is
    /// dropped, the clock having moved.
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    /// Leaves the frame's packets in @p packet, which gets their size: 0 for a frame that is not
    /// sent. A frame of another kind leaves it as it is.
    int InputData(SGFrameInfo* pFrame, PacketBuffer& packet) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;

private:
    enum class Decision
    {
        kIgnore,
        kDrop,
        kVideo,
        kAudio
    };

    /// What becomes of a frame; an I frame opens the stream.
    Decision Decide(const SGFrameInfo& frame);
    Decision DecideVideo(const SGFrameInfo& frame);
    [[nodiscard]] Decision DecideAudio(const SGFrameInfo& frame) const;
    /// The bytes that Convert() writes.
    [[nodiscard]] size_t Needed(Decision decision, const SGFrameInfo& frame) const;
    /// @return the bytes written, 0 when @p size is too small
    size_t Convert(Decision decision, const SGFrameInfo& frame, unsigned char* out, size_t size);

    bool m_bFindIFrame = false;
    int64_t m_nTimeStamp = 0;  // 90 kHz
    uint32_t m_nLastFPS = 0;   // last rate that was known
    int32_t m_nVideoTSFrameNum = 0;
    int32_t m_video_current_continuity_counter = 0;
    int32_t m_nAudioTSFrameNum = 0;
    int32_t m_audio_current_continuity_counter = 0;
    CallerBuffer m_spPacketBuffer;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TSPACKET_TSPACKET_H
