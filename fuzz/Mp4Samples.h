#ifndef WRAPTON_FUZZ_MP4SAMPLES_H
#define WRAPTON_FUZZ_MP4SAMPLES_H

#include <cstdint>
#include <span>
#include <vector>

#include "StoredFrames.h"

namespace Fuzz
{

/// Frames that have to come back as samples of the two tracks of an MP4 or QuickTime file.
class Mp4Samples final : public StoredFrames
{
public:
    void Add(const Orbel::Wrapton::SGFrameInfo& record,
             std::span<const unsigned char> bytes) override;
    void Compare(std::span<const unsigned char> file) const override;

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
