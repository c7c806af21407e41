#include "FrameShaper.h"

#include <algorithm>
#include <span>

#include "Adts.h"
#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

std::span<const unsigned char> BytesOf(const AVPacket& packet)
{
    return {packet.data, static_cast<std::size_t>(packet.size)};
}

std::span<const unsigned char> ConfigOf(const AVCodecParameters& parameters)
{
    return {parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)};
}

void Append(Frame& frame, std::span<const unsigned char> bytes)
{
    frame.bytes.insert(frame.bytes.end(), bytes.begin(), bytes.end());
}

/// As it comes: MJPEG, MPEG audio, samples.
class PlainShaper final : public FrameShaper
{
public:
    void Shape(AVPacket& packet, Frame& frame, StreamInfo&) override
    {
        Append(frame, BytesOf(packet));
    }
};

/// H.264 with start codes and, ahead of every IDR picture, its parameter sets.
class H264Shaper final : public FrameShaper
{
public:
    H264Shaper(const AVStream& stream, const StreamInfo& info) : m_file(info.file)
    {
        AVBSFContext* filter = nullptr;
        Check(av_bsf_alloc(av_bsf_get_by_name("h264_mp4toannexb"), &filter));
        m_pFilter.reset(filter);
        Check(avcodec_parameters_copy(filter->par_in, stream.codecpar));
        filter->time_base_in = stream.time_base;
        Check(av_bsf_init(filter));
    }

    void Shape(AVPacket& packet, Frame& frame, StreamInfo&) override
    {
        Check(av_bsf_send_packet(m_pFilter.get(), &packet));  // takes the packet's content
        Check(av_bsf_receive_packet(m_pFilter.get(), &packet));
        Append(frame, BytesOf(packet));
    }

private:
    void Check(int code) const
    {
        if (code < 0)
            throw Failure(m_file + ": h264 has no Annex B form here: " + AvErrorText(code));
    }

    std::string m_file;
    AvPtr<AVBSFContext> m_pFilter;
};

/// MPEG-4 Part 2 with its headers in the stream. A file that keeps them aside gets them put back
/// ahead of every key picture, as an encoder repeats them: containers take the newest they see.
class Mpeg4Shaper final : public FrameShaper
{
public:
    explicit Mpeg4Shaper(const AVStream& stream)
    {
        const auto config = ConfigOf(*stream.codecpar);
        m_config.assign(config.begin(), config.end());
    }

    void Shape(AVPacket& packet, Frame& frame, StreamInfo&) override
    {
        const auto bytes = BytesOf(packet);
        if ((packet.flags & AV_PKT_FLAG_KEY) != 0)
        {
            if (!m_aside) m_aside = StartsWithPicture(bytes);
            if (*m_aside && StartsWithPicture(bytes)) Append(frame, m_config);
        }
        Append(frame, bytes);
    }

private:
    /// ISO/IEC 14496-2, 6.2.1: B6 begins a picture, B3 a group of pictures.
    static bool StartsWithPicture(std::span<const unsigned char> bytes)
    {
        return bytes.size() >= 4 && bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 1 &&
               (bytes[3] == 0xB6 || bytes[3] == 0xB3);
    }

    std::vector<unsigned char> m_config;
    std::optional<bool> m_aside;  ///< as the first key picture shows
};

/// AAC behind an ADTS header FF F1, the form the containers take off again. Other forms of the
/// header are rewritten, a missing one is made from the stream's configuration.
class AacShaper final : public FrameShaper
{
public:
    explicit AacShaper(std::optional<AacConfig> config) : m_config(config) {}

    void Shape(AVPacket& packet, Frame& frame, StreamInfo& info) override
    {
        auto payload = BytesOf(packet);
        // With a configuration aside, the frames are bare, whatever their first bytes look like.
        const auto header = m_config ? std::nullopt : ReadAdts(payload);
        if (!m_config && !header) throw Failure(info.file + ": an aac frame without ADTS header");
        const AacConfig& config = header ? header->config : *m_config;
        // The core's rate and channels; the file tells those after decoding.
        if (config.SampleRate() != 0) info.sample_rate = config.SampleRate();
        if (config.Channels() != 0) info.channels = config.Channels();

        if (header && header->plain)
        {
            Append(frame, payload);
            return;
        }
        if (header) payload = payload.subspan(header->header_len);
        const auto made = MakeAdts(config, payload.size());
        if (!made) throw Failure(info.file + ": an aac frame is too long for an ADTS header");
        Append(frame, *made);
        Append(frame, payload);
    }

private:
    std::optional<AacConfig> m_config;
};

std::unique_ptr<FrameShaper> MakeAacShaper(const AVStream& stream, StreamInfo& info)
{
    const auto config = ConfigOf(*stream.codecpar);
    if (config.empty()) return std::make_unique<AacShaper>(std::nullopt);  // ADTS in the stream
    const auto read = ReadAudioSpecificConfig(config);
    if (!read) info.unusable = "its configuration has no form as an ADTS header";
    return std::make_unique<AacShaper>(read);
}

}  // namespace

std::unique_ptr<FrameShaper> MakeShaper(const AVStream& stream, StreamInfo& info)
{
    if (info.codec == Codec::kH264) return std::make_unique<H264Shaper>(stream, info);
    if (info.codec == Codec::kMpeg4) return std::make_unique<Mpeg4Shaper>(stream);
    if (info.codec == Codec::kAac) return MakeAacShaper(stream, info);
    return std::make_unique<PlainShaper>();
}

}  // namespace Orbel::Wrapton::Command
