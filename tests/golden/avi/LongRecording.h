/**
 * @file LongRecording.h
 * A recording of more than 1 GiB into a sink that discards the payload.
 */
#ifndef WRAPTON_TESTS_GOLDEN_AVI_LONGRECORDING_H
#define WRAPTON_TESTS_GOLDEN_AVI_LONGRECORDING_H

#include <algorithm>
#include <cstdint>
#include <vector>

#include "golden/avi/Recording.h"

namespace Golden
{

/// Stores nothing; of each block the log keeps at most 64 KiB.
class HeadSink : public Support::DiscardingSink
{
protected:
    [[nodiscard]] std::size_t Kept(std::size_t size) const override
    {
        return std::min<std::size_t>(size, 65536);
    }
};

class LongRecording
{
public:
    /// @param largest size of the largest frame that will come
    explicit LongRecording(uint32_t largest);

    Support::Recorder& Calls() { return m_recorder; }
    HeadSink& Sink() { return m_sink; }
    [[nodiscard]] const std::vector<Block>& Blocks() const { return m_sink.Blocks(); }

    LongRecording& Header(Orbel::Wrapton::SGHeaderInfo header);
    LongRecording& NoHeader();
    /// Frames of zeros, described like IFrame() and Sound().
    LongRecording& Video(uint32_t subType, uint32_t size);
    LongRecording& Sound(uint32_t size);
    LongRecording& Tailer();

    /// Fills the first RIFF up to exactly 1 GiB with 16 I frames.
    LongRecording& FillFirstRiff();

    /// SG_InputFrame() with the record's own attributes and @p size zero bytes.
    int Input(Orbel::Wrapton::SGFrameInfo record, uint32_t size);

private:
    HeadSink m_sink;
    Support::Recorder m_recorder;
    std::vector<unsigned char> m_zeros;
};

/// A block of @p size bytes at @p position that begins with the header of a data chunk.
::testing::AssertionResult IsChunkBlock(const Block& block,
                                        uint64_t position,
                                        std::string_view code,
                                        uint32_t size);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_AVI_LONGRECORDING_H
