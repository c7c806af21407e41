#pragma once

#include <memory>
#include <optional>
#include <string>

#include "FrameSource.h"
#include "omfpacket/OmfReader.h"

namespace Orbel::Wrapton::Command
{

/// True when the name or the first bytes say that the file is a native recording.
bool IsOmf(const std::string& path);

/// What a recording holds, found out ahead of its frames.
struct OmfContent
{
    std::string path;
    int64_t start = 0;              ///< time of its first frame, milliseconds
    std::optional<OmfFrame> video;  ///< the first whole frame of the kind
    std::optional<OmfFrame> audio;
    Rate video_rate;  ///< over all pictures; 0/1 when their times do not tell
    uint64_t ext_frames = 0;
    uint64_t skipped = 0;  ///< bytes that belong to no frame
};

/// Walks over the headers of the whole file. Throws Failure, or Interrupted.
OmfContent ReadOmfContent(const std::string& path);

/// The pictures or the sound of a native recording.
class OmfSource final : public FrameSource
{
public:
    /// @param content has that stream
    /// @param frame_rate pictures per second named by the user; empty: as the file says
    OmfSource(const OmfContent& content, OmfStream stream, std::optional<unsigned int> frame_rate);

    [[nodiscard]] const StreamInfo& Info() const override { return m_info; }
    std::optional<Frame> Next() override;
    [[nodiscard]] uint64_t BytesRead() const override { return m_reader.Position(); }
    [[nodiscard]] uint64_t BytesTotal() const override { return m_file->Size(); }

private:
    void Describe(const OmfFrame& first, const Rate& measured);
    std::optional<Frame> Read();
    Frame Take(const OmfFrame& read);
    void TakeFormat(const OmfFrame& read);

    StreamInfo m_info;
    OmfStream m_stream;
    int64_t m_nStart;
    std::optional<unsigned int> m_rate;
    std::unique_ptr<COmfFile> m_file;
    COmfReader m_reader;
    std::optional<Frame> m_ahead;  ///< read early: it completes m_info
    int64_t m_nUnits = 0;          ///< pictures so far
};

}  // namespace Orbel::Wrapton::Command
