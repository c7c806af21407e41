// Call sequences on handles of the MP4 family. Every block is checked as it comes; the file of an
// honest sink is read back at the tailer.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "ByteSource.h"
#include "FrameMaker.h"
#include "Mp4Samples.h"
#include "Require.h"
#include "SparseImage.h"
#include "Wrapton.h"
#include "readers/Mp4Boxes.h"

using namespace Orbel::Wrapton;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 5> kTypes = {SG_STREAM_TYPE_MP4,
                                            SG_STREAM_TYPE_MOV,
                                            SG_STREAM_TYPE_MP4_NOSEEK,
                                            SG_STREAM_TYPE_MP4_64,
                                            SG_STREAM_TYPE_MOV_64};
constexpr std::array<uint32_t, 8> kReserves = {
    0, 1, 500, 2000, 2100, 65536, (64u << 20) + 1, 0xFFFFFFFF};
constexpr int kMostCalls = 200;
constexpr uint64_t kMostOutput = 12u << 20;

/// Every @p s_failEvery-th allocation fails; 0: none.
unsigned s_failEvery = 0;
unsigned s_allocations = 0;

void* Allocate(int size)
{
    Require(size > 0, "memory is asked for in positive sizes");
    if (s_failEvery != 0 && ++s_allocations % s_failEvery == 0) return nullptr;
    return std::malloc(static_cast<std::size_t>(size));
}

void Release(void* memory, int /*size*/)
{
    Require(memory != nullptr, "nothing is given back that was not given");
    std::free(memory);
}

/// How a sink answers.
enum class Answer
{
    kHonest,
    kLower,
    kNegative,
    kRaise
};

class Sink
{
public:
    Sink(Answer answer, bool noSeek) : m_answer(answer), m_noSeek(noSeek) {}

    static void Receive(SGOutputData* block, void* user) { static_cast<Sink*>(user)->Take(*block); }

    [[nodiscard]] uint64_t Emitted() const { return m_emitted; }
    [[nodiscard]] const Fuzz::SparseImage& Image() const { return m_image; }

private:
    void Take(SGOutputData& block)
    {
        Require(block.struct_size == 40, "a block says its record's size");
        Require(block.data_pointer != nullptr, "a block has bytes");
        Require(block.data_size > 0, "a block is not empty");
        Require(block.offset_type == 0, "positions count from the start");
        Require(block.offset_pos64 >= 0, "a position is not negative");
        const auto position = static_cast<uint64_t>(block.offset_pos64);
        Require(block.offset_pos == static_cast<uint32_t>(position), "both positions are filled");
        Require(position <= m_emitted, "no block leaves a gap that no other block filled");

        const auto size = static_cast<std::size_t>(block.data_size);
        // Without seeking the last header comes for position 0, where such a sink drops it.
        const bool dropped = m_noSeek && position == 0 && m_emitted != 0;
        if (!dropped) m_image.Write(position, {block.data_pointer, size});
        m_emitted += size;
        switch (m_answer)
        {
            case Answer::kHonest:
                break;
            case Answer::kLower:
                block.data_size /= 2;
                break;
            case Answer::kNegative:
                block.data_size = -block.data_size;
                break;
            case Answer::kRaise:
                block.data_size = INT32_MAX;
                break;
        }
    }

    Answer m_answer;
    bool m_noSeek;
    uint64_t m_emitted = 0;
    Fuzz::SparseImage m_image;
};

/// A movie box that fills the reserve exactly is still claimed by the free box ahead of it: cuts
/// the free box to its header.
void Uncover(std::vector<unsigned char>& file)
{
    const auto boxes = Readers::ReadBoxes(file);
    const Readers::Mp4Box* const free = Readers::FindBox(boxes, "free");
    if (free == nullptr || Readers::FindBox(boxes, "moov") != nullptr) return;

    const auto size = file.begin() + static_cast<std::ptrdiff_t>(free->offset);
    std::copy_n(std::array<unsigned char, 4>{0, 0, 0, 8}.begin(), 4, size);
}

void CheckFile(const Fuzz::SparseImage& image, const Fuzz::Mp4Samples& samples, bool noSeek)
{
    std::vector<unsigned char> file = image.Flatten();
    try
    {
        Uncover(file);
        const std::string types = Readers::TypesOf(Readers::ReadBoxes(file));
        Require(types.starts_with("ftyp free"), "a file begins with ftyp and free");
        Require(noSeek || types.find("mdat") != std::string::npos, "a file has media data");
        samples.Compare(file);
    }
    catch (const Readers::Mp4Error& error)
    {
        Require(false, error.what());
    }
}

/// One handle and what is known of it.
class Session
{
public:
    Session(uint32_t type, Answer answer)
        : m_noSeek(type == SG_STREAM_TYPE_MP4_NOSEEK),
          m_honest(answer == Answer::kHonest),
          m_sink(answer, m_noSeek)
    {
        SGCreateParam create{};
        create.user = &m_sink;
        create.sg_malloc = Allocate;
        create.sg_free = Release;
        create.sg_datacb = &Sink::Receive;
        m_handle = SG_CreateHandle(type, &create);
        Require(m_handle != nullptr, "a handle is created");
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session()
    {
        const uint64_t before = m_sink.Emitted();
        Require(SG_DestroyHandle(m_handle) == 0, "result of the destroy call");
        Require(m_sink.Emitted() == before, "destroying emits nothing");
    }

    [[nodiscard]] bool Full() const { return m_sink.Emitted() > kMostOutput; }

    void Call(Fuzz::ByteSource& source)
    {
        switch (source.U8() % 16)
        {
            case 0:
            case 1:
                Header(source);
                break;
            case 2:
                Tailer();
                break;
            case 3:
                Backup();
                break;
            case 4:
                Parameters(source);
                break;
            default:
                Frame(source);
                break;
        }
    }

private:
    void Header(Fuzz::ByteSource& source)
    {
        const uint64_t before = m_sink.Emitted();
        SGHeaderInfo header{};
        header.pre_header_len = source.Choose(kReserves);
        const bool null = (source.U8() & 1) != 0;
        const int result = SG_CreateHeader(m_handle, null ? nullptr : &header);
        Require(result == 0 || result == 3, "result of the header call");
        Require(!m_open || result == 3, "a recording has one header");
        Require((result == 0) == (m_sink.Emitted() != before), "a refused header emits nothing");
        m_boxes = true;
        if (!m_open) ++m_recordings;  // one that is refused counts: frames may follow all the same
        m_open = m_open || result == 0;
    }

    void Tailer()
    {
        const uint64_t before = m_sink.Emitted();
        const int result = SG_CreateTailer(m_handle, nullptr);
        Require(result == 0 || result == 3, "result of the tailer call");
        Require(m_boxes || (result == 3 && m_sink.Emitted() == before),
                "without a header call there is no tailer");
        // Without memory the movie box is missing behind the free box that made room for it.
        m_gap = result != 0 && m_sink.Emitted() != before;
        if (result != 0) return;

        const bool complete = m_open;
        m_open = false;
        m_boxes = false;
        if (m_honest && complete && m_recordings == 1)
        {
            CheckFile(m_sink.Image(), m_samples, m_noSeek);
        }
    }

    void Backup()
    {
        const uint64_t before = m_sink.Emitted();
        SGOutputData backup{};
        const int size = SG_GetBackup(m_handle, &backup);
        Require(m_sink.Emitted() == before, "a backup emits nothing");
        if (backup.data_pointer == nullptr) return;

        Require(size == backup.data_size && size >= 8, "a backup says its size");
        const std::span movie(backup.data_pointer, static_cast<std::size_t>(backup.data_size));
        try
        {
            Require(Readers::TypesOf(Readers::ReadBoxes(movie)) == "moov",
                    "a backup is a movie box");
            if (!m_noSeek || !m_honest || !m_open || m_gap || m_recordings != 1) return;

            // A file whose samples have boxes of their own needs nothing but the movie box.
            std::vector<unsigned char> file = m_sink.Image().Flatten();
            file.insert(file.end(), movie.begin(), movie.end());
            m_samples.Compare(file);
        }
        catch (const Readers::Mp4Error& error)
        {
            Require(false, error.what());
        }
    }

    void Parameters(Fuzz::ByteSource& source)
    {
        std::array<unsigned char, 64> record{};
        unsigned int length = source.U8();
        Require(SG_SetParam(m_handle, source.U8(), record.data(), length) == 0, "no parameters");
        Require(SG_GetParam(m_handle, source.U8(), record.data(), &length) == 0, "no parameters");
        Require(length == 0, "no parameters");
    }

    void Frame(Fuzz::ByteSource& source)
    {
        const uint64_t before = m_sink.Emitted();
        Fuzz::MadeFrame frame = Fuzz::MakeFrame(source);
        const SGFrameInfo copy = frame.record;
        const int result = SG_InputFrame(m_handle, &frame.record);
        Require(result == 0 || result == 3, "result of the frame call");
        Require(m_boxes || m_sink.Emitted() == before, "without a header call no frame is stored");
        Require(result == 0 || m_sink.Emitted() == before, "a refused frame emits nothing");
        // 4 bytes for each start code of 3 at the most, and a box header.
        const uint64_t bound = 8 + uint64_t{copy.frame_size} * 2;
        Require(m_sink.Emitted() - before <= bound, "a frame is stored once");
        if (m_honest && m_recordings == 1 && m_sink.Emitted() != before)
        {
            m_samples.Add(copy, {frame.bytes.get(), copy.frame_size});
        }
    }

    bool m_noSeek;
    bool m_honest;
    Sink m_sink;
    void* m_handle = nullptr;
    bool m_open = false;
    bool m_boxes = false;  // a header was asked for, be it in vain; frames are stored from then on
    bool m_gap = false;
    int m_recordings = 0;
    Fuzz::Mp4Samples m_samples;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::ByteSource source(data, size);
    const uint32_t type = source.Choose(kTypes);
    const auto answer = static_cast<Answer>(source.U8() % 4);
    s_failEvery = source.U8() % 8;
    s_allocations = 0;
    Session session(type, answer);
    for (int i = 0; i < kMostCalls && !source.Empty() && !session.Full(); ++i)
    {
        session.Call(source);
    }
    return 0;
}
