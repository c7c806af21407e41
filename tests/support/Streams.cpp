#include "support/Streams.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace Support
{
namespace
{

bool IsStartCode(const Bytes& bytes, std::size_t at)
{
    return at + 3 < bytes.size() && bytes[at] == 0 && bytes[at + 1] == 0 && bytes[at + 2] == 1;
}

/// Positions of 00 00 01.
std::vector<std::size_t> StartCodes(const Bytes& bytes)
{
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i + 3 < bytes.size(); ++i)
    {
        if (IsStartCode(bytes, i))
        {
            places.push_back(i);
        }
    }
    return places;
}

Bytes Between(const Bytes& bytes, std::size_t from, std::size_t to)
{
    return Slice(bytes, from, to - from);
}

constexpr unsigned kNalIdr = 5;
constexpr unsigned kNalSei = 6;
constexpr unsigned kNalDelimiter = 9;

bool IsSlice(unsigned type)
{
    return type >= 1 && type <= kNalIdr;
}

/// A unit that can only stand ahead of the first slice of a picture.
bool OpensAccessUnit(unsigned type)
{
    return type >= kNalSei && type <= kNalDelimiter;
}

/// ISO/IEC 11172-3 2.4.2.3 and 13818-3: layer II bit rates in kbit/s, MPEG-1 and the low rates.
constexpr std::array<std::array<unsigned, 16>, 2> kLayer2Rates = {
    {{0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}}};
constexpr std::array<unsigned, 3> kMpeg1SampleRates = {44100, 48000, 32000};

std::size_t Layer2Length(const Bytes& stream, std::size_t at)
{
    const unsigned second = stream.at(at + 1);
    const unsigned third = stream.at(at + 2);
    const bool sync = stream[at] == 0xFF && (second & 0xF0) == 0xF0 && (second & 0x06) == 0x04;
    const bool low = (second & 0x08) == 0;
    const unsigned rate = kLayer2Rates[low ? 1 : 0][third >> 4];
    const unsigned index = (third >> 2) & 3;
    if (!sync || rate == 0 || index == 3)
    {
        throw std::runtime_error("no layer II header at " + std::to_string(at));
    }
    const unsigned hertz = kMpeg1SampleRates[index] / (low ? 2 : 1);
    return 144000 * rate / hertz + ((third >> 1) & 1);
}

}  // namespace

Bytes Media(const std::string& name)
{
    std::string path = WRAPTON_TEST_MEDIA "/";
    path += name;
    return ReadFile(path);
}

std::vector<Bytes> NalUnits(const Bytes& annexB)
{
    std::vector<Bytes> units;
    const std::vector<std::size_t> codes = StartCodes(annexB);
    for (std::size_t i = 0; i < codes.size(); ++i)
    {
        std::size_t end = i + 1 < codes.size() ? codes[i + 1] : annexB.size();
        while (i + 1 < codes.size() && end > codes[i] + 3 && annexB[end - 1] == 0)
        {
            --end;
        }
        units.push_back(Between(annexB, codes[i] + 3, end));
    }
    return units;
}

std::vector<Bytes> AccessUnits(const Bytes& annexB)
{
    std::vector<std::size_t> cuts;
    bool pictureSeen = true;  // so that the first unit of the stream opens an access unit
    for (const std::size_t code : StartCodes(annexB))
    {
        const unsigned type = annexB[code + 3] & 31u;
        // A slice whose first_mb_in_slice is 0 begins with a one bit behind the header byte.
        const bool firstSlice =
            IsSlice(type) && code + 4 < annexB.size() && annexB[code + 4] >= 0x80;
        if (pictureSeen && (OpensAccessUnit(type) || firstSlice))
        {
            const bool longCode = code > 0 && annexB[code - 1] == 0;
            cuts.push_back(longCode ? code - 1 : code);
            pictureSeen = false;
        }
        pictureSeen = pictureSeen || IsSlice(type);
    }
    cuts.push_back(annexB.size());
    std::vector<Bytes> units;
    for (std::size_t i = 0; i + 1 < cuts.size(); ++i)
    {
        units.push_back(Between(annexB, cuts[i], cuts[i + 1]));
    }
    return units;
}

bool IsIdr(const Bytes& accessUnit)
{
    const std::vector<Bytes> units = NalUnits(accessUnit);
    return std::any_of(units.begin(),
                       units.end(),
                       [](const Bytes& unit) { return (unit.at(0) & 31u) == kNalIdr; });
}

std::vector<Bytes> AdtsFrames(const Bytes& stream)
{
    std::vector<Bytes> frames;
    std::size_t at = 0;
    while (at < stream.size())
    {
        if (stream[at] != 0xFF || (stream.at(at + 1) & 0xF6) != 0xF0)
        {
            throw std::runtime_error("no ADTS header at " + std::to_string(at));
        }
        const std::size_t length = (stream.at(at + 3) & 3u) << 11 |
                                   static_cast<unsigned>(stream.at(at + 4)) << 3 |
                                   stream.at(at + 5) >> 5;
        frames.push_back(Slice(stream, at, length));
        at += length;
    }
    return frames;
}

std::vector<Bytes> Layer2Frames(const Bytes& stream)
{
    std::vector<Bytes> frames;
    std::size_t at = 0;
    while (at < stream.size())
    {
        const std::size_t length = Layer2Length(stream, at);
        frames.push_back(Slice(stream, at, length));
        at += length;
    }
    return frames;
}

std::vector<Bytes> JpegPictures(const Bytes& stream)
{
    std::vector<Bytes> pictures;
    std::size_t from = 0;
    for (std::size_t i = 0; i + 1 < stream.size(); ++i)
    {
        // Inside a scan FF is followed by 00 or by a restart marker, so this is the end of image.
        if (stream[i] == 0xFF && stream[i + 1] == 0xD9)
        {
            pictures.push_back(Between(stream, from, i + 2));
            from = i + 2;
        }
    }
    return pictures;
}

std::vector<Bytes> Mpeg4Pictures(const Bytes& stream)
{
    constexpr unsigned kVop = 0xB6;
    std::vector<Bytes> pictures;
    std::size_t from = 0;
    bool pictureSeen = false;
    for (const std::size_t code : StartCodes(stream))
    {
        if (pictureSeen)
        {
            pictures.push_back(Between(stream, from, code));
            from = code;
            pictureSeen = false;
        }
        pictureSeen = stream[code + 3] == kVop;
    }
    if (pictureSeen)
    {
        pictures.push_back(Between(stream, from, stream.size()));
    }
    return pictures;
}

bool IsMpeg4Intra(const Bytes& picture)
{
    static constexpr std::array<unsigned char, 4> kVopStart = {0, 0, 1, 0xB6};
    const auto vop =
        std::search(picture.begin(), picture.end(), kVopStart.begin(), kVopStart.end());
    return picture.end() - vop > 4 && (vop[4] >> 6) == 0;
}

}  // namespace Support
