// Positions and sizes past 32 bits, with a sink that stores nothing.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::JpegI;
using Support::Msb32;
using Support::Msb64;
using Support::Payload;
using Support::Same;
using Support::Slice;

constexpr uint64_t kFourGiB = uint64_t{1} << 32;
constexpr uint32_t kLargest = 0x300000;  // what the work buffer emits at once

/// Samples of 1 byte stand at the last position below 4 GiB, at 4 GiB and behind it; 100 more
/// close.
class LongRecording
{
public:
    explicit LongRecording(const Flavour& flavour)
        : m_flavour(flavour), m_recorder(flavour.type, m_sink), m_bytes(Payload(kLargest))
    {
        m_recorder.Header(0);
        uint64_t at = flavour.DataStart();
        const uint32_t ahead = flavour.SampleHeader();
        while (kFourGiB - 1 - ahead - at > 2 * uint64_t{kLargest})
        {
            at += Input(kLargest - ahead);
        }
        // Two more samples, so that the second ends where the first 1-byte block begins.
        const auto rest = static_cast<uint32_t>(kFourGiB - 1 - ahead - at);
        at += Input(rest / 2 - ahead);
        at += Input(rest - rest / 2 - ahead);
        m_first = m_sink.Blocks().size();
        Input(1);
        Input(1);
        Input(1);
        Input(100);
        m_end = at + 103 + 4 * uint64_t{ahead};
        m_recorder.Backup(m_backup);
        EXPECT_EQ(m_recorder.Tailer(), SG_ERR_NOERR);
    }

    [[nodiscard]] const std::vector<Support::Block>& Blocks() const { return m_sink.Blocks(); }
    /// Number of the block whose sample stands just below 4 GiB.
    [[nodiscard]] std::size_t First() const { return m_first; }
    /// Position behind the last sample.
    [[nodiscard]] uint64_t End() const { return m_end; }
    [[nodiscard]] const SGOutputData& LastBackup() const { return m_backup; }

    /// The chunk offsets of the last four samples, as they stand in the file.
    [[nodiscard]] Bytes LastOffsets() const
    {
        const Bytes& movie = Blocks().at(Blocks().size() - 2).data;
        const auto boxes = Readers::ReadBoxes(movie);
        const std::string table = m_flavour.wide ? "co64" : "stco";
        const auto* const box = Readers::FindBox(boxes, "moov/trak/mdia/minf/stbl/" + table);
        const std::size_t size = m_flavour.wide ? 32 : 16;
        return Slice(movie, box->End() - size, size);
    }

private:
    /// Hands in a picture of @p size bytes; gives what the file grew by.
    uint64_t Input(uint32_t size)
    {
        SGFrameInfo record = RecordOf(JpegI({}));
        record.frame_pointer = m_bytes.data();
        record.frame_size = size;
        EXPECT_EQ(SG_InputFrame(m_recorder.Handle(), &record), SG_ERR_NOERR);
        return size + uint64_t{m_flavour.SampleHeader()};
    }

    Flavour m_flavour;
    Support::DiscardingSink m_sink;
    Support::Recorder m_recorder;
    Bytes m_bytes;
    std::size_t m_first = 0;
    uint64_t m_end = 0;
    SGOutputData m_backup{};
};

class BeyondFourGiB : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(BeyondFourGiB);

TEST_P(BeyondFourGiB, PositionsAndSizesAreRightOrWrap)
{
    const Flavour flavour = GetParam();
    const LongRecording recording(flavour);

    // Blocks: the full position, and its low 32 bits.
    uint64_t at = 0;
    for (std::size_t i = 0; i + 1 < recording.Blocks().size(); ++i)
    {
        const Support::Block& block = recording.Blocks()[i];
        ASSERT_EQ(block.position, static_cast<int64_t>(at)) << i;
        ASSERT_EQ(block.narrow, static_cast<uint32_t>(at)) << i;
        at += static_cast<uint64_t>(block.size);
    }
    const Support::Block& movie = recording.Blocks().at(recording.Blocks().size() - 2);
    ASSERT_TRUE(IsMovie(movie));
    EXPECT_EQ(movie.position, static_cast<int64_t>(recording.End()));
    EXPECT_GT(recording.End(), kFourGiB);

    EXPECT_EQ(recording.LastBackup().offset_pos64, static_cast<int64_t>(recording.End()));
    EXPECT_EQ(recording.LastBackup().offset_pos, static_cast<uint32_t>(recording.End()));

    // Chunk offsets
    const uint64_t step = 1 + flavour.SampleHeader();
    const uint64_t first = kFourGiB - 1;
    if (flavour.wide)
    {
        EXPECT_TRUE(Same(recording.LastOffsets(),
                         Join({Msb64(first),
                               Msb64(first + step),
                               Msb64(first + 2 * step),
                               Msb64(first + 3 * step)})));
    }
    else
    {
        const auto narrow = [](uint64_t position)
        { return Msb32(static_cast<uint32_t>(position)); };
        EXPECT_TRUE(Same(recording.LastOffsets(),
                         Join({narrow(first),
                               narrow(first + step),
                               narrow(first + 2 * step),
                               narrow(first + 3 * step)})));
        EXPECT_TRUE(Same(Slice(recording.LastOffsets(), 0, 4), Hex("FF FF FF FF")));
    }

    // mdat with its final size
    const Support::Block& last = recording.Blocks().back();
    const uint64_t mdat = recording.End() - flavour.FtypSize() - 8;
    if (flavour.noSeek)
    {
        EXPECT_TRUE(IsBlock(last, 0, Hex("00 00 00 6C 6D 64 61 74")));  // 8 + 100
    }
    else
    {
        EXPECT_TRUE(IsBlock(last,
                            flavour.FtypSize() + 8,
                            flavour.wide
                                ? Join({Hex("00 00 00 01 6D 64 61 74"), Msb64(mdat)})
                                : Join({Msb32(static_cast<uint32_t>(mdat)), Hex("6D 64 61 74")})));
    }
}

}  // namespace
}  // namespace Golden
