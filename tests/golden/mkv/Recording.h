/**
 * @file Recording.h
 * One Matroska recording and views of what came out.
 */
#ifndef WRAPTON_TESTS_GOLDEN_MKV_RECORDING_H
#define WRAPTON_TESTS_GOLDEN_MKV_RECORDING_H

#include <cstdint>
#include <vector>

#include "golden/mkv/Pieces.h"
#include "support/Recorder.h"

namespace Golden
{

using Support::Block;
using Support::IsBlockAt;
using Support::Join;
using Support::Same;

/// Frames without start codes, so that their bytes are stored as they are: MPEG-4 without headers.
Support::Frame IFrame(std::size_t size, uint32_t seed = 1);
Support::Frame PFrame(std::size_t size, uint32_t seed = 1);
Support::Frame BFrame(std::size_t size, uint32_t seed = 1);

/// The TrackEntry that these frames bring.
VideoEntry PlainEntry();

/// SG_InputFrame() with the bytes in an allocation of exactly their size; @p frame gets them back
/// as the call left them.
int InputInPlace(void* handle, Support::Frame& frame);

/// A sink that keeps nothing but sums; for recordings of very many blocks.
struct Counter
{
    uint64_t blocks = 0;
    uint64_t lowest = UINT64_MAX;  ///< position
    uint64_t end = 0;              ///< of the block that reached farthest
    Bytes last;                    ///< the first 64 bytes of the last block
    Bytes previous;                ///< and of the one before
    Bytes seeks;                   ///< the block with the seek positions

    void Forget() { *this = Counter(); }
    [[nodiscard]] Orbel::Wrapton::SGCreateParam Create();
    static void Callback(Orbel::Wrapton::SGOutputData* block, void* user);
};

class Recording
{
public:
    Recording() : m_recorder(Orbel::Wrapton::SG_STREAM_TYPE_MKV, m_sink) {}

    Support::Recorder& Calls() { return m_recorder; }
    Support::SeekingSink& Sink() { return m_sink; }
    [[nodiscard]] const std::vector<Block>& Blocks() const { return m_sink.Blocks(); }
    [[nodiscard]] const Bytes& File() const { return m_sink.Image(); }

    /// The calls of a recording; each fails the test when its result is not 0.
    Recording& Header();
    Recording& Input(const Support::Frame& frame, int times = 1);
    Recording& Tailer();

    /// Everything from the first cluster on.
    [[nodiscard]] Bytes Clusters() const;
    /// The TrackEntry elements.
    [[nodiscard]] Bytes Entries() const;

private:
    Support::SeekingSink m_sink;
    Support::Recorder m_recorder;
};

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_MKV_RECORDING_H
