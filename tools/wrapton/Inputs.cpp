#include "Inputs.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "AvSource.h"
#include "Failure.h"
#include "OmfSource.h"

namespace Orbel::Wrapton::Command
{
namespace
{

class Opener
{
public:
    explicit Opener(const InputRequest& request) : m_request(request)
    {
        if (request.raw_rate) m_raw.rate = *request.raw_rate;
        if (request.raw_channels) m_raw.channels = *request.raw_channels;
    }

    /// Takes the kinds that are asked for and still missing.
    void Take(const std::string& path, bool video, bool audio)
    {
        if (IsOmf(path))
        {
            TakeOmf(path, video, audio);
            return;
        }
        auto input = std::make_unique<AvInput>(path, m_raw);
        const auto video_stream = input->BestStream(AVMEDIA_TYPE_VIDEO);
        const auto audio_stream = input->BestStream(AVMEDIA_TYPE_AUDIO);
        const bool take_video = video && video_stream && m_pVideo == nullptr;
        const bool take_audio = audio && audio_stream && m_pAudio == nullptr;
        if (!take_video && !take_audio) throw Failure(path + ": " + NothingIn(video, audio));

        NoteOthers(*input,
                   take_video ? video_stream : std::nullopt,
                   take_audio ? audio_stream : std::nullopt);
        if (take_video && take_audio) m_pAudio = Source(Again(path), *audio_stream);
        if (take_video)
            m_pVideo = Source(std::move(input), *video_stream);
        else
            m_pAudio = Source(std::move(input), *audio_stream);
    }

    Inputs Result()
    {
        Inputs inputs;
        if (m_pVideo != nullptr) inputs.sources.push_back(std::move(m_pVideo));
        if (m_pAudio != nullptr) inputs.sources.push_back(std::move(m_pAudio));
        inputs.left_out = std::move(m_left_out);
        return inputs;
    }

private:
    void TakeOmf(const std::string& path, bool video, bool audio)
    {
        const OmfContent content = ReadOmfContent(path);
        const bool take_video = video && content.video && m_pVideo == nullptr;
        const bool take_audio = audio && content.audio && m_pAudio == nullptr;
        if (!take_video && !take_audio) throw Failure(path + ": " + NothingIn(video, audio));

        if (take_video) m_pVideo = Source(content, OmfStream::kVideo);
        if (take_audio) m_pAudio = Source(content, OmfStream::kAudio);
        NoteOthers(content, take_video, take_audio);
    }

    [[nodiscard]] std::unique_ptr<FrameSource> Source(const OmfContent& content,
                                                      OmfStream stream) const
    {
        return std::make_unique<OmfSource>(content, stream, m_request.frame_rate);
    }

    void NoteOthers(const OmfContent& content, bool video, bool audio)
    {
        const auto note = [&](const std::string& what)
        { m_left_out.push_back(content.path + ": " + what); };
        if (content.video && !video) note("its video");
        if (content.audio && !audio) note("its audio");
        if (content.ext_frames > 0)
            note(std::to_string(content.ext_frames) + " frames of extension data");
        if (content.skipped > 0) note(std::to_string(content.skipped) + " damaged bytes");
    }

    [[nodiscard]] std::string NothingIn(bool video, bool audio) const
    {
        if (video && audio)
            return m_pVideo != nullptr || m_pAudio != nullptr
                       ? "nothing to take from it beside the other inputs"
                       : "no video and no audio in it";
        return video ? "no video in it" : "no audio in it";
    }

    /// Each stream reads its file on its own, so that neither waits for the other in memory.
    [[nodiscard]] std::unique_ptr<AvInput> Again(const std::string& path) const
    {
        if (!std::filesystem::is_regular_file(path))
            throw Failure(path + ": a pipe gives one stream only; name it with --video or --audio");
        return std::make_unique<AvInput>(path, m_raw);
    }

    [[nodiscard]] std::unique_ptr<FrameSource> Source(std::unique_ptr<AvInput> input,
                                                      int stream) const
    {
        return std::make_unique<AvSource>(std::move(input), stream, m_request.frame_rate);
    }

    void NoteOthers(const AvInput& input, std::optional<int> video, std::optional<int> audio)
    {
        for (int i = 0; i < static_cast<int>(input.Context().nb_streams); ++i)
        {
            if (video == i || audio == i) continue;
            const AVCodecParameters& parameters = *input.Stream(i).codecpar;
            const char* kind = av_get_media_type_string(parameters.codec_type);
            m_left_out.push_back(input.Path() + ": stream " + std::to_string(i) + " (" +
                                 (kind != nullptr ? kind : "data") + ", " +
                                 avcodec_get_name(parameters.codec_id) + ")");
        }
    }

    const InputRequest& m_request;
    RawAudio m_raw;
    std::unique_ptr<FrameSource> m_pVideo;
    std::unique_ptr<FrameSource> m_pAudio;
    std::vector<std::string> m_left_out;
};

}  // namespace

std::vector<std::string> InputRequest::AllFiles() const
{
    std::vector<std::string> all;
    if (!video.empty()) all.push_back(video);
    if (!audio.empty()) all.push_back(audio);
    all.insert(all.end(), files.begin(), files.end());
    return all;
}

void CheckRawOptions(const InputRequest& request)
{
    if (!request.raw_rate && !request.raw_channels) return;
    const auto files = request.AllFiles();
    if (std::none_of(files.begin(), files.end(), IsRawAudio))
        throw Failure("--rate and --channels describe raw samples, and no input is raw");
}

Inputs OpenInputs(const InputRequest& request)
{
    CheckRawOptions(request);
    Opener opener(request);
    if (!request.video.empty()) opener.Take(request.video, true, false);
    if (!request.audio.empty()) opener.Take(request.audio, false, true);
    for (const std::string& file : request.files)
        opener.Take(file, true, true);
    return opener.Result();
}

}  // namespace Orbel::Wrapton::Command
