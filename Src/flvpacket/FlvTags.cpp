#include "flvpacket/FlvTags.h"

#include <cassert>
#include <string_view>

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kTagHeaderLen = 11;

/// FrameType in the high bits of the first byte of a video tag.
constexpr uint32_t kKeyFrame = 1;
constexpr uint32_t kInterFrame = 2;

enum AvcPacketType : uint8_t
{
    kSequenceHeader = 0,
    kNalUnits = 1,
    kEndOfSequence = 2
};

/// Markers of Action Message Format 0 values.
constexpr uint32_t kAmfNumber = 0;
constexpr uint32_t kAmfBoolean = 1;
constexpr uint32_t kAmfString = 2;
constexpr uint32_t kAmfEcmaArray = 8;
constexpr uint32_t kAmfObjectEnd = 9;

void PutPreviousTagSize(CMsbCursor& w, const _FLV_TAG& tag)
{
    w.U32(kTagHeaderLen + tag.DataSize);
}

/// A tag around what @p put_body writes.
template <class PutBody>
void PutTag(CMsbCursor& w, uint32_t type, uint32_t timestamp, PutBody put_body)
{
    CMsbCursor measure;
    put_body(measure);
    const _FLV_TAG tag{.TagType = type,
                       .DataSize = static_cast<uint32_t>(measure.Produced()),
                       .Timestamp = timestamp};
    WriteFLVTag(w, tag);
    put_body(w);
    PutPreviousTagSize(w, tag);
}

/// VIDEODATA and AVCVIDEOPACKET up to the data of the packet.
void PutAvcPacketHeader(CMsbCursor& w, bool key, AvcPacketType type)
{
    w.Bits<8>(Field<4>(key ? kKeyFrame : kInterFrame), Field<4>(kFlvCodecAvc));
    w.U8(type);
    w.U24(0);  // composition time
}

void PutName(CMsbCursor& w, std::string_view name)
{
    w.U16(static_cast<uint32_t>(name.size()));
    for (const char letter : name)
    {
        w.U8(static_cast<unsigned char>(letter));
    }
}

void PutNumber(CMsbCursor& w, double value)
{
    w.U8(kAmfNumber);
    w.F64(value);
}

void PutNumber(CMsbCursor& w, std::string_view name, double value)
{
    PutName(w, name);
    PutNumber(w, value);
}

void PutBoolean(CMsbCursor& w, std::string_view name, uint8_t value)
{
    PutName(w, name);
    w.U8(kAmfBoolean);
    w.U8(value);
}

void PutMetaData(CMsbCursor& w, const FlvMetaData& meta)
{
    w.U8(kAmfString);
    PutName(w, "onMetaData");
    w.U8(kAmfEcmaArray);
    w.U32(13);  // Kept: twelve entries follow.
    PutNumber(w, "duration", meta.m_dDuration);
    PutNumber(w, "width", meta.m_dWidth);
    PutNumber(w, "height", meta.m_dHeight);
    PutNumber(w, "videodatarate", 0);  // never measured
    PutNumber(w, "framerate", meta.m_dFrameRate);
    PutNumber(w, "videocodecid", meta.m_dVCodecId);
    PutNumber(w, "audiodatarate", 0);  // never measured
    PutNumber(w, "audiosamplerate", meta.m_dSampleRate);
    // Kept: "audiosamplesize" has its value but not its name; consumers expect these bytes.
    PutNumber(w, meta.m_dSampleSize);
    PutBoolean(w, "stereo", meta.m_bChannel);
    PutNumber(w, "audiocodecid", meta.m_dACodecId);
    PutNumber(w, "filesize", meta.m_dFileSize);
    w.U24(kAmfObjectEnd);
}

}  // namespace

/// FLV header, Adobe Flash Video File Format 10.1, E.2.
void WriteFileHeader(CMsbCursor& w, const _FLV_HEADER& header)
{
    w.Bytes(header.Sign);
    w.U8(header.Version);
    w.U8(header.Flag);
    w.U32(header.DataOffset);
    w.U32(header.FirstTagSize);
}

/// FLV tag, E.4.1.
void WriteFLVTag(CMsbCursor& w, const _FLV_TAG& tag)
{
    w.U8(tag.TagType);
    w.U24(tag.DataSize);
    // Kept: the bits above the 24th are lost, the extension byte does not take them.
    w.U24(tag.Timestamp);
    w.U8(tag.TimestampEx);
    w.U24(tag.StreamID);
}

/// SCRIPTDATA, E.4.4.
void WriteDataPacket(CMsbCursor& w, const FlvMetaData& meta)
{
    PutTag(w, kFlvTagScript, 0, [&](CMsbCursor& body) { PutMetaData(body, meta); });
}

/// AVCVIDEOPACKET, E.4.3.2, with the record of ISO/IEC 14496-15 5.3.3.1.
void WriteAvcStart(CMsbCursor& w, const _AVCDecoderConfig& config)
{
    PutTag(w,
           kFlvTagVideo,
           0,
           [&](CMsbCursor& body)
           {
               PutAvcPacketHeader(body, true, kSequenceHeader);
               body.U8(config.cfgVersion);
               body.U8(config.avcProfile);
               body.U8(config.profileCompatibility);
               body.U8(config.avcLevel);
               body.U8(config.lengthSizeMinusOne);
               body.U8(0xE0u | config.numOfSPS);  // 3 reserved ones, 5-bit count
               body.U16(static_cast<uint16_t>(config.spsLength));
               body.Bytes(config.Sps());
               body.U8(config.numOfPPS);
               body.U16(static_cast<uint16_t>(config.ppsLength));
               body.Bytes(config.Pps());
           });
}

void WriteAvcEnd(CMsbCursor& w, uint32_t timestamp)
{
    PutTag(w,
           kFlvTagVideo,
           timestamp,
           [](CMsbCursor& body) { PutAvcPacketHeader(body, true, kEndOfSequence); });
}

/// AUDIODATA, E.4.2.
void WriteAudioTag(CMsbCursor& w,
                   uint32_t timestamp,
                   uint32_t flags,
                   std::span<const unsigned char> samples)
{
    const _FLV_TAG tag{.TagType = kFlvTagAudio,
                       .DataSize = static_cast<uint32_t>(1 + samples.size()),
                       .Timestamp = timestamp};
    WriteFLVTag(w, tag);
    w.U8(flags);
    w.Bytes(samples);
    PutPreviousTagSize(w, tag);
}

void WriteVideoTag(std::span<unsigned char> place, uint32_t timestamp, bool key)
{
    const size_t data_size = place.size() - kTagHeaderLen - kFlvTagTrail;
    const _FLV_TAG tag{.TagType = kFlvTagVideo,
                       .DataSize = static_cast<uint32_t>(data_size),
                       .Timestamp = timestamp};
    CMsbCursor lead(place.first(kFlvVideoLead));
    WriteFLVTag(lead, tag);
    PutAvcPacketHeader(lead, key, kNalUnits);
    assert(lead.Produced() == kFlvVideoLead);

    CMsbCursor trail(place.last(kFlvTagTrail));
    PutPreviousTagSize(trail, tag);
}

}  // namespace Orbel::Wrapton
