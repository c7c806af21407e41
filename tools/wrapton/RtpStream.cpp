#include "RtpStream.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr uint32_t kPayloadTypePcma = 8;      // RFC 3551, table 4
constexpr uint32_t kPayloadTypeDynamic = 96;  // RFC 3551, 6
constexpr uint32_t kVideoClock = 90000;

/// Encodings whose payloads are those of an RFC: RFC 6184, RFC 6416, RFC 3551 4.5.14. Others stand
/// in the packets as they are cut, without the headers that receivers look for.
bool HasPayloadFormat(const StreamInfo& info)
{
    return info.codec == Codec::kH264 || info.codec == Codec::kMpeg4 || info.codec == Codec::kAlaw;
}

}  // namespace

RtpStream RtpStreamOf(const StreamInfo& info)
{
    if (info.is_video) return {kPayloadTypeDynamic, kVideoClock};

    const bool is_pcma =
        info.codec == Codec::kAlaw && info.sample_rate == 8000 && info.channels == 1;
    return {is_pcma ? kPayloadTypePcma : kPayloadTypeDynamic, info.sample_rate};
}

std::string NoteOn(const StreamInfo& info)
{
    const RtpStream stream = RtpStreamOf(info);
    std::string note = "rtp carries " + info.codec_name + " with payload type " +
                       std::to_string(stream.payload_type) + " and a clock of " +
                       std::to_string(stream.clock) + " Hz";
    if (!HasPayloadFormat(info)) note += ", cut into pieces without a payload format's headers";
    return note;
}

}  // namespace Orbel::Wrapton::Command
