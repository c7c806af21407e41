#include "avipacket/AviHdrlList.h"

#include <algorithm>

#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kListSize = 4096;
constexpr uint32_t kListHeaderLen = 12;
static_assert(CAviHdrlList::kLength == kListSize + 8);
static_assert(Avi_Junk{}.total_size ==
              CAviHdrlList::kLength - kListHeaderLen - Avi_MainHeader{}.total_size);

constexpr uint32_t kVideoBufferSize = 1048576;
constexpr uint32_t kAudioBufferSize = 12288;

constexpr uint32_t kFormatPcm = 0x0001;
constexpr uint32_t kFormatALaw = 0x0006;
constexpr uint32_t kFormatMuLaw = 0x0007;

fourcc_t CodecCode(uint32_t encode)
{
    switch (encode)
    {
        case SG_ENCODE_VIDEO_MPEG4:
            return FourCc("XVID");
        case SG_ENCODE_VIDEO_HI_H264:
        case SG_ENCODE_VIDEO_QV_H264:
            return FourCc("H264");
        case SG_ENCODE_VIDEO_JPEG:
            return FourCc("MJPG");
        default:
            return 0;
    }
}

/// dwRate of an audio stream; dwScale is 2.
uint32_t AudioRate(uint32_t formatTag, uint32_t sampleRate)
{
    switch (formatTag)
    {
        case kFormatPcm:
            return sampleRate * 2;
        case kFormatALaw:
        case kFormatMuLaw:
            return sampleRate & 0x7FFFFFFF;
        default:
            return 0;
    }
}

}  // namespace

int CAviHdrlList::Init(uint64_t baseOffset,
                       const SGHeaderInfo* pHeader,
                       pRiffCallback callback,
                       void* user) noexcept
{
    m_cbOutput = callback;
    m_pUser = user;
    m_nBaseOffset = baseOffset;
    if (pHeader == nullptr) return SG_ERR_NOERR;

    // Kept: both lists come into being even when their flags say that there is no such stream.
    InitVideoStreamList(&pHeader->video);
    InitAudioStreamList(&pHeader->audio);
    return SG_ERR_NOERR;
}

int CAviHdrlList::InitVideoStreamList(const SGVideoInfo* info) noexcept
{
    if (info == nullptr) return SG_ERR_EMPTY_POINTER;

    // Kept: without its flag the list has zero parameters, also after frames ahead of the header.
    fourcc_t codec = 0;
    m_nWidth = 0;
    m_nHeight = 0;
    m_nFrameRate = 0;
    if (info->bVideo != 0)
    {
        codec = CodecCode(static_cast<uint32_t>(info->videoencode));
        m_nWidth = static_cast<uint32_t>(info->width);
        m_nHeight = static_cast<uint32_t>(info->height);
        m_nFrameRate = static_cast<uint32_t>(info->framerate);
    }
    m_VIndxObject.Init(kVideoChunk);
    m_VideoStream = {
        .stream_header = {.fccType = FourCc("vids"),
                          .fccHandler = codec,
                          .dwScale = 1,
                          .dwRate = m_nFrameRate,
                          .dwLength = m_nVFrameCount,
                          .dwSuggestedBufferSize = kVideoBufferSize,
                          .width = m_nWidth,
                          .height = m_nHeight},
        .bitmap_info = {.biWidth = m_nWidth,
                        .biHeight = m_nHeight,
                        .biCompression = codec,
                        .biSizeImage = m_nWidth * m_nHeight * 24 / 8},
    };
    if (m_nFrameRate != 0) m_MainHeader.dwMicroSecPerFrame = 1000000 / m_nFrameRate;
    m_MainHeader.dwWidth = m_nWidth;
    m_MainHeader.dwHeight = m_nHeight;
    AddList(m_bVideoInited, m_VideoStream.total_size);
    return SG_ERR_NOERR;
}

int CAviHdrlList::InitAudioStreamList(const SGAudioInfo* info) noexcept
{
    if (info == nullptr) return SG_ERR_EMPTY_POINTER;

    uint32_t formatTag = 0;
    uint32_t sampleRate = 0;
    uint32_t bitPerSample = 0;
    uint32_t channels = 0;
    if (info->bAudio != 0)
    {
        formatTag = get_codec_id(static_cast<uint32_t>(info->audioencode));
        if (formatTag == 0) return SG_ERR_NOERR;

        sampleRate = static_cast<uint32_t>(info->samplerate);
        bitPerSample = static_cast<uint32_t>(info->sampledepth);
        channels = static_cast<uint32_t>(info->channels);
    }
    m_AIndxObject.Init(kAudioChunk);
    m_AudioStream = {
        .stream_header = {.fccType = FourCc("auds"),
                          .fccHandler = 1,  // kept: a number where a code is meant
                          .dwScale = 2,
                          .dwRate = AudioRate(formatTag, sampleRate),
                          .dwLength = m_nAFrameCount,
                          .dwSuggestedBufferSize = kAudioBufferSize,
                          .width = m_nWidth,  // kept: the size of the picture
                          .height = m_nHeight},
        // Kept: the channel count enters neither the bytes per second nor the block's alignment.
        .waveformat = {.wFormatTag = formatTag,
                       .nChannels = channels,
                       .nSamplesPerSec = sampleRate,
                       .nAvgBytesPerSec = bitPerSample * sampleRate / 8,
                       .nBlockAlign = bitPerSample / 8,
                       .wBitsPerSample = bitPerSample},
    };
    AddList(m_bAudioInited, m_AudioStream.total_size);
    return SG_ERR_NOERR;
}

int CAviHdrlList::InputFrame(const SGFrameInfo* frame) noexcept
{
    if (frame == nullptr) return SG_ERR_EMPTY_POINTER;

    if (frame->frame_type == SG_FRAME_TYPE_VIDEO)
    {
        ++m_nVFrameCount;
        m_nVPayloadSize += frame->frame_size;
        m_nVMaxFrameSize = std::max(m_nVMaxFrameSize, frame->frame_size);
    }
    else if (frame->frame_type == SG_FRAME_TYPE_AUDIO)
    {
        ++m_nAFrameCount;
        m_nAMaxFrameSize = std::max(m_nAMaxFrameSize, frame->frame_size);
    }

    if (m_nVFrameCount != 0)
    {
        m_MainHeader.dwMaxBytesPerSec = m_nFrameRate * m_nVPayloadSize / m_nVFrameCount;
    }
    m_MainHeader.dwTotalFrames = m_nVFrameCount;
    m_MainHeader.dwSuggestedBufferSize = std::max(m_nVMaxFrameSize, m_nAMaxFrameSize);
    m_VideoStream.stream_header.dwLength = m_nVFrameCount;
    m_VideoStream.stream_header.dwSuggestedBufferSize = m_nVMaxFrameSize;
    m_AudioStream.stream_header.dwLength = m_nAFrameCount;
    m_AudioStream.stream_header.dwSuggestedBufferSize = m_nAMaxFrameSize;
    return SG_ERR_NOERR;
}

int CAviHdrlList::InputEntry(uint32_t stream, const superindex_entry* entry) noexcept
{
    if (entry == nullptr) return SG_ERR_EMPTY_POINTER;

    switch (stream)
    {
        case AVI_VIDEO_STREAM:
            m_VIndxObject.InputEntry(entry);
            // The frames are there even when the super index has no room for their index.
            m_OdmlList.totalcount += entry->entrycount;
            break;
        case AVI_AUDIO_STREAM:
            m_AIndxObject.InputEntry(entry);
            break;
        default:
            return SG_ERR_PARAM_ERR;
    }
    if (!m_bOpenDML)
    {
        m_bOpenDML = true;
        ShrinkJunk(m_OdmlList.total_size);
    }
    return SG_ERR_NOERR;
}

void CAviHdrlList::Write() noexcept
{
    if (m_cbOutput == nullptr) return;

    CLsbCursor w(m_OutputBuffer);
    {
        const CRecordCheck check(
            w, kLength, "WriteHeaderList Error! HeaderList Size = %d, Actual Size = %d \n");
        w.FourCC("LIST");
        w.U32(kListSize);
        w.FourCC("hdrl");
        PutMainHeader(w, m_MainHeader);
        if (m_bVideoInited) PutVideoStreamList(w, m_VideoStream, m_VIndxObject.GetBuffer());
        if (m_bAudioInited) PutAudioStreamList(w, m_AudioStream, m_AIndxObject.GetBuffer());
        if (m_bOpenDML) PutOdmlList(w, m_OdmlList);
        PutJunk(w, m_JunkList);
    }
    m_cbOutput(m_OutputBuffer.data(), kLength, m_nBaseOffset, m_pUser);
}

void CAviHdrlList::AddList(bool& inited, uint32_t length) noexcept
{
    if (inited) return;

    inited = true;
    ++m_MainHeader.dwStreams;
    ShrinkJunk(length);
}

void CAviHdrlList::ShrinkJunk(uint32_t by) noexcept
{
    m_JunkList.size -= by;
    m_JunkList.total_size -= by;
}

}  // namespace Orbel::Wrapton
