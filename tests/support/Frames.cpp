#include "support/Frames.h"

#include <utility>

namespace Support
{

using namespace Orbel::Wrapton;

Frame Frame::Sized(uint32_t newWidth, uint32_t newHeight) const
{
    Frame frame = *this;
    frame.width = newWidth;
    frame.height = newHeight;
    return frame;
}

Frame Frame::AtRate(uint32_t newRate) const
{
    Frame frame = *this;
    frame.rate = newRate;
    return frame;
}

Frame Frame::As(uint32_t newSubType) const
{
    Frame frame = *this;
    frame.subType = newSubType;
    return frame;
}

Frame Video(uint32_t encode, uint32_t subType, Bytes bytes)
{
    Frame frame;
    frame.bytes = std::move(bytes);
    frame.subType = subType;
    frame.encode = encode;
    return frame;
}

Frame H264I(Bytes annexB)
{
    return Video(SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_I, std::move(annexB));
}

Frame H264P(Bytes annexB)
{
    return Video(SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_P, std::move(annexB));
}

Frame Mpeg4I(Bytes bytes)
{
    return Video(SG_ENCODE_VIDEO_MPEG4, SG_FRAME_SUB_TYPE_I, std::move(bytes));
}

Frame Mpeg4P(Bytes bytes)
{
    return Video(SG_ENCODE_VIDEO_MPEG4, SG_FRAME_SUB_TYPE_P, std::move(bytes));
}

Frame JpegI(Bytes bytes)
{
    return Video(SG_ENCODE_VIDEO_JPEG, SG_FRAME_SUB_TYPE_I, std::move(bytes));
}

Frame Audio(uint32_t encode, Bytes bytes, uint32_t sampleRate, uint32_t channels, uint32_t bits)
{
    Frame frame;
    frame.bytes = std::move(bytes);
    frame.type = SG_FRAME_TYPE_AUDIO;
    frame.encode = encode;
    frame.width = 0;
    frame.height = 0;
    frame.rate = 0;
    frame.sampleRate = sampleRate;
    frame.bits = bits;
    frame.channels = channels;
    return frame;
}

Frame Aac(Bytes bytes, uint32_t sampleRate, uint32_t channels)
{
    return Audio(SG_ENCODE_AUDIO_AAC, std::move(bytes), sampleRate, channels, 16);
}

Frame Mp2(Bytes bytes, uint32_t sampleRate, uint32_t channels)
{
    return Audio(SG_ENCODE_AUDIO_MP2, std::move(bytes), sampleRate, channels, 16);
}

Frame Ext(Bytes bytes)
{
    Frame frame = Audio(0, std::move(bytes), 0, 0, 0);
    frame.type = SG_FRAME_TYPE_EXT;
    return frame;
}

SGFrameInfo RecordOf(const Frame& frame)
{
    SGFrameInfo record{};
    record.struct_size = sizeof(record);
    record.frame_size = static_cast<uint32_t>(frame.bytes.size());
    record.frame_type = frame.type;
    record.frame_sub_type = frame.subType;
    record.frame_encode = frame.encode;
    record.frame_time = frame.time;
    record.frame_data = frame.date;
    record.width = frame.width;
    record.heigth = frame.height;
    record.frame_rate = frame.rate;
    record.sample_rate = frame.sampleRate;
    record.bit_per_sample = frame.bits;
    record.channels = frame.channels;
    return record;
}

Bytes Nal(const Bytes& unit)
{
    return Join({Hex("00 00 00 01"), unit});
}

Bytes LengthNal(const Bytes& unit)
{
    return Join({Msb32(static_cast<uint32_t>(unit.size())), unit});
}

Bytes Adts(uint32_t length, const Bytes& block, uint32_t second)
{
    return Join({
        U8(0xFF),                         // syncword, high 8 bits
        U8(second),                       // syncword, id, layer, protection_absent
        U8(0x6C),                         // profile LC, sampling index 11 (8000 Hz), channels high
        U8(0x40 | ((length >> 11) & 3)),  // channels 1, frame length, high 2 bits
        U8(length >> 3),                  // frame length, middle 8 bits
        U8((length & 7) << 5 | 0x1F),     // frame length, low 3 bits; buffer fullness
        U8(0xFC),                         // buffer fullness, one block
        block,
    });
}

}  // namespace Support
