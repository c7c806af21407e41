#ifndef WRAPTON_RTPPACKET_RTPPACKET_H
#define WRAPTON_RTPPACKET_RTPPACKET_H

#include <array>
#include <climits>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Package.h"
#include "rtppacket/RtpLayout.h"

namespace Orbel::Wrapton
{

/**
 * Packages frames as RTP packets, RFC 3550, each behind its length in 2 bytes.
 *
 * H.264 frames are cut at their start codes and large units of I and P frames go out as FU-A
 * fragments, RFC 6184; every other frame is cut into plain pieces. One clock and one row of
 * sequence numbers run through all frames of a handle.
 */
class CRtpPacket final : public CPackage
{
public:
    CRtpPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CRtpPacket() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    /// A frame that cannot be packaged gives SG_ERR_PARAM_ERR or SG_ERR_MEMORY_OUT, has no output
    /// and moves neither clock nor sequence number.
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    /// Packages into @p packet, which gets the length of the frame's packets and is enlarged where
    /// it is too small. The callback sees the packets, too. Behind a refused frame the packet is
    /// empty; only a frame without data leaves it as it was.
    int InputData(SGFrameInfo* pFrame, PacketBuffer& packet) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;

    /// Sets the body of the header extension; null or length 0 takes the extension away.
    /// @return 1; 0 when it is longer than 65535 words, the former body then stays. Throws
    ///         std::bad_alloc with nothing changed.
    int SetParam(const void* pParam, int nLength) override;
    /// The body of the header extension, valid until it is set again; null and 0 without one.
    int GetParam(void*& pParam, int& nLength) override;

    /// Sets the custom bytes that stand ahead of every packet's length; null, or a length that is
    /// not positive, takes them away. @return true
    bool AppendHeader(const void* pData, signed char nLength) noexcept;
    /// The custom bytes, valid until they are set again; null and 0 without any.
    void GetHeader(const unsigned char*& pData, uint32_t& nLength) const noexcept;

    /// The clock of audio frames in Hz.
    [[nodiscard]] uint32_t GetAudioSample() const noexcept { return m_nAudioSample; }
    void SetAudioSample(uint32_t nAudioSample) noexcept { m_nAudioSample = nAudioSample; }

    /// All bits are kept; 7 of them go into a packet.
    [[nodiscard]] uint32_t GetPayloadTypeEx() const noexcept { return m_nPayloadType; }
    void SetPayloadTypeEx(uint32_t nPayloadType) noexcept { m_nPayloadType = nPayloadType; }

    /// The payload type of every encoding is the one that was set.
    // spelled so in the interface
    [[nodiscard]] uint32_t EncodeTypeToRTPPlayLoadType(uint32_t nEncode) const noexcept;

    // Parameters that their users set and read directly, at any time between frames.

    uint16_t m_nSeqNumber = 0;  // of the last packet
    uint32_t m_nSsrc;
    uint32_t m_nTimestamp = 0;        // of the first frame
    uint32_t m_rtpOutputAllFlag = 0;  // 1: one block for all packets of a frame
    int m_nMaxPacketSize = 0;         // length in 2 bytes and packet; 0: the default

    static constexpr int kDefaultMaxPacketSize = 1000;

private:
    [[nodiscard]] uint32_t Limit() const noexcept;
    [[nodiscard]] std::span<const unsigned char> CustomBytes() const noexcept;
    [[nodiscard]] uint32_t StampOf(const SGFrameInfo& frame) const noexcept;

    /// Packages into m_pPackBuf and hands the packets out.
    int Package(const SGFrameInfo& frame);
    int InputVideoData(const SGFrameInfo& frame, const CRtpLayout& layout, uint16_t& sequence);
    int InputH264Data(const SGFrameInfo& frame, const CRtpLayout& layout, uint16_t& sequence);
    int InputPlainData(const SGFrameInfo& frame, const CRtpLayout& layout, uint16_t& sequence);
    /// Appends the NAL unit that begins @p rest; fragmented when it has more than @p whole bytes.
    /// @p end is the start code behind it.
    int AppendUnit(const CRtpLayout& layout,
                   std::span<const unsigned char> rest,
                   size_t whole,
                   StartCode& end,
                   uint16_t& sequence);
    /// Appends one that has more.
    int AppendLongUnit(const CRtpLayout& layout,
                       std::span<const unsigned char> rest,
                       size_t whole,
                       StartCode& end,
                       uint16_t& sequence);
    /// Appends it as fragments. @return false when it has no more than @p whole bytes, or when
    /// there is no memory for all of @p rest
    bool AppendFragments(const CRtpLayout& layout,
                         std::span<const unsigned char> rest,
                         size_t whole,
                         StartCode& end,
                         uint16_t& sequence);
    void OutputData();

    /// Room for @p len bytes behind those of the frame so far; empty, with these kept, when there
    /// is none.
    std::span<unsigned char> Claim(uint64_t len) noexcept;

    /// Whether there is room for @p len bytes behind those of the frame so far.
    [[nodiscard]] bool HasRoom(uint64_t len) const noexcept;
    /// Makes room for @p len bytes behind those of the frame so far; false, with these kept, when
    /// there is none.
    bool Reserve(uint64_t len) noexcept;
    bool GrowPacket(uint32_t len) noexcept;
    bool GrowActual(uint32_t len) noexcept;

    unsigned char* m_pPackBuf = nullptr;  // where the packets are written
    CallerBuffer m_pActualPackBuf;        // the own buffer, taken when first needed
    PacketBuffer* m_pPacket = nullptr;    // the caller's packet during the call that has one
    int m_nPackLen = 0;                   // bytes written for the current frame

    uint32_t m_timeStamp = 0;                       // of the last frame
    std::optional<uint32_t> m_nTimestampPrevFrame;  // milliseconds; none ahead of the first frame
    uint32_t m_nAudioSample = 0;
    uint32_t m_nPayloadType = 0;

    std::vector<unsigned char> m_spExternalExtensionData;
    std::array<unsigned char, SCHAR_MAX> m_spUserDefinedData{};
    uint32_t m_nUserDefinedDataLength = 0;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_RTPPACKET_RTPPACKET_H
