#pragma once

#include <memory>
#include <string>

#include "AvTypes.h"
#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

/// Brings the frames of one encoding into the shape the library takes.
class FrameShaper
{
public:
    FrameShaper() = default;
    FrameShaper(const FrameShaper&) = delete;
    FrameShaper& operator=(const FrameShaper&) = delete;
    virtual ~FrameShaper() = default;

    /// Fills the frame's bytes, and what its encoding knows better than the file. Throws Failure.
    virtual void Shape(AVPacket& packet, Frame& frame, StreamInfo& info) = 0;
};

/// The shaper for a stream. `info.unusable` is set when its frames cannot be shaped.
std::unique_ptr<FrameShaper> MakeShaper(const AVStream& stream, StreamInfo& info);

}  // namespace Orbel::Wrapton::Command
