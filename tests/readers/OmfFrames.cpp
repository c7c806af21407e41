#include "readers/OmfFrames.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Readers
{
namespace
{

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kHeader = 24;
constexpr std::size_t kTailer = 8;

void Require(bool holds, std::size_t at, const std::string& what)
{
    if (!holds)
    {
        throw std::runtime_error("frame at " + std::to_string(at) + ": " + what);
    }
}

uint32_t Number(const Bytes& bytes, std::size_t at, std::size_t width)
{
    uint32_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
    {
        value |= static_cast<uint32_t>(bytes.at(at + i)) << (8 * i);
    }
    return value;
}

bool HasText(const Bytes& bytes, std::size_t at, const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (bytes.at(at + i) != static_cast<unsigned char>(text[i]))
        {
            return false;
        }
    }
    return true;
}

/// Places in which a frame's extension headers stand, 0 for a tag that does not exist.
int PlaceOf(uint32_t tag)
{
    switch (tag)
    {
        case 0x80:
        case 0x82:
            return 1;
        case 0x81:
            return 2;
        case 0x83:
        case 0x8C:
            return 3;
        case 0x88:
            return 4;
        case 0x99:
            return 5;
        case 0x8B:
            return 6;
        case 0x92:
            return 7;
        default:
            return 0;
    }
}

std::size_t LengthOf(const Bytes& bytes, std::size_t at)
{
    switch (bytes.at(at))
    {
        case 0x80:
        case 0x81:
        case 0x83:
        case 0x8B:
            return 4;
        case 0x99:
            return (2u * bytes.at(at + 1) * bytes.at(at + 2) + 1) * 8 % 256;
        default:
            return 8;
    }
}

std::vector<OmfExHeader> ExHeaders(const Bytes& bytes, std::size_t begin, std::size_t end)
{
    std::vector<OmfExHeader> headers;
    int last = 0;
    std::size_t at = begin;
    while (at < end)
    {
        const int place = PlaceOf(bytes.at(at));
        Require(place > last, at, "an extension header that is unknown or out of order");
        last = place;
        const std::size_t length = LengthOf(bytes, at);
        Require(length <= end - at, at, "an extension header passes its frame's");
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        headers.emplace_back(from, from + static_cast<std::ptrdiff_t>(length));
        at += length;
    }
    return headers;
}

uint32_t CheckSum(const Bytes& payload)
{
    uint32_t sum = 0;
    for (std::size_t i = 0; i < payload.size(); ++i)
    {
        sum += static_cast<uint32_t>(payload[i]) << (8 * (i % 4));
    }
    return sum;
}

OmfFrame ReadFrame(const Bytes& bytes, std::size_t at)
{
    Require(HasText(bytes, at, "OMFR"), at, "no header tag");
    uint32_t sum = 0;
    for (std::size_t i = 0; i < kHeader - 1; ++i)
    {
        sum += bytes.at(at + i);
    }
    Require(sum % 256 == bytes.at(at + kHeader - 1), at, "checksum of the header");
    Require(bytes.at(at + 6) == 1, at, "channel");
    Require(bytes.at(at + 7) == 0, at, "sub number");

    OmfFrame frame;
    frame.offset = at;
    frame.type = bytes.at(at + 4);
    frame.subType = bytes.at(at + 5);
    frame.number = Number(bytes, at + 8, 4);
    frame.length = Number(bytes, at + 12, 4);
    frame.date = Number(bytes, at + 16, 4);
    frame.stamp = Number(bytes, at + 20, 2);
    const std::size_t exLength = bytes.at(at + 22);
    Require(frame.length >= kHeader + exLength + kTailer, at, "length");
    Require(frame.length <= bytes.size() - at, at, "the recording ends before the frame");

    const std::size_t payload = at + kHeader + exLength;
    const std::size_t tailer = at + frame.length - kTailer;
    frame.exHeaders = ExHeaders(bytes, at + kHeader, payload);
    frame.payload.assign(bytes.begin() + static_cast<std::ptrdiff_t>(payload),
                         bytes.begin() + static_cast<std::ptrdiff_t>(tailer));
    Require(Number(frame.Ex(0x88), 1, 4) == CheckSum(frame.payload), at, "data check");
    Require(frame.Ex(0x88).at(7) == 0, at, "type of the data check");
    Require(HasText(bytes, tailer, "omfr"), at, "no trailer tag");
    Require(Number(bytes, tailer + 4, 4) == frame.length, at, "length in the trailer");
    return frame;
}

}  // namespace

const OmfExHeader& OmfFrame::Ex(uint32_t tag) const
{
    const auto found = std::find_if(exHeaders.begin(),
                                    exHeaders.end(),
                                    [tag](const OmfExHeader& header) { return header[0] == tag; });
    if (found == exHeaders.end())
    {
        throw std::runtime_error("no extension header " + std::to_string(tag));
    }
    return *found;
}

std::vector<OmfFrame> ReadOmf(const std::vector<unsigned char>& recording)
{
    std::vector<OmfFrame> frames;
    std::size_t at = 0;
    while (at < recording.size())
    {
        frames.push_back(ReadFrame(recording, at));
        at += frames.back().length;
    }
    return frames;
}

}  // namespace Readers
