#include "readers/MkvReader.h"

#include <bit>
#include <stdexcept>

namespace Readers
{
namespace
{

using Span = std::span<const unsigned char>;

[[noreturn]] void Fail(const std::string& what)
{
    throw std::runtime_error("no Matroska file: " + what);
}

struct Element
{
    uint32_t id = 0;
    std::size_t at = 0;  ///< in its parent's data
    Span data;
};

/// The number of 1 to 8 bytes at @p at, with or without its marker; moves on behind it.
uint64_t Vint(Span bytes, std::size_t& at, bool marker)
{
    if (at >= bytes.size()) Fail("it ends inside an element");
    const auto length = static_cast<std::size_t>(std::countl_zero(bytes[at])) + 1;
    if (length > 8 || length > bytes.size() - at) Fail("a malformed number");
    uint64_t value = marker ? bytes[at] : bytes[at] & (0xFFu >> length);
    for (std::size_t byte = 1; byte < length; ++byte)
        value = value << 8 | bytes[at + byte];
    at += length;
    return value;
}

std::vector<Element> Elements(Span bytes)
{
    std::vector<Element> elements;
    for (std::size_t at = 0; at < bytes.size();)
    {
        if (bytes[at] == 0 && at + 1 == bytes.size()) break;  // what cues have behind them
        Element element;
        element.at = at;
        element.id = static_cast<uint32_t>(Vint(bytes, at, true));
        const uint64_t size = Vint(bytes, at, false);
        if (size > bytes.size() - at) Fail("an element leads beyond the end");
        element.data = bytes.subspan(at, size);
        at += size;
        elements.push_back(element);
    }
    return elements;
}

uint64_t Number(Span data)
{
    uint64_t value = 0;
    for (const unsigned char byte : data)
        value = value << 8 | byte;
    return value;
}

std::string Text(Span data)
{
    return {data.begin(), data.end()};
}

void ReadSeek(Span seek, MkvFile& file)
{
    uint32_t id = 0;
    uint64_t position = 0;
    for (const Element& part : Elements(seek))
    {
        if (part.id == 0x53AB) id = static_cast<uint32_t>(Number(part.data));
        if (part.id == 0x53AC) position = Number(part.data);
    }
    file.seeks[id] = position;
}

void ReadEntry(Span entry, MkvFile& file)
{
    for (const Element& part : Elements(entry))
    {
        if (part.id == 0x86) file.codecId = Text(part.data);
        if (part.id == 0x63A2) file.codecPrivate.assign(part.data.begin(), part.data.end());
        if (part.id == 0x23E383) file.defaultDuration = Number(part.data);
        if (part.id != 0xE0) continue;
        for (const Element& video : Elements(part.data))
        {
            if (video.id == 0xB0) file.width = Number(video.data);
            if (video.id == 0xBA) file.height = Number(video.data);
        }
    }
}

void ReadCluster(const Element& cluster, uint64_t position, MkvFile& file)
{
    int64_t time = 0;
    for (const Element& part : Elements(cluster.data))
    {
        if (part.id == 0xE7) time = static_cast<int64_t>(Number(part.data));
        if (part.id != 0xA3) continue;
        if (part.data.size() < 4 || part.data[0] != 0x81) Fail("a block of no track");
        const auto relative = static_cast<int16_t>(Number(part.data.subspan(1, 2)));
        const Span data = part.data.subspan(4);
        file.blocks.push_back(
            {position, time + relative, (part.data[3] & 0x80) != 0, {data.begin(), data.end()}});
    }
}

void ReadCue(Span point, MkvFile& file)
{
    MkvCue cue;
    for (const Element& part : Elements(point))
    {
        if (part.id == 0xB3) cue.time = Number(part.data);
        if (part.id != 0xB7) continue;
        for (const Element& place : Elements(part.data))
        {
            if (place.id == 0xF1) cue.cluster = Number(place.data);
            if (place.id == 0xF0) cue.relative = Number(place.data);
        }
    }
    file.cues.push_back(cue);
}

}  // namespace

MkvFile ReadMkv(Span bytes)
{
    MkvFile file;
    const std::vector<Element> top = Elements(bytes);
    if (top.size() != 2 || top[0].id != 0x1A45DFA3 || top[1].id != 0x18538067)
    {
        Fail("it is not an EBML header and a segment");
    }
    for (const Element& part : Elements(top[0].data))
    {
        if (part.id == 0x4282) file.docType = Text(part.data);
    }
    const auto segment = static_cast<uint64_t>(top[1].data.data() - bytes.data());
    for (const Element& element : Elements(top[1].data))
    {
        file.found.emplace(element.id, element.at);
        if (element.id == 0x1F43B675) ReadCluster(element, segment + element.at, file);
        if (element.id != 0x114D9B74 && element.id != 0x1654AE6B && element.id != 0x1C53BB6B)
        {
            continue;
        }
        for (const Element& part : Elements(element.data))
        {
            if (part.id == 0x4DBB) ReadSeek(part.data, file);
            if (part.id == 0xAE) ReadEntry(part.data, file);
            if (part.id == 0xBB) ReadCue(part.data, file);
        }
    }
    return file;
}

}  // namespace Readers
