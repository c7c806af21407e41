#include "FrameMaker.h"

#include <algorithm>
#include <array>

namespace Fuzz
{
namespace
{

using namespace Orbel::Wrapton;

constexpr std::array<uint32_t, 8> kTypes = {SG_FRAME_TYPE_VIDEO,
                                            SG_FRAME_TYPE_VIDEO,
                                            SG_FRAME_TYPE_AUDIO,
                                            SG_FRAME_TYPE_AUDIO,
                                            SG_FRAME_TYPE_EXT,
                                            SG_FRAME_TYPE_UNKNOW,
                                            4,
                                            0xFFFFFFFF};
constexpr std::array<uint32_t, 6> kSubTypes = {SG_FRAME_SUB_TYPE_I,
                                               SG_FRAME_SUB_TYPE_I,
                                               SG_FRAME_SUB_TYPE_P,
                                               SG_FRAME_SUB_TYPE_B,
                                               SG_FRAME_SUB_TYPE_JPEG_FRAME,
                                               9};
constexpr std::array<uint32_t, 10> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                 SG_ENCODE_VIDEO_QV_H264,
                                                 SG_ENCODE_VIDEO_MPEG4,
                                                 SG_ENCODE_VIDEO_JPEG,
                                                 SG_ENCODE_AUDIO_AAC,
                                                 SG_ENCODE_AUDIO_MP2,
                                                 SG_ENCODE_AUDIO_PCM16,
                                                 SG_ENCODE_AUDIO_G711A,
                                                 SG_ENCODE_VIDEO_STD_H264,
                                                 0xFFFFFFFF};
constexpr std::array<uint32_t, 8> kNumbers = {0, 1, 25, 8000, 48000, 90000, 0x7FFFFFFF, 0xFFFFFFFF};

/// The bits of a frame's first byte.
enum : unsigned
{
    kWithAttributes = 1,
    kAtALimit = 2,
    kSpoiled = 4,
    kShortOfBytes = 8
};

void Spoil(SGFrameInfo& record, unsigned way)
{
    switch (way % 4)
    {
        case 0:
            record.frame_pointer = nullptr;
            break;
        case 1:
            record.frame_size = 0;
            break;
        case 2:
            record.struct_size = way;
            break;
        default:
            record.split_info = {1, 100, 100, nullptr};
            break;
    }
}

/// Repeats @p pattern over @p bytes.
void Repeat(std::span<unsigned char> bytes, std::span<const uint8_t> pattern)
{
    while (!bytes.empty())
    {
        const std::size_t count = std::min(bytes.size(), pattern.size());
        std::copy_n(pattern.begin(), count, bytes.begin());
        bytes = bytes.subspan(count);
    }
}

/// Fills a frame with a pattern: all of it, or beginning and end of one that is long. Frames of
/// megabytes that are nothing but start codes would take nearly all time.
void Fill(std::span<unsigned char> bytes, std::span<const uint8_t> pattern)
{
    constexpr std::size_t kMostAtBegin = 64 * 1024;
    constexpr unsigned char kQuiet = 0x5A;

    const std::size_t begin = pattern.empty() ? 0 : std::min(bytes.size(), kMostAtBegin);
    const std::size_t end = std::min(bytes.size() - begin, pattern.size());
    const auto middle = bytes.subspan(begin, bytes.size() - begin - end);
    Repeat(bytes.first(begin), pattern);
    std::fill(middle.begin(), middle.end(), kQuiet);
    Repeat(bytes.last(end), pattern);
}

}  // namespace

MadeFrame MakeFrame(ByteSource& source, const Palette& palette)
{
    const unsigned shape = source.U8();
    MadeFrame frame;
    SGFrameInfo& record = frame.record;
    record.struct_size = sizeof(record);
    record.frame_type = source.Choose(kTypes);
    record.frame_sub_type = source.Choose(kSubTypes);
    record.frame_encode = source.Choose(palette.encodings);
    record.width = 640;
    record.heigth = 360;
    record.frame_rate = 25;
    record.sample_rate = 8000;
    record.channels = 1;
    record.bit_per_sample = 16;
    if ((shape & kWithAttributes) != 0)
    {
        record.frame_rate = source.Choose(kNumbers);
        record.sample_rate = source.Choose(kNumbers);
        record.channels = source.Choose(kNumbers);
        record.bit_per_sample = source.Choose(kNumbers);
        record.width = source.U32();
        record.heigth = source.U32();
        record.frame_time = source.U32();
        record.frame_data = source.U32();
    }

    const uint32_t wanted = (shape & kShortOfBytes) != 0 ? source.U8() % 8u : source.U8();
    const std::span<const uint8_t> given = source.Take(wanted);
    const bool limit = (shape & kAtALimit) != 0 && shape >= 0xE0;
    const std::size_t size = limit ? source.Choose(palette.sizes) : given.size();
    frame.bytes = std::make_unique<unsigned char[]>(size);
    Fill({frame.bytes.get(), size}, given);
    record.frame_pointer = frame.bytes.get();
    record.frame_size = static_cast<uint32_t>(size);
    frame.size = size;
    if ((shape & kSpoiled) != 0 && shape >= 0xC0) Spoil(record, source.U8());
    return frame;
}

Palette UsualFrames(std::span<const uint32_t> sizes)
{
    return {.encodings = kEncodings, .sizes = sizes};
}

}  // namespace Fuzz
