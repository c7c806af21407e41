#pragma once

#include <cstdint>
#include <string>

#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

/// What the packets of an RTP stream say of it, and a receiver has to be told.
struct RtpStream
{
    uint32_t payload_type;
    uint32_t clock;  ///< Hz
};

RtpStream RtpStreamOf(const StreamInfo& info);

/// The stream in words, for the reader of the report.
std::string NoteOn(const StreamInfo& info);

}  // namespace Orbel::Wrapton::Command
