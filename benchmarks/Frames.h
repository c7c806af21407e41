/**
 * @file Frames.h
 * Coded frames in memory, and the order in which a recording takes them.
 */
#ifndef WRAPTON_BENCHMARKS_FRAMES_H
#define WRAPTON_BENCHMARKS_FRAMES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Bench
{

/// Bytes that begin at a cache line.
class Frame
{
public:
    Frame(std::span<const unsigned char> head, size_t size, uint32_t seed, bool key);

    [[nodiscard]] unsigned char* Data() const { return m_bytes.get(); }
    [[nodiscard]] uint32_t Size() const { return m_nSize; }
    [[nodiscard]] bool IsKey() const { return m_bKey; }
    /// Puts the bytes ahead of the picture's data back: Matroska turns start codes into lengths in
    /// the caller's memory.
    void Restore() const;

private:
    struct Release
    {
        void operator()(unsigned char* bytes) const;
    };
    std::unique_ptr<unsigned char[], Release> m_bytes;
    std::vector<unsigned char> m_head;
    uint32_t m_nSize;
    bool m_bKey;
};

/// The sound beside each picture.
enum class Sound
{
    kNone,
    kAac,   // 200 bytes, raw
    kAdts,  // 200 bytes behind a header of 7
    kMp2,   // 200 bytes
    kPcm    // 320 bytes
};

/// A picture sequence, or sound alone.
struct Workload
{
    const char* name;
    const char* what;
    uint32_t frames;
    uint32_t key_every;  // pictures; 0: sound alone
    uint32_t key_size;
    uint32_t other_size;  // of the pictures between, or of the sound frames
    uint32_t distinct_keys;
    uint32_t distinct_others;
    uint32_t sounds_per_picture;
};

const Workload& WorkloadW1();
const Workload& WorkloadW2();
const Workload& WorkloadW3();
const Workload& WorkloadA1();
const Workload& WorkloadA2();

/// Annex B parameter sets of the pictures, with start codes; the sequence parameter set first.
std::span<const unsigned char> ParameterSets();

/// All distinct frames of a workload, made once, and the sequence that cycles through them.
class Recording
{
public:
    Recording(const Workload& workload, Sound sound);

    [[nodiscard]] const Workload& Load() const { return m_load; }
    [[nodiscard]] Sound SoundKind() const { return m_sound; }
    [[nodiscard]] bool HasPictures() const { return m_load.key_every != 0; }
    [[nodiscard]] bool HasSound() const { return m_sound != Sound::kNone; }

    /// Undoes what a packager did to the pictures' memory.
    void Restore() const;

    /// Calls @p picture and @p sound with every frame in its turn and its number among its kind.
    template <class Picture, class SoundFrame>
    void ForEach(uint32_t count, Picture picture, SoundFrame sound) const
    {
        if (!HasPictures())
        {
            for (uint32_t i = 0; i < count; ++i)
                sound(m_others[i % m_others.size()], i);
            return;
        }
        const uint32_t beside = HasSound() ? m_load.sounds_per_picture : 0;
        for (uint32_t i = 0; i < count; ++i)
        {
            const bool key = i % m_load.key_every == 0;
            picture(
                key ? m_keys[i / m_load.key_every % m_keys.size()] : m_others[i % m_others.size()],
                i);
            for (uint32_t k = 0; k < beside; ++k)
            {
                const uint32_t number = i * beside + k;
                sound(m_sounds[number % m_sounds.size()], number);
            }
        }
    }

private:
    Workload m_load;
    Sound m_sound;
    std::vector<Frame> m_keys;
    std::vector<Frame> m_others;
    std::vector<Frame> m_sounds;
};

}  // namespace Bench

#endif  // WRAPTON_BENCHMARKS_FRAMES_H
