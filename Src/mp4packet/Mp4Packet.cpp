#include "mp4packet/Mp4Packet.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "mp4packet/Adts.h"
#include "tool/AvcConvert.h"
#include "tool/CacheLine.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kWorkLen = 0x300000;
constexpr uint32_t kMaxBackupLen = 0x300000;
constexpr uint32_t kMaxReserveLen = 64u << 20;
constexpr uint32_t kDefaultFrameRate = 25;

/// Indexed by SG_STREAM_TYPE.
constexpr std::array<eBoxMode, 16> kModeOfStreamType = []
{
    std::array<eBoxMode, 16> modes{};  // BoxMode_Mp4 throughout
    modes[SG_STREAM_TYPE_MOV] = BoxMode_Mov;
    modes[SG_STREAM_TYPE_MP4_NOSEEK] = BoxMode_Mp4_NoSeek;
    modes[SG_STREAM_TYPE_MP4_64] = BoxMode_Mp4_64;
    modes[SG_STREAM_TYPE_MOV_64] = BoxMode_Mov_64;
    return modes;
}();
static_assert(kModeOfStreamType[SG_STREAM_TYPE_MP4] == BoxMode_Mp4);
static_assert(kModeOfStreamType[SG_STREAM_TYPE_3GP] == BoxMode_Mp4);

eBoxMode ModeOf(uint32_t nType)
{
    return nType < kModeOfStreamType.size() ? kModeOfStreamType[nType] : BoxMode_Mp4;
}

bool IsH264(uint32_t encode)
{
    return encode == SG_ENCODE_VIDEO_HI_H264 || encode == SG_ENCODE_VIDEO_QV_H264;
}

bool IsVideoStorable(uint32_t encode)
{
    // Kept: SG_ENCODE_VIDEO_STD_H264 is not among them.
    return IsH264(encode) || encode == SG_ENCODE_VIDEO_MPEG4 || encode == SG_ENCODE_VIDEO_JPEG;
}

bool IsAudioStorable(uint32_t encode)
{
    return encode == SG_ENCODE_AUDIO_AAC || encode == SG_ENCODE_AUDIO_MP2;
}

Mp4_VideoInfo DescribeVideo(const SGFrameInfo& frame)
{
    return {.pointer = frame.frame_pointer,
            .size = frame.frame_size,
            .width = frame.width,
            .heigth = frame.heigth,
            .frame_rate = frame.frame_rate != 0 ? frame.frame_rate : kDefaultFrameRate,
            .encode_type = frame.frame_encode};
}

Mp4_AudioInfo DescribeAudio(const SGFrameInfo& frame)
{
    return {.encode_type = frame.frame_encode,
            .channels = frame.channels,
            .bit_per_sample = frame.bit_per_sample,
            .sample_rate = frame.sample_rate};
}

}  // namespace

CMp4Packet::CMp4Packet(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam), m_pOutBuffer(Allocate(kWorkLen))
{
}

int CMp4Packet::Init()
{
    if (m_bHeader) return SG_ERR_PARAM_ERR;

    const eBoxMode mode = ModeOf(m_nType);
    auto ftyp = std::make_unique<CBox_ftyp>(mode);
    auto free = std::make_unique<CBox_free>(mode);
    auto moov = std::make_unique<CBox_moov>(mode);
    auto mdat = std::make_unique<CBox_mdat>(mode);
    m_pFtyp = std::move(ftyp);
    m_pFree = std::move(free);
    m_pMoov = std::move(moov);
    m_pMdat = std::move(mdat);
    m_bVideo = false;
    m_bAudio = false;
    return SG_ERR_NOERR;
}

int CMp4Packet::Deinit()
{
    m_bHeader = false;
    m_bHoleOpen = false;
    m_bVideo = false;
    m_bAudio = false;
    m_pFtyp.reset();
    m_pFree.reset();
    m_pMdat.reset();
    m_pMoov.reset();
    return SG_ERR_NOERR;
}

int CMp4Packet::CreateHeader(SGHeaderInfo* pHeader, unsigned int /*nReserved*/)
{
    const CSGAutoMutexLock lock(m_lockData);
    if (m_bHeader) return SG_ERR_PARAM_ERR;
    if (m_pFtyp == nullptr || m_pFree == nullptr) return SG_ERR_PARAM_ERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_PARAM_ERR;
    if (pHeader != nullptr && pHeader->pre_header_len > kMaxReserveLen)
    {
        Deinit();  // there is no recording for frames or a tailer to belong to
        return SG_ERR_PARAM_ERR;
    }

    m_nFileOffset += EmitBox(*m_pFtyp, m_nFileOffset);
    if (pHeader != nullptr) m_pFree->Init(pHeader->pre_header_len, nullptr);
    m_nFreeOffset = m_nFileOffset;
    m_nFileOffset += EmitFree(m_nFreeOffset);
    if (m_nType != SG_STREAM_TYPE_MP4_NOSEEK)
    {
        m_nMdatOffset = m_nFileOffset;
        m_nFileOffset += EmitBox(*m_pMdat, m_nMdatOffset);
    }
    m_bHeader = true;
    return SG_ERR_NOERR;
}

int CMp4Packet::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    const CSGAutoMutexLock lock(m_lockData);
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_PARAM_ERR;

    // Kept: what becomes of a frame of these three kinds is not told.
    switch (pFrame->frame_type)
    {
        case SG_FRAME_TYPE_VIDEO:
            InputVideoData(pFrame);
            return SG_ERR_NOERR;
        case SG_FRAME_TYPE_AUDIO:
            InputAudioData(pFrame);
            return SG_ERR_NOERR;
        case SG_FRAME_TYPE_EXT:
            InputExtData(pFrame);
            return SG_ERR_NOERR;
        default:
            return SG_ERR_PARAM_ERR;
    }
}

int CMp4Packet::InputVideoData(const SGFrameInfo* pFrame)
{
    if (m_pMoov == nullptr || m_pMdat == nullptr) return SG_ERR_PARAM_ERR;
    if (!IsVideoStorable(pFrame->frame_encode)) return SG_ERR_ENCODE_UNSUPPORT;

    if (!m_bVideo && pFrame->frame_sub_type == SG_FRAME_SUB_TYPE_I)
    {
        Mp4_VideoInfo video = DescribeVideo(*pFrame);
        m_pMoov->Init(MP4_VIDEO_TRAK, &video);
        m_bVideo = true;
        m_nVEncode = pFrame->frame_encode;
    }
    if (!m_bVideo || pFrame->frame_encode != m_nVEncode) return SG_ERR_NOERR;

    const bool h264 = IsH264(m_nVEncode);
    const auto room =
        h264 ? PayloadRoom(CAvcConvert::MostConverted(pFrame->frame_size), CAvcConvert::kLengthLen)
             : PayloadRoom(pFrame->frame_size);
    Mp4_Sample sample = MakeSample(pFrame);
    if (h264)
    {
        const auto converted =
            CAvcConvert::ConvertWhole({pFrame->frame_pointer, pFrame->frame_size}, room);
        if (!converted.has_value()) return SG_ERR_MEMORY_OUT;
        if (*converted == 0) return SG_ERR_NOERR;
        sample.size = static_cast<uint32_t>(*converted);
    }
    else
    {
        if (sample.size > room.size()) return SG_ERR_MEMORY_OUT;
        std::memcpy(room.data(), sample.pointer, sample.size);
    }
    if (!m_pMoov->Reserve(MP4_VIDEO_TRAK)) return SG_ERR_MEMORY_OUT;

    sample.pointer = room.data();
    Note(MP4_VIDEO_TRAK, sample);
    // Kept: an MPEG-4 frame whose configuration moved into the movie box is emitted from its first
    // byte all the same, and loses as many bytes at its end.
    EmitPayload(room.first(sample.size));
    return SG_ERR_NOERR;
}

int CMp4Packet::InputAudioData(const SGFrameInfo* pFrame)
{
    if (m_pMoov == nullptr || m_pMdat == nullptr) return SG_ERR_PARAM_ERR;
    if (!IsAudioStorable(pFrame->frame_encode)) return SG_ERR_ENCODE_UNSUPPORT;
    if (!m_bVideo) return SG_ERR_NOERR;  // a file begins with a picture

    if (!m_bAudio)
    {
        Mp4_AudioInfo audio = DescribeAudio(*pFrame);
        m_pMoov->Init(MP4_AUDIO_TRAK, &audio);
        m_bAudio = true;
        m_nAEncode = pFrame->frame_encode;
    }
    if (pFrame->frame_encode != m_nAEncode) return -1;

    Mp4_Sample sample = MakeSample(pFrame);
    const size_t stored = m_nAEncode == SG_ENCODE_AUDIO_AAC
                              ? StripAdts({sample.pointer, sample.size}).size()
                              : sample.size;
    if (stored > PayloadRoom(stored).size()) return SG_ERR_MEMORY_OUT;
    if (!m_pMoov->Reserve(MP4_AUDIO_TRAK)) return SG_ERR_MEMORY_OUT;

    Note(MP4_AUDIO_TRAK, sample);
    EmitCopy(sample);
    return SG_ERR_NOERR;
}

int CMp4Packet::InputExtData(const SGFrameInfo* pFrame)
{
    if (m_pMoov == nullptr || m_pMdat == nullptr) return SG_ERR_PARAM_ERR;

    if (!m_bVideo) return SG_ERR_NOERR;  // a file begins with a picture

    // Kept: the track has no description and stays out of the movie; its frames are stored only.
    Mp4_Sample sample = MakeSample(pFrame);
    if (sample.size > PayloadRoom(sample.size).size()) return SG_ERR_MEMORY_OUT;

    Note(MP4_EXT_TRAK, sample);
    EmitCopy(sample);
    return SG_ERR_NOERR;
}

int CMp4Packet::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    const CSGAutoMutexLock lock(m_lockData);
    if (m_pMoov == nullptr || m_pFree == nullptr) return SG_ERR_PARAM_ERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_PARAM_ERR;

    m_pMoov->Update();
    const uint32_t moov_len = m_pMoov->Size();
    const bool held = Hold(m_pTailerBuffer, moov_len);

    uint64_t moov_offset = m_nFileOffset;
    const uint32_t hole = m_pFree->Size() - Catom::kHeaderLen;
    if (hole >= moov_len)
    {
        m_pFree->Init(hole - moov_len, nullptr);
        EmitFree(m_nFreeOffset);
        moov_offset = m_nFreeOffset + m_pFree->Length();
    }
    else if (m_bHoleOpen)
    {
        EmitFree(m_nFreeOffset);  // the hole stays empty after all
    }
    m_bHoleOpen = hole >= moov_len && !held;
    if (!held)
    {
        m_pFree->Init(hole, nullptr);  // the hole is as large as before for the next attempt
        return SG_ERR_MEMORY_OUT;
    }
    CMsbCursor w({m_pTailerBuffer.get(), moov_len});
    m_pMoov->Put(w);
    m_nFileOffset += OutputData(m_pTailerBuffer.get(), moov_len, moov_offset);
    EmitBox(*m_pMdat, m_nMdatOffset);
    return SG_ERR_NOERR;
}

int CMp4Packet::GetFileHeader(SGOutputData* pOutput)
{
    if (pOutput == nullptr) return SG_ERR_PARAM_ERR;
    if (m_pMoov == nullptr) return SG_ERR_NOERR;

    const CSGAutoMutexLock lock(m_lockData);
    m_pMoov->Update();
    const uint32_t length = m_pMoov->Size();
    if (length > kMaxBackupLen) return SG_ERR_NOERR;
    if (!Hold(m_pBackupBuffer, length)) return SG_ERR_PARAM_ERR;

    CMsbCursor w({m_pBackupBuffer.get(), length});
    m_pMoov->Put(w);
    pOutput->data_pointer = m_pBackupBuffer.get();
    pOutput->data_size = static_cast<int32_t>(length);
    pOutput->offset_type = static_cast<int32_t>(Origin::kStart);
    pOutput->offset_pos = static_cast<uint32_t>(m_nFileOffset);
    pOutput->offset_pos64 = static_cast<int64_t>(m_nFileOffset);
    return static_cast<int>(length);
}

uint32_t CMp4Packet::OutputData(const unsigned char* bytes, uint32_t length, uint64_t position)
{
    return Emit(bytes, length, Origin::kStart, static_cast<int64_t>(position));
}

uint32_t CMp4Packet::PayloadLead() const
{
    return m_nType == SG_STREAM_TYPE_MP4_NOSEEK ? Catom::kHeaderLen : 0;
}

std::span<unsigned char> CMp4Packet::PayloadRoom(size_t most, size_t ahead) const
{
    return AlignPayload(
        std::span(m_pOutBuffer.get(), kWorkLen).subspan(PayloadLead()), ahead, most);
}

Mp4_Sample CMp4Packet::MakeSample(const SGFrameInfo* pFrame) const
{
    return {.pointer = pFrame->frame_pointer,
            .size = pFrame->frame_size,
            .frametype = static_cast<int32_t>(pFrame->frame_sub_type),
            .postion = m_nFileOffset + PayloadLead()};
}

void CMp4Packet::Note(eTrakType track, Mp4_Sample& sample)
{
    m_pMoov->Note(track, sample);
    m_pMdat->InputData(sample.size, nullptr);
}

void CMp4Packet::EmitCopy(const Mp4_Sample& sample)
{
    const auto payload = PayloadRoom(sample.size).first(sample.size);
    if (sample.size != 0) std::memcpy(payload.data(), sample.pointer, sample.size);
    EmitPayload(payload);
}

void CMp4Packet::EmitPayload(std::span<unsigned char> payload)
{
    const uint32_t lead = PayloadLead();
    unsigned char* const block = payload.data() - lead;
    if (lead != 0)
    {
        CMsbCursor w({block, lead});
        m_pMdat->Put(w);
    }
    const auto size = static_cast<uint32_t>(payload.size());
    if (lead + size == 0) return;  // an ADTS frame without data
    m_nFileOffset += OutputData(block, lead + size, m_nFileOffset);
}

uint64_t CMp4Packet::EmitFree(uint64_t position)
{
    const uint32_t length = m_pFree->Length();
    uint64_t taken = 0;
    for (uint32_t from = 0; from < length;)
    {
        const uint32_t piece = std::min(length - from, kWorkLen);
        m_pFree->PutPiece({m_pOutBuffer.get(), piece}, from);
        taken += OutputData(m_pOutBuffer.get(), piece, position + taken);
        from += piece;
    }
    return taken;
}

uint32_t CMp4Packet::EmitBox(const CBox& box, uint64_t position)
{
    CMsbCursor w({m_pOutBuffer.get(), kWorkLen});
    box.Put(w);
    return OutputData(m_pOutBuffer.get(), static_cast<uint32_t>(w.Produced()), position);
}

bool CMp4Packet::Hold(CallerBuffer& buffer, uint32_t size) const
{
    if (buffer != nullptr && static_cast<uint32_t>(buffer.get_deleter().size) >= size) return true;

    buffer.reset();
    buffer = Allocate(static_cast<int>(size));
    return buffer != nullptr;
}

}  // namespace Orbel::Wrapton
