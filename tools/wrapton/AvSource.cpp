#include "AvSource.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr std::array<std::pair<AVCodecID, Codec>, 8> kCodecOfId = {{
    {AV_CODEC_ID_H264, Codec::kH264},
    {AV_CODEC_ID_MPEG4, Codec::kMpeg4},
    {AV_CODEC_ID_MJPEG, Codec::kMjpeg},
    {AV_CODEC_ID_AAC, Codec::kAac},
    {AV_CODEC_ID_MP2, Codec::kMp2},
    {AV_CODEC_ID_PCM_ALAW, Codec::kAlaw},
    {AV_CODEC_ID_PCM_MULAW, Codec::kUlaw},
    {AV_CODEC_ID_PCM_S16LE, Codec::kS16le},
}};

constexpr unsigned int kAssumedRate = 25;
constexpr int kSamplesOfAac = 1024;
constexpr uint32_t kBitsOfCodedAudio = 16;
constexpr int64_t kMostTime = int64_t{1} << 60;  // microseconds; a damaged file can say anything

std::optional<Codec> CodecOf(AVCodecID id)
{
    for (const auto& [known, codec] : kCodecOfId)
        if (known == id) return codec;
    return std::nullopt;
}

bool IsInterlaced(AVFieldOrder order)
{
    return order != AV_FIELD_UNKNOWN && order != AV_FIELD_PROGRESSIVE;
}

}  // namespace

AvSource::AvSource(std::unique_ptr<AvInput> input,
                   int stream,
                   std::optional<unsigned int> frame_rate)
    : m_pInput(std::move(input)),
      m_stream(m_pInput->Stream(stream)),
      m_rate(frame_rate),
      m_pPacket(av_packet_alloc())
{
    if (m_pPacket == nullptr) throw Failure(AvErrorText(AVERROR(ENOMEM)));
    m_pInput->KeepOnly(stream);
    Describe();
    m_pShaper = MakeShaper(m_stream, m_info);
    if (m_info.is_video) m_pictures.emplace(m_stream);
    if (!m_info.unusable.empty()) return;
    m_ahead = Read();
    if (!m_ahead) throw Failure(m_info.file + ": no frames in it");
}

void AvSource::Describe()
{
    const AVCodecParameters& parameters = *m_stream.codecpar;
    m_info.file = m_pInput->Path();
    m_info.index = m_stream.index;
    m_info.is_video = parameters.codec_type == AVMEDIA_TYPE_VIDEO;
    m_info.codec = CodecOf(parameters.codec_id);
    m_info.codec_name =
        m_info.codec ? EntryOf(*m_info.codec).name : avcodec_get_name(parameters.codec_id);
    m_info.width = parameters.width;
    m_info.height = parameters.height;
    m_info.interlaced = IsInterlaced(parameters.field_order);
    m_info.sample_rate = static_cast<uint32_t>(parameters.sample_rate);
    m_info.channels = static_cast<uint32_t>(parameters.ch_layout.nb_channels);
    const int bits = av_get_bits_per_sample(parameters.codec_id);
    m_info.bits_per_sample = bits > 0 ? static_cast<uint32_t>(bits) : kBitsOfCodedAudio;
    m_info.bit_rate = parameters.bit_rate;
    m_bCounted = m_pInput->HasNoTimes();
    if (m_info.is_video) DescribeRate();
}

void AvSource::DescribeRate()
{
    m_bCounted = m_bCounted || m_rate.has_value();
    if (m_rate)
    {
        m_info.frame_rate = {static_cast<int64_t>(*m_rate), 1};
        return;
    }
    const AVRational found = av_guess_frame_rate(&m_pInput->Context(), &m_stream, nullptr);
    m_info.rate_is_assumed = m_pInput->HasNoTimes() || found.num <= 0 || found.den <= 0;
    m_info.frame_rate =
        found.num > 0 && found.den > 0 ? Rate{found.num, found.den} : Rate{kAssumedRate, 1};
}

std::optional<Frame> AvSource::Next()
{
    if (m_ahead) return std::exchange(m_ahead, std::nullopt);
    return Read();
}

std::optional<Frame> AvSource::Read()
{
    if (!m_pInput->Read(*m_pPacket)) return std::nullopt;

    Frame frame;
    const bool key = (m_pPacket->flags & AV_PKT_FLAG_KEY) != 0;
    frame.damaged = (m_pPacket->flags & AV_PKT_FLAG_CORRUPT) != 0;
    frame.time_us = TimeOf(*m_pPacket);
    CountOut(*m_pPacket);
    m_pShaper->Shape(*m_pPacket, frame, m_info);
    av_packet_unref(m_pPacket.get());
    if (m_pictures) frame.sub_type = m_pictures->Of(frame, key);
    return frame;
}

int64_t AvSource::TimeOf(const AVPacket& packet) const
{
    const int64_t stamp = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
    if (!m_bCounted && stamp != AV_NOPTS_VALUE)
    {
        const int64_t start = m_pInput->Context().start_time;
        const int64_t time = av_sat_sub64(av_rescale_q(stamp, m_stream.time_base, AV_TIME_BASE_Q),
                                          start != AV_NOPTS_VALUE ? start : 0);
        return std::clamp(time, -kMostTime, kMostTime);
    }
    if (m_info.is_video)
        return av_rescale(m_nUnits, AV_TIME_BASE * m_info.frame_rate.den, m_info.frame_rate.num);
    return m_info.sample_rate > 0 ? av_rescale(m_nUnits, AV_TIME_BASE, m_info.sample_rate) : 0;
}

void AvSource::CountOut(const AVPacket& packet)
{
    if (m_info.is_video)
        m_nUnits += 1;
    else if (m_info.codec == Codec::kAac)
        m_nUnits += kSamplesOfAac;
    else if (m_stream.codecpar->frame_size > 0)
        m_nUnits += m_stream.codecpar->frame_size;
    else if (m_stream.codecpar->block_align > 0)
        m_nUnits += packet.size / m_stream.codecpar->block_align;
}

uint64_t AvSource::BytesRead() const
{
    const AVFormatContext& context = m_pInput->Context();
    const int64_t position = BytesTotal() > 0 ? avio_tell(context.pb) : 0;
    return position > 0 ? static_cast<uint64_t>(position) : 0;
}

uint64_t AvSource::BytesTotal() const
{
    const AVFormatContext& context = m_pInput->Context();
    const int64_t size = context.pb != nullptr ? avio_size(context.pb) : 0;
    return size > 0 ? static_cast<uint64_t>(size) : 0;
}

}  // namespace Orbel::Wrapton::Command
