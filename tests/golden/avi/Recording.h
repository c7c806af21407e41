/**
 * @file Recording.h
 * One AVI recording and views of what came out.
 */
#ifndef WRAPTON_TESTS_GOLDEN_AVI_RECORDING_H
#define WRAPTON_TESTS_GOLDEN_AVI_RECORDING_H

#include <cstdint>
#include <vector>

#include "golden/avi/Pieces.h"
#include "support/Recorder.h"

namespace Golden
{

using Support::Block;
using Support::IsBlockAt;
using Support::Join;
using Support::Same;

/// The streams that most tests use: H.264 of 640 x 360 at 25 fps, A-law of 8000 Hz mono.
Orbel::Wrapton::SGHeaderInfo VideoHeader();
Orbel::Wrapton::SGHeaderInfo VideoAndAudioHeader();

/// H.264 frames of @p size bytes, described like VideoHeader(); another seed gives other bytes.
Support::Frame IFrame(std::size_t size, uint32_t seed = 1);
Support::Frame PFrame(std::size_t size, uint32_t seed = 1);
Support::Frame BFrame(std::size_t size, uint32_t seed = 1);
/// An A-law frame, described like VideoAndAudioHeader().
Support::Frame Sound(std::size_t size, uint32_t seed = 1);

/// The stream lists and avih that belong to them, ahead of the first frame.
Avih VideoAvih();
Avih VideoAndAudioAvih();
VideoStrl VideoStream();
AudioStrl AudioStream();

class Recording
{
public:
    Recording() : m_recorder(Orbel::Wrapton::SG_STREAM_TYPE_AVI, m_sink) {}

    Support::Recorder& Calls() { return m_recorder; }
    Support::SeekingSink& Sink() { return m_sink; }
    [[nodiscard]] const std::vector<Block>& Blocks() const { return m_sink.Blocks(); }
    [[nodiscard]] const Bytes& File() const { return m_sink.Image(); }

    /// The calls of a recording; each fails the test when its result is not 0.
    Recording& Header(Orbel::Wrapton::SGHeaderInfo header);
    /// SG_CreateHeader() with a null record.
    Recording& NoHeader();
    Recording& Input(const Support::Frame& frame, int times = 1);
    Recording& Tailer();

    /// The header list as the file has it now.
    [[nodiscard]] Bytes HeaderList() const;
    /// Everything from the first data chunk on.
    [[nodiscard]] Bytes Data() const;

private:
    Support::SeekingSink m_sink;
    Support::Recorder m_recorder;
};

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_AVI_RECORDING_H
