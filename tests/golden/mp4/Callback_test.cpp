// Callbacks that answer with another data_size, and sinks of other kinds.
#include <limits>

#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Ext;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Payload;
using Support::Recorder;
using Support::ResizingSink;
using Support::Same;

/// Positions of the blocks of a recording: header, I frame, audio, ext, P frame, tailer.
std::vector<int64_t> PositionsWith(const Flavour& flavour, ResizingSink::Policy policy)
{
    ResizingSink sink(std::move(policy));
    Recorder recorder(flavour.type, sink);
    EXPECT_EQ(recorder.Header(0), SG_ERR_NOERR);
    EXPECT_EQ(recorder.Input(H264I(kIFrame)), SG_ERR_NOERR);
    EXPECT_EQ(recorder.Input(Aac(Payload(20))), SG_ERR_NOERR);
    EXPECT_EQ(recorder.Input(Ext(Payload(10))), SG_ERR_NOERR);
    EXPECT_EQ(recorder.Input(H264P(kPFrame)), SG_ERR_NOERR);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    std::vector<int64_t> positions;
    for (const Support::Block& block : sink.Blocks())
    {
        EXPECT_EQ(block.narrow, static_cast<uint32_t>(block.position));
        positions.push_back(block.position);
    }
    return positions;
}

using Positions = std::vector<int64_t>;

TEST(CallbackThatLowersTheSize, ShortensWhatFollows)
{
    // ftyp 32, free 8, mdat 8, then 27, 20, 10 and 7 bytes, each a byte shorter
    EXPECT_EQ(PositionsWith(kMp4, [](std::size_t, int32_t size) { return size - 1; }),
              (Positions{0, 31, 38, 45, 71, 90, 99, 105, 38}));
    EXPECT_EQ(PositionsWith(kMp4Wide, [](std::size_t, int32_t size) { return size - 1; }),
              (Positions{0, 31, 38, 53, 79, 98, 107, 113, 38}));
    EXPECT_EQ(PositionsWith(kMov, [](std::size_t, int32_t size) { return size - 1; }),
              (Positions{0, 19, 26, 33, 59, 78, 87, 93, 26}));
    EXPECT_EQ(PositionsWith(kNoSeek, [](std::size_t, int32_t size) { return size - 1; }),
              (Positions{0, 31, 38, 72, 99, 116, 130, 0}));
}

TEST(CallbackThatLowersTheSize, ToZeroKeepsThePosition)
{
    EXPECT_EQ(PositionsWith(kMp4, [](std::size_t, int32_t) { return 0; }),
              (Positions{0, 0, 0, 0, 0, 0, 0, 0, 0}));
    // The I frame alone is not stored.
    EXPECT_EQ(PositionsWith(
                  kMp4, [](std::size_t number, int32_t size) { return number == 3 ? 0 : size; }),
              (Positions{0, 32, 40, 48, 48, 68, 78, 85, 40}));
}

TEST(CallbackThatGivesANegativeSize, CountsAsZero)
{
    for (const int32_t answer : {-1, -27, std::numeric_limits<int32_t>::min()})
    {
        EXPECT_EQ(PositionsWith(kMp4,
                                [answer](std::size_t number, int32_t size)
                                { return number == 3 ? answer : size; }),
                  (Positions{0, 32, 40, 48, 48, 68, 78, 85, 40}));
    }
}

TEST(CallbackThatRaisesTheSize, CountsAsAll)
{
    EXPECT_EQ(PositionsWith(kMp4, [](std::size_t, int32_t size) { return size + 1; }),
              (Positions{0, 32, 40, 48, 75, 95, 105, 112, 40}));
    EXPECT_EQ(PositionsWith(
                  kMp4, [](std::size_t, int32_t) { return std::numeric_limits<int32_t>::max(); }),
              (Positions{0, 32, 40, 48, 75, 95, 105, 112, 40}));
}

TEST(CallbackThatLowersTheSize, MovesTheChunkOffsetsButNotTheSampleSizes)
{
    ResizingSink sink([](std::size_t number, int32_t size) { return number == 3 ? 5 : size; });
    Recorder recorder(kMp4.type, sink);
    recorder.Header(0);
    recorder.Input(H264I(kIFrame));
    recorder.Input(H264P(kPFrame));
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    const Support::Block& movie = sink.Blocks().at(5);
    ASSERT_TRUE(IsMovie(movie));
    const auto boxes = Readers::ReadBoxes(movie.data);
    const auto bytesOf = [&](const char* path)
    {
        const Readers::Mp4Box* const box = Readers::FindBox(boxes, path);
        return Support::Slice(movie.data, box->offset, box->size);
    };
    EXPECT_TRUE(Same(bytesOf("moov/trak/mdia/minf/stbl/stco"), Stco({48, 53})));
    EXPECT_TRUE(Same(bytesOf("moov/trak/mdia/minf/stbl/stsz"), Stsz({27, 7})));
    EXPECT_EQ(movie.position, 60);
    EXPECT_TRUE(IsBlock(sink.Blocks().at(6), 40, Hex("00 00 00 2A 6D 64 61 74")));  // 8 + 27 + 7
}

TEST(CallbackThatLowersTheSize, OfTheMovieBoxMovesTheNextRecording)
{
    ResizingSink sink([](std::size_t number, int32_t size) { return number == 3 ? 100 : size; });
    Recorder recorder(kMp4.type, sink);
    recorder.Header(0);
    recorder.Tailer();
    recorder.Header(0);
    ASSERT_TRUE(IsMovie(sink.Blocks().at(3)));
    EXPECT_TRUE(IsBlock(sink.Blocks().at(5), 148, FtypMp4()));
}

TEST(CallbackThatLowersTheSize, OfTheFreeBoxLetsTheMovieStandBehindIt)
{
    // The hole is as large as asked for, whatever was stored of it; the place follows the record.
    ResizingSink sink([](std::size_t number, int32_t size) { return number == 1 ? 8 : size; });
    Recorder recorder(kMp4.type, sink);
    recorder.Header(1000);
    EXPECT_EQ(sink.Blocks().at(2).position, 40);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    ASSERT_EQ(sink.Blocks().size(), 6u);
    EXPECT_EQ(sink.Blocks()[3].position, 32);
    EXPECT_EQ(sink.Blocks()[3].size, 8 + 1000 - 116);
    EXPECT_EQ(sink.Blocks()[4].position, 32 + 8 + 1000 - 116);
    EXPECT_EQ(sink.Blocks()[5].position, 40);
}

SGOutputData g_last;
void* g_user = &g_last;

TEST(CallbackUser, MayBeNull)
{
    SGCreateParam create{};
    create.sg_datacb = [](SGOutputData* block, void* user)
    {
        g_last = *block;
        g_user = user;
    };
    Recorder recorder(kMp4.type, create);
    EXPECT_EQ(recorder.Header(0), SG_ERR_NOERR);
    EXPECT_EQ(g_user, nullptr);
    EXPECT_EQ(g_last.data_size, 8);
    EXPECT_EQ(g_last.offset_pos64, 40);
}

TEST(CallbackMissing, DiscardsAndCountsEveryBlock)
{
    SGCreateParam create{};
    Recorder recorder(kMp4.type, create);
    EXPECT_EQ(recorder.Header(0), SG_ERR_NOERR);
    EXPECT_EQ(recorder.Input(H264I(kIFrame)), SG_ERR_NOERR);
    SGOutputData backup{};
    EXPECT_GT(recorder.Backup(backup), 0);
    EXPECT_EQ(backup.offset_pos64, 75);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
}

TEST(AppendingReceiver, GetsAPlayableNoSeekFileButForTheClosingHeader)
{
    Support::AppendingSink appending;
    Recorder recorder(kNoSeek.type, appending);
    recorder.Header(0);
    recorder.Input(H264I(kIFrame));
    recorder.Input(H264P(kPFrame));
    recorder.Tailer();
    // The closing header belongs to position 0; appended, it is 8 bytes too many.
    const Bytes& image = appending.Image();
    const auto boxes = Readers::ReadBoxes(Support::Slice(image, 0, image.size() - 8));
    EXPECT_EQ(Readers::TypesOf(boxes), "ftyp free mdat mdat moov");
    // All but the closing header append in order.
    int64_t end = 0;
    for (std::size_t i = 0; i + 1 < appending.Blocks().size(); ++i)
    {
        EXPECT_EQ(appending.Blocks()[i].position, end);
        end += appending.Blocks()[i].size;
    }
    EXPECT_EQ(appending.Blocks().back().position, 0);
}

}  // namespace
}  // namespace Golden
