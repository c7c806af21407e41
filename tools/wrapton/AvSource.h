#pragma once

#include <memory>
#include <optional>

#include "AvInput.h"
#include "FrameShaper.h"
#include "FrameSource.h"
#include "PictureTypes.h"

namespace Orbel::Wrapton::Command
{

/// One stream of a file that libavformat reads.
class AvSource final : public FrameSource
{
public:
    /// @param frame_rate pictures per second named by the user; empty: as the file says
    AvSource(std::unique_ptr<AvInput> input, int stream, std::optional<unsigned int> frame_rate);

    [[nodiscard]] const StreamInfo& Info() const override { return m_info; }
    std::optional<Frame> Next() override;
    [[nodiscard]] uint64_t BytesRead() const override;
    [[nodiscard]] uint64_t BytesTotal() const override;

private:
    void Describe();
    void DescribeRate();
    std::optional<Frame> Read();
    [[nodiscard]] int64_t TimeOf(const AVPacket& packet) const;
    void CountOut(const AVPacket& packet);

    std::unique_ptr<AvInput> m_pInput;
    AVStream& m_stream;
    std::optional<unsigned int> m_rate;
    StreamInfo m_info;
    AvPtr<AVPacket> m_pPacket;
    std::unique_ptr<FrameShaper> m_pShaper;
    std::optional<PictureTypes> m_pictures;  ///< of a video stream
    std::optional<Frame> m_ahead;            ///< read early: it completes m_info
    bool m_bCounted = false;                 ///< times are counted, not read
    int64_t m_nUnits = 0;                    ///< pictures or samples so far
};

}  // namespace Orbel::Wrapton::Command
