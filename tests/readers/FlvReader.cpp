#include "readers/FlvReader.h"

#include <string>

namespace Readers
{
namespace
{

class Input
{
public:
    explicit Input(std::span<const unsigned char> bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool AtEnd() const { return m_bytes.empty(); }

    uint32_t Number(std::size_t width)
    {
        uint32_t value = 0;
        for (const unsigned char byte : Take(width))
        {
            value = value << 8 | byte;
        }
        return value;
    }

    std::span<const unsigned char> Take(std::size_t count)
    {
        if (count > m_bytes.size())
        {
            throw FlvError("the bytes end within a field of " + std::to_string(count));
        }
        const auto taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }

    void Expect(std::size_t width, uint32_t wanted, const char* what)
    {
        const uint32_t value = Number(width);
        if (value != wanted)
        {
            throw FlvError(std::string(what) + " is " + std::to_string(value) + ", not " +
                           std::to_string(wanted));
        }
    }

private:
    std::span<const unsigned char> m_bytes;
};

FlvTag ReadTag(Input& input)
{
    FlvTag tag;
    tag.type = input.Number(1);
    if (tag.type != 8 && tag.type != 9 && tag.type != 18)
    {
        throw FlvError("a tag of type " + std::to_string(tag.type));
    }
    const uint32_t size = input.Number(3);
    tag.time = input.Number(3);
    tag.time |= input.Number(1) << 24;
    input.Expect(3, 0, "the stream id");
    const auto body = input.Take(size);
    tag.body.assign(body.begin(), body.end());
    input.Expect(4, 11 + size, "the previous tag size");
    return tag;
}

}  // namespace

FlvFile ReadFlv(std::span<const unsigned char> file)
{
    Input input(file);
    input.Expect(3, 0x464C56, "the signature");
    input.Expect(1, 1, "the version");
    const uint32_t flags = input.Number(1);
    if ((flags & ~5u) != 0)
    {
        throw FlvError("reserved flags are set");
    }
    input.Expect(4, 9, "the data offset");
    input.Expect(4, 0, "the size ahead of the first tag");
    FlvFile result;
    result.hasAudio = (flags & 4) != 0;
    result.hasVideo = (flags & 1) != 0;
    while (!input.AtEnd())
    {
        result.tags.push_back(ReadTag(input));
    }
    return result;
}

std::vector<std::vector<unsigned char>> AvcUnits(const FlvTag& tag)
{
    Input input(tag.body);
    const uint32_t first = input.Number(1);
    if (tag.type != 9 || (first & 15) != 7)
    {
        throw FlvError("no AVC tag");
    }
    input.Expect(1, 1, "the AVC packet type");
    input.Number(3);  // composition time
    std::vector<std::vector<unsigned char>> units;
    while (!input.AtEnd())
    {
        const auto unit = input.Take(input.Number(4));
        units.emplace_back(unit.begin(), unit.end());
    }
    return units;
}

}  // namespace Readers
