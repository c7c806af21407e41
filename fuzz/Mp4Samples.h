#ifndef WRAPTON_FUZZ_MP4SAMPLES_H
#define WRAPTON_FUZZ_MP4SAMPLES_H

#include <cstdint>
#include <span>
#include <vector>

#include "Wrapton.h"

namespace Fuzz
{

/// The frames of one recording that have to come back from its tracks.
class Mp4Samples
{
public:
    /// A frame that was stored, whatever its kind.
    void Add(const Orbel::Wrapton::SGFrameInfo& record, std::span<const unsigned char> bytes);

    /// Reads the closed file and compares every sample of every track.
    void Compare(std::span<const unsigned char> file) const;

private:
    struct Stored
    {
        uint32_t encode = 0;
        bool key = false;
        std::vector<unsigned char> bytes;
    };

    /// What a track holds of a frame.
    static std::vector<unsigned char> SampleOf(const Stored& frame);

    std::vector<Stored> m_video;
    std::vector<Stored> m_audio;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_MP4SAMPLES_H
