#include "Containers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <iterator>

#include "Face.h"
#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr std::array<std::string_view, 1> kAsfExtensions = {".asf"};
constexpr std::array<std::string_view, 1> kFlvExtensions = {".flv"};
constexpr std::array<std::string_view, 2> kMp4Extensions = {".mp4", ".m4v"};
constexpr std::array<std::string_view, 2> kMovExtensions = {".mov", ".qt"};
constexpr std::array<std::string_view, 1> kAviExtensions = {".avi"};
constexpr std::array<std::string_view, 1> kMkvExtensions = {".mkv"};
constexpr std::array<std::string_view, 1> kOmfExtensions = {".omf"};
constexpr std::array<std::string_view, 2> kPsExtensions = {".mpg", ".mpeg"};
constexpr std::array<std::string_view, 1> k3gpExtensions = {".3gp"};
constexpr std::array<std::string_view, 1> kTsExtensions = {".ts"};
constexpr std::array<std::string_view, 1> kRtpExtensions = {".rtp"};
constexpr std::array<std::string_view, 2> kWavExtensions = {".wav", ".wave"};

constexpr std::array kAsfVideo = {Codec::kH264, Codec::kMpeg4, Codec::kMjpeg};
constexpr std::array kAsfAudio = {Codec::kAlaw, Codec::kUlaw, Codec::kS16le};
constexpr std::array kFlvVideo = {Codec::kH264};
constexpr std::array kFlvAudio = {Codec::kS16le};
constexpr std::array kMp4Video = {Codec::kH264, Codec::kMpeg4, Codec::kMjpeg};
constexpr std::array kMp4Audio = {Codec::kAac, Codec::kMp2};
constexpr std::array kAviVideo = {Codec::kH264, Codec::kMpeg4, Codec::kMjpeg};
constexpr std::array kMkvVideo = {Codec::kH264, Codec::kMpeg4};
constexpr std::array kAviAudio = {Codec::kAlaw, Codec::kUlaw, Codec::kS16le};
constexpr std::array kOmfVideo = {Codec::kH264, Codec::kMpeg4, Codec::kMjpeg};
constexpr std::array kOmfAudio = {Codec::kAac, Codec::kMp2, Codec::kAlaw, Codec::kS16le};
constexpr std::array kRtpAudio = {Codec::kAac, Codec::kMp2, Codec::kAlaw, Codec::kS16le};
constexpr std::array kPsVideo = {Codec::kH264, Codec::kMpeg4};
constexpr std::array kPsAudio = {Codec::kMp2};
/// The library takes AAC, too, but the map calls every sound MPEG audio, which readers believe.
constexpr std::array kTsAudio = {Codec::kMp2};
constexpr std::array kQvPsAudio = {Codec::kAac, Codec::kMp2};
/// The library takes any other sound, too, but the map has one name for all: that of G.711.
constexpr std::array kGaysPsAudio = {Codec::kAlaw};
constexpr std::array kWavAudio = {Codec::kAlaw, Codec::kS16le};

constexpr Container Mp4Family(std::string_view name,
                              unsigned int type,
                              std::span<const std::string_view> extensions)
{
    return {.name = name,
            .type = type,
            .extensions = extensions,
            .video = kMp4Video,
            .audio = kMp4Audio,
            .audio_needs_video = true,
            .constant_rate = true,
            .takes_reserve = true,
            .labels_8000_mono_pcm = false,
            .indexes_empty_sound = true,
            .cuts_mpeg4_pictures = true};
}

constexpr Container AsfFamily(std::string_view name,
                              unsigned int type,
                              std::span<const std::string_view> extensions)
{
    const bool is_stream = type == SG_STREAM_TYPE_STREAM_ASF;
    return {.name = name,
            .type = type,
            .extensions = extensions,
            .video = kAsfVideo,
            .audio = kAsfAudio,
            .audio_needs_video = true,
            .constant_rate = true,
            .takes_reserve = false,
            .labels_8000_mono_pcm = false,
            .whole_milliseconds = true,
            .doubles_g711_times = true,
            .declares_sound = is_stream,
            .face = is_stream ? FaceKind::kStream : FaceKind::kFlat,
            .component = "asf"};
}

constexpr Container FlvFamily(std::string_view name,
                              unsigned int type,
                              std::span<const std::string_view> extensions)
{
    return {.name = name,
            .type = type,
            .extensions = extensions,
            .video = kFlvVideo,
            .audio = kFlvAudio,
            .audio_needs_video = true,
            .constant_rate = true,
            .needs_long_start_codes = true,
            .takes_reserve = false,
            .labels_8000_mono_pcm = false,
            .labels_round_rates = true,
            .face = type == SG_STREAM_TYPE_STREAM_FLV ? FaceKind::kStream : FaceKind::kFlat,
            .component = "flv"};
}

constexpr Container ProgramStream(std::string_view name,
                                  unsigned int type,
                                  std::span<const std::string_view> extensions,
                                  std::span<const Codec> audio)
{
    return {.name = name,
            .type = type,
            .extensions = extensions,
            .video = kPsVideo,
            .audio = audio,
            .audio_needs_video = false,
            .constant_rate = true,
            .takes_reserve = false,
            .labels_8000_mono_pcm = false,
            .splits_units = type != SG_STREAM_TYPE_GAYSPS};
}

constexpr std::array kContainers = {
    Mp4Family("mp4", SG_STREAM_TYPE_MP4, kMp4Extensions),
    Mp4Family("mov", SG_STREAM_TYPE_MOV, kMovExtensions),
    Mp4Family("mp464", SG_STREAM_TYPE_MP4_64, {}),
    Mp4Family("mov64", SG_STREAM_TYPE_MOV_64, {}),
    Mp4Family("mp4noseek", SG_STREAM_TYPE_MP4_NOSEEK, {}),
    Container{.name = "avi",
              .type = SG_STREAM_TYPE_AVI,
              .extensions = kAviExtensions,
              .video = kAviVideo,
              .audio = kAviAudio,
              .audio_needs_video = true,
              .constant_rate = true,
              .streams_from_frames = true,
              .takes_reserve = false,
              .labels_8000_mono_pcm = false},
    Container{.name = "mkv",
              .type = SG_STREAM_TYPE_MKV,
              .extensions = kMkvExtensions,
              .video = kMkvVideo,
              .audio = {},
              .audio_needs_video = true,
              .constant_rate = true,
              .needs_long_start_codes = true,
              .takes_reserve = false,
              .labels_8000_mono_pcm = false},
    Container{.name = "3gp",
              .type = SG_STREAM_TYPE_3GP,
              .extensions = k3gpExtensions,
              .video = kMp4Video,
              .audio = kMp4Audio,
              .audio_needs_video = true,
              .constant_rate = true,
              .takes_reserve = false,
              .labels_8000_mono_pcm = false,
              .indexes_empty_sound = true,
              .cuts_mpeg4_pictures = true,
              .face = FaceKind::kFile,
              .component = "3gp"},
    AsfFamily("asf", SG_STREAM_TYPE_ASF, kAsfExtensions),
    AsfFamily("asfstream", SG_STREAM_TYPE_STREAM_ASF, {}),
    FlvFamily("flv", SG_STREAM_TYPE_FLV, kFlvExtensions),
    FlvFamily("flvstream", SG_STREAM_TYPE_STREAM_FLV, {}),
    Container{.name = "omf",
              .type = SG_STREAM_TYPE_OMF,
              .extensions = kOmfExtensions,
              .video = kOmfVideo,
              .audio = kOmfAudio,
              .audio_needs_video = false,
              .constant_rate = false,
              .takes_reserve = false,
              .labels_8000_mono_pcm = false},
    ProgramStream("ps", SG_STREAM_TYPE_PS, kPsExtensions, kPsAudio),
    ProgramStream("qvps", SG_STREAM_TYPE_QVPS, {}, kQvPsAudio),
    ProgramStream("gaysps", SG_STREAM_TYPE_GAYSPS, {}, kGaysPsAudio),
    Container{.name = "rtp",
              .type = SG_STREAM_TYPE_RTP,
              .extensions = kRtpExtensions,
              .video = kMp4Video,
              .audio = kRtpAudio,
              .audio_needs_video = false,
              .constant_rate = false,
              .takes_reserve = false,
              .labels_8000_mono_pcm = false,
              .is_rtp = true,
              .takes_b_as_p = true},
    Container{.name = "ts",
              .type = SG_STREAM_TYPE_TS,
              .extensions = kTsExtensions,
              .video = kPsVideo,
              .audio = kTsAudio,
              .audio_needs_video = true,
              .constant_rate = true,
              .takes_reserve = false,
              .labels_8000_mono_pcm = false,
              .takes_b_as_p = true,
              .face = FaceKind::kPacket,
              .component = "ts"},
    Container{.name = "wav",
              .type = SG_STREAM_TYPE_WAV,
              .extensions = kWavExtensions,
              .video = {},
              .audio = kWavAudio,
              .audio_needs_video = false,
              .constant_rate = false,
              .takes_reserve = false,
              .labels_8000_mono_pcm = true,
              .loses_first_frame = true},
};

std::string LowerCase(std::string text)
{
    std::transform(text.begin(),
                   text.end(),
                   text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The offered names in one line, for messages.
std::string OfferedNames()
{
    std::string names;
    for (const Container& container : OfferedContainers())
        names.append(names.empty() ? "" : ", ").append(container.name);
    return names;
}

const Container* FindByName(const std::string& name)
{
    const auto found = std::find_if(kContainers.begin(),
                                    kContainers.end(),
                                    [&](const auto& entry) { return entry.name == name; });
    return found == kContainers.end() ? nullptr : &*found;
}

const Container* FindByExtension(const std::string& extension)
{
    const auto found = std::find_if(kContainers.begin(),
                                    kContainers.end(),
                                    [&](const auto& entry)
                                    {
                                        return std::find(entry.extensions.begin(),
                                                         entry.extensions.end(),
                                                         extension) != entry.extensions.end();
                                    });
    return found == kContainers.end() ? nullptr : &*found;
}

}  // namespace

std::span<const Container> AllContainers()
{
    return kContainers;
}

bool IsOffered(const Container& container)
{
    return MakeFace(container, {}) != nullptr;
}

std::vector<Container> OfferedContainers()
{
    std::vector<Container> offered;
    std::copy_if(kContainers.begin(), kContainers.end(), std::back_inserter(offered), IsOffered);
    return offered;
}

const Container& ChooseContainer(const std::string& name, const std::string& output)
{
    const std::string extension = LowerCase(std::filesystem::path(output).extension().string());
    const Container* container =
        name.empty() ? FindByExtension(extension) : FindByName(LowerCase(name));
    if (container == nullptr && name.empty())
        throw Failure(output + ": the extension names no container; say --to with one of " +
                      OfferedNames());
    if (container == nullptr || !IsOffered(*container))
        throw Failure("no container " + (name.empty() ? std::string(container->name) : name) +
                      " in this build; it offers " + OfferedNames());
    return *container;
}

std::string_view FileExtension(const Container& container)
{
    if (!container.extensions.empty()) return container.extensions.front();
    switch (container.type)
    {
        case SG_STREAM_TYPE_MOV_64:
            return kMovExtensions.front();
        case SG_STREAM_TYPE_STREAM_ASF:
            return kAsfExtensions.front();
        case SG_STREAM_TYPE_STREAM_FLV:
            return kFlvExtensions.front();
        case SG_STREAM_TYPE_QVPS:
        case SG_STREAM_TYPE_GAYSPS:
            return kPsExtensions.front();
        default:
            return kMp4Extensions.front();
    }
}

bool Accepts(std::span<const Codec> accepted, Codec codec)
{
    return std::find(accepted.begin(), accepted.end(), codec) != accepted.end();
}

}  // namespace Orbel::Wrapton::Command
