#include "OmfSurvey.h"

#include <algorithm>
#include <iomanip>
#include <limits>
#include <span>
#include <sstream>
#include <utility>

#include <wrapton/Wrapton.h>

namespace Orbel::Wrapton::Command
{
namespace
{

using Name = std::pair<uint32_t, const char*>;

/// By SG_ENCODE_VIDEO_TYPE; only those that a recording can name.
constexpr std::array kVideoNames = {
    Name{SG_ENCODE_VIDEO_MPEG4, "mpeg4"},
    Name{SG_ENCODE_VIDEO_HI_H264, "h264"},
    Name{SG_ENCODE_VIDEO_JPEG, "mjpeg"},
    Name{SG_ENCODE_VIDEO_QV_H264, "h264"},
    Name{SG_ENCODE_VIDEO_SVAC, "svac"},
    Name{SG_ENCODE_VIDEO_QV_H265, "hevc"},
    Name{SG_ENCODE_VIDEO_H263, "h263"},
    Name{SG_ENCODE_VIDEO_HIK_H264, "hik_h264"},
};

/// By SG_ENCODE_AUDIO_TYPE.
constexpr std::array kAudioNames = {
    Name{SG_ENCODE_AUDIO_PCM, "pcm"},         Name{SG_ENCODE_AUDIO_G729, "g729"},
    Name{SG_ENCODE_AUDIO_IMA, "ima_adpcm"},   Name{SG_ENCODE_PCM_MULAW, "mulaw"},
    Name{SG_ENCODE_AUDIO_G721, "g721"},       Name{SG_ENCODE_PCM8_VWIS, "pcm8_vwis"},
    Name{SG_ENCODE_MS_ADPCM, "ms_adpcm"},     Name{SG_ENCODE_AUDIO_G711A, "alaw"},
    Name{SG_ENCODE_AUDIO_AMR, "amr"},         Name{SG_ENCODE_AUDIO_PCM16, "s16le"},
    Name{SG_ENCODE_AUDIO_G711U, "ulaw"},      Name{SG_ENCODE_AUDIO_G723, "g723"},
    Name{SG_ENCODE_AUDIO_AAC, "aac"},         Name{SG_ENCODE_AUDIO_G726_40, "g726_40"},
    Name{SG_ENCODE_AUDIO_G726_32, "g726_32"}, Name{SG_ENCODE_AUDIO_G726_24, "g726_24"},
    Name{SG_ENCODE_AUDIO_G726_16, "g726_16"}, Name{SG_ENCODE_AUDIO_MP2, "mp2"},
    Name{SG_ENCODE_AUDIO_OGG, "ogg"},         Name{SG_ENCODE_AUDIO_MP3, "mp3"},
    Name{SG_ENCODE_AUDIO_G722_1, "g722_1"},   Name{SG_ENCODE_AUDIO_TALK, "talk"},
};

std::string NameOf(std::span<const Name> names, uint32_t encode)
{
    for (const auto& [known, name] : names)
        if (known == encode) return name;
    return encode == 0 ? "unknown" : "encoding " + std::to_string(encode);
}

}  // namespace

const char* StreamName(OmfStream stream)
{
    switch (stream)
    {
        case OmfStream::kVideo:
            return "video";
        case OmfStream::kAudio:
            return "audio";
        case OmfStream::kExt:
            break;
    }
    return "ext";
}

std::string EncodingName(const OmfFrame& frame)
{
    if (frame.stream == OmfStream::kVideo) return NameOf(kVideoNames, frame.video.encode);
    if (frame.stream == OmfStream::kAudio) return NameOf(kAudioNames, frame.audio.encode);
    return "";
}

std::string FrameKind(const OmfFrame& frame)
{
    if (frame.stream == OmfStream::kAudio) return "";
    if (frame.stream == OmfStream::kExt) return std::to_string(frame.sub_type);
    switch (frame.sub_type)
    {
        case SG_FRAME_SUB_TYPE_I:
            return "I";
        case SG_FRAME_SUB_TYPE_P:
            return "P";
        case SG_FRAME_SUB_TYPE_B:
            return "B";
        default:
            return "-";
    }
}

std::string DateText(uint32_t date)
{
    const auto read = ReadOmfDate(date);
    if (!read) return "";
    std::ostringstream text;
    text << std::setfill('0') << read->year << '-' << std::setw(2) << read->month << '-'
         << std::setw(2) << read->day << 'T' << std::setw(2) << read->hour << ':' << std::setw(2)
         << read->minute << ':' << std::setw(2) << read->second;
    return text.str();
}

void OmfStreamSurvey::Add(const OmfFrame& frame)
{
    if (frames == 0) start_ms = frame.time;
    end_ms = frame.time;
    ++frames;
    bytes += frame.payload.size();
    if (frame.stream == OmfStream::kVideo)
    {
        frames_i += frame.sub_type == SG_FRAME_SUB_TYPE_I ? 1 : 0;
        frames_p += frame.sub_type == SG_FRAME_SUB_TYPE_P ? 1 : 0;
        frames_b += frame.sub_type == SG_FRAME_SUB_TYPE_B ? 1 : 0;
    }
    if (!frame.intact)
    {
        ++frames_damaged;
        return;
    }
    if (!std::exchange(described, true))
    {
        video = frame.video;
        audio = frame.audio;
    }
    const std::string name = EncodingName(frame);
    if (name.empty()) return;
    if (std::find(encodings.begin(), encodings.end(), name) == encodings.end())
        encodings.push_back(name);
}

void OmfSurvey::Add(const OmfFrame& frame)
{
    if (frame.skipped > 0) End(frame.offset, frame.skipped);
    m_streams[static_cast<std::size_t>(frame.stream)].Add(frame);
    if (!frame.intact)
        Note({.offset = frame.offset,
              .bytes = frame.length,
              .frame = StreamName(frame.stream) + std::string(" frame ") +
                       std::to_string(frame.number)});
    if (!ReadOmfDate(frame.date)) return;
    if (m_nFirstDate == 0) m_nFirstDate = frame.date;
    m_nLastDate = frame.date;
}

void OmfSurvey::End(uint64_t position, uint64_t bytes)
{
    if (bytes == 0) return;
    m_nSkipped += bytes;
    Note({.offset = position - bytes, .bytes = bytes, .frame = ""});
}

void OmfSurvey::Note(OmfDamage damage)
{
    ++m_nPlaces;
    if (m_damage.size() < kMostPlaces) m_damage.push_back(std::move(damage));
}

uint64_t OmfSurvey::Frames() const
{
    uint64_t sum = 0;
    for (const OmfStreamSurvey& stream : m_streams)
        sum += stream.frames;
    return sum;
}

int64_t OmfSurvey::Duration() const
{
    int64_t start = std::numeric_limits<int64_t>::max();
    int64_t end = std::numeric_limits<int64_t>::min();
    for (const OmfStreamSurvey& stream : m_streams)
    {
        if (stream.frames == 0) continue;
        start = std::min(start, stream.start_ms);
        end = std::max(end, stream.end_ms);
    }
    return start <= end ? end - start : 0;
}

uint64_t OmfSurvey::FramesDamaged() const
{
    uint64_t sum = 0;
    for (const OmfStreamSurvey& stream : m_streams)
        sum += stream.frames_damaged;
    return sum;
}

}  // namespace Orbel::Wrapton::Command
