/**
 * @file Subject.h
 * One handle of any container, driven in the same way whatever it is.
 */
#ifndef WRAPTON_TESTS_RELIABILITY_SUBJECT_H
#define WRAPTON_TESTS_RELIABILITY_SUBJECT_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Package.h"
#include "Wrapton.h"
#include "support/Frames.h"

namespace Reliability
{

/// Every container: the stream types of the interface, and the transport stream, which only a
/// component reaches.
constexpr std::array<uint32_t, 18> kContainers = {Orbel::Wrapton::SG_STREAM_TYPE_MP4,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_ASF,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_AVI,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_OMF,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_FLV,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_STREAM_ASF,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_MOV,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_STREAM_FLV,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_RTP,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_TS,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_PS,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_MP4_NOSEEK,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_MKV,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_MP4_64,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_MOV_64,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_WAV,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_QVPS,
                                                  Orbel::Wrapton::SG_STREAM_TYPE_GAYSPS};

std::string NameOf(uint32_t type);

/// What the allocations inside a call are to be; by default as they come.
class CallGuard
{
public:
    virtual ~CallGuard() = default;
    virtual void Begin() {}
    virtual void End() {}
};

class Subject
{
public:
    /// @param guard is told of every call of the library; null: of none
    Subject(uint32_t type, const Orbel::Wrapton::SGCreateParam& create, CallGuard* guard = nullptr);
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;
    ~Subject();

    [[nodiscard]] bool Exists() const { return m_handle != nullptr; }
    [[nodiscard]] void* Handle() const { return m_handle; }

    int Header();
    /// The frame's bytes are handed in as a copy of their exact size: Matroska writes to them.
    int Input(const Support::Frame& frame);
    int Tailer();
    int Backup();

private:
    template <class Call>
    int Guarded(Call call);
    /// Into a packet, which then leaves through the callback as one appended block.
    int InputIntoPacket(Orbel::Wrapton::SGFrameInfo& record);

    uint32_t m_type;
    Orbel::Wrapton::SGCreateParam m_create;
    CallGuard* m_guard;
    void* m_handle = nullptr;
};

/**
 * A recording from which every container stores something: H.264 with parameter sets, frames of
 * many units and of more than a packet of any kind, and audio in all encodings that some container
 * takes.
 */
const std::vector<Support::Frame>& Script();

}  // namespace Reliability

#endif  // WRAPTON_TESTS_RELIABILITY_SUBJECT_H
