/**
 * @file Recordings.h
 * Native recordings to read, made by the packager.
 */
#ifndef WRAPTON_TESTS_UNIT_OMFPACKET_RECORDINGS_H
#define WRAPTON_TESTS_UNIT_OMFPACKET_RECORDINGS_H

#include <cstdint>
#include <vector>

#include "omfpacket/OmfPacket.h"
#include "omfpacket/OmfReader.h"
#include "support/Sinks.h"

namespace Orbel::Wrapton
{

using Support::Bytes;

/// A frame as it was recorded.
struct Recorded
{
    uint64_t offset;
    uint32_t length;
    uint32_t number;
    Bytes payload;
};

class Recording
{
public:
    Recording();

    /// Packages a frame; @p record needs no more than what differs from 0.
    Recording& Add(SGFrameInfo record, const Bytes& payload);
    Recording& AddPicture(uint32_t subType, const Bytes& payload, uint32_t time = 0);
    Recording& AddSound(const Bytes& payload, uint32_t time = 0);
    /// Bytes that belong to no frame.
    Recording& AddGarbage(const Bytes& bytes);

    [[nodiscard]] const Bytes& Image() const { return m_image; }
    [[nodiscard]] const std::vector<Recorded>& Frames() const { return m_frames; }

private:
    static void Append(SGOutputData* block, void* self);

    COmfPacket m_packager;
    Bytes m_image;
    std::vector<Recorded> m_frames;
};

/// H.264 and sound, a picture and a frame of sound by turns. Payloads are of many sizes and hold
/// tags of the format.
class MixedRecording : public Recording
{
public:
    /// @param count of frames in all
    explicit MixedRecording(std::size_t count);
};

/// A header made by hand, its checksum right, with what stands behind it.
Bytes MakeFrame(unsigned char type, uint32_t length, unsigned char exLen, const Bytes& behind);
Bytes Tailer(uint32_t length);

/// A frame as it was read, with its payload kept.
struct Read
{
    OmfFrame frame;
    Bytes payload;
};

struct Readout
{
    std::vector<Read> frames;
    uint64_t skipped = 0;
};

/// All frames of a recording. Fails the test unless frames, skipped bytes and the whole add up.
Readout ReadAll(COmfInput& input, COmfReader::Depth depth = COmfReader::Depth::kWhole);
/// The same for bytes, which are read in an allocation of exactly their size.
Readout ReadAll(const Bytes& image, COmfReader::Depth depth = COmfReader::Depth::kWhole);

/// Whether a frame was read as it was recorded.
::testing::AssertionResult IsSame(const Read& read, const Recorded& recorded);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TESTS_UNIT_OMFPACKET_RECORDINGS_H
