#include "OmfSource.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include "Adts.h"
#include "Failure.h"
#include "Interrupt.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr std::size_t kReadAheadForFrames = 256 << 10;
constexpr std::size_t kReadAheadForHeaders = 4 << 10;
constexpr int64_t kAssumedRate = 25;
constexpr uint32_t kBitsOfCodedAudio = 16;
constexpr int64_t kMicroseconds = 1'000'000;

using CodecOfEncode = std::pair<uint32_t, Codec>;

/// By SG_ENCODE_VIDEO_TYPE and SG_ENCODE_AUDIO_TYPE, whose numbers overlap.
constexpr std::array kVideoCodecs = {
    CodecOfEncode{SG_ENCODE_VIDEO_MPEG4, Codec::kMpeg4},
    CodecOfEncode{SG_ENCODE_VIDEO_HI_H264, Codec::kH264},
    CodecOfEncode{SG_ENCODE_VIDEO_QV_H264, Codec::kH264},
    CodecOfEncode{SG_ENCODE_VIDEO_JPEG, Codec::kMjpeg},
};
constexpr std::array kAudioCodecs = {
    CodecOfEncode{SG_ENCODE_AUDIO_AAC, Codec::kAac},
    CodecOfEncode{SG_ENCODE_AUDIO_MP2, Codec::kMp2},
    CodecOfEncode{SG_ENCODE_AUDIO_G711A, Codec::kAlaw},
    CodecOfEncode{SG_ENCODE_AUDIO_PCM16, Codec::kS16le},
};

uint32_t EncodeOf(const OmfFrame& frame)
{
    return frame.stream == OmfStream::kVideo ? frame.video.encode : frame.audio.encode;
}

std::optional<Codec> CodecOf(const OmfFrame& frame)
{
    const std::span<const CodecOfEncode> known =
        frame.stream == OmfStream::kVideo ? std::span(kVideoCodecs) : std::span(kAudioCodecs);
    for (const auto& [encode, codec] : known)
        if (encode == EncodeOf(frame)) return codec;
    return std::nullopt;
}

std::unique_ptr<COmfFile> Open(const std::string& path, std::size_t read_ahead)
{
    try
    {
        return std::make_unique<COmfFile>(path, read_ahead);
    }
    catch (const std::system_error& error)
    {
        throw Failure(path + ": " + error.code().message());
    }
}

std::optional<OmfFrame> NextFrame(COmfReader& reader, const std::string& path)
{
    if (CaughtSignal() != 0) throw Interrupted();
    try
    {
        return reader.Next();
    }
    catch (const std::system_error& error)
    {
        throw Failure(path + ": " + error.code().message());
    }
}

/// The pictures' rate by their number and the times of the first and the last of them.
class RateMeter
{
public:
    void Add(int64_t time)
    {
        if (m_nCount == 0) m_nFirst = time;
        m_nLast = time;
        ++m_nCount;
    }

    [[nodiscard]] Rate Result() const
    {
        const int64_t span = m_nLast - m_nFirst;
        return m_nCount > 1 && span > 0 ? Rate{(m_nCount - 1) * 1000, span} : Rate{};
    }

private:
    int64_t m_nFirst = 0;
    int64_t m_nLast = 0;
    int64_t m_nCount = 0;
};

}  // namespace

bool IsOmf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(),
                   extension.end(),
                   extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".omf") return true;

    // A pipe must not lose its first bytes to a look at them.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return false;
    std::array<char, 4> tag{};
    std::ifstream file(path, std::ios::binary);
    return file.read(tag.data(), tag.size()) &&
           std::string_view(tag.data(), tag.size()) == kOmfHeaderTag;
}

OmfContent ReadOmfContent(const std::string& path)
{
    const auto file = Open(path, kReadAheadForHeaders);
    COmfReader reader(*file, COmfReader::Depth::kHeaders);
    OmfContent content;
    content.path = path;
    RateMeter meter;
    bool first = true;
    while (const auto frame = NextFrame(reader, path))
    {
        if (std::exchange(first, false)) content.start = frame->time;
        if (frame->stream == OmfStream::kVideo) meter.Add(frame->time);
        if (frame->stream == OmfStream::kExt) ++content.ext_frames;
        if (!frame->intact) continue;
        if (frame->stream == OmfStream::kVideo && !content.video) content.video = frame;
        if (frame->stream == OmfStream::kAudio && !content.audio) content.audio = frame;
    }
    if (first) throw Failure(path + ": no frame of a native recording in it");
    content.video_rate = meter.Result();
    content.skipped = reader.Skipped();
    return content;
}

OmfSource::OmfSource(const OmfContent& content,
                     OmfStream stream,
                     std::optional<unsigned int> frame_rate)
    : m_stream(stream),
      m_nStart(content.start),
      m_rate(frame_rate),
      m_file(Open(content.path, kReadAheadForFrames)),
      m_reader(*m_file)
{
    m_info.file = content.path;
    m_info.is_video = stream == OmfStream::kVideo;
    m_info.index = m_info.is_video ? 0 : 1;
    Describe(m_info.is_video ? *content.video : *content.audio, content.video_rate);
    m_ahead = Read();
}

void OmfSource::Describe(const OmfFrame& first, const Rate& measured)
{
    m_info.codec = CodecOf(first);
    m_info.codec_name = m_info.codec ? std::string(EntryOf(*m_info.codec).name)
                                     : "encoding " + std::to_string(EncodeOf(first));
    TakeFormat(first);
    m_info.bits_per_sample = kBitsOfCodedAudio;
    if (!m_info.is_video) return;

    if (m_rate)
        m_info.frame_rate = {static_cast<int64_t>(*m_rate), 1};
    else if (first.video.frame_rate != 0)
        m_info.frame_rate = {static_cast<int64_t>(first.video.frame_rate), 1};
    else if (measured.num > 0)
        m_info.frame_rate = measured;
    else
        m_info.frame_rate = {kAssumedRate, 1};
    m_info.rate_is_assumed = !m_rate && first.video.frame_rate == 0 && measured.num == 0;
}

std::optional<Frame> OmfSource::Next()
{
    if (m_ahead) return std::exchange(m_ahead, std::nullopt);
    return Read();
}

std::optional<Frame> OmfSource::Read()
{
    while (const auto read = NextFrame(m_reader, m_info.file))
        if (read->stream == m_stream) return Take(*read);
    return std::nullopt;
}

Frame OmfSource::Take(const OmfFrame& read)
{
    Frame frame;
    frame.time_us = (read.time - m_nStart) * 1000;
    if (m_info.is_video && m_rate)
        frame.time_us = m_nUnits * kMicroseconds / static_cast<int64_t>(*m_rate);
    ++m_nUnits;
    if (m_info.is_video) frame.sub_type = static_cast<SG_FRAME_SUB_TYPE>(read.sub_type);
    frame.damaged = !read.intact;
    if (read.intact)
    {
        const auto codec = CodecOf(read);
        // A recording may change its encoding on the way. A frame of one that nothing here knows
        // goes in without its bytes: the library refuses it, and it is counted.
        if (!codec) return frame;
        m_info.codec = codec;
        m_info.codec_name = EntryOf(*codec).name;
        TakeFormat(read);
    }
    frame.bytes.assign(read.payload.begin(), read.payload.end());
    return frame;
}

void OmfSource::TakeFormat(const OmfFrame& read)
{
    if (m_info.is_video)
    {
        m_info.width = static_cast<int>(read.video.width);
        m_info.height = static_cast<int>(read.video.height);
        m_info.interlaced = read.video.interlaced;
        return;
    }
    m_info.sample_rate = read.audio.sample_rate;
    m_info.channels = read.audio.channels;
    m_info.bit_rate = read.audio.bit_rate;
    // The format has no number for some of the rates that AAC has.
    const auto header = m_info.codec == Codec::kAac ? ReadAdts(read.payload) : std::nullopt;
    if (header && header->config.SampleRate() != 0)
        m_info.sample_rate = header->config.SampleRate();
}

}  // namespace Orbel::Wrapton::Command
