// Whatever the input is, the reader of native recordings tells frames that stand where it says,
// loses no byte from its account, and does not depend on how the input is cut into views.
#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include "ByteSource.h"
#include "Require.h"
#include "omfpacket/OmfReader.h"

using namespace Orbel::Wrapton;
using Fuzz::Require;

namespace
{

using Bytes = std::vector<unsigned char>;

constexpr size_t kHeaderLen = 24;
constexpr size_t kTailerLen = 8;

/// Gives views of a few bytes more than were asked for, each in memory of its own that goes with
/// the next view.
class NarrowInput final : public COmfInput
{
public:
    NarrowInput(std::span<const unsigned char> bytes, size_t more) : m_bytes(bytes), m_more(more) {}

    [[nodiscard]] uint64_t Size() const override { return m_bytes.size(); }

    std::span<const unsigned char> View(uint64_t at, size_t count) override
    {
        const auto rest = m_bytes.subspan(std::min<size_t>(at, m_bytes.size()));
        const size_t size = std::min(rest.size(), count + m_more);
        m_view = std::make_unique<unsigned char[]>(size);
        std::copy_n(rest.begin(), size, m_view.get());
        return {m_view.get(), size};
    }

    size_t Peek(uint64_t at, std::span<unsigned char> to) override
    {
        const auto rest = m_bytes.subspan(std::min<size_t>(at, m_bytes.size()));
        const size_t size = std::min(rest.size(), to.size());
        std::copy_n(rest.begin(), size, to.begin());
        return size;
    }

private:
    std::span<const unsigned char> m_bytes;
    size_t m_more;
    std::unique_ptr<unsigned char[]> m_view;
};

/// Makes every header's checksum right, so that changes get past it.
void MendChecksums(Bytes& bytes)
{
    static constexpr unsigned char kTag[] = {'O', 'M', 'F', 'R'};
    auto from = bytes.begin();
    while (true)
    {
        from = std::search(from, bytes.end(), std::begin(kTag), std::end(kTag));
        if (bytes.end() - from < static_cast<std::ptrdiff_t>(kHeaderLen)) return;
        const auto sum_at = from + static_cast<std::ptrdiff_t>(kHeaderLen) - 1;
        *sum_at = static_cast<unsigned char>(std::accumulate(from, sum_at, 0u));
        ++from;
    }
}

uint32_t Number(std::span<const unsigned char> bytes, size_t at)
{
    return static_cast<uint32_t>(bytes[at]) | static_cast<uint32_t>(bytes[at + 1]) << 8 |
           static_cast<uint32_t>(bytes[at + 2]) << 16 | static_cast<uint32_t>(bytes[at + 3]) << 24;
}

bool HasText(std::span<const unsigned char> bytes, size_t at, const char* text)
{
    return std::equal(text, text + 4, bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

void CheckFrame(const OmfFrame& frame, std::span<const unsigned char> image)
{
    const uint64_t end = frame.offset + frame.length;
    Require(frame.length >= kHeaderLen + kTailerLen, "a frame has header and trailer");
    Require(end <= image.size(), "a frame ends inside the input");
    const auto bytes = image.subspan(frame.offset, frame.length);
    Require(HasText(bytes, 0, "OMFR"), "a frame begins with its tag");
    Require(Number(bytes, 12) == frame.length, "the header has the length");
    Require(HasText(bytes, bytes.size() - 8, "omfr"), "a frame ends with its trailer");
    Require(Number(bytes, bytes.size() - 4) == frame.length, "the trailer has the length");
    Require(frame.payload.size() <= frame.length - kHeaderLen - kTailerLen,
            "a payload is inside its frame");
    Require(
        std::equal(frame.payload.begin(),
                   frame.payload.end(),
                   bytes.end() - static_cast<std::ptrdiff_t>(kTailerLen + frame.payload.size())),
        "a payload stands ahead of the trailer");
}

struct Told
{
    uint64_t offset;
    uint32_t length;
    int64_t time;
    bool intact;
    uint32_t width;

    bool operator==(const Told& other) const = default;
};

std::vector<Told> Walk(COmfInput& input,
                       COmfReader::Depth depth,
                       std::span<const unsigned char> image)
{
    COmfReader reader(input, depth);
    std::vector<Told> told;
    uint64_t at = 0;
    uint64_t skipped = 0;
    while (const auto frame = reader.Next())
    {
        CheckFrame(*frame, image);
        Require(frame->offset == at + frame->skipped, "every byte ahead of a frame is counted");
        at = frame->offset + frame->length;
        skipped += frame->skipped;
        Require(reader.Position() == at, "the search goes on behind the frame");
        Require(reader.Skipped() == skipped, "skipped bytes add up");
        told.push_back({.offset = frame->offset,
                        .length = frame->length,
                        .time = frame->time,
                        .intact = frame->intact,
                        .width = frame->video.width});
    }
    Require(reader.Position() == image.size(), "the search ends with the input");
    Require(reader.Skipped() - skipped == image.size() - at, "bytes at the end are counted");
    return told;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::ByteSource source(data, size);
    const unsigned mode = source.U8();
    const auto rest = source.Take(size);
    Bytes bytes(rest.begin(), rest.end());
    if ((mode & 1) != 0) MendChecksums(bytes);
    bytes.shrink_to_fit();

    COmfMemory memory(bytes);
    const auto whole = Walk(memory, COmfReader::Depth::kWhole, bytes);
    NarrowInput narrow(bytes, mode >> 1);
    Require(Walk(narrow, COmfReader::Depth::kWhole, bytes) == whole, "views make no difference");

    const auto headers = Walk(memory, COmfReader::Depth::kHeaders, bytes);
    Require(headers.size() == whole.size(), "headers alone show as many frames");
    for (size_t i = 0; i < whole.size(); ++i)
    {
        Require(headers[i].offset == whole[i].offset, "headers alone show the same frames");
        Require(headers[i].intact || !whole[i].intact, "what is whole has whole headers");
    }
    return 0;
}
