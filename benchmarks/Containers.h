/**
 * @file Containers.h
 * Every container as something that packages a recording and tells how long it took.
 */
#ifndef WRAPTON_BENCHMARKS_CONTAINERS_H
#define WRAPTON_BENCHMARKS_CONTAINERS_H

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "Frames.h"
#include "Package.h"

namespace Bench
{

/// What is to be reached in one workload; 0: nothing is.
struct Goal
{
    const Workload& (*load)();
    double copies = 0;  // at most, in units of the copy
    double faster = 0;  // at least, in units of the peer
};

/// A container, and who else writes it.
struct Container
{
    const char* name;
    uint32_t type;          // SG_STREAM_TYPE
    uint32_t sound_encode;  // SG_ENCODE_AUDIO_TYPE
    Sound sound;
    const char* peer;         // a libavformat muxer; null: there is none
    const char* peer_option;  // one of its options, "name=value"; null: none
    uint32_t packet_size;     // of RTP packets, on both sides; 0: no matter
    std::array<Goal, 3> goals;
};

std::span<const Container> Containers();

/// What one run came to.
struct Run
{
    double seconds = 0;
    uint64_t payload = 0;  // bytes that went in
    uint64_t output = 0;   // bytes that came out
};

/**
 * One packager with its frame records. Transport streams go into a packet of the caller, everything
 * else to a callback; both count the bytes and throw them away.
 */
class Packager
{
public:
    explicit Packager(const Container& container);

    void Header();
    void Picture(const Frame& frame, uint32_t number);
    void SoundFrame(const Frame& frame, uint32_t number);
    void Tailer();

    [[nodiscard]] uint64_t Output() const { return m_nOutput; }

private:
    static void Discard(Orbel::Wrapton::SGOutputData* block, void* user);
    void Input(Orbel::Wrapton::SGFrameInfo& record, const Frame& frame);

    uint64_t m_nOutput = 0;
    bool m_bPacket;
    bool m_bRestores;
    Orbel::Wrapton::SGFrameInfo m_picture{};
    Orbel::Wrapton::SGFrameInfo m_sound{};
    Orbel::Wrapton::PacketBuffer m_packet;
    std::unique_ptr<Orbel::Wrapton::CPackage> m_package;
};

/// Packages @p count pictures of the recording, or as many sound frames: creation, header and
/// tailer included.
Run RunPackager(const Container& container, const Recording& recording, uint32_t count);

/// Copies the same payload into a work buffer of 3 MiB, each frame behind 16 bytes.
Run RunCopy(const Recording& recording, uint32_t count);

}  // namespace Bench

#endif  // WRAPTON_BENCHMARKS_CONTAINERS_H
