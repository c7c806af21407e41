#include "golden/mp4/Recording.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>

namespace Golden
{

using namespace Orbel::Wrapton;
using Support::Block;
using Support::Frame;
using Support::Hex;
using Support::Join;
using Support::LengthNal;
using Support::Nal;

const Bytes kSps = Hex("67 42 C0 1E 95 A0");
const Bytes kPps = Hex("68 CE 3C 80");
const Bytes kIdr = Hex("65 88 84 21 A0");
const Bytes kSlice = Hex("41 9A 24");
const Bytes kIFrame = Join({Nal(kSps), Nal(kPps), Nal(kIdr)});
const Bytes kPFrame = Nal(kSlice);
const Bytes kISample = Join({LengthNal(kSps), LengthNal(kPps), LengthNal(kIdr)});
const Bytes kPSample = LengthNal(kSlice);

const Flavour kMp4 = {"Mp4", SG_STREAM_TYPE_MP4, false, false, false};
const Flavour kMov = {"Mov", SG_STREAM_TYPE_MOV, true, false, false};
const Flavour kNoSeek = {"NoSeek", SG_STREAM_TYPE_MP4_NOSEEK, false, false, true};
const Flavour kMp4Wide = {"Mp4Wide", SG_STREAM_TYPE_MP4_64, false, true, false};
const Flavour kMovWide = {"MovWide", SG_STREAM_TYPE_MOV_64, true, true, false};
const std::vector<Flavour> kFlavours = {kMp4, kMov, kNoSeek, kMp4Wide, kMovWide};

namespace
{

/// Seconds from 1904-01-01, the epoch of the format, to 1970-01-01.
constexpr uint32_t kEpochDistance = 2082844800;

uint32_t Now()
{
    return static_cast<uint32_t>(std::time(nullptr)) + kEpochDistance;
}

constexpr std::size_t kTimesAt = 12;  // behind size, type, version and flags

}  // namespace

TimeWindow::TimeWindow() : m_opened(Now()) {}

void TimeWindow::MaskTimes(Bytes& movie) const
{
    const std::vector<Readers::Mp4Box> boxes = Readers::ReadBoxes(movie);
    const uint32_t now = Now();
    const auto mask = [&](const std::string& path)
    {
        const Readers::Mp4Box* const box = Readers::FindBox(boxes, path);
        if (box == nullptr)
        {
            return;
        }
        const uint32_t creation = Support::ReadMsb32(movie, box->offset + kTimesAt);
        const uint32_t modification = Support::ReadMsb32(movie, box->offset + kTimesAt + 4);
        EXPECT_EQ(creation, modification) << path;
        // Counted from the opening, so that the format's 32 bits may run over.
        EXPECT_LE(creation - m_opened, now - m_opened) << path;
        std::fill_n(movie.begin() + static_cast<std::ptrdiff_t>(box->offset + kTimesAt), 8, 0);
    };
    mask("moov/mvhd");
    for (const char* const trak : {"moov/trak[0]", "moov/trak[1]"})
    {
        mask(std::string(trak) + "/tkhd");
        mask(std::string(trak) + "/mdia/mdhd");
    }
}

bool IsMovie(const Block& block)
{
    return block.data.size() >= 8 && Support::Slice(block.data, 4, 4) == Support::Text("moov");
}

Recording& Recording::Header(uint32_t reserve)
{
    EXPECT_EQ(m_recorder.Header(reserve), SG_ERR_NOERR);
    return *this;
}

Recording& Recording::Input(const Frame& frame, int times)
{
    for (int i = 0; i < times; ++i)
    {
        EXPECT_EQ(m_recorder.Input(frame), SG_ERR_NOERR);
    }
    return *this;
}

Recording& Recording::Tailer()
{
    EXPECT_EQ(m_recorder.Tailer(), SG_ERR_NOERR);
    return *this;
}

Bytes Recording::File() const
{
    Bytes file = m_sink.Image();
    for (const Block& block : m_sink.Blocks())
    {
        if (IsMovie(block))
        {
            Bytes movie = block.data;
            m_window.MaskTimes(movie);
            std::copy(movie.begin(), movie.end(), file.begin() + block.position);
        }
    }
    return file;
}

Bytes Recording::Movie() const
{
    const auto movie = std::find_if(m_sink.Blocks().rbegin(), m_sink.Blocks().rend(), IsMovie);
    if (movie == m_sink.Blocks().rend())
    {
        throw std::runtime_error("no movie box came out");
    }
    Bytes bytes = movie->data;
    m_window.MaskTimes(bytes);
    return bytes;
}

Bytes Recording::MovieBox(std::string_view path) const
{
    const Bytes movie = Movie();
    const std::vector<Readers::Mp4Box> boxes = Readers::ReadBoxes(movie);
    const Readers::Mp4Box* const box = Readers::FindBox(boxes, "moov/" + std::string(path));
    return box == nullptr ? Bytes() : Support::Slice(movie, box->offset, box->size);
}

Bytes Recording::VideoTable(std::string_view path) const
{
    return MovieBox("trak/mdia/minf/stbl/" + std::string(path));
}

Bytes Recording::AudioTable(std::string_view path) const
{
    return MovieBox("trak[1]/mdia/minf/stbl/" + std::string(path));
}

std::string Recording::Types(std::string_view path) const
{
    const Bytes movie = Movie();
    const std::vector<Readers::Mp4Box> boxes = Readers::ReadBoxes(movie);
    const Readers::Mp4Box* const box = Readers::FindBox(boxes, path);
    return box == nullptr ? "none" : Readers::TypesOf(box->children);
}

::testing::AssertionResult IsBlock(const Block& block, uint64_t position, const Bytes& bytes)
{
    if (block.structSize != 40 || block.origin != 0 ||
        block.position != static_cast<int64_t>(position) ||
        block.narrow != static_cast<uint32_t>(position) ||
        block.size != static_cast<int32_t>(bytes.size()))
    {
        return ::testing::AssertionFailure()
               << "struct_size " << block.structSize << ", size " << block.size << ", origin "
               << block.origin << ", positions " << block.narrow << " and " << block.position
               << " where 40, " << bytes.size() << ", 0 and " << position << " are due";
    }
    return Support::Same(block.data, bytes);
}

}  // namespace Golden
