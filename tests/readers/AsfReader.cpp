#include "readers/AsfReader.h"

#include <algorithm>
#include <array>
#include <map>

namespace Readers
{
namespace
{

using Span = std::span<const unsigned char>;

void Require(bool condition, const std::string& what)
{
    if (!condition)
    {
        throw AsfError(what);
    }
}

class Input
{
public:
    explicit Input(Span bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool AtEnd() const { return m_bytes.empty(); }
    [[nodiscard]] Span Rest() const { return m_bytes; }

    Span Take(uint64_t count)
    {
        Require(count <= m_bytes.size(), "the bytes end within a field");
        const Span taken = m_bytes.first(static_cast<std::size_t>(count));
        m_bytes = m_bytes.subspan(static_cast<std::size_t>(count));
        return taken;
    }

    uint64_t Number(std::size_t width)
    {
        const Span bytes = Take(width);
        uint64_t value = 0;
        for (std::size_t i = width; i-- > 0;)
        {
            value = value << 8 | bytes[i];
        }
        return value;
    }
    uint32_t U8() { return static_cast<uint32_t>(Number(1)); }
    uint32_t U16() { return static_cast<uint32_t>(Number(2)); }
    uint32_t U32() { return static_cast<uint32_t>(Number(4)); }
    uint64_t U64() { return Number(8); }

    /// The usual text form of an identifier.
    std::string Guid()
    {
        static constexpr std::array<int, 16> kOrder = {
            3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
        static constexpr const char* kDigits = "0123456789ABCDEF";
        const Span bytes = Take(16);
        std::string text;
        for (std::size_t i = 0; i < kOrder.size(); ++i)
        {
            if (i == 4 || i == 6 || i == 8 || i == 10)
            {
                text += '-';
            }
            const unsigned char byte = bytes[static_cast<std::size_t>(kOrder[i])];
            text += kDigits[byte >> 4];
            text += kDigits[byte & 15];
        }
        return text;
    }

    /// The content of the object that comes next.
    std::pair<std::string, Input> Object()
    {
        const std::string id = Guid();
        const uint64_t size = U64();
        Require(size >= 24, "object " + id + " is smaller than its own head");
        return {id, Input(Take(size - 24))};
    }

private:
    Span m_bytes;
};

constexpr const char* kHeader = "75B22630-668E-11CF-A6D9-00AA0062CE6C";
constexpr const char* kData = "75B22636-668E-11CF-A6D9-00AA0062CE6C";
constexpr const char* kIndex = "33000890-E5B1-11CF-89F4-00A0C90349CB";
constexpr const char* kFileProperties = "8CABDCA1-A947-11CF-8EE4-00C00C205365";
constexpr const char* kStreamProperties = "B7DC0791-A9B7-11CF-8EE6-00C00C205365";
constexpr const char* kExtension = "5FBF03B5-A92E-11CF-8EE3-00C00C205365";
constexpr const char* kVideo = "BC19EFC0-5B4D-11CF-A8FD-00805F5C442B";
constexpr const char* kAudio = "F8699E40-5B4D-11CF-A8FD-00805F5C442B";

struct Reading
{
    AsfFile file;
    std::string id;
    uint32_t packetLen = 0;
    uint64_t dataPackets = 0;
};

void ReadFileProperties(Input input, Reading& reading)
{
    reading.id = input.Guid();
    reading.file.fileSize = input.U64();
    input.U64();  // date
    reading.file.packets = input.U64();
    reading.file.duration = input.U64();
    Require(input.U64() == reading.file.duration, "play and send duration differ");
    input.U64();  // preroll
    reading.file.broadcast = (input.U32() & 1) != 0;
    reading.packetLen = input.U32();
    Require(input.U32() == reading.packetLen, "packet sizes differ");
    input.U32();  // maximum bit rate
    Require(input.AtEnd(), "file properties are too long");
}

void ReadExtension(Input input)
{
    input.Guid();  // reserved 1
    Require(input.U16() == 6, "reserved 2 of the header extension is not 6");
    Require(input.U32() == input.Rest().size(), "the data size of the header extension is wrong");
    while (!input.AtEnd())
    {
        input.Object();
    }
}

void ReadVideo(Input input, AsfStream& stream)
{
    stream.video = true;
    stream.width = input.U32();
    stream.height = input.U32();
    Require(input.U8() == 2, "reserved flags of the video data are not 2");
    Require(input.U16() == input.Rest().size(), "the format data size is wrong");
    Require(input.U32() == input.Rest().size() + 4, "biSize is wrong");
    Require(input.U32() == stream.width && input.U32() == stream.height, "sizes differ");
    Require(input.U16() == 1 && input.U16() == 24, "planes or bit count are wrong");
    const Span code = input.Take(4);
    stream.compression.assign(code.begin(), code.end());
    input.Take(20);
    stream.config.assign(input.Rest().begin(), input.Rest().end());
}

void ReadAudio(Input input, AsfStream& stream)
{
    stream.tag = input.U16();
    stream.channels = input.U16();
    stream.sampleRate = input.U32();
    const uint32_t byteRate = input.U32();
    input.U16();  // block align
    stream.bits = input.U16();
    Require(byteRate == uint64_t{stream.sampleRate} * stream.bits / 8, "the byte rate is wrong");
    Require(input.U16() == input.Rest().size(), "the extra size is wrong");
}

void ReadStream(Input input, Reading& reading)
{
    AsfStream stream;
    const std::string type = input.Guid();
    input.Guid();  // error correction
    input.U64();   // time offset
    const uint32_t specific = input.U32();
    const uint32_t correction = input.U32();
    stream.number = input.U16() & 0x7F;
    input.U32();  // reserved
    const Input data(input.Take(specific));
    input.Take(correction);
    Require(input.AtEnd(), "stream properties are too long");
    Require(type == kVideo || type == kAudio, "a stream of type " + type);
    type == kVideo ? ReadVideo(data, stream) : ReadAudio(data, stream);
    reading.file.streams.push_back(stream);
}

void ReadHeader(Input input, Reading& reading)
{
    const uint32_t children = input.U32();
    Require(input.U16() == 0x0201, "reserved bytes of the header are not 01 02");
    uint32_t found = 0;
    for (; !input.AtEnd(); ++found)
    {
        const auto [id, content] = input.Object();
        if (id == kFileProperties) ReadFileProperties(content, reading);
        if (id == kStreamProperties) ReadStream(content, reading);
        if (id == kExtension) ReadExtension(content);
    }
    Require(found == children, "the child count is wrong");
    Require(reading.packetLen != 0, "no file properties");
}

/// One packet with a single payload, 5.2.
void ReadPacket(Input input, uint32_t packet, std::map<uint32_t, AsfFrame>& open, AsfFile& file)
{
    Require(input.U8() == 0x82 && input.U16() == 0, "no error correction data of 2 bytes");
    Require(input.U8() == 0x90 && input.U8() == 0x5D, "other length or property types");
    const uint32_t padding = input.U16();
    const uint32_t sendTime = input.U32();
    Require(input.U16() == 0, "the duration is not 0");
    const uint32_t streamByte = input.U8();
    const uint32_t number = input.U8();
    const uint32_t offset = input.U32();
    Require(input.U8() == 8, "replicated data of another length");
    const uint32_t size = input.U32();
    const uint32_t time = input.U32();
    Require(time == sendTime, "send and presentation time differ");
    Require(padding <= input.Rest().size(), "more padding than packet");
    const Span payload = input.Take(input.Rest().size() - padding);
    Require(std::all_of(input.Rest().begin(), input.Rest().end(), [](auto b) { return b == 0; }),
            "the padding is not 0");

    AsfFrame& frame = open[streamByte & 0x7F];
    if (offset == 0)
    {
        Require(frame.bytes.empty(), "a frame begins within another");
        frame.stream = streamByte & 0x7F;
        frame.number = number;
        frame.time = time;
        frame.key = (streamByte & 0x80) != 0;
        frame.firstPacket = packet;
    }
    Require(offset == frame.bytes.size() && number == frame.number && time == frame.time,
            "a payload belongs to no frame");
    ++frame.packets;
    frame.bytes.insert(frame.bytes.end(), payload.begin(), payload.end());
    Require(frame.bytes.size() <= size, "a frame is longer than it says");
    if (frame.bytes.size() == size)
    {
        file.frames.push_back(frame);
        frame = AsfFrame();
    }
}

void ReadPackets(Input input, Reading& reading)
{
    std::map<uint32_t, AsfFrame> open;
    for (uint32_t packet = 0; !input.AtEnd(); ++packet)
    {
        ReadPacket(Input(input.Take(reading.packetLen)), packet, open, reading.file);
    }
    for (const auto& [stream, frame] : open)
    {
        Require(frame.bytes.empty(), "the last frame is cut off");
    }
}

void ReadIndex(Input input, Reading& reading)
{
    Require(input.Guid() == reading.id, "the index belongs to another file");
    Require(input.U64() == 10000000, "the index interval is not a second");
    input.U32();  // maximum packet count
    const uint32_t count = input.U32();
    Require(input.Rest().size() == uint64_t{count} * 6, "the index entry count is wrong");
    reading.file.hasIndex = true;
    while (!input.AtEnd())
    {
        const uint32_t number = input.U32();
        reading.file.index.emplace_back(number, input.U16());
    }
}

}  // namespace

AsfFile ReadAsf(std::span<const unsigned char> file)
{
    Reading reading;
    Input input(file);
    const auto [headerId, header] = input.Object();
    Require(headerId == kHeader, "no header object");
    ReadHeader(header, reading);

    Require(input.Guid() == kData, "no data object behind the header");
    const uint64_t size = input.U64();
    Require(input.Guid() == reading.id, "the data belongs to another file");
    const uint64_t packets = input.U64();
    Require(input.U16() == 0x0101, "the reserved field of the data is not 0x0101");
    if (reading.file.broadcast)
    {
        ReadPackets(input, reading);
        return reading.file;
    }
    Require(size == 50 + packets * reading.packetLen, "the data size is wrong");
    Require(packets == reading.file.packets, "packet counts differ");
    Require(reading.file.fileSize == file.size(), "the file size is wrong");
    ReadPackets(Input(input.Take(size - 50)), reading);
    while (!input.AtEnd())
    {
        const auto [id, content] = input.Object();
        Require(id == kIndex, "an object " + id + " behind the data");
        ReadIndex(content, reading);
    }
    return reading.file;
}

}  // namespace Readers
