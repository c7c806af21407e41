/**
 * @file Recording.h
 * What the tests of WAV files share.
 */
#ifndef WRAPTON_TESTS_GOLDEN_WAV_RECORDING_H
#define WRAPTON_TESTS_GOLDEN_WAV_RECORDING_H

#include <cstdint>

#include "support/Bytes.h"
#include "support/Recorder.h"

namespace Golden
{

/// The 44 bytes of a RIFF/WAVE header; everything but the two sizes is fixed.
Support::Bytes WavHeader(uint32_t fileSizeLess8, uint32_t dataSize);

/// 16-bit PCM at 8000 Hz, the only sound that the header tells the truth about.
Support::Frame Pcm16(Support::Bytes bytes);
Support::Frame Alaw(Support::Bytes bytes);

/// Whether a block is the one that a header or audio block is expected to be: from the start of the
/// output, both positions filled.
::testing::AssertionResult IsBlock(const Support::Block& block,
                                   int64_t position,
                                   const Support::Bytes& bytes);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_WAV_RECORDING_H
