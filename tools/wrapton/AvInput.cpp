#include "AvInput.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

#include "Failure.h"
#include "Interrupt.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// Extensions of headerless samples and the demuxers for them, which would not be found by probing.
constexpr std::array<std::pair<std::string_view, const char*>, 6> kRawFormats = {{
    {".alaw", "alaw"},
    {".al", "alaw"},
    {".ulaw", "mulaw"},
    {".mulaw", "mulaw"},
    {".s16le", "s16le"},
    {".pcm", "s16le"},
}};

const char* RawFormat(const std::string& path)
{
    const std::string extension = std::filesystem::path(path).extension().string();
    for (const auto& [known, format] : kRawFormats)
        if (extension == known) return format;
    return nullptr;
}

int StopWhenInterrupted(void*)
{
    return CaughtSignal() != 0 ? 1 : 0;
}

}  // namespace

std::string AvErrorText(int code)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text = {};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

bool IsRawAudio(const std::string& path)
{
    return RawFormat(path) != nullptr;
}

AvInput::AvInput(const std::string& path, const RawAudio& raw) : m_path(path)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) Fail(AVERROR(EISDIR));

    const char* raw_format = RawFormat(path);
    AVDictionary* options = nullptr;
    if (raw_format != nullptr)
    {
        av_dict_set_int(&options, "sample_rate", raw.rate, 0);
        av_dict_set(&options, "ch_layout", (std::to_string(raw.channels) + "C").c_str(), 0);
    }

    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) Fail(AVERROR(ENOMEM));
    context->interrupt_callback.callback = StopWhenInterrupted;
    // Without the protocol's name, "a:b.h264" would be taken for an address.
    const int opened =
        avformat_open_input(&context,
                            ("file:" + path).c_str(),
                            raw_format != nullptr ? av_find_input_format(raw_format) : nullptr,
                            &options);
    av_dict_free(&options);
    if (opened < 0) Fail(opened);
    m_pContext.reset(context);

    const int found = avformat_find_stream_info(context, nullptr);
    if (found < 0) Fail(found);
}

void AvInput::Fail(int code) const
{
    if (CaughtSignal() != 0) throw Interrupted();
    throw Failure(m_path + ": " + AvErrorText(code));
}

std::optional<int> AvInput::BestStream(AVMediaType kind) const
{
    const int index = av_find_best_stream(m_pContext.get(), kind, -1, -1, nullptr, 0);
    if (index < 0) return std::nullopt;
    if ((Stream(index).disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) return std::nullopt;
    return index;
}

AVStream& AvInput::Stream(int index) const
{
    return *m_pContext->streams[index];
}

bool AvInput::HasNoTimes() const
{
    const std::string_view name = m_pContext->iformat->name;
    return (m_pContext->iformat->flags & AVFMT_NOTIMESTAMPS) != 0 || name.ends_with("_pipe");
}

void AvInput::KeepOnly(int stream)
{
    for (unsigned int i = 0; i < m_pContext->nb_streams; ++i)
        if (static_cast<int>(i) != stream) m_pContext->streams[i]->discard = AVDISCARD_ALL;
}

bool AvInput::Read(AVPacket& packet)
{
    for (;;)
    {
        if (CaughtSignal() != 0) throw Interrupted();
        const int code = av_read_frame(m_pContext.get(), &packet);
        if (code == AVERROR(EAGAIN)) continue;
        if (code == AVERROR_EOF)
        {
            // A read error inside a file looks like its end, except for this.
            if (m_pContext->pb != nullptr && m_pContext->pb->error < 0) Fail(m_pContext->pb->error);
            return false;
        }
        if (code < 0) Fail(code);
        if (m_pContext->streams[packet.stream_index]->discard != AVDISCARD_ALL) return true;
        av_packet_unref(&packet);
    }
}

}  // namespace Orbel::Wrapton::Command
