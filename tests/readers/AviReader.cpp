#include "readers/AviReader.h"

#include <stdexcept>

namespace Readers
{
namespace
{

using Span = std::span<const unsigned char>;

[[noreturn]] void Fail(const std::string& what)
{
    throw std::runtime_error("no AVI file: " + what);
}

Span Cut(Span bytes, std::size_t at, std::size_t count)
{
    if (at > bytes.size() || count > bytes.size() - at) Fail("a length leads beyond the end");
    return bytes.subspan(at, count);
}

uint32_t Number(Span bytes, std::size_t at)
{
    const Span four = Cut(bytes, at, 4);
    return four[0] | static_cast<uint32_t>(four[1]) << 8 | static_cast<uint32_t>(four[2]) << 16 |
           static_cast<uint32_t>(four[3]) << 24;
}

std::string Code(Span bytes, std::size_t at)
{
    const Span four = Cut(bytes, at, 4);
    return {four.begin(), four.end()};
}

/// A chunk, or a list, in its parent's bytes.
struct Item
{
    std::string code;
    std::size_t at = 0;
    Span data;
};

std::vector<Item> Items(Span bytes)
{
    std::vector<Item> items;
    for (std::size_t at = 0; at < bytes.size();)
    {
        const uint32_t size = Number(bytes, at + 4);
        items.push_back({Code(bytes, at), at, Cut(bytes, at + 8, size)});
        at += 8 + std::size_t{size} + size % 2;
    }
    return items;
}

AviStream ReadStream(Span list)
{
    AviStream stream;
    for (const Item& item : Items(list))
    {
        if (item.code == "strh")
        {
            stream.type = Code(item.data, 0);
            stream.handler = Code(item.data, 4);
            stream.scale = Number(item.data, 20);
            stream.rate = Number(item.data, 24);
            stream.length = Number(item.data, 32);
        }
        if (item.code == "strf") stream.format.assign(item.data.begin(), item.data.end());
    }
    return stream;
}

}  // namespace

AviFile ReadAvi(Span file)
{
    if (Code(file, 0) != "RIFF" || Code(file, 8) != "AVI ") Fail("it begins otherwise");

    AviFile avi;
    bool movi = false;
    for (const Item& item : Items(file.subspan(12)))
    {
        const std::string list = item.code == "LIST" ? Code(item.data, 0) : "";
        if (list == "hdrl")
        {
            for (const Item& part : Items(item.data.subspan(4)))
            {
                if (part.code == "avih") avi.totalFrames = Number(part.data, 16);
                if (part.code == "LIST") avi.streams.push_back(ReadStream(part.data.subspan(4)));
            }
        }
        else if (list == "movi")
        {
            movi = true;
            for (const Item& chunk : Items(item.data.subspan(4)))
            {
                avi.chunks.push_back({chunk.code,
                                      12 + item.at + 12 + chunk.at,
                                      {chunk.data.begin(), chunk.data.end()}});
            }
        }
        else if (movi)
        {
            avi.rest.push_back(item.code);
        }
    }
    return avi;
}

}  // namespace Readers
