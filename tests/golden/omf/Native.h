/**
 * @file Native.h
 * A native recording through the eight functions, and the pieces its frames are made of.
 */
#ifndef WRAPTON_TESTS_GOLDEN_OMF_NATIVE_H
#define WRAPTON_TESTS_GOLDEN_OMF_NATIVE_H

#include <cstdint>

#include "support/Recorder.h"

namespace Golden
{

using Support::Bytes;

/// The date of every record below, so that no frame depends on the clock.
constexpr uint32_t kDate = 1714559696;

/// A picture of 640 x 360 at 25 fps in H.264; the fields left out are 0.
Orbel::Wrapton::SGFrameInfo Picture(uint32_t subType = Orbel::Wrapton::SG_FRAME_SUB_TYPE_I,
                                    uint32_t encode = Orbel::Wrapton::SG_ENCODE_VIDEO_QV_H264);
/// AAC at 8000 Hz, mono.
Orbel::Wrapton::SGFrameInfo Sound();
Orbel::Wrapton::SGFrameInfo Extension();

/// A date as the header has it: 6 bits of years since 2000, 4 of month, 5 of day, 5 of hour, 6 of
/// minute, 6 of second, in local time.
uint32_t PackedDate(uint32_t seconds);

/// The fields of a header that differ from frame to frame.
struct Head
{
    uint32_t type;
    uint32_t number;
    uint32_t stamp;
    uint32_t subType = 0;
    uint32_t date = PackedDate(kDate);
};

/// A whole frame: 24 bytes of header, extension headers, payload, 8 bytes of trailer.
Bytes Frame(const Head& head, const Bytes& exHeaders, const Bytes& payload);

/// Extension headers 80 (640 x 360, progressive) and 81 (encoding 8, 25 fps).
Bytes PictureHeaders();
/// Extension header 88 with the sum of the payload's little-endian words.
Bytes DataCheck(const Bytes& payload);

class Native
{
public:
    Native();

    Support::Recorder& Calls() { return m_recorder; }
    [[nodiscard]] Support::SeekingSink& Sink() { return m_sink; }

    /// Hands a frame over; it must be taken and leave as one appended block, whose bytes this
    /// gives.
    Bytes Give(const Orbel::Wrapton::SGFrameInfo& record, const Bytes& bytes);
    /// Hands a frame over that must be refused with 3 and leave nothing.
    void Refuse(const Orbel::Wrapton::SGFrameInfo& record, const Bytes& bytes);

private:
    Support::SeekingSink m_sink;
    Support::Recorder m_recorder;
};

/// The part of a frame between header and payload.
Bytes ExHeadersOf(const Bytes& frame);
/// Numbers of a frame's header.
uint32_t NumberOf(const Bytes& frame);
uint32_t LengthOf(const Bytes& frame);
uint32_t DateOf(const Bytes& frame);
uint32_t StampOf(const Bytes& frame);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_OMF_NATIVE_H
