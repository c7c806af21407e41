#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Codecs.h"

namespace Orbel::Wrapton::Command
{

/// A rate as a fraction; 0/1 when it is not known.
struct Rate
{
    int64_t num = 0;
    int64_t den = 1;
};

/// What is known of one stream before its frames are read.
struct StreamInfo
{
    std::string file;
    int index = 0;  ///< within the file
    bool is_video = false;
    std::string codec_name;
    std::optional<Codec> codec;  ///< empty: no container of this command takes it
    std::string unusable;        ///< why its frames cannot be brought into shape; empty: they can
    int width = 0;
    int height = 0;
    Rate frame_rate;
    bool rate_is_assumed = false;  ///< the file carries no times, and the user named no rate
    bool interlaced = false;
    uint32_t sample_rate = 0;
    uint32_t channels = 0;
    uint32_t bits_per_sample = 0;
    int64_t bit_rate = 0;
};

/// One coded frame, in the shape the library takes: H.264 as Annex B, AAC behind an ADTS header.
struct Frame
{
    std::vector<unsigned char> bytes;
    int64_t time_us = 0;  ///< decoding time from the start of its file
    SG_FRAME_SUB_TYPE sub_type = SG_FRAME_SUB_TYPE_I;
    bool damaged = false;  ///< the reader knows that bytes are missing
};

/// One stream of coded frames in decoding order.
class FrameSource
{
public:
    FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;
    virtual ~FrameSource() = default;

    [[nodiscard]] virtual const StreamInfo& Info() const = 0;

    /// The next frame, or nothing at the end. Throws Failure when the input cannot be read and
    /// Interrupted when the user stopped it.
    virtual std::optional<Frame> Next() = 0;

    /// How far the file has been read, and its size; both 0 when that cannot be told.
    [[nodiscard]] virtual uint64_t BytesRead() const = 0;
    [[nodiscard]] virtual uint64_t BytesTotal() const = 0;
};

}  // namespace Orbel::Wrapton::Command
