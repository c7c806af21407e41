/**
 * @file Pieces.h
 * Program stream structures as ISO/IEC 13818-1 lays them out, and one recording of them.
 */
#ifndef WRAPTON_TESTS_GOLDEN_PS_PIECES_H
#define WRAPTON_TESTS_GOLDEN_PS_PIECES_H

#include <cstdint>

#include "support/Bytes.h"
#include "support/Recorder.h"

namespace Golden
{

using Support::Bytes;

/// Pack header with the SCR @p scr (90 kHz) and the standard flavour's mux rate.
Bytes Pack(uint64_t scr);
/// The same with the mux rate of the GAYS flavour.
Bytes GaysPack(uint64_t scr);
Bytes System();

/// Program stream map of 36 bytes: stream type of video, num_units_in_tick, size in units of 8.
Bytes Map(uint32_t videoType, uint32_t ticks, uint32_t width8, uint32_t height8);
/// The same with the length field of the GAYS flavour.
Bytes GaysMap(uint32_t videoType, uint32_t ticks, uint32_t width8, uint32_t height8);

/// A time stamp in 5 bytes; @p prefix is 2 (PTS alone), 3 (PTS ahead of a DTS) or 1 (DTS).
Bytes Time(uint32_t prefix, uint64_t time);

/// PES packets, with the length field that the payload asks for.
Bytes VideoPes(uint64_t pts, const Bytes& payload);
Bytes VideoPes(uint64_t pts, uint64_t dts, const Bytes& payload);
Bytes AudioPes(uint64_t pts, const Bytes& payload);

/// A handle with its output in memory, header already called.
class Stream
{
public:
    explicit Stream(uint32_t type);

    /// Hands @p frame over and gives what came out of that call: one block, or nothing at all.
    Bytes Output(const Support::Frame& frame);

    Support::Recorder& Recorder() { return m_recorder; }

private:
    Support::AppendingSink m_sink;
    Support::Recorder m_recorder;
};

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_PS_PIECES_H
