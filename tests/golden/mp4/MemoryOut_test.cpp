// The C++ allocator fails inside a call: no exception leaves it, and the recording goes on.
#include "golden/mp4/Recording.h"
#include "readers/Mp4Reader.h"
#include "support/FailingNew.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::SeekingSink;
using Support::Shortage;

void Callback(SGOutputData* block, void* user)
{
    const Support::Plenty plenty;
    SeekingSink::Callback(block, user);
}

/// A recording of which one allocation fails, the one with the number that is given.
class ShortRecording
{
public:
    ShortRecording(const Flavour& flavour, long number) : m_left(number)
    {
        SGCreateParam create = Support::CreateFor(m_sink);
        create.sg_datacb = &Callback;
        const Shortage shortage(m_left);
        m_handle = SG_CreateHandle(flavour.type, &create);
    }
    ShortRecording(const ShortRecording&) = delete;
    ShortRecording& operator=(const ShortRecording&) = delete;
    ~ShortRecording() { SG_DestroyHandle(m_handle); }

    [[nodiscard]] bool HasHandle() const { return m_handle != nullptr; }
    /// Whether the failure has come.
    [[nodiscard]] bool Failed() const { return m_left < 0; }
    [[nodiscard]] const Bytes& Image() const { return m_sink.Image(); }

    int Header()
    {
        const Shortage shortage(m_left);
        return SG_CreateHeader(m_handle, nullptr);
    }

    int Input(Frame& frame)
    {
        SGFrameInfo record = RecordOf(frame);
        record.frame_pointer = frame.bytes.data();
        const Shortage shortage(m_left);
        return SG_InputFrame(m_handle, &record);
    }

    int Backup()
    {
        SGOutputData backup{};
        const Shortage shortage(m_left);
        return SG_GetBackup(m_handle, &backup);
    }

    int Tailer()
    {
        const Shortage shortage(m_left);
        return SG_CreateTailer(m_handle, nullptr);
    }

private:
    long m_left;
    SeekingSink m_sink;
    void* m_handle = nullptr;
};

constexpr std::size_t kPictures = 4200;  // beyond the second growth of the tables

/// Reads the file and checks each sample; the frame of the failure may be missing.
void ExpectReadable(const Bytes& file, const Bytes& picture, const Bytes& sound)
{
    const Readers::Mp4Movie movie = Readers::ReadMp4(file);
    ASSERT_EQ(movie.tracks.size(), 2u);
    for (const Readers::Mp4Track& track : movie.tracks)
    {
        EXPECT_GE(track.samples.size(), kPictures - 1);
        for (const Readers::Mp4Sample& sample : track.samples)
        {
            ASSERT_EQ(Support::Slice(file, sample.offset, sample.size),
                      track.handler == "vide" ? picture : sound);
        }
    }
}

/// Gives false when the recording needed fewer allocations than @p number.
bool RecordWithFailure(const Flavour& flavour, long number)
{
    ShortRecording recording(flavour, number);
    if (!recording.HasHandle())
    {
        return true;
    }
    const auto expectResult = [](int result)
    { EXPECT_TRUE(result == SG_ERR_NOERR || result == SG_ERR_MEMORY_OUT) << result; };
    Frame picture = Support::JpegI(Support::Payload(5));
    Frame sound = Support::Aac(Support::Payload(6, 2));
    const int header = recording.Header();
    if (header == SG_ERR_PARAM_ERR)
    {
        // The work buffer was what failed; such a handle refuses everything.
        EXPECT_EQ(recording.Header(), SG_ERR_PARAM_ERR);
        EXPECT_EQ(recording.Input(picture), SG_ERR_PARAM_ERR);
        EXPECT_EQ(recording.Tailer(), SG_ERR_PARAM_ERR);
        EXPECT_TRUE(recording.Image().empty());
        return true;
    }
    expectResult(header);
    if (header != SG_ERR_NOERR)
    {
        EXPECT_EQ(recording.Header(), SG_ERR_NOERR);
    }
    for (std::size_t i = 0; i < kPictures; ++i)
    {
        expectResult(recording.Input(picture));
        expectResult(recording.Input(sound));
    }
    recording.Backup();
    if (recording.Tailer() != SG_ERR_NOERR)
    {
        EXPECT_EQ(recording.Tailer(), SG_ERR_NOERR);
    }
    ExpectReadable(recording.Image(), picture.bytes, sound.bytes);
    return recording.Failed();
}

class MemoryOut : public ::testing::TestWithParam<Flavour>
{
};
INSTANTIATE_TEST_SUITE_P(Some, MemoryOut, ::testing::Values(kMp4, kMovWide), EveryFlavour::Name);

TEST_P(MemoryOut, AtAnyAllocationLeavesAReadableFile)
{
    long number = 0;
    while (RecordWithFailure(GetParam(), number))
    {
        ASSERT_FALSE(HasFailure()) << "allocation " << number;
        ++number;
    }
    EXPECT_GT(number, 20);
}

}  // namespace
}  // namespace Golden
