// Call sequences on handles of the MP4 family. The file of an honest sink is read back at the
// tailer, and a no-seek file at each backup.
#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "CallSequence.h"
#include "Mp4Samples.h"
#include "Require.h"
#include "mp4packet/Mp4Packet.h"
#include "readers/Mp4Boxes.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 6> kTypes = {SG_STREAM_TYPE_MP4,
                                            SG_STREAM_TYPE_MOV,
                                            SG_STREAM_TYPE_MP4_NOSEEK,
                                            SG_STREAM_TYPE_MP4_64,
                                            SG_STREAM_TYPE_MOV_64,
                                            SG_STREAM_TYPE_3GP};
/// Around the 3 MiB of the work buffer, with and without a box header ahead.
constexpr std::array<uint32_t, 6> kSizes = {
    0x2FFFF7, 0x2FFFF8, 0x2FFFF9, 0x2FFFFF, 0x300000, 0x300001};

template <class Step>
void Checked(Step step)
{
    try
    {
        step();
    }
    catch (const Readers::Mp4Error& error)
    {
        Require(false, error.what());
    }
}

/// A movie box that fills the reserve exactly is still claimed by the free box ahead of it: cuts
/// the free box to its header.
void Uncover(Bytes& file)
{
    const auto boxes = Readers::ReadBoxes(file);
    const Readers::Mp4Box* const free = Readers::FindBox(boxes, "free");
    if (free == nullptr || Readers::FindBox(boxes, "moov") != nullptr) return;

    constexpr std::array<unsigned char, 4> kHeaderOnly = {0, 0, 0, 8};
    std::copy(kHeaderOnly.begin(),
              kHeaderOnly.end(),
              file.begin() + static_cast<std::ptrdiff_t>(free->offset));
}

void RequireResult(int result, bool plenty, const char* what)
{
    const bool shortage = result == SG_ERR_MEMORY_OUT && !plenty;
    Require(result == 0 || result == SG_ERR_PARAM_ERR || shortage, what);
}

class Mp4 final : public Fuzz::Container
{
public:
    explicit Mp4(uint32_t type) : m_type(type), m_noSeek(type == SG_STREAM_TYPE_MP4_NOSEEK) {}

    void* Create(Fuzz::ByteSource& /*source*/, SGCreateParam& create) override
    {
        if (m_type != SG_STREAM_TYPE_3GP) return SG_CreateHandle(m_type, &create);

        // The flat interface has no handle of this type; it is reached through the file component.
        return static_cast<CPackage*>(new (std::nothrow) CMp4Packet(m_type, &create));
    }

    [[nodiscard]] Fuzz::Palette Frames() const override { return Fuzz::UsualFrames(kSizes); }

    /// Kept: a movie box moves the next recording on even when it went into the reserve. Without
    /// seeking the last header comes for position 0, where such a sink drops it.
    [[nodiscard]] Fuzz::SinkRules Rules() const override
    {
        return {.largestGap = 1u << 20, .appendsOnly = m_noSeek};
    }

    void AfterHeader(int result, const Fuzz::Output& output) override
    {
        RequireResult(result, output.plenty, "result of the header call");
        Account(output.blocks);
        Require(!m_open || result != 0, "a recording has one header");
        Require((result == 0) != output.blocks.empty(), "a refused header emits nothing");
        m_asked = true;
        if (!m_open) ++m_recordings;  // one that is refused counts: frames may follow all the same
        m_open = m_open || result == 0;
    }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        RequireResult(call.result, call.plenty, "result of the frame call");
        Account(call.blocks);
        if (call.blocks.empty()) return;

        Require(m_asked, "without a header call no frame is stored");
        Require(call.blocks.size() == 1, "a frame is one block");
        // 4 bytes for each start code of 3 at the most, and a box header.
        Require(call.blocks[0].bytes.size() <= 8 + call.before.size() * 2,
                "a frame is stored once");
        if (m_recordings == 1) m_samples.Add(call.record, call.before);
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        RequireResult(result, output.plenty, "result of the tailer call");
        Account(output.blocks);
        Require(m_asked || (result != 0 && output.blocks.empty()),
                "without a header call there is no tailer");
        Require(result == 0 || !m_open || !output.plenty, "a recording has its tailer");
        // Without memory the movie box is missing behind the free box that made room for it.
        m_gap = result != 0 && (m_gap || !output.blocks.empty());
        if (result != 0) return;

        const bool complete = m_open && m_recordings == 1 && output.honest;
        m_open = false;
        m_asked = false;
        if (complete) CheckFile(output.file.Flatten());
    }

    void AfterBackup(int size, const SGOutputData& backup, const Fuzz::Output& output) override
    {
        if (backup.data_pointer == nullptr) return;

        Require(size == backup.data_size && size >= 8, "a backup says its size");
        const std::span movie(backup.data_pointer, static_cast<std::size_t>(backup.data_size));
        Checked(
            [&]
            {
                Require(Readers::TypesOf(Readers::ReadBoxes(movie)) == "moov",
                        "a backup is a movie box");
                if (!m_noSeek || !output.honest || !m_open || m_gap || m_recordings != 1) return;

                // A file whose samples have boxes of their own needs nothing but the movie box.
                Bytes file = output.file.Flatten();
                file.insert(file.end(), movie.begin(), movie.end());
                m_samples.Compare(file);
            });
    }

private:
    /// Whatever the sink answers, and in every recording.
    void Account(const std::vector<Fuzz::Block>& blocks)
    {
        for (const Fuzz::Block& block : blocks)
        {
            Require(block.origin == 0, "positions count from the start");
            Require(block.position <= m_offered, "no block leaves a gap that no other filled");
            m_offered += block.bytes.size();
        }
    }

    void CheckFile(Bytes file) const
    {
        Checked(
            [&]
            {
                Uncover(file);
                const std::string types = Readers::TypesOf(Readers::ReadBoxes(file));
                Require(types.starts_with("ftyp free"), "a file begins with ftyp and free");
                Require(m_noSeek || types.find("mdat") != std::string::npos,
                        "a file has media data");
                m_samples.Compare(file);
            });
    }

    uint32_t m_type;
    bool m_noSeek;
    uint64_t m_offered = 0;
    bool m_asked = false;  // for a header, be it in vain; frames are stored from then on
    bool m_open = false;
    bool m_gap = false;
    int m_recordings = 0;
    Fuzz::Mp4Samples m_samples;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::ByteSource source(data, size);
    Mp4 mp4(source.Choose(kTypes));
    Fuzz::RunCalls(source, mp4);
    return 0;
}
