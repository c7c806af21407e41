// The searches in coded frames, each against its plainest form: every position is looked at.
#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "ByteSource.h"
#include "Require.h"
#include "asfpacket/AsfMpeg4.h"
#include "mkvpacket/MkvCodec.h"
#include "mp4packet/Adts.h"
#include "mp4packet/Mpeg4Config.h"
#include "readers/FrameReference.h"

using namespace Orbel::Wrapton;
using Fuzz::Require;
using Readers::FindCode;

namespace
{

using Span = std::span<const unsigned char>;
using Bytes = std::vector<unsigned char>;

bool Inside(Span part, Span frame)
{
    return part.empty() || (part.data() >= frame.data() &&
                            part.data() + part.size() <= frame.data() + frame.size());
}

bool Same(Span one, Span other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end());
}

void CheckAdts(Span frame)
{
    const Span data = StripAdts(frame);
    Require(Inside(data, frame), "AAC data is inside its frame");
    Require(Same(data, Readers::ReferenceAacData(frame)), "the AAC data of a frame");
}

void CheckAsf(Span frame)
{
    const Mpeg4Parts parts = SplitMpeg4(frame);
    const std::size_t object = FindCode(frame, {0x00}, 0).value_or(0);
    const auto picture = FindCode(frame, {0xB6}, object);
    Require(Inside(parts.config, frame) && Inside(parts.picture, frame), "parts of the frame");
    Require(Same(parts.config, picture ? frame.subspan(object, *picture - object) : Span()),
            "the configuration of a frame");
    Require(Same(parts.picture, frame.subspan(picture.value_or(object))), "the picture of a frame");
}

void CheckMkvHeaders(Span frame)
{
    const Span headers = FindMpeg4Headers(frame);
    const auto begin = FindCode(frame, {0xB0, 0xB5}, 0);
    const auto end = begin ? FindCode(frame, {0xB3, 0xB6}, *begin) : std::nullopt;
    Require(Inside(headers, frame), "headers are inside their frame");
    Require(Same(headers, end ? frame.subspan(*begin, *end - *begin) : Span()), "the headers");
}

void CheckMp4Config(Span frame)
{
    const Span config = FindMpeg4Config(frame);
    Require(Inside(config, frame), "a configuration is inside its frame");
    Require(Same(config, Readers::ReferenceMpeg4Config(frame)), "the configuration of a frame");
}

/// Where the start codes of 4 bytes are; the search goes on behind each.
std::vector<std::size_t> LongCodes(Span frame)
{
    std::vector<std::size_t> codes;
    for (std::size_t at = 0; at + 4 <= frame.size(); ++at)
    {
        if (frame[at] != 0 || frame[at + 1] != 0 || frame[at + 2] != 0 || frame[at + 3] != 1)
            continue;
        codes.push_back(at);
        at += 3;
    }
    return codes;
}

void CheckMkvUnits(Span frame)
{
    const auto converted = std::make_unique<unsigned char[]>(frame.size());
    std::copy(frame.begin(), frame.end(), converted.get());
    MKV_AVCC config;
    ConvertStartCodes({converted.get(), frame.size()}, config);

    Bytes expected(frame.begin(), frame.end());
    const auto codes = LongCodes(frame);
    for (std::size_t i = 0; i < codes.size(); ++i)
    {
        const std::size_t end = i + 1 < codes.size() ? codes[i + 1] : frame.size();
        const std::size_t length = end - codes[i] - 4;
        for (std::size_t byte = 0; byte < 4; ++byte)
        {
            expected[codes[i] + byte] = static_cast<unsigned char>(length >> (24 - 8 * byte));
        }
    }
    Require(Same(expected, {converted.get(), frame.size()}), "start codes become lengths");
    Require(config.sps_length >= 0 && config.sps_length <= 255, "the length of an SPS");
    Require(config.pps_length >= 0 && config.pps_length <= 255, "the length of a PPS");
    std::array<unsigned char, 600> room{};
    CMsbCursor w(room);
    PutAvcConfig(w, config);
    Require(!w.Overrun(), "a configuration has its room");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto exact = std::make_unique<unsigned char[]>(size);
    std::copy_n(data, size, exact.get());
    const Span frame(exact.get(), size);
    CheckAdts(frame);
    CheckAsf(frame);
    CheckMkvHeaders(frame);
    CheckMp4Config(frame);
    CheckMkvUnits(frame);
    return 0;
}
