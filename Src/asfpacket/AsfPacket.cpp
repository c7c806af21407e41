#include "asfpacket/AsfPacket.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "asfpacket/AsfMpeg4.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kWorkLen = 0x200000;

/// Seconds from 1601-01-01 to 1970-01-01.
constexpr uint64_t kAsfEpoch = 11644473600;
constexpr uint64_t kTicksPerSecond = 10000000;
constexpr uint64_t kTicksPerMillisecond = 10000;

/// Format tags whose bytes tell the time, RFC 2361.
constexpr uint16_t kTagPcm = 1;
constexpr uint16_t kTagAlaw = 6;
constexpr uint16_t kTagMulaw = 7;

using ByteSpan = std::span<const unsigned char>;

ByteSpan BytesOf(const SGFrameInfo& frame)
{
    return {frame.frame_pointer, frame.frame_size};
}

bool IsKey(const SGFrameInfo& frame)
{
    return frame.frame_sub_type == SG_FRAME_SUB_TYPE_I ||
           frame.frame_sub_type == SG_FRAME_SUB_TYPE_JPEG_FRAME;
}

/// Whether the packets of a frame of @p size bytes fit into @p room bytes.
bool Fits(size_t size, size_t room)
{
    return AsfPacketCount(size) <= room / kAsfPacketLen;
}

Mpeg4Parts PartsOf(const SGFrameInfo& frame)
{
    if (IsKey(frame) && frame.frame_encode == SG_ENCODE_VIDEO_MPEG4)
        return SplitMpeg4(BytesOf(frame));
    return {{}, BytesOf(frame)};
}

uint64_t BytesPerSecond(const SGFrameInfo& frame)
{
    return uint64_t{frame.sample_rate} * frame.bit_per_sample / 8;
}

/// Channels and bits are cut to the 16 bits of their fields, the byte rate to 32.
AsfAudioStream DescribeAudio(const SGFrameInfo& frame, uint16_t codec_id)
{
    return {.m_nCodecID = codec_id,
            .m_nChannels = static_cast<uint16_t>(frame.channels),
            .m_nSampleRate = frame.sample_rate,
            .bytes_per_sec = static_cast<uint32_t>(BytesPerSecond(frame)),
            .m_nBitPerSample = static_cast<uint16_t>(frame.bit_per_sample)};
}

/// The audio clock behind a frame. Kept: A-law and mu-law count twice what they last.
uint32_t NextAudioTime(const SGFrameInfo& frame, uint16_t codec_id, uint32_t audio, uint32_t video)
{
    if (codec_id != kTagPcm && codec_id != kTagAlaw && codec_id != kTagMulaw) return video;

    const uint64_t rate = BytesPerSecond(frame);
    if (rate == 0) return audio;
    const uint64_t scale = codec_id == kTagPcm ? 1000 : 2000;
    return static_cast<uint32_t>(audio + frame.frame_size * scale / rate);
}

}  // namespace

CAsfPacket::CAsfPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam), m_pOutBuffer(Allocate(kWorkLen))
{
}

int CAsfPacket::Init()
{
    return SG_ERR_NOERR;
}

int CAsfPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CAsfPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CAsfPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;
    const bool video = pFrame->frame_type == SG_FRAME_TYPE_VIDEO;
    const bool audio = pFrame->frame_type == SG_FRAME_TYPE_AUDIO;
    if (!video && !audio) return SG_ERR_PARAM_ERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_MEMORY_OUT;

    // Kept: what becomes of a frame of these two kinds is not told.
    if (video) InputVideoData(pFrame);
    if (audio) InputAudioData(pFrame);
    return SG_ERR_NOERR;
}

void CAsfPacket::InputVideoData(const SGFrameInfo* pFrame)
{
    const bool key = IsKey(*pFrame);
    if (!m_bVideo && !key)
    {
        OutputData(0, m_nFileOffset);  // Kept: an empty block tells of a frame that is dropped.
        return;
    }
    const Mpeg4Parts parts = PartsOf(*pFrame);
    const size_t lead = m_bVideo ? 0 : kAsfHeaderLen + kAsfDataHeaderLen;
    if (!Fits(parts.picture.size(), kWorkLen - lead)) return;
    const bool indexed = IsFile() && m_nCurVideoTime > uint64_t{IndexEntryCount()} * 1000;
    if (indexed && m_Index_Entry.Reserve(kAsfIndexEntryLen) != SG_ERR_NOERR) return;

    CLsbCursor w(WorkRoom());
    if (!m_bVideo)
    {
        InitObjects(*pFrame, parts.config);
        PutHeader(w, 0);
    }
    const size_t packets = AsfPacketCount(parts.picture.size());
    if (key)
    {
        m_CurKeyEntry = {static_cast<uint32_t>(m_nPacketCount), static_cast<uint16_t>(packets)};
        if (pFrame->frame_rate != 0) m_nVInterval = 1000 / pFrame->frame_rate;
    }
    PutPackets(w,
               {.stream = key ? kAsfVideoKey : kAsfVideoInter,
                .number = static_cast<uint8_t>(m_nVFrameNum),
                .time = m_nCurVideoTime,
                // In parts: copied as a whole it would be read before its halves are stored.
                .bytes = {parts.picture.data(), parts.picture.size()}});
    assert(!w.Overrun());
    if (indexed)
    {
        std::array<unsigned char, kAsfIndexEntryLen> entry{};
        CLsbCursor into(entry);
        PutIndexEntry(into, m_CurKeyEntry);
        m_Index_Entry.StaticAppendBuffer(entry.data(), kAsfIndexEntryLen);
    }
    ++m_nVFrameNum;
    m_nPacketCount += packets;
    m_nDuration = m_nCurVideoTime * kTicksPerMillisecond;  // where the frame begins
    m_nCurVideoTime += m_nVInterval;
    m_nFileOffset += OutputData(w.Produced(), m_nFileOffset);
}

void CAsfPacket::InputAudioData(const SGFrameInfo* pFrame)
{
    const uint16_t codec_id = get_codec_id(pFrame->frame_encode);
    if (codec_id == 0) return;
    if (m_bVideo && !Fits(pFrame->frame_size, kWorkLen)) return;

    // The stream variant's header, which never comes again, tells of the last frame ahead of it.
    if (!m_bAudio || !IsFile()) m_Object_Audio_Stream = DescribeAudio(*pFrame, codec_id);
    m_bAudio = true;
    if (m_bVideo)
    {
        CLsbCursor w(WorkRoom());
        PutPackets(w,
                   {.stream = kAsfAudio,
                    .number = static_cast<uint8_t>(m_nAFrameNum),
                    .time = m_nCurAudioTime,
                    .bytes = BytesOf(*pFrame)});
        assert(!w.Overrun());
        ++m_nAFrameNum;
        m_nPacketCount += AsfPacketCount(pFrame->frame_size);
        m_nFileOffset += OutputData(w.Produced(), m_nFileOffset);
    }
    m_nCurAudioTime = NextAudioTime(*pFrame, codec_id, m_nCurAudioTime, m_nCurVideoTime);
}

int CAsfPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    if (!IsFile() || !m_bVideo) return SG_ERR_NOERR;

    // m_nFileOffset stays: further frames go where the data ended, over the index.
    const uint64_t file_size = m_nFileOffset + OutputIndex();
    CLsbCursor w(WorkRoom());
    PutHeader(w, file_size);
    OutputData(w.Produced(), 0);
    return SG_ERR_NOERR;
}

uint64_t CAsfPacket::OutputData(size_t length, uint64_t position)
{
    return Emit(m_pOutBuffer.get(),
                static_cast<uint32_t>(length),
                Origin::kStart,
                static_cast<int64_t>(position));
}

std::span<unsigned char> CAsfPacket::WorkRoom() const
{
    return {m_pOutBuffer.get(), kWorkLen};
}

uint32_t CAsfPacket::IndexEntryCount() const
{
    return static_cast<uint32_t>(m_Index_Entry.GetDataLen()) / kAsfIndexEntryLen;
}

AsfFileProperties CAsfPacket::FileProperties(uint64_t file_size) const
{
    if (!IsFile())
    {
        // Kept: a broadcast has no size, date, count or duration, and tells 1 for each.
        return {.file_size = 1,
                .creation_date = 1,
                .packet_count = 1,
                .play_duration = 1,
                .send_duration = 1,
                .flags = kAsfBroadcast | kAsfSeekable};
    }
    return {.file_size = file_size,
            .creation_date = m_nCreationDate,
            .packet_count = m_nPacketCount,
            .play_duration = m_nDuration,
            .send_duration = m_nDuration,
            .flags = kAsfSeekable};
}

void CAsfPacket::PutHeader(CLsbCursor& w, uint64_t file_size) const
{
    const bool declares_audio = m_bAudio || !IsFile();
    PutHeaderObject(w,
                    {.file = FileProperties(file_size),
                     .video = m_Object_Video_Stream,
                     .audio = declares_audio ? &m_Object_Audio_Stream : nullptr});
    PutDataObject(w, kAsfDataHeaderLen + m_nPacketCount * kAsfPacketLen, m_nPacketCount);
    assert(w.Produced() == kAsfHeaderLen + kAsfDataHeaderLen);
}

void CAsfPacket::InitObjects(const SGFrameInfo& frame, ByteSpan config)
{
    AsfVideoStream& video = m_Object_Video_Stream;
    video.m_nVEncodeType = frame.frame_encode;
    video.m_nWidth = frame.width;
    video.m_nHeight = frame.heigth;
    video.m_nFrameRate = frame.frame_rate;
    const ByteSpan kept = config.first(std::min(config.size(), video.m_VExtData.size()));
    std::copy(kept.begin(), kept.end(), video.m_VExtData.begin());
    video.m_nVExtLen = static_cast<uint32_t>(kept.size());

    m_nCreationDate = (static_cast<uint64_t>(get_current_utc_time()) + kAsfEpoch) * kTicksPerSecond;
    m_bVideo = true;
}

uint64_t CAsfPacket::OutputIndex()
{
    CLsbCursor head(WorkRoom());
    PutSimpleIndex(head, IndexEntryCount());
    ByteSpan entries = m_Index_Entry.Data();
    uint64_t taken = 0;
    size_t used = head.Produced();
    for (;;)
    {
        const ByteSpan piece = entries.first(std::min(entries.size(), kWorkLen - used));
        CLsbCursor w(WorkRoom().subspan(used));
        w.Bytes(piece);
        taken += OutputData(used + piece.size(), m_nFileOffset + taken);
        entries = entries.subspan(piece.size());
        if (entries.empty()) return taken;
        used = 0;
    }
}

}  // namespace Orbel::Wrapton
