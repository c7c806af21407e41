#include "Peer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>

#include "Measure.h"

namespace Bench
{
namespace
{

constexpr int kBufferLen = 32768;  // the library's own choice for files
constexpr int kRate = 25;

struct Sink
{
    int64_t position = 0;
    uint64_t output = 0;
};

int Write(void* opaque, uint8_t* bytes, int size)
{
    auto& sink = *static_cast<Sink*>(opaque);
    benchmark::DoNotOptimize(bytes);
    benchmark::ClobberMemory();
    sink.position += size;
    sink.output += static_cast<uint64_t>(size);
    return size;
}

int64_t Seek(void* opaque, int64_t offset, int whence)
{
    auto& sink = *static_cast<Sink*>(opaque);
    if (whence == SEEK_CUR) offset += sink.position;
    if (whence != SEEK_SET && whence != SEEK_CUR) return -1;
    sink.position = offset;
    return offset;
}

struct ReleaseContext
{
    void operator()(AVFormatContext* context) const
    {
        if (context->pb != nullptr)
        {
            av_freep(&context->pb->buffer);
            avio_context_free(&context->pb);
        }
        avformat_free_context(context);
    }
};
using Context = std::unique_ptr<AVFormatContext, ReleaseContext>;

struct ReleasePacket
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Packet = std::unique_ptr<AVPacket, ReleasePacket>;

AVCodecID CodecOf(Sound sound)
{
    switch (sound)
    {
        case Sound::kAac:
        case Sound::kAdts:
            return AV_CODEC_ID_AAC;
        case Sound::kMp2:
            return AV_CODEC_ID_MP2;
        case Sound::kPcm:
            return AV_CODEC_ID_PCM_S16LE;
        case Sound::kNone:
            break;
    }
    return AV_CODEC_ID_NONE;
}

void SetExtraData(AVCodecParameters& parameters, std::span<const unsigned char> bytes)
{
    parameters.extradata =
        static_cast<uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::copy(bytes.begin(), bytes.end(), parameters.extradata);
    parameters.extradata_size = static_cast<int>(bytes.size());
}

AVStream* AddPictures(AVFormatContext* context, const Workload& load)
{
    AVStream* const stream = avformat_new_stream(context, nullptr);
    AVCodecParameters& parameters = *stream->codecpar;
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = AV_CODEC_ID_H264;
    parameters.width = 1920;
    parameters.height = 1080;
    parameters.format = 0;
    parameters.bit_rate = int64_t{8} * kRate *
                          (load.key_size + (load.key_every - 1) * int64_t{load.other_size}) /
                          load.key_every;
    SetExtraData(parameters, ParameterSets());
    stream->time_base = {1, kRate};
    stream->avg_frame_rate = {kRate, 1};
    return stream;
}

AVStream* AddSound(AVFormatContext* context, Sound sound)
{
    constexpr unsigned char kAacConfig[] = {0x11, 0x88};  // low complexity, 48 kHz, mono

    const bool pcm = sound == Sound::kPcm;
    AVStream* const stream = avformat_new_stream(context, nullptr);
    AVCodecParameters& parameters = *stream->codecpar;
    parameters.codec_type = AVMEDIA_TYPE_AUDIO;
    parameters.codec_id = CodecOf(sound);
    parameters.sample_rate = pcm ? 11025 : sound == Sound::kMp2 ? 16000 : 48000;
    parameters.ch_layout = AV_CHANNEL_LAYOUT_MONO;
    parameters.format = 1;
    parameters.bits_per_coded_sample = 16;
    parameters.bit_rate = pcm ? 176400 : 80000;
    parameters.block_align = pcm ? 2 : 0;
    parameters.frame_size = pcm ? 0 : 960;
    if (sound == Sound::kAac) SetExtraData(parameters, kAacConfig);
    stream->time_base = {1, parameters.sample_rate};
    return stream;
}

/// Counts a stream's frames out in its muxer's time base.
struct Clock
{
    Clock(const AVStream* stream, int per_second)
        : numerator(stream != nullptr ? stream->time_base.den : 0),
          denominator(stream != nullptr ? int64_t{per_second} * stream->time_base.num : 1),
          index(stream != nullptr ? stream->index : 0)
    {
    }

    int64_t numerator;
    int64_t denominator;
    int index;
};

int WriteFrame(AVFormatContext* context,
               AVPacket* packet,
               const Clock& clock,
               const Frame& frame,
               uint32_t number)
{
    packet->stream_index = clock.index;
    packet->data = frame.Data();
    packet->size = static_cast<int>(frame.Size());
    packet->flags = frame.IsKey() ? AV_PKT_FLAG_KEY : 0;
    packet->pts = packet->dts = number * clock.numerator / clock.denominator;
    packet->duration = clock.numerator / clock.denominator;
    return av_write_frame(context, packet);
}

int SetUp(AVFormatContext* context, const Container& container, Sink& sink)
{
    const bool rtp = container.packet_size != 0;
    const int buffer_len = rtp ? static_cast<int>(container.packet_size) : kBufferLen;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(static_cast<size_t>(buffer_len)));
    context->pb =
        avio_alloc_context(buffer, buffer_len, 1, &sink, nullptr, Write, rtp ? nullptr : Seek);
    if (context->pb == nullptr) return AVERROR(ENOMEM);

    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    if (rtp)
    {
        context->packet_size = container.packet_size;
        context->pb->max_packet_size = buffer_len;
    }
    return 0;
}

int WriteHeader(AVFormatContext* context, const Container& container, const AVStream* pictures)
{
    AVDictionary* options = nullptr;
    if (std::string_view(container.peer) == "vob" && pictures != nullptr)
    {
        // A program stream's rate is not raised for large pictures, and overruns slow it down.
        const int64_t rate = pictures->codecpar->bit_rate * 3 + 4000000;
        av_dict_set_int(&options, "muxrate", rate, 0);
    }
    if (container.peer_option != nullptr)
    {
        const std::string option = container.peer_option;
        const size_t equals = option.find('=');
        av_dict_set(
            &options, option.substr(0, equals).c_str(), option.substr(equals + 1).c_str(), 0);
    }
    const int result = avformat_write_header(context, &options);
    const bool taken = av_dict_count(options) == 0;
    av_dict_free(&options);
    return taken ? result : AVERROR_OPTION_NOT_FOUND;
}

int Mux(const Container& container, const Recording& recording, uint32_t count, Run& run)
{
    Sink sink;
    AVFormatContext* raw = nullptr;
    int result = avformat_alloc_output_context2(&raw, nullptr, container.peer, nullptr);
    if (result < 0) return result;

    const Context context(raw);
    const Packet packet(av_packet_alloc());
    if (packet == nullptr) return AVERROR(ENOMEM);

    result = SetUp(raw, container, sink);
    if (result < 0) return result;

    AVStream* const pictures =
        recording.HasPictures() ? AddPictures(raw, recording.Load()) : nullptr;
    AVStream* const sound = recording.HasSound() ? AddSound(raw, recording.SoundKind()) : nullptr;
    result = WriteHeader(raw, container, pictures);
    if (result < 0) return result;

    const Clock picture_clock(pictures, kRate);
    const Clock sound_clock(sound, 2 * kRate);
    const auto input = [&](const Clock& clock, const Frame& frame, uint32_t number)
    {
        if (result < 0) return;
        run.payload += frame.Size();
        result = WriteFrame(raw, packet.get(), clock, frame, number);
    };
    recording.ForEach(
        count,
        [&](const Frame& frame, uint32_t number) { input(picture_clock, frame, number); },
        [&](const Frame& frame, uint32_t number) { input(sound_clock, frame, number); });
    packet->data = nullptr;
    packet->size = 0;
    if (result >= 0) result = av_write_trailer(raw);
    run.output = sink.output;
    return result;
}

}  // namespace

std::string PeerVersion()
{
    av_log_set_level(AV_LOG_QUIET);
    const unsigned version = avformat_version();
    return "libavformat " + std::to_string(AV_VERSION_MAJOR(version)) + "." +
           std::to_string(AV_VERSION_MINOR(version)) + "." +
           std::to_string(AV_VERSION_MICRO(version));
}

std::optional<Run> RunPeer(const Container& container, const Recording& recording, uint32_t count)
{
    if (container.peer == nullptr) return std::nullopt;

    Run run;
    int result = 0;
    run.seconds = Seconds([&] { result = Mux(container, recording, count, run); });
    if (result >= 0) return run;

    char text[AV_ERROR_MAX_STRING_SIZE];
    std::fprintf(stderr,
                 "%s, %s: the peer refuses: %s\n",
                 container.name,
                 recording.Load().name,
                 av_make_error_string(text, sizeof(text), result));
    return std::nullopt;
}

}  // namespace Bench
