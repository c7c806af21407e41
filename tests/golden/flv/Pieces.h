/**
 * @file Pieces.h
 * Parts of an FLV file as they must come out, laid out after Adobe's Flash Video File Format 10.1,
 * annex E, and a recording to compare them with.
 */
#ifndef WRAPTON_TESTS_GOLDEN_FLV_PIECES_H
#define WRAPTON_TESTS_GOLDEN_FLV_PIECES_H

#include <cstdint>
#include <vector>

#include "support/Recorder.h"

namespace GoldenFlv
{

using Support::Bytes;

/// The frames that most tests use, Annex B and as an FLV tag holds them.
extern const Bytes kSps;     ///< Constrained baseline, level 3
extern const Bytes kPps;     ///< 4 bytes
extern const Bytes kIFrame;  ///< SPS, PPS, IDR slice
extern const Bytes kPFrame;  ///< slice
extern const Bytes kIUnits;
extern const Bytes kPUnits;

Bytes FileHeader(uint32_t flags);

/// A tag with the size of it that follows.
Bytes Tag(uint32_t type, uint32_t time, const Bytes& body);

/// The values of onMetaData.
struct Meta
{
    double duration = 0;
    double width = 640;
    double height = 360;
    double frameRate = 25;
    double videoCodec = 7;
    double sampleRate = 0;
    double sampleSize = 0;
    uint32_t stereo = 0;
    double audioCodec = 0;
    double fileSize = 0;
};
Bytes MetaTag(const Meta& meta);

Bytes SequenceHeader(const Bytes& sps, const Bytes& pps);
Bytes VideoTag(uint32_t time, bool key, const Bytes& units);
Bytes AudioTag(uint32_t time, uint32_t flags, const Bytes& samples);
Bytes EndTag(uint32_t time);

/// Everything that goes ahead of the first frame's tag; @p flags are those of the file header.
Bytes Start(uint32_t flags, const Meta& meta = {});

Support::Frame Pcm16(Bytes samples,
                     uint32_t sampleRate = 8000,
                     uint32_t channels = 1,
                     uint32_t bits = 16);

/// A recording of one variant into a sink that appends.
class Recording
{
public:
    explicit Recording(uint32_t type) : m_recorder(type, m_sink) {}

    /// Calls that must give 0.
    Recording& Input(const Support::Frame& frame, int times = 1);
    Recording& Tailer();

    Support::Recorder& Calls() { return m_recorder; }
    [[nodiscard]] const std::vector<Support::Block>& Blocks() const { return m_sink.Blocks(); }
    [[nodiscard]] const Bytes& File() const { return m_sink.Image(); }
    /// The bytes of the blocks since the last call of this.
    Bytes Fresh();

private:
    Support::AppendingSink m_sink;
    Support::Recorder m_recorder;
    std::size_t m_seen = 0;
};

/// A block as every one of this container is: origin 1, both positions 0.
::testing::AssertionResult IsAppended(const Support::Block& block, const Bytes& bytes);

}  // namespace GoldenFlv

#endif  // WRAPTON_TESTS_GOLDEN_FLV_PIECES_H
