#include "OutputSeries.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "Quantities.h"

namespace Orbel::Wrapton::Command
{

std::optional<SegmentLimit> ParseSegmentLimit(const std::string& text)
{
    if (const auto bytes = ParseBytes(text)) return SegmentLimit{.time_us = {}, .bytes = bytes};
    const auto time = ParseMicroseconds(text);
    if (!time || *time == 0) return std::nullopt;
    return SegmentLimit{.time_us = time, .bytes = {}};
}

bool OnlyAppends(const Container& container)
{
    switch (container.type)
    {
        case SG_STREAM_TYPE_MP4_NOSEEK:
        case SG_STREAM_TYPE_FLV:
        case SG_STREAM_TYPE_STREAM_FLV:
        case SG_STREAM_TYPE_OMF:
        case SG_STREAM_TYPE_RTP:
        case SG_STREAM_TYPE_PS:
        case SG_STREAM_TYPE_QVPS:
        case SG_STREAM_TYPE_GAYSPS:
        case SG_STREAM_TYPE_STREAM_ASF:
        case SG_STREAM_TYPE_TS:
            return true;
        default:
            return false;
    }
}

OutputSeries::OutputSeries(std::string path,
                           std::vector<std::string> inputs,
                           unsigned int type,
                           std::optional<SegmentLimit> limit,
                           bool dry_run)
    : m_path(std::move(path)),
      m_inputs(std::move(inputs)),
      m_nType(type),
      m_limit(limit),
      m_bDryRun(dry_run)
{
}

std::string OutputSeries::NameOf(unsigned int number) const
{
    if (!m_limit) return m_path;
    std::array<char, 16> digits = {};
    std::snprintf(digits.data(), digits.size(), "_%04u", number);
    const std::filesystem::path path(m_path);
    std::filesystem::path name = path.stem();
    name += digits.data();
    name += path.extension();
    return (path.parent_path() / name).string();
}

std::unique_ptr<OutputFile> OutputSeries::Next()
{
    const std::string name = NameOf(++m_nOpened);
    return m_bDryRun ? OutputFile::Rehearsed(name, m_inputs, m_nType)
                     : std::make_unique<OutputFile>(name, m_inputs, m_nType);
}

bool OutputSeries::IsFull(int64_t time_us, uint64_t bytes) const
{
    if (!m_limit) return false;
    return m_limit->time_us ? time_us >= *m_limit->time_us : bytes >= *m_limit->bytes;
}

}  // namespace Orbel::Wrapton::Command
