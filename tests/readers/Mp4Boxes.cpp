#include "readers/Mp4Boxes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace Readers
{
namespace
{

using ByteSpan = std::span<const unsigned char>;

constexpr std::size_t kShortHeader = 8;
constexpr std::size_t kLongHeader = 16;
constexpr int kDeepest = 16;

uint64_t ReadNumber(ByteSpan bytes, std::size_t at, std::size_t width)
{
    if (at > bytes.size() || width > bytes.size() - at)
    {
        throw Mp4Error("a field reaches beyond the end");
    }
    uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
    {
        value = value << 8 | bytes[at + i];
    }
    return value;
}

struct Container
{
    std::string_view type;
    std::size_t fields;  ///< payload bytes ahead of the first child
};

/// Fields ahead of the children: none, a full box with a count, a visual sample entry.
constexpr std::array<Container, 12> kContainers = {{{"moov", 0},
                                                    {"trak", 0},
                                                    {"mdia", 0},
                                                    {"minf", 0},
                                                    {"dinf", 0},
                                                    {"stbl", 0},
                                                    {"wave", 0},
                                                    {"dref", 8},
                                                    {"stsd", 8},
                                                    {"avc1", 78},
                                                    {"mp4v", 78},
                                                    {"jpeg", 78}}};

/// ISO/IEC 14496-12 12.2.3 and the version 1 sound description of the QuickTime file format.
constexpr std::size_t kAudioEntry = 28;
constexpr std::size_t kSoundVersion1 = 44;

std::optional<std::size_t> FieldsAheadOfChildren(ByteSpan bytes, const Mp4Box& box)
{
    const std::size_t payload = box.size - box.header;
    if (box.type == "mp4a")
    {
        if (payload < kAudioEntry)
        {
            return std::nullopt;  // the empty one inside wave
        }
        const bool version1 = ReadNumber(bytes, box.Payload() + 8, 2) == 1;
        return version1 ? kSoundVersion1 : kAudioEntry;
    }
    const auto* const found =
        std::find_if(kContainers.begin(),
                     kContainers.end(),
                     [&box](const Container& c) { return c.type == box.type; });
    if (found == kContainers.end())
    {
        return std::nullopt;
    }
    return found->fields;
}

std::vector<Mp4Box> ReadRange(ByteSpan bytes, std::size_t from, std::size_t to, int depth)
{
    if (depth > kDeepest)
    {
        throw Mp4Error("boxes are nested too deep");
    }
    std::vector<Mp4Box> boxes;
    while (from < to)
    {
        Mp4Box box;
        box.offset = from;
        uint64_t size = ReadNumber(bytes.first(to), from, 4);
        const uint64_t type = ReadNumber(bytes.first(to), from + 4, 4);
        for (int shift = 24; shift >= 0; shift -= 8)
        {
            box.type += static_cast<char>(type >> shift & 0xFF);
        }
        if (size == 1)
        {
            size = ReadNumber(bytes.first(to), from + kShortHeader, 8);
            box.header = kLongHeader;
        }
        if (size < box.header || size > to - from)
        {
            throw Mp4Error("box " + box.type + " has the size " + std::to_string(size) + " where " +
                           std::to_string(to - from) + " bytes are left");
        }
        box.size = static_cast<std::size_t>(size);
        if (const std::optional<std::size_t> fields = FieldsAheadOfChildren(bytes, box))
        {
            if (*fields > box.size - box.header)
            {
                throw Mp4Error("box " + box.type + " is too small for its fields");
            }
            box.children = ReadRange(bytes, box.Payload() + *fields, box.End(), depth + 1);
        }
        from = box.End();
        boxes.push_back(std::move(box));
    }
    return boxes;
}

}  // namespace

std::vector<Mp4Box> ReadBoxes(ByteSpan bytes)
{
    return ReadRange(bytes, 0, bytes.size(), 0);
}

const Mp4Box* FindBox(const std::vector<Mp4Box>& boxes, std::string_view path)
{
    const std::size_t slash = path.find('/');
    const std::string_view step = path.substr(0, slash);
    std::size_t number = 0;
    if (step.size() > 4)
    {
        number = std::strtoul(std::string(step.substr(5)).c_str(), nullptr, 10);
    }
    for (const Mp4Box& box : boxes)
    {
        if (box.type != step.substr(0, 4) || number-- != 0)
        {
            continue;
        }
        return slash == std::string_view::npos ? &box
                                               : FindBox(box.children, path.substr(slash + 1));
    }
    return nullptr;
}

std::string TypesOf(const std::vector<Mp4Box>& boxes)
{
    std::string types;
    for (const Mp4Box& box : boxes)
    {
        types += (types.empty() ? "" : " ") + box.type;
    }
    return types;
}

}  // namespace Readers
