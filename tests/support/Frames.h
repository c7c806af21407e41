/**
 * @file Frames.h
 * Frames to hand in, described in one line each.
 */
#ifndef WRAPTON_TESTS_SUPPORT_FRAMES_H
#define WRAPTON_TESTS_SUPPORT_FRAMES_H

#include <cstdint>

#include <wrapton/Wrapton.h>

#include "support/Bytes.h"

namespace Support
{

/// A coded frame with its attributes; the fields are those of the frame record.
struct Frame
{
    Bytes bytes;
    uint32_t type = Orbel::Wrapton::SG_FRAME_TYPE_VIDEO;
    uint32_t subType = Orbel::Wrapton::SG_FRAME_SUB_TYPE_I;
    uint32_t encode = Orbel::Wrapton::SG_ENCODE_VIDEO_HI_H264;
    uint32_t width = 640;
    uint32_t height = 360;
    uint32_t rate = 25;
    uint32_t sampleRate = 0;
    uint32_t bits = 0;
    uint32_t channels = 0;
    uint32_t time = 0;  ///< milliseconds
    uint32_t date = 0;  ///< seconds since 1970

    [[nodiscard]] Frame Sized(uint32_t newWidth, uint32_t newHeight) const;
    [[nodiscard]] Frame AtRate(uint32_t newRate) const;
    [[nodiscard]] Frame As(uint32_t newSubType) const;
};

Frame Video(uint32_t encode, uint32_t subType, Bytes bytes);

/// H.264 frames; the bytes are an Annex B stream.
Frame H264I(Bytes annexB);
Frame H264P(Bytes annexB);
Frame Mpeg4I(Bytes bytes);
Frame Mpeg4P(Bytes bytes);
/// A JPEG picture, announced as an I frame.
Frame JpegI(Bytes bytes);

Frame Audio(uint32_t encode, Bytes bytes, uint32_t sampleRate, uint32_t channels, uint32_t bits);
Frame Aac(Bytes bytes, uint32_t sampleRate = 8000, uint32_t channels = 1);
Frame Mp2(Bytes bytes, uint32_t sampleRate = 48000, uint32_t channels = 2);
Frame Ext(Bytes bytes);

/// The record for @p frame; frame_pointer is left null, everything else is filled.
Orbel::Wrapton::SGFrameInfo RecordOf(const Frame& frame);

/// A NAL unit behind a 4-byte start code, Annex B of ISO/IEC 14496-10.
Bytes Nal(const Bytes& unit);
/// The same unit as an AVC file stores it, behind its length in 4 bytes, ISO/IEC 14496-15.
Bytes LengthNal(const Bytes& unit);

/**
 * A raw AAC block behind an ADTS header without CRC, ISO/IEC 13818-7 6.2.
 *
 * @param length goes into the 13-bit frame length field as it is
 * @param second 0xF1: MPEG-4, no CRC; 0xF9: MPEG-2, no CRC; 0xF0: MPEG-4 with CRC
 */
Bytes Adts(uint32_t length, const Bytes& block, uint32_t second = 0xF1);

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_FRAMES_H
