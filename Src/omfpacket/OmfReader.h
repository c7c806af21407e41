#ifndef WRAPTON_OMFPACKET_OMFREADER_H
#define WRAPTON_OMFPACKET_OMFREADER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "omfpacket/OmfFormat.h"
#include "omfpacket/OmfInput.h"
#include "omfpacket/OmfTime.h"

namespace Orbel::Wrapton
{

enum class OmfStream
{
    kVideo,
    kAudio,
    kExt
};

/// What the extension headers say of the pictures; 0 where they say nothing.
struct OmfVideo
{
    uint32_t encode = 0;  // SG_ENCODE_VIDEO_TYPE
    uint32_t width = 0;   // pixels
    uint32_t height = 0;  // pixels
    bool interlaced = false;
    uint32_t frame_rate = 0;  // frames per second
};

/// What the extension headers say of the sound; 0 where they say nothing.
struct OmfAudio
{
    uint32_t encode = 0;  // SG_ENCODE_AUDIO_TYPE
    uint32_t channels = 0;
    uint32_t sample_rate = 0;  // Hz
    uint32_t bit_rate = 0;     // bits per second
};

/// One frame of a native recording.
struct OmfFrame
{
    uint64_t offset = 0;   // of its header
    uint32_t length = 0;   // header to trailer
    uint64_t skipped = 0;  // bytes right ahead of it that belong to no frame
    bool intact = false;   // extension headers are whole and the data check agrees
    OmfStream stream = OmfStream::kVideo;
    uint32_t sub_type =
        0;  // SG_FRAME_SUB_TYPE of a picture; what the recorder gave of an ext frame
    uint32_t number = 0;
    uint32_t date = 0;  // packed, see ReadOmfDate()
    int64_t time = 0;   // milliseconds, see UnwrapOmfStamp(); the first frame has its 16 bits
    OmfVideo video;     // of a picture
    OmfAudio audio;     // of an audio frame
    std::span<const unsigned char> payload;  // valid until the next frame is read
};

/**
 * Walks through a native recording, whatever became of it.
 *
 * A frame is what begins with a header whose checksum holds and ends, where that header says, with
 * a trailer that says the same. Bytes between frames are skipped and counted. Behind a header that
 * leads to no trailer the search goes on at its next byte, because its length may be the damage: no
 * whole frame is lost to it.
 */
class COmfReader
{
public:
    enum class Depth
    {
        kWhole,   // payloads are read and checked
        kHeaders  // payloads stay empty, and a frame counts as intact by its headers
    };

    /// @param input must live longer
    explicit COmfReader(COmfInput& input, Depth depth = Depth::kWhole);

    /// The next frame, or nothing at the end. Throws what the input throws.
    std::optional<OmfFrame> Next();

    /// Where the search goes on.
    [[nodiscard]] uint64_t Position() const { return m_nAt; }
    /// Bytes so far that belong to no frame. Behind the last frame they count once Next() has
    /// found the end.
    [[nodiscard]] uint64_t Skipped() const { return m_nSkipped; }

private:
    struct CheckField
    {
        uint8_t type = 0;
        uint32_t value = 0;
    };

    std::optional<uint64_t> FindTag(uint64_t from);
    std::optional<OmfFrame> ReadFrame(uint64_t at);
    bool EndsInTailer(uint64_t at, uint32_t length);
    void ReadBody(OmfFrame& frame, uint8_t ex_len);
    bool TryBody(OmfFrame& frame, std::span<const unsigned char> body, size_t ex_len) const;
    static bool ReadExHeaders(OmfFrame& frame,
                              std::span<const unsigned char> headers,
                              std::optional<CheckField>& check);
    int64_t TimeOf(OmfStream stream, uint16_t stamp, uint32_t date);

    COmfInput& m_input;
    Depth m_depth;
    uint64_t m_nAt = 0;
    uint64_t m_nSkipped = 0;
    std::array<std::optional<OmfPoint>, 3> m_points;  // the last frame of each stream
    std::optional<OmfPoint> m_point;                  // the last frame of all
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_OMFPACKET_OMFREADER_H
