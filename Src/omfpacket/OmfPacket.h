#ifndef WRAPTON_OMFPACKET_OMFPACKET_H
#define WRAPTON_OMFPACKET_OMFPACKET_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Package.h"
#include "omfpacket/OmfExHeader.h"
#include "omfpacket/OmfFormat.h"
#include "tool/Clock.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/**
 * Packages frames as a native recording: every frame by itself, self-describing, and only ever
 * appended. There is no file header, no index and no tailer.
 *
 * A frame that is refused changes nothing: counters, clock and formats stay those of the last frame
 * that went out.
 */
class COmfPacket final : public CPackage
{
public:
    COmfPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~COmfPacket() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    /**
     * Writes into the caller's packet and emits that memory.
     *
     * Kept: the fixed header is left out, extension headers stand at 0, the payload stands at 24
     * over whatever they left there, the trailer directly behind it; the packet is as long as the
     * whole frame would be. Whatever the outcome, the packet gets the length of the frame that was
     * built last.
     */
    int InputData(SGFrameInfo* pFrame, PacketBuffer& packet) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;

private:
    /// What stands ahead of a frame's payload, composed before the payload's check value is known.
    struct Front
    {
        std::array<unsigned char, kOmfHeaderLen + kOmfExHeadersMax> room;
        size_t length = 0;
        size_t check_at = 0;
    };
    /// What one frame leaves behind for the next.
    struct State
    {
        uint32_t m_nTimeOffset = 0;  // millisecond stamp of the last picture that had no time
        int64_t m_nCurTime = 0;      // seconds since 1970 of the last picture
        bool m_bVideo = false;       // a key frame has been seen
        Omf_VideoFormat m_video;
        uint32_t m_nVFrameNum = 1;
        uint32_t m_nAFrameNum = 1;  // of audio and ext frames
    };
    /// A frame on its way out.
    struct Draft
    {
        const SGFrameInfo& frame;
        PacketBuffer* packet;  // null: the frame goes through the dynamic buffer
        State next;            // the state once it is out
        Omf_Header header;

        [[nodiscard]] std::span<const unsigned char> Payload() const
        {
            return {frame.frame_pointer, frame.frame_size};
        }
    };

    int InputFrame(const SGFrameInfo* pFrame, PacketBuffer* pPacket);
    int InputVideoData(Draft& draft);
    int InputAudioData(Draft& draft);
    int InputExtData(Draft& draft);

    void SetVideoTime(Draft& draft) const;
    static void SetFollowingTime(Draft& draft);
    /// Extension headers of the frame in their order. @return the place of the payload's check
    /// value
    size_t AddExHeader(CLsbCursor& w, const Draft& draft) const;
    int OutputFrame(Draft& draft);
    int OutputWhole(const Draft& draft, const Front& front);
    int OutputPacket(const Draft& draft, Front& front);
    void Settle(const Draft& draft);

    CDynamicBuffer m_pDynamicBuffer;
    COmfDate m_date;
    uint8_t m_nCheckType = kOmfCheckSum;
    int64_t m_nBaseTime = 0;  // seconds since 1970 of the header call; 0: there was none
    State m_state;
    Omf_Header m_PacketHeader;  // of the last frame that was built
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_OMFPACKET_OMFPACKET_H
