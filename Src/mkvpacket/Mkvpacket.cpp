#include "mkvpacket/Mkvpacket.h"

#include <algorithm>
#include <cassert>
#include <string_view>
#include <utility>

#include "mkvpacket/Objects/ElementIds.h"
#include "tool/CacheLine.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace std::string_view_literals;

constexpr uint32_t kWorkLen = 2097152;
constexpr uint32_t kSizeLen = 8;  // of a size that is filled in afterwards
constexpr uint32_t kIdLen = 4;    // of the top-level elements
/// Room behind the SeekHead for Info, Tracks and a Void.
constexpr uint32_t kFrontRoom = 500;
constexpr uint32_t kVoidHeaderLen = 1 + kSizeLen;
constexpr uint32_t kTracksHeaderLen = kIdLen + kSizeLen;
constexpr uint32_t kClusterHeaderLen = kIdLen + kSizeLen + 1 + 1 + 2;  // up to its first block
constexpr uint32_t kTimecodeLen = 1 + 1 + 2;
constexpr uint32_t kMaxClusterCount = 102400;
constexpr uint32_t kMillisecondsPerCluster = 1000;
constexpr uint32_t kVideoTrack = 1;

constexpr std::string_view kDocTypeName = "matroska";
// Kept: both with the zero behind the characters.
constexpr std::string_view kAvcId = "V_MPEG4/ISO/AVC\0"sv;
constexpr std::string_view kAspId = "V_MPEG4/ISO/ASP\0"sv;
static_assert(kAvcId.size() == 16 && kAspId.size() == 16);

bool IsH264(uint32_t encode)
{
    return encode == SG_ENCODE_VIDEO_HI_H264 || encode == SG_ENCODE_VIDEO_QV_H264;
}

void SetCodecId(VIDEOINFO& info, std::string_view id)
{
    std::copy(id.begin(), id.end(), info.codeIDdata.begin());
    info.codeIDdatalen = static_cast<uint32_t>(id.size());
}

/// EBML header, RFC 8794 11.2.
void PutEbmlHeader(CMsbCursor& w)
{
    const CEbmlScope header(w, kEbml);
    PutUint8(w, kEbmlVersion, 1);
    PutUint8(w, kEbmlReadVersion, 1);
    PutUint8(w, kEbmlMaxIdLength, 4);
    PutUint8(w, kEbmlMaxSizeLength, 8);
    PutString(w, kDocType, kDocTypeName);
    PutUint8(w, kDocTypeVersion, 4);
    PutUint8(w, kDocTypeReadVersion, 2);
}

/// Milliseconds from the beginning of a cluster, in 32 bits of which 16 are kept.
int16_t BlockTime(int64_t frameNumber, uint32_t cluster, uint32_t rate)
{
    if (rate == 0) return 0;

    const uint32_t frame = static_cast<uint32_t>(frameNumber) - rate * cluster;
    return static_cast<int16_t>(frame * kMillisecondsPerCluster / rate);
}

}  // namespace

CMkvPacket::CMkvPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam), m_pOutBuffer(Allocate(kWorkLen))
{
}

int CMkvPacket::Init()
{
    if (m_bHeader) return SG_ERR_PARAM_ERR;

    auto metaseek = std::make_unique<CMetaseekBox>();
    auto clusters = std::make_unique<CClusters>();
    auto info = std::make_unique<CSegInfo>();
    auto tracks = std::make_unique<CTracks>();
    m_Metaseek = std::move(metaseek);
    m_Clusters = std::move(clusters);
    m_SegInfo = std::move(info);
    m_VTracks = std::move(tracks);
    m_bFront = false;
    m_rec = {};
    m_Cues.Clear();
    return SG_ERR_NOERR;
}

int CMkvPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CMkvPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    const CSGAutoMutexLock lock(m_lockData);
    if (m_bFront) return SG_ERR_PARAM_ERR;
    if (m_Metaseek == nullptr || m_SegInfo == nullptr) return SG_ERR_PARAM_ERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_PARAM_ERR;

    AppendLayout([](CMsbCursor& w) { PutEbmlHeader(w); });
    m_rec.nFheadLen = m_rec.m_nFileOffset;
    AppendLayout([](CMsbCursor& w) { PutId(w, kSegment); });
    m_rec.m_nSegmentPos = m_rec.m_nFileOffset;
    AppendLayout([](CMsbCursor& w) { w.Fill(kSizeLen, 0); });
    m_rec.m_nMetaSeekIDPos = m_rec.m_nFileOffset;
    AppendLayout([this](CMsbCursor& w) { m_Metaseek->Write(w); });
    m_rec.m_nSegInfoIDPos = m_rec.m_nFileOffset;
    AppendLayout([this](CMsbCursor& w) { m_SegInfo->Write(w); });
    m_rec.m_nTrackIDPos = m_rec.m_nFileOffset;
    AppendLayout([this](CMsbCursor& w) { m_VTracks->WriteID(w); });
    m_rec.m_nFileOffset += kSizeLen;  // of Tracks: the tailer writes it

    m_rec.m_nFirstClusterPos = m_rec.m_nMetaSeekIDPos + CMetaseekBox::kLength + kFrontRoom;
    m_rec.m_ClusterIDPos = m_rec.m_nFirstClusterPos;
    m_bHeader = true;
    m_bFront = true;
    return SG_ERR_NOERR;
}

int CMkvPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    const CSGAutoMutexLock lock(m_lockData);
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;
    if (pFrame->frame_type != SG_FRAME_TYPE_VIDEO) return SG_ERR_PARAM_ERR;
    if (!m_bFront) return SG_ERR_PARAM_ERR;

    return InputVideoData(pFrame);
}

int CMkvPacket::InputVideoData(SGFrameInfo* pFrame)
{
    // A frame that the work buffer does not hold is dropped ahead of all else: its bytes stay.
    const uint32_t size = pFrame->frame_size;
    const uint32_t overhead = CClusters::BlockOverhead(size);
    if (size > kWorkLen || overhead > kWorkLen - size) return SG_ERR_NOERR;

    std::span<unsigned char> block;
    if (IsH264(pFrame->frame_encode))
    {
        const std::span<unsigned char> frame(pFrame->frame_pointer, size);
        block = BlockRoom(overhead, size_t{overhead} + size);
        if (block.empty())
        {
            ConvertStartCodes(frame, m_rec.m_AvcDecoderCfg);
        }
        else
        {
            ConvertStartCodes(frame, m_rec.m_AvcDecoderCfg, block.subspan(overhead).data());
        }
    }
    if (!m_rec.m_bVideo && pFrame->frame_sub_type == SG_FRAME_SUB_TYPE_I) OpenTrack(*pFrame);
    if (!m_rec.m_bVideo || pFrame->frame_encode != m_rec.m_nVEncode) return SG_ERR_NOERR;
    if (pFrame->frame_sub_type > SG_FRAME_SUB_TYPE_B) return SG_ERR_NOERR;

    const uint32_t rate = pFrame->frame_rate;
    const bool opens = rate != 0 && m_rec.m_nVideoNum % rate == 0;
    if (opens && !OpenCluster()) return SG_ERR_PARAM_ERR;
    // Frames without a rate open no cluster, not even the first.
    if (!opens && m_rec.m_nVideoNum == 0) return SG_ERR_PARAM_ERR;

    WriteBlock(*pFrame, block);
    return SG_ERR_NOERR;
}

void CMkvPacket::OpenTrack(const SGFrameInfo& frame)
{
    VIDEOINFO info;
    info.trackNum = kVideoTrack;
    info.trackType = TRACK_TYPE_VIDEO;
    info.nFramerate = frame.frame_rate;
    info.width = static_cast<uint16_t>(frame.width);  // the element has 16 bits
    info.heigth = static_cast<uint16_t>(frame.heigth);
    WritePrivatedata(frame, info);
    m_VTracks->Init(TRACK_TYPE_VIDEO, &info);
    m_rec.m_bVideo = true;
    m_rec.m_nVEncode = frame.frame_encode;
}

void CMkvPacket::WritePrivatedata(const SGFrameInfo& frame, VIDEOINFO& info) const
{
    CMsbCursor w(info.privatedata);
    if (IsH264(frame.frame_encode))
    {
        SetCodecId(info, kAvcId);
        PutAvcConfig(w, m_rec.m_AvcDecoderCfg);
    }
    else if (frame.frame_encode == SG_ENCODE_VIDEO_MPEG4)
    {
        SetCodecId(info, kAspId);
        w.Bytes(FindMpeg4Headers({frame.frame_pointer, frame.frame_size}));
    }
    // What does not fit its room is left out as a whole.
    info.privatedatalen = w.Overrun() ? 0 : static_cast<uint32_t>(w.Produced());
}

bool CMkvPacket::OpenCluster()
{
    if (m_rec.m_nVideoNum != 0)
    {
        if (m_rec.m_nClusterNum + 1 == kMaxClusterCount) return false;

        ++m_rec.m_nClusterNum;
        m_rec.m_nClosedClusters += m_rec.m_nClusterSize;
        m_rec.m_ClusterIDPos += m_rec.m_nClusterSize;
        m_rec.m_nClusterDatSize = 0;
        m_rec.m_nClusterSize = 0;
    }
    m_rec.m_nFileOffset = m_rec.m_ClusterIDPos;
    AppendLayout([this](CMsbCursor& w) { m_Clusters->WriteID(w); });
    m_rec.m_nClusterSizePos = m_rec.m_nFileOffset;
    AppendLayout([](CMsbCursor& w) { w.Fill(kSizeLen, 0); });
    // Kept: the cluster's time has 16 bits and wraps.
    const uint32_t time = m_rec.m_nClusterNum * kMillisecondsPerCluster;
    AppendLayout([time](CMsbCursor& w) { PutUint16(w, kTimecode, time); });
    return true;
}

std::span<unsigned char> CMkvPacket::BlockRoom(size_t overhead, size_t length) const
{
    // The beginning of a cluster may go out between the conversion and the block.
    const std::span room = std::span(m_pOutBuffer.get(), kWorkLen).subspan(kClusterHeaderLen);
    const auto place = AlignPayload(room, overhead, length);
    return length <= place.size() ? place.first(length) : std::span<unsigned char>();
}

void CMkvPacket::WriteBlock(const SGFrameInfo& frame, std::span<unsigned char> room)
{
    const MKV_FrameData block{
        .pointer = frame.frame_pointer,
        .size = frame.frame_size,
        .frametype = static_cast<int32_t>(frame.frame_sub_type),
        .timescode = BlockTime(m_rec.m_nVideoNum, m_rec.m_nClusterNum, frame.frame_rate)};
    if (frame.frame_sub_type == SG_FRAME_SUB_TYPE_I)
    {
        // Kept: the position in the file where one in the segment is meant, of which the element
        // has the low 32 bits; and counted from the size of the cluster so far.
        m_Cues.Append(
            {.time = m_rec.m_nClusterNum * kMillisecondsPerCluster +
                     static_cast<uint32_t>(block.timescode),
             .clusterPosition = static_cast<uint32_t>(m_rec.m_ClusterIDPos),
             .relativePosition = static_cast<uint16_t>(m_rec.m_nClusterSize + kTimecodeLen)});
    }
    m_Clusters->InputData(kVideoTrack, &block);
    const uint64_t length = OutputBlock(frame, room);
    ++m_rec.m_nVideoNum;
    m_rec.m_nFileOffset += length;
    m_rec.m_nClusterDatSize += length;
    OutputSize(m_rec.m_nClusterDatSize + kTimecodeLen, m_rec.m_nClusterSizePos);
    m_rec.m_nClusterSize = m_rec.m_nClusterDatSize + kClusterHeaderLen;
}

uint64_t CMkvPacket::OutputBlock(const SGFrameInfo& frame, std::span<unsigned char> block)
{
    if (block.empty())
    {
        return OutputLayout(m_rec.m_nFileOffset,
                            [this](CMsbCursor& w) { m_Clusters->WriteData(w); });
    }
    m_Clusters->WriteAhead(block.first(block.size() - frame.frame_size));
    return OutputData(block.data(), block.size(), m_rec.m_nFileOffset);
}

int CMkvPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    const CSGAutoMutexLock lock(m_lockData);
    if (!m_bFront) return SG_ERR_PARAM_ERR;

    const uint64_t entries = m_rec.m_nTrackIDPos + kTracksHeaderLen;
    uint64_t length = 0;
    if (m_rec.m_bVideo)
    {
        length = OutputLayout(entries, [this](CMsbCursor& w) { m_VTracks->WriteData(w); });
    }
    OutputSize(length, m_rec.m_nTrackIDPos + kIdLen);
    const uint64_t filler = entries + length;
    const uint64_t filler_data =
        filler + OutputLayout(filler, [](CMsbCursor& w) { PutId(w, kVoid); });
    OutputSize(m_rec.m_nFirstClusterPos - filler - kVoidHeaderLen, filler_data);

    m_rec.m_nClusterTotal += m_rec.m_nClosedClusters + m_rec.m_nClusterSize;
    const uint64_t cues = m_rec.m_nFirstClusterPos + m_rec.m_nClusterTotal;
    const uint64_t origin = m_rec.m_nMetaSeekIDPos;  // of the segment's data
    m_Metaseek->SetPositions({.info = static_cast<uint32_t>(m_rec.m_nSegInfoIDPos - origin),
                              .tracks = static_cast<uint32_t>(m_rec.m_nTrackIDPos - origin),
                              .cues = static_cast<uint32_t>(cues - origin)});
    OutputLayout(m_rec.m_nMetaSeekIDPos + CMetaseekBox::kHeaderLen,
                 [this](CMsbCursor& w) { m_Metaseek->WriteData(w); });
    const uint64_t cues_length = OutputCues(cues);
    OutputSize(m_rec.m_nClusterTotal + cues_length + CMetaseekBox::kLength + kFrontRoom,
               m_rec.m_nSegmentPos);
    m_bHeader = false;
    return SG_ERR_NOERR;
}

int CMkvPacket::GetFileHeader(SGOutputData* /*pOutput*/)
{
    return SG_ERR_NOERR;
}

uint64_t CMkvPacket::OutputData(const unsigned char* data, size_t length, uint64_t position)
{
    // What the callback answers is not looked at: all places are computed from lengths.
    Emit(data, static_cast<uint32_t>(length), Origin::kStart, static_cast<int64_t>(position));
    return length;
}

template <class Layout>
uint64_t CMkvPacket::OutputLayout(uint64_t position, Layout layout)
{
    CMsbCursor w({m_pOutBuffer.get(), kWorkLen});
    layout(w);
    assert(!w.Overrun());
    return OutputData(m_pOutBuffer.get(), w.Produced(), position);
}

template <class Layout>
void CMkvPacket::AppendLayout(Layout layout)
{
    m_rec.m_nFileOffset += OutputLayout(m_rec.m_nFileOffset, layout);
}

void CMkvPacket::OutputSize(uint64_t size, uint64_t position)
{
    OutputLayout(position, [size](CMsbCursor& w) { w.U64(CEbml::SetID(size)); });
}

uint64_t CMkvPacket::OutputCues(uint64_t position)
{
    const std::span<const unsigned char> cues = m_Cues.Finish();
    for (size_t from = 0; from < cues.size(); from += kWorkLen)
    {
        const std::span<const unsigned char> piece =
            cues.subspan(from, std::min<size_t>(cues.size() - from, kWorkLen));
        OutputData(piece.data(), piece.size(), position + from);
    }
    return cues.size();
}

}  // namespace Orbel::Wrapton
