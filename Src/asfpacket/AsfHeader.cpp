#include "asfpacket/AsfHeader.h"

#include <cassert>

#include "Wrapton.h"
#include "asfpacket/AsfData.h"
#include "asfpacket/AsfObject.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kVideoNumber = 1;
constexpr uint32_t kAudioNumber = 2;

/// BITMAPINFOHEADER, and what goes ahead of it in the type-specific data of a video stream.
constexpr uint32_t kBitmapInfoLen = 4 + 4 + 4 + 2 + 2 + 4 + 4 + 4 + 4 + 4 + 4;
constexpr uint32_t kVideoLeadLen = 4 + 4 + 1 + 2;
static_assert(kVideoLeadLen + kBitmapInfoLen == 51);

constexpr uint32_t kWaveExtraLen = 12;
constexpr uint32_t kWaveFormatLen = 2 + 2 + 4 + 4 + 2 + 2 + 2 + kWaveExtraLen;
static_assert(kWaveFormatLen == 30);

constexpr uint32_t kSpreadLen = 1 + 2 + 2 + 2 + 1;
static_assert(kSpreadLen == 8);

/// "zh-cn" in UTF-16 with its terminator.
constexpr std::array<uint16_t, 6> kLanguage = {'z', 'h', '-', 'c', 'n', 0};

/// File Properties Object, Advanced Systems Format 01.20.03, 3.2.
void PutFileProperties(CLsbCursor& w, const AsfFileProperties& file)
{
    const CAsfObjectScope object(w, kAsfFilePropertiesObject);
    w.Guid(kAsfFileId);
    w.U64(file.file_size);
    w.U64(file.creation_date);
    w.U64(file.packet_count);
    w.U64(file.play_duration);
    w.U64(file.send_duration);
    w.U64(0);  // preroll
    w.U32(file.flags);
    w.U32(kAsfPacketLen);  // minimum packet size
    w.U32(kAsfPacketLen);  // maximum packet size
    w.U32(1511712);        // maximum bit rate; kept, whatever the streams need
}

/// Language List Object, 4.6.
void PutLanguageList(CLsbCursor& w)
{
    const CAsfObjectScope object(w, kAsfLanguageListObject);
    w.U16(1);  // records
    w.U8(2 * kLanguage.size());
    for (const uint16_t letter : kLanguage)
    {
        w.U16(letter);
    }
}

/// Extended Stream Properties Object, 4.1.
void PutExtendedStreamProperties(CLsbCursor& w, const AsfVideoStream& video)
{
    constexpr uint32_t kSecond = 10000000;  // in 100 ns

    const CAsfObjectScope object(w, kAsfExtendedStreamPropertiesObject);
    w.U64(0);             // start time
    w.U64(0);             // end time
    w.U32(0);             // data bit rate
    w.U32(0);             // buffer size
    w.U32(0);             // initial buffer fullness
    w.U32(0);             // alternate data bit rate
    w.U32(0);             // alternate buffer size
    w.U32(0);             // alternate initial buffer fullness
    w.U32(0);             // maximum object size
    w.U32(kAsfSeekable);  // flags
    w.U16(kVideoNumber);
    w.U16(0);                                                           // language index
    w.U64(video.m_nFrameRate != 0 ? kSecond / video.m_nFrameRate : 0);  // time per frame
    w.U16(0);                                                           // stream names
    w.U16(0);                                                           // payload extension systems
}

/// Padding Object, 3.16.
void PutPadding(CLsbCursor& w, size_t padding)
{
    const CAsfObjectScope object(w, kAsfPaddingObject);
    w.Fill(padding, 0);
}

/// Header Extension Object, 3.4.
void PutHeaderExtension(CLsbCursor& w, const AsfVideoStream& video, size_t padding)
{
    const CAsfObjectScope object(w, kAsfHeaderExtensionObject);
    w.Guid(kAsfReserved1);
    w.U16(6);  // reserved field 2
    const size_t data_size_at = w.Produced();
    w.U32(0);
    const size_t data_at = w.Produced();
    PutLanguageList(w);
    PutExtendedStreamProperties(w, video);
    PutPadding(w, padding);
    w.PatchU32(data_size_at, static_cast<uint32_t>(w.Produced() - data_at));
}

void PutCompression(CLsbCursor& w, uint32_t encode)
{
    switch (encode)
    {
        case SG_ENCODE_VIDEO_MPEG4:
            w.FourCC("M4S2");
            return;
        case SG_ENCODE_VIDEO_HI_H264:
        case SG_ENCODE_VIDEO_QV_H264:
            w.FourCC("H264");
            return;
        case SG_ENCODE_VIDEO_JPEG:
            w.FourCC("MJPG");
            return;
        default:
            w.U32(0);
    }
}

/// Stream Properties Object, 3.3, with the video data of 9.2.
void PutVideoStream(CLsbCursor& w, const AsfVideoStream& video)
{
    const CAsfObjectScope object(w, kAsfStreamPropertiesObject);
    w.Guid(kAsfVideoMedia);
    w.Guid(kAsfNoErrorCorrection);
    w.U64(0);  // time offset
    w.U32(kVideoLeadLen + kBitmapInfoLen + video.m_nVExtLen);
    w.U32(0);             // error correction data length
    w.U16(kVideoNumber);  // flags
    w.U32(0);             // reserved

    w.U32(video.m_nWidth);   // encoded image width
    w.U32(video.m_nHeight);  // encoded image height
    w.U8(2);                 // reserved flags
    w.U16(kBitmapInfoLen + video.m_nVExtLen);

    w.U32(kBitmapInfoLen + video.m_nVExtLen);
    w.U32(video.m_nWidth);
    w.U32(video.m_nHeight);
    w.U16(1);   // planes
    w.U16(24);  // bits per pixel
    PutCompression(w, video.m_nVEncodeType);
    w.U32(0);  // image size
    w.U32(0);  // horizontal pixels per metre
    w.U32(0);  // vertical pixels per metre
    w.U32(0);  // colours used
    w.U32(0);  // important colours
    w.Bytes(video.Config());
}

/// Stream Properties Object, 3.3, with the audio data of 9.1 and the spread data of 3.3.
void PutAudioStream(CLsbCursor& w, const AsfAudioStream& audio)
{
    const CAsfObjectScope object(w, kAsfStreamPropertiesObject);
    w.Guid(kAsfAudioMedia);
    w.Guid(kAsfAudioSpread);
    w.U64(0);  // time offset
    w.U32(kWaveFormatLen);
    w.U32(kSpreadLen);
    w.U16(kAudioNumber);  // flags
    w.U32(0);             // reserved

    w.U16(audio.m_nCodecID);
    w.U16(audio.m_nChannels);
    w.U32(audio.m_nSampleRate);
    w.U32(audio.bytes_per_sec);
    w.U16(2);  // block align; kept, whatever the format
    w.U16(audio.m_nBitPerSample);
    w.U16(kWaveExtraLen);
    w.Fill(kWaveExtraLen, 0);

    w.U8(1);                 // span
    w.U16(kAsfPayloadRoom);  // virtual packet length
    w.U16(kAsfPayloadRoom);  // virtual chunk length
    w.U16(1);                // silence data length
    w.U8(0);                 // silence data
}

/// Header Object, 3.1, with its children.
void PutPadded(CLsbCursor& w, const AsfHeader& header, size_t padding)
{
    constexpr uint32_t kChildren = 3;  // file properties, header extension and the video stream

    const CAsfObjectScope object(w, kAsfHeaderObject);
    w.U32(header.audio != nullptr ? kChildren + 1 : kChildren);
    w.U8(1);  // reserved 1
    w.U8(2);  // reserved 2
    PutFileProperties(w, header.file);
    PutHeaderExtension(w, header.video, padding);
    PutVideoStream(w, header.video);
    if (header.audio != nullptr) PutAudioStream(w, *header.audio);
}

}  // namespace

void PutHeaderObject(CLsbCursor& w, const AsfHeader& header)
{
    CLsbCursor unpadded;
    PutPadded(unpadded, header, 0);
    // 64 bytes of configuration and an audio stream still leave 128 for the padding.
    assert(unpadded.Produced() <= kAsfHeaderLen);
    PutPadded(w, header, kAsfHeaderLen - unpadded.Produced());
}

/// Data Object, 5.1.
void PutDataObject(CLsbCursor& w, uint64_t size, uint64_t packet_count)
{
    w.Guid(kAsfDataObject);
    w.U64(size);
    w.Guid(kAsfFileId);
    w.U64(packet_count);
    w.U16(0x0101);  // reserved
}

}  // namespace Orbel::Wrapton
