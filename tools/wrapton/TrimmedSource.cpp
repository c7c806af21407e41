#include "TrimmedSource.h"

#include <algorithm>
#include <utility>

#include "StreamHeaders.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// What the sources of one recording know in common.
struct Part
{
    TrimRequest request;
    std::optional<int64_t> begin_us;
};

class TrimmedSource final : public FrameSource
{
public:
    TrimmedSource(std::unique_ptr<FrameSource> source, std::shared_ptr<Part> part)
        : m_source(std::move(source)), m_part(std::move(part)), m_headers(m_source->Info().codec)
    {
    }

    [[nodiscard]] const StreamInfo& Info() const override { return m_source->Info(); }
    [[nodiscard]] uint64_t BytesRead() const override { return m_source->BytesRead(); }
    [[nodiscard]] uint64_t BytesTotal() const override { return m_source->BytesTotal(); }

    std::optional<Frame> Next() override
    {
        std::optional<Frame> frame = m_bBegun ? m_source->Next() : First();
        if (!frame) return std::nullopt;
        frame->time_us -= *m_part->begin_us;
        const auto& duration = m_part->request.duration_us;
        if (duration && frame->time_us >= *duration) return std::nullopt;
        return frame;
    }

private:
    std::optional<Frame> First()
    {
        while (std::optional<Frame> frame = m_source->Next())
        {
            const bool is_video = Info().is_video;
            if (is_video) m_headers.Note(frame->bytes);
            const int64_t from = std::max(m_part->request.start_us, m_part->begin_us.value_or(0));
            if (frame->time_us < from) continue;
            if (is_video && frame->sub_type != SG_FRAME_SUB_TYPE_I) continue;
            if (is_video) m_headers.Complete(frame->bytes);
            if (!m_part->begin_us) m_part->begin_us = frame->time_us;
            m_bBegun = true;
            return frame;
        }
        return std::nullopt;
    }

    std::unique_ptr<FrameSource> m_source;
    std::shared_ptr<Part> m_part;
    StreamHeaders m_headers;
    bool m_bBegun = false;
};

}  // namespace

std::vector<std::unique_ptr<FrameSource>> Trimmed(std::vector<std::unique_ptr<FrameSource>> sources,
                                                  const TrimRequest& request)
{
    if (request.IsWhole()) return sources;
    const auto part = std::make_shared<Part>(Part{request, std::nullopt});
    std::vector<std::unique_ptr<FrameSource>> trimmed;
    trimmed.reserve(sources.size());
    for (auto& source : sources)
        trimmed.push_back(std::make_unique<TrimmedSource>(std::move(source), part));
    return trimmed;
}

}  // namespace Orbel::Wrapton::Command
