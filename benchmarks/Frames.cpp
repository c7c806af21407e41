#include "Frames.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <random>

namespace Bench
{
namespace
{

constexpr size_t kCacheLine = 64;
constexpr uint32_t kDistinctSounds = 64;

/// A baseline sequence parameter set for 1920 x 1080, and its picture parameter set: ISO/IEC
/// 14496-10 7.3.2.1 and 7.3.2.2.
constexpr std::array<unsigned char, 22> kParameterSets = {
    0, 0, 0, 1, 0x67, 0x42, 0xC0, 0x28, 0xDA, 0x01, 0xE0, 0x08, 0x9F, 0x95,  //
    0, 0, 0, 1, 0x68, 0xCE, 0x3C, 0x80};

/// Start code, NAL header and the beginning of the slice header of a picture between key frames.
constexpr std::array<unsigned char, 7> kInterHead = {0, 0, 0, 1, 0x41, 0x9A, 0x21};

std::vector<unsigned char> KeyHead()
{
    std::vector<unsigned char> head(kParameterSets.begin(), kParameterSets.end());
    head.insert(head.end(), {0, 0, 0, 1, 0x65, 0x88, 0x84});
    return head;
}

/// The ADTS header of a frame of @p size bytes, 48 kHz, mono: ISO/IEC 14496-3 1.A.2.2.
std::vector<unsigned char> AdtsHead(uint32_t size)
{
    return {0xFF,
            0xF1,
            0x4C,
            static_cast<unsigned char>(0x40 | size >> 11),
            static_cast<unsigned char>(size >> 3),
            static_cast<unsigned char>((size & 7) << 5 | 0x1F),
            0xFC};
}

/// Looks like arithmetic-coded data: random, a few zeros more, and emulation prevention.
void FillCoded(std::span<unsigned char> bytes, uint32_t seed)
{
    std::mt19937 random(seed);
    unsigned zeros = 0;
    for (unsigned char& byte : bytes)
    {
        const auto value = static_cast<uint32_t>(random());
        const bool extra_zero = (value >> 8) % 512 == 0;
        byte = extra_zero ? 0 : static_cast<unsigned char>(value);
        if (zeros >= 2 && byte <= 3) byte = 3;
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    if (!bytes.empty() && bytes.back() == 0) bytes.back() = 0x80;
}

std::vector<Frame> MakeSounds(Sound sound)
{
    std::vector<Frame> frames;
    for (uint32_t i = 0; i < kDistinctSounds && sound != Sound::kNone; ++i)
    {
        std::vector<unsigned char> head;
        if (sound == Sound::kAdts) head = AdtsHead(207);
        const uint32_t size = sound == Sound::kPcm ? 320 : sound == Sound::kAdts ? 207 : 200;
        frames.emplace_back(head, size, 0x5000 + i, true);
    }
    return frames;
}

}  // namespace

void Frame::Release::operator()(unsigned char* bytes) const
{
    std::free(bytes);
}

Frame::Frame(std::span<const unsigned char> head, size_t size, uint32_t seed, bool key)
    : m_head(head.begin(), head.end()), m_nSize(static_cast<uint32_t>(size)), m_bKey(key)
{
    const size_t room = (size + kCacheLine - 1) / kCacheLine * kCacheLine;
    m_bytes.reset(static_cast<unsigned char*>(std::aligned_alloc(kCacheLine, room)));
    if (m_bytes == nullptr) throw std::bad_alloc();
    FillCoded({m_bytes.get() + head.size(), size - head.size()}, seed);
    Restore();
}

void Frame::Restore() const
{
    std::copy(m_head.begin(), m_head.end(), m_bytes.get());
}

const Workload& WorkloadW1()
{
    static constexpr Workload kLoad = {"W1",
                                       "camera: I frames of 120 kB, every 50th; P frames of 18 kB; "
                                       "two sound frames beside each where the container has sound",
                                       20000,
                                       50,
                                       120000,
                                       18000,
                                       8,
                                       64,
                                       2};
    return kLoad;
}

const Workload& WorkloadW2()
{
    static constexpr Workload kLoad = {"W2",
                                       "small: I frames of 2 kB, every 50th; P frames of 1 kB",
                                       200000,
                                       50,
                                       2000,
                                       1000,
                                       64,
                                       2048,
                                       0};
    return kLoad;
}

const Workload& WorkloadW3()
{
    static constexpr Workload kLoad = {
        "W3", "huge: I frames of 1 MB out of 64 MB", 2000, 1, 1000000, 1000, 64, 1, 0};
    return kLoad;
}

const Workload& WorkloadA1()
{
    static constexpr Workload kLoad = {
        "A1", "sound: frames of 320 bytes", 400000, 0, 0, 320, 0, 1024, 0};
    return kLoad;
}

const Workload& WorkloadA2()
{
    static constexpr Workload kLoad = {
        "A2", "sound: frames of 4096 bytes", 200000, 0, 0, 4096, 0, 1024, 0};
    return kLoad;
}

std::span<const unsigned char> ParameterSets()
{
    return kParameterSets;
}

Recording::Recording(const Workload& workload, Sound sound)
    : m_load(workload),
      m_sound(workload.sounds_per_picture != 0 || workload.key_every == 0 ? sound : Sound::kNone)
{
    for (uint32_t i = 0; i < m_load.distinct_keys; ++i)
    {
        m_keys.emplace_back(KeyHead(), m_load.key_size, i, true);
    }
    const std::span<const unsigned char> head = HasPictures()
                                                    ? std::span<const unsigned char>(kInterHead)
                                                    : std::span<const unsigned char>();
    for (uint32_t i = 0; i < m_load.distinct_others; ++i)
    {
        m_others.emplace_back(head, m_load.other_size, 0x1000 + i, !HasPictures());
    }
    if (HasPictures()) m_sounds = MakeSounds(m_sound);
}

void Recording::Restore() const
{
    for (const Frame& frame : m_keys)
        frame.Restore();
    for (const Frame& frame : m_others)
        frame.Restore();
}

}  // namespace Bench
