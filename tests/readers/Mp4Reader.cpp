#include "readers/Mp4Reader.h"

#include <algorithm>

namespace Readers
{
namespace
{

using ByteSpan = std::span<const unsigned char>;

/// Takes fields from the front of one box and never leaves it.
class Fields
{
public:
    Fields(ByteSpan file, const Mp4Box& box)
        : m_rest(file.subspan(box.Payload(), box.size - box.header)), m_name(box.type)
    {
    }
    Fields(ByteSpan bytes, std::string name) : m_rest(bytes), m_name(std::move(name)) {}

    ByteSpan Take(std::size_t count)
    {
        if (count > m_rest.size())
        {
            throw Mp4Error(m_name + " ends inside a field");
        }
        const ByteSpan taken = m_rest.first(count);
        m_rest = m_rest.subspan(count);
        return taken;
    }
    void Skip(std::size_t count) { Take(count); }
    uint64_t Number(std::size_t width)
    {
        uint64_t value = 0;
        for (const unsigned char byte : Take(width))
        {
            value = value << 8 | byte;
        }
        return value;
    }
    uint32_t U8() { return static_cast<uint32_t>(Number(1)); }
    uint32_t U16() { return static_cast<uint32_t>(Number(2)); }
    uint32_t U32() { return static_cast<uint32_t>(Number(4)); }
    std::string FourCC()
    {
        const ByteSpan taken = Take(4);
        return {taken.begin(), taken.end()};
    }
    std::vector<unsigned char> Copy(std::size_t count)
    {
        const ByteSpan taken = Take(count);
        return {taken.begin(), taken.end()};
    }
    void End() const
    {
        if (!m_rest.empty())
        {
            throw Mp4Error(m_name + " has bytes behind its last field");
        }
    }
    [[nodiscard]] std::size_t Left() const { return m_rest.size(); }

private:
    ByteSpan m_rest;
    std::string m_name;
};

const Mp4Box& Need(const Mp4Box& parent, std::string_view path)
{
    const Mp4Box* const box = FindBox(parent.children, path);
    if (box == nullptr)
    {
        throw Mp4Error(parent.type + " has no " + std::string(path));
    }
    return *box;
}

/// Version 0 full boxes only: the files in question hold no other.
uint32_t FullBoxFlags(Fields& fields)
{
    const uint32_t word = fields.U32();
    if (word >> 24 != 0)
    {
        throw Mp4Error("a full box has a version other than 0");
    }
    return word & 0xFFFFFF;
}

Mp4Avc ReadAvcC(ByteSpan file, const Mp4Box& box)
{
    Fields fields(file, box);
    Mp4Avc avc;
    if (fields.U8() != 1)
    {
        throw Mp4Error("avcC has a configurationVersion other than 1");
    }
    avc.profile = fields.U8();
    avc.compatibility = fields.U8();
    avc.level = fields.U8();
    avc.lengthSize = (fields.U8() & 3) + 1;
    const uint32_t spsCount = fields.U8() & 31;
    // An empty record still carries both length fields.
    for (uint32_t i = 0; i < std::max(spsCount, 1u); ++i)
    {
        avc.sps.push_back(fields.Copy(fields.U16()));
    }
    avc.sps.resize(spsCount);
    const uint32_t ppsCount = fields.U8();
    for (uint32_t i = 0; i < std::max(ppsCount, 1u); ++i)
    {
        avc.pps.push_back(fields.Copy(fields.U16()));
    }
    avc.pps.resize(ppsCount);
    fields.End();
    return avc;
}

/// ISO/IEC 14496-1 8.3.3: groups of 7 bits, the highest first, a top bit on all but the last.
uint32_t ExpandableSize(Fields& fields)
{
    uint32_t size = 0;
    for (int i = 0; i < 4; ++i)
    {
        const uint32_t byte = fields.U8();
        size = size << 7 | (byte & 0x7F);
        if ((byte & 0x80) == 0)
        {
            return size;
        }
    }
    throw Mp4Error("a descriptor length has more than 4 bytes");
}

constexpr uint32_t kEsDescriptor = 3;
constexpr uint32_t kDecoderConfig = 4;
constexpr uint32_t kSpecificInfo = 5;
constexpr uint32_t kSlConfig = 6;

Fields Descriptor(Fields& fields, uint32_t tag)
{
    const uint32_t found = fields.U8();
    if (found != tag)
    {
        throw Mp4Error("descriptor " + std::to_string(found) + " where " + std::to_string(tag) +
                       " is due");
    }
    const uint32_t size = ExpandableSize(fields);
    return {fields.Take(size), "descriptor " + std::to_string(tag)};
}

Mp4Esds ReadEsds(ByteSpan file, const Mp4Box& box)
{
    Fields fields(file, box);
    FullBoxFlags(fields);
    Fields es = Descriptor(fields, kEsDescriptor);
    fields.End();
    Mp4Esds esds;
    esds.id = es.U16();
    es.Skip(1);  // stream priority, no optional fields
    Fields config = Descriptor(es, kDecoderConfig);
    esds.objectType = config.U8();
    esds.streamType = config.U8();
    config.Skip(11);  // buffer size, maximum and average bit rate
    if (config.Left() != 0)
    {
        Fields info = Descriptor(config, kSpecificInfo);
        esds.specificInfo = info.Copy(info.Left());
        config.End();
    }
    Fields sl = Descriptor(es, kSlConfig);
    sl.Skip(1);
    sl.End();
    es.End();
    return esds;
}

void ReadSampleEntry(ByteSpan file, const Mp4Box& stsd, Mp4Track& track)
{
    Fields fields(file, stsd);
    FullBoxFlags(fields);
    if (fields.U32() != 1 || stsd.children.size() != 1)
    {
        throw Mp4Error("stsd has not one entry");
    }
    const Mp4Box& entry = stsd.children.front();
    track.entry = entry.type;
    if (entry.type == "mp4a")
    {
        Fields audio(file, entry);
        audio.Skip(16);  // reserved, data reference index, version, revision, vendor
        track.channels = audio.U16();
        track.sampleBits = audio.U16();
        audio.Skip(4);  // compression id, packet size
        track.sampleRate = audio.U32() >> 16;
    }
    if (const Mp4Box* const avcC = FindBox(entry.children, "avcC"))
    {
        track.avc = ReadAvcC(file, *avcC);
    }
    for (const char* const path : {"esds", "wave/esds"})
    {
        if (const Mp4Box* const esds = FindBox(entry.children, path))
        {
            track.esds = ReadEsds(file, *esds);
        }
    }
}

/// The rows of a table that fills the rest of its box.
uint32_t RowCount(Fields& fields, std::size_t width, const char* table)
{
    const uint32_t count = fields.U32();
    if (fields.Left() != uint64_t{count} * width)
    {
        throw Mp4Error(std::string(table) + " has not as many rows as it says");
    }
    return count;
}

void ReadSizes(ByteSpan file, const Mp4Box& stbl, std::vector<Mp4Sample>& samples)
{
    Fields fields(file, Need(stbl, "stsz"));
    FullBoxFlags(fields);
    if (fields.U32() != 0)
    {
        throw Mp4Error("stsz has one size for all samples");
    }
    samples.resize(RowCount(fields, 4, "stsz"));
    for (Mp4Sample& sample : samples)
    {
        sample.size = fields.U32();
    }
}

void ReadDurations(ByteSpan file, const Mp4Box& stbl, std::vector<Mp4Sample>& samples)
{
    Fields fields(file, Need(stbl, "stts"));
    FullBoxFlags(fields);
    std::size_t at = 0;
    for (uint32_t row = RowCount(fields, 8, "stts"); row != 0; --row)
    {
        const uint32_t count = fields.U32();
        const uint32_t duration = fields.U32();
        if (count > samples.size() - at)
        {
            throw Mp4Error("stts has more samples than stsz");
        }
        for (uint32_t i = 0; i < count; ++i)
        {
            samples[at++].duration = duration;
        }
    }
    if (at != samples.size())
    {
        throw Mp4Error("stts has fewer samples than stsz");
    }
}

void ReadSync(ByteSpan file, const Mp4Box& stbl, std::vector<Mp4Sample>& samples)
{
    const Mp4Box* const stss = FindBox(stbl.children, "stss");
    if (stss == nullptr)
    {
        return;
    }
    for (Mp4Sample& sample : samples)
    {
        sample.sync = false;
    }
    Fields fields(file, *stss);
    FullBoxFlags(fields);
    uint32_t last = 0;
    for (uint32_t row = RowCount(fields, 4, "stss"); row != 0; --row)
    {
        const uint32_t number = fields.U32();
        if (number <= last || number > samples.size())
        {
            throw Mp4Error("stss names a sample that is not next");
        }
        samples[number - 1].sync = true;
        last = number;
    }
}

void ReadOffsets(ByteSpan file, const Mp4Box& stbl, std::vector<Mp4Sample>& samples)
{
    Fields chunks(file, Need(stbl, "stsc"));
    FullBoxFlags(chunks);
    if (RowCount(chunks, 12, "stsc") != 1 || chunks.U32() != 1 || chunks.U32() != 1 ||
        chunks.U32() != 1)
    {
        throw Mp4Error("stsc does not say one sample in each chunk");
    }
    const Mp4Box* const co64 = FindBox(stbl.children, "co64");
    const std::size_t width = co64 != nullptr ? 8 : 4;
    Fields fields(file, co64 != nullptr ? *co64 : Need(stbl, "stco"));
    FullBoxFlags(fields);
    if (RowCount(fields, width, "the chunk offset table") != samples.size())
    {
        throw Mp4Error("there are not as many chunks as samples");
    }
    for (Mp4Sample& sample : samples)
    {
        sample.offset = fields.Number(width);
    }
}

bool LiesInMediaData(const std::vector<Mp4Box>& boxes, const Mp4Sample& sample)
{
    return std::any_of(boxes.begin(),
                       boxes.end(),
                       [&sample](const Mp4Box& box)
                       {
                           return box.type == "mdat" && sample.offset >= box.Payload() &&
                                  sample.offset <= box.End() &&
                                  sample.size <= box.End() - sample.offset;
                       });
}

Mp4Track ReadTrack(ByteSpan file, const Mp4Box& trak)
{
    Mp4Track track;
    Fields tkhd(file, Need(trak, "tkhd"));
    FullBoxFlags(tkhd);
    tkhd.Skip(8);  // times
    track.id = tkhd.U32();
    tkhd.Skip(4);
    track.duration = tkhd.U32();
    tkhd.Skip(52);  // reserved, layer, group, volume, matrix
    track.width = tkhd.U32() >> 16;
    track.height = tkhd.U32() >> 16;
    tkhd.End();

    Fields mdhd(file, Need(trak, "mdia/mdhd"));
    FullBoxFlags(mdhd);
    mdhd.Skip(8);
    track.timescale = mdhd.U32();
    track.mediaDuration = mdhd.U32();
    mdhd.Skip(4);  // language, quality
    mdhd.End();

    Fields hdlr(file, Need(trak, "mdia/hdlr"));
    FullBoxFlags(hdlr);
    hdlr.Skip(4);
    track.handler = hdlr.FourCC();
    Need(trak, track.handler == "vide" ? "mdia/minf/vmhd" : "mdia/minf/smhd");
    Need(trak, "mdia/minf/dinf/dref/url ");

    const Mp4Box& stbl = Need(trak, "mdia/minf/stbl");
    ReadSampleEntry(file, Need(stbl, "stsd"), track);
    ReadSizes(file, stbl, track.samples);
    ReadDurations(file, stbl, track.samples);
    ReadSync(file, stbl, track.samples);
    ReadOffsets(file, stbl, track.samples);
    return track;
}

}  // namespace

Mp4Movie ReadMp4(ByteSpan file)
{
    Mp4Movie movie;
    movie.boxes = ReadBoxes(file);
    const Mp4Box* const ftyp = FindBox(movie.boxes, "ftyp");
    const Mp4Box* const moov = FindBox(movie.boxes, "moov");
    if (ftyp == nullptr || ftyp->offset != 0 || moov == nullptr)
    {
        throw Mp4Error("the file does not begin with ftyp or has no moov");
    }
    movie.brand = Fields(file, *ftyp).FourCC();

    Fields mvhd(file, Need(*moov, "mvhd"));
    FullBoxFlags(mvhd);
    mvhd.Skip(8);
    movie.timescale = mvhd.U32();
    movie.duration = mvhd.U32();
    mvhd.Skip(76);  // rate, volume, reserved, matrix, pre-defined
    movie.nextTrack = mvhd.U32();
    mvhd.End();

    for (const Mp4Box& box : moov->children)
    {
        if (box.type != "trak")
        {
            continue;
        }
        Mp4Track track = ReadTrack(file, box);
        for (const Mp4Sample& sample : track.samples)
        {
            if (!LiesInMediaData(movie.boxes, sample))
            {
                throw Mp4Error("a sample of track " + std::to_string(track.id) +
                               " lies outside the media data");
            }
        }
        movie.tracks.push_back(std::move(track));
    }
    return movie;
}

}  // namespace Readers
