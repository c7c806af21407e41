/**
 * @file Recording.h
 * One MP4-family recording into a seeking sink, and views of what came out.
 */
#ifndef WRAPTON_TESTS_GOLDEN_MP4_RECORDING_H
#define WRAPTON_TESTS_GOLDEN_MP4_RECORDING_H

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "golden/mp4/Pieces.h"
#include "readers/Mp4Boxes.h"
#include "support/Recorder.h"

namespace Golden
{

/// The frames that most tests use.
extern const Bytes kSps;  ///< Constrained baseline, level 3
extern const Bytes kPps;
extern const Bytes kIdr;      ///< slice of an IDR picture
extern const Bytes kSlice;    ///< slice of a P picture
extern const Bytes kIFrame;   ///< Annex B: SPS, PPS, IDR slice
extern const Bytes kPFrame;   ///< Annex B: P slice
extern const Bytes kISample;  ///< kIFrame with lengths
extern const Bytes kPSample;  ///< kPFrame with lengths

/// What tells the five flavours apart.
struct Flavour
{
    const char* name;
    uint32_t type;
    bool quickTime;
    bool wide;
    bool noSeek;

    [[nodiscard]] uint32_t FtypSize() const { return quickTime ? 20 : 32; }
    /// Size of the mdat header ahead of the media data, 0 when each sample has its own.
    [[nodiscard]] uint32_t MdatHeader() const { return noSeek ? 0 : wide ? 16 : 8; }
    /// Bytes ahead of each sample.
    [[nodiscard]] uint32_t SampleHeader() const { return noSeek ? 8 : 0; }
    /// Position of the first block behind SG_CreateHeader() without a reserve.
    [[nodiscard]] uint32_t DataStart() const { return FtypSize() + 8 + MdatHeader(); }
    [[nodiscard]] Bytes Ftyp() const { return quickTime ? FtypMov() : FtypMp4(); }

    friend void PrintTo(const Flavour& flavour, std::ostream* out) { *out << flavour.name; }
};

extern const Flavour kMp4;
extern const Flavour kMov;
extern const Flavour kNoSeek;
extern const Flavour kMp4Wide;
extern const Flavour kMovWide;
extern const std::vector<Flavour> kFlavours;

/// For tests over all five; instantiate with INSTANTIATE_FLAVOURS.
class EveryFlavour : public ::testing::TestWithParam<Flavour>
{
public:
    static std::string Name(const ::testing::TestParamInfo<Flavour>& info)
    {
        return info.param.name;
    }
};

#define INSTANTIATE_FLAVOURS(suite) \
    INSTANTIATE_TEST_SUITE_P(       \
        All, suite, ::testing::ValuesIn(Golden::kFlavours), Golden::EveryFlavour::Name)

/// A window of time that opens when it is made.
class TimeWindow
{
public:
    TimeWindow();
    /**
     * Checks that the creation and modification times of mvhd, tkhd and mdhd are alike and lie
     * between the making of the window and now, then sets them to 0.
     */
    void MaskTimes(Bytes& movie) const;

private:
    uint32_t m_opened;
};

/// Whether a block is a movie box.
bool IsMovie(const Support::Block& block);

class Recording
{
public:
    explicit Recording(const Flavour& flavour) : Recording(flavour.type) {}
    explicit Recording(uint32_t type) : m_recorder(type, m_sink) {}

    Support::Recorder& Calls() { return m_recorder; }
    Support::SeekingSink& Sink() { return m_sink; }
    [[nodiscard]] const std::vector<Support::Block>& Blocks() const { return m_sink.Blocks(); }

    /// The calls of a recording; each fails the test when its result is not 0.
    Recording& Header(uint32_t reserve = 0);
    Recording& Input(const Support::Frame& frame, int times = 1);
    Recording& Tailer();

    /// The file as the sink has it, its movie boxes with masked times.
    [[nodiscard]] Bytes File() const;
    /// The last movie box that was emitted, with masked times.
    [[nodiscard]] Bytes Movie() const;
    /// A box of that movie, "trak[1]/mdia/mdhd", with its header; empty when there is none.
    [[nodiscard]] Bytes MovieBox(std::string_view path) const;
    /// Its sample table of the first (video) or second (audio) track: "stts", "stsd/avc1", ...
    [[nodiscard]] Bytes VideoTable(std::string_view path) const;
    [[nodiscard]] Bytes AudioTable(std::string_view path) const;
    /// Children of a box of the movie, "mvhd trak trak" for the movie itself.
    [[nodiscard]] std::string Types(std::string_view path) const;

private:
    TimeWindow m_window;
    Support::SeekingSink m_sink;
    Support::Recorder m_recorder;
};

/// A block as the packager must give it: origin 0 and both positions.
::testing::AssertionResult IsBlock(const Support::Block& block,
                                   uint64_t position,
                                   const Bytes& bytes);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_MP4_RECORDING_H
