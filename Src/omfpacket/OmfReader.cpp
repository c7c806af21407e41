#include "omfpacket/OmfReader.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "Wrapton.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

/// The longest run of extension headers is 280 bytes.
constexpr size_t kExLenMax = 512;
constexpr size_t kExLenRange = 256;
constexpr size_t kTagLen = 4;

uint32_t Lsb16(std::span<const unsigned char> bytes, size_t at)
{
    return static_cast<uint32_t>(bytes[at]) | static_cast<uint32_t>(bytes[at + 1]) << 8;
}

uint32_t Lsb32(std::span<const unsigned char> bytes, size_t at)
{
    return Lsb16(bytes, at) | Lsb16(bytes, at + 2) << 16;
}

bool HasTag(std::span<const unsigned char> bytes, const char (&tag)[5])
{
    return std::memcmp(bytes.data(), tag, kTagLen) == 0;
}

/// The header at the front of @p bytes; empty when these are none.
std::optional<Omf_Header> ReadHeader(std::span<const unsigned char> bytes)
{
    if (bytes.size() < kOmfHeaderLen) return std::nullopt;
    if (!HasTag(bytes, kOmfHeaderTag)) return std::nullopt;
    constexpr uint32_t kSumAt = kOmfHeaderLen - 1;
    if (GetSum8(bytes.data(), kSumAt) != bytes[kSumAt]) return std::nullopt;

    const Omf_Header header{.frame_type = bytes[4],
                            .frame_sub_type = bytes[5],
                            .channel = bytes[6],
                            .frame_sub_num = bytes[7],
                            .frame_num = Lsb32(bytes, 8),
                            .frame_length = Lsb32(bytes, 12),
                            .frame_date = Lsb32(bytes, 16),
                            .frame_time_stamp = static_cast<uint16_t>(Lsb16(bytes, 20)),
                            .frame_length_ex = bytes[22]};
    if (header.frame_length > INT_MAX) return std::nullopt;
    if (header.frame_length < kOmfHeaderLen + header.frame_length_ex + kOmfTailerLen)
    {
        return std::nullopt;
    }
    return header;
}

/// Fills the kind of frame in; false when the byte names none.
bool ReadFrameType(const Omf_Header& header, OmfFrame& frame)
{
    frame.stream = OmfStream::kVideo;
    switch (header.frame_type)
    {
        case kOmfFrameAudio:
            frame.stream = OmfStream::kAudio;
            return true;
        case kOmfFrameExt:
            frame.stream = OmfStream::kExt;
            frame.sub_type = header.frame_sub_type;
            return true;
        case kOmfFrameJpeg:
            frame.video.encode = SG_ENCODE_VIDEO_JPEG;
            frame.sub_type = SG_FRAME_SUB_TYPE_I;  // every JPEG picture stands for itself
            return true;
        case kOmfFrameI:
            frame.sub_type = SG_FRAME_SUB_TYPE_I;
            return true;
        case kOmfFrameP:
            frame.sub_type = SG_FRAME_SUB_TYPE_P;
            return true;
        case kOmfFrameB:
            frame.sub_type = SG_FRAME_SUB_TYPE_B;
            return true;
        case kOmfFrameOther:
            frame.sub_type = SG_FRAME_SUB_TYPE_UNKNOW;
            return true;
        default:
            return false;
    }
}

/// The length of an extension header; 0 for a tag that is not known.
size_t ExLength(uint8_t tag)
{
    switch (tag)
    {
        case kOmfExImageSize:
        case kOmfExPlayBack:
        case kOmfExAudioFormat:
        case kOmfExRotation:
            return 4;
        case kOmfExLargeImageSize:
        case kOmfExDataCheck:
        case kOmfExAudioFormatRate:
        case kOmfExCompanyType:
            return 8;
        default:
            return 0;
    }
}

void ReadImageSize(OmfVideo& video, uint8_t deinterlace, uint32_t width, uint32_t height)
{
    constexpr uint8_t kProgressive = 2;
    video.interlaced = deinterlace != kProgressive;
    video.width = width;
    video.height = height;
}

void ReadAudioFormat(OmfAudio& audio, std::span<const unsigned char> fields)
{
    audio.channels = fields[0];
    audio.encode = fields[1];
    audio.sample_rate = OmfSampleRate(fields[2]);
}

uint32_t BitRate(uint8_t code)
{
    return code == 1 || code == 2 ? code * 16000u : 0;
}

}  // namespace

COmfReader::COmfReader(COmfInput& input, Depth depth) : m_input(input), m_depth(depth) {}

std::optional<OmfFrame> COmfReader::Next()
{
    const uint64_t from = m_nAt;
    while (const auto found = FindTag(m_nAt))
    {
        auto frame = ReadFrame(*found);
        if (!frame)
        {
            m_nAt = *found + 1;
            continue;
        }
        frame->skipped = *found - from;
        m_nSkipped += frame->skipped;
        m_nAt = *found + frame->length;
        return frame;
    }
    m_nSkipped += m_input.Size() - from;
    m_nAt = m_input.Size();
    return std::nullopt;
}

/// Where the next header may begin.
std::optional<uint64_t> COmfReader::FindTag(uint64_t from)
{
    for (;;)
    {
        const auto view = m_input.View(from, kTagLen);
        if (view.size() < kTagLen) return std::nullopt;

        const size_t places = view.size() - (kTagLen - 1);
        for (size_t at = 0; at < places; ++at)
        {
            const void* const first = std::memchr(view.data() + at, kOmfHeaderTag[0], places - at);
            if (first == nullptr) break;
            at = static_cast<size_t>(static_cast<const unsigned char*>(first) - view.data());
            if (HasTag(view.subspan(at), kOmfHeaderTag)) return from + at;
        }
        from += places;
    }
}

std::optional<OmfFrame> COmfReader::ReadFrame(uint64_t at)
{
    const auto header = ReadHeader(m_input.View(at, kOmfHeaderLen));
    if (!header) return std::nullopt;
    if (header->frame_length > m_input.Size() - at) return std::nullopt;

    OmfFrame frame;
    frame.offset = at;
    frame.length = header->frame_length;
    frame.number = header->frame_num;
    frame.date = header->frame_date;
    if (!ReadFrameType(*header, frame)) return std::nullopt;
    if (!EndsInTailer(at, frame.length)) return std::nullopt;

    ReadBody(frame, header->frame_length_ex);
    frame.time = TimeOf(frame.stream, header->frame_time_stamp, frame.date);
    return frame;
}

bool COmfReader::EndsInTailer(uint64_t at, uint32_t length)
{
    std::array<unsigned char, kOmfTailerLen> tailer{};
    if (m_input.Peek(at + length - kOmfTailerLen, tailer) != tailer.size()) return false;
    return HasTag(tailer, kOmfTailerTag) && Lsb32(tailer, kTagLen) == length;
}

void COmfReader::ReadBody(OmfFrame& frame, uint8_t ex_len)
{
    const size_t body_len = frame.length - kOmfHeaderLen - kOmfTailerLen;
    const size_t wanted = m_depth == Depth::kWhole ? body_len : std::min(body_len, kExLenMax);
    const auto view = m_input.View(frame.offset + kOmfHeaderLen, wanted);
    if (view.size() < wanted) return;  // the file has become shorter

    const auto body = view.first(wanted);
    const OmfFrame blank = frame;
    if (TryBody(frame, body, ex_len)) return;

    // The longest runs of extension headers pass the 8 bits that their length has.
    if (body_len - ex_len < kExLenRange) return;
    OmfFrame other = blank;
    if (TryBody(other, body, ex_len + kExLenRange)) frame = other;
}

/// Takes the body apart; false when the headers are broken or the data check does not agree.
bool COmfReader::TryBody(OmfFrame& frame, std::span<const unsigned char> body, size_t ex_len) const
{
    std::optional<CheckField> check;
    const bool whole = ReadExHeaders(frame, body.first(ex_len), check);
    if (m_depth == Depth::kHeaders)
    {
        frame.intact = whole && check;
        return frame.intact;
    }
    frame.payload = body.subspan(ex_len);
    frame.intact = whole && check && OmfCheckValue(check->type, frame.payload) == check->value;
    return frame.intact;
}

/// Every frame has a data check, so a run without one is broken as well.
bool COmfReader::ReadExHeaders(OmfFrame& frame,
                               std::span<const unsigned char> headers,
                               std::optional<CheckField>& check)
{
    while (!headers.empty())
    {
        const uint8_t tag = headers[0];
        // Its length does not follow from its fields alone, and nothing behind it is needed here.
        if (tag == kOmfExSplit) return true;
        const size_t length = ExLength(tag);
        if (length == 0 || length > headers.size()) return false;

        switch (tag)
        {
            case kOmfExImageSize:
                ReadImageSize(frame.video, headers[1], headers[2] * 8u, headers[3] * 8u);
                break;
            case kOmfExLargeImageSize:
                ReadImageSize(frame.video, headers[1], Lsb16(headers, 4), Lsb16(headers, 6));
                break;
            case kOmfExPlayBack:
                // It describes the last key frame; a JPEG picture says by its type what it is.
                if (frame.video.encode == 0) frame.video.encode = SgVideoEncode(headers[2]);
                frame.video.frame_rate = headers[3];
                break;
            case kOmfExAudioFormat:
                ReadAudioFormat(frame.audio, headers.subspan(1));
                break;
            case kOmfExAudioFormatRate:
                ReadAudioFormat(frame.audio, headers.subspan(2));
                frame.audio.bit_rate = BitRate(headers[5]);
                break;
            case kOmfExDataCheck:
                check = CheckField{.type = headers[7], .value = Lsb32(headers, 1)};
                break;
            default:  // rotation and company type are for the player
                break;
        }
        headers = headers.subspan(length);
    }
    return true;
}

int64_t COmfReader::TimeOf(OmfStream stream, uint16_t stamp, uint32_t date)
{
    // Streams keep apart: one that carries no times of its own must not push the others on.
    auto& own = m_points[static_cast<size_t>(stream)];
    const auto& before = own ? own : m_point;
    own = OmfPoint{.time = before ? UnwrapOmfStamp(*before, stamp, date) : stamp, .date = date};
    m_point = own;
    return own->time;
}

}  // namespace Orbel::Wrapton
