// Records a raw H.264 stream as a machine that loses power would, and mends the file with the copy
// of its index that was kept.
//
//     mend record mp464 640 360 25 camera.h264 camera.mp4 camera.kept
//     mend repair camera.mp4 camera.kept

#include <wrapton/IFilePackage.h>
#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#include <wrapton/wrapton.hpp>

#include "pictures.h"

namespace
{

using namespace Orbel::Wrapton;

struct Type
{
    std::string_view name;
    SG_STREAM_TYPE type;
    int header_length;  ///< of the media data, the last bytes ahead of the first frame
    int size_length;    ///< how many bytes at its end tell the length of the media data
    int size_at;        ///< where they stand in it
};

// The header of the media data: a size of 4 bytes and a name, or 1, the name and a size of 8 bytes.
constexpr std::array kTypes = {Type{"mp4", SG_STREAM_TYPE_MP4, 8, 4, 0},
                               Type{"mov", SG_STREAM_TYPE_MOV, 8, 4, 0},
                               Type{"3gp", SG_STREAM_TYPE_3GP, 8, 4, 0},
                               Type{"mp464", SG_STREAM_TYPE_MP4_64, 16, 8, 8},
                               Type{"mov64", SG_STREAM_TYPE_MOV_64, 16, 8, 8},
                               Type{"mp4noseek", SG_STREAM_TYPE_MP4_NOSEEK, 0, 0, 0}};

const Type& TypeNamed(std::string_view name)
{
    for (const Type& type : kTypes)
        if (type.name == name) return type;
    throw std::invalid_argument("no type of that name has a copy of its index");
}

/// What is kept beside a recording, in a file of its own.
struct Kept
{
    int64_t data_header = 0;  ///< where the header of the media data stands
    int64_t size_at = 0;      ///< in that header
    int64_t size_length = 0;  ///< 0: every frame has a header of its own, which is right already
    int64_t end = 0;          ///< of the media data that the index knows
    std::vector<char> index;  ///< the block of SG_GetBackup()
};

/// Replaces the older copy at once, so that one of them is always whole.
void Keep(const Kept& kept, const std::string& name)
{
    {
        std::ofstream file(name + ".new", std::ios::binary);
        file << kept.data_header << ' ' << kept.size_at << ' ' << kept.size_length << ' '
             << kept.end << '\n';
        file.write(kept.index.data(), std::ssize(kept.index));
        if (!file.flush()) throw std::runtime_error("the copy cannot be kept");
    }
    std::filesystem::rename(name + ".new", name);
}

Kept ReadKept(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    Kept kept;
    file >> kept.data_header >> kept.size_at >> kept.size_length >> kept.end;
    if (!file || file.get() != '\n') throw std::runtime_error("no copy of an index");
    kept.index.assign(std::istreambuf_iterator<char>(file), {});
    return kept;
}

struct Shape
{
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t rate = 0;
};

/// A recording that knows its index at any time. What it emits goes to a file, block by block to
/// the disk, so that the media data is there ahead of the copy.
class Recording
{
public:
    Recording(const Type& type, const char* output)
        : m_sink(output, type.type, {.sync = Sync::kEachBlock, .spared = {}})
    {
        m_kept.size_at = type.size_at;
        m_kept.size_length = type.size_length;
        m_nHeaderLen = type.header_length;
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    virtual ~Recording() = default;

    virtual void Input(const Picture& picture, const Shape& shape) = 0;
    /// The index as it would be written now; nothing when there is none.
    virtual const Kept* Index() = 0;

protected:
    std::size_t Place(const Block& block)
    {
        // What comes ahead of the frames ends with the header of the media data.
        if (!m_bHasFrames)
            m_kept.data_header = block.offset + std::ssize(block.bytes) - m_nHeaderLen;
        return m_sink(block);
    }
    void FramesBegin() { m_bHasFrames = true; }
    Kept m_kept;

private:
    FileSink m_sink;
    int m_nHeaderLen = 0;
    bool m_bHasFrames = false;
};

/// By the eight functions.
class FlatRecording final : public Recording
{
public:
    FlatRecording(const Type& type, const char* output)
        : Recording(type, output),
          m_packager(type.type, [this](const Block& block) { return Place(block); })
    {
        m_packager.Header(SGHeaderInfo{});
        FramesBegin();
    }

    void Input(const Picture& picture, const Shape& shape) override
    {
        const auto kind = picture.is_key ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P;
        const auto* const bytes = reinterpret_cast<const unsigned char*>(picture.bytes.data());
        m_packager.Input(
            {bytes, picture.bytes.size()},
            VideoFrame(SG_ENCODE_VIDEO_HI_H264, kind, shape.width, shape.height, shape.rate));
    }

    const Kept* Index() override
    {
        const auto backup = m_packager.Backup();
        if (!backup) return nullptr;
        m_kept.end = backup->offset;
        m_kept.index.assign(backup->bytes.begin(), backup->bytes.end());
        return &m_kept;
    }

private:
    Packager m_packager;
};

/// By the file component, which alone makes 3GP.
class FileRecording final : public Recording
{
public:
    FileRecording(const Type& type, const char* output) : Recording(type, output)
    {
        initWraptonComponentLibrary();
        m_pFile.reset(static_cast<IFilePackage*>(
            IComponentFactory::find(kFilePackageClsid)->create(std::string(type.name))));
        m_pFile->open(
            [this](FrameAttributes& info, IWraptonData& data)
            {
                Place({.offset = info.at("fileoffset"),
                       .origin = static_cast<Origin>(info.at("offsettype")),
                       .bytes = {data.getBuffer(), data.getLen()}});
                return true;
            });
        FramesBegin();
    }

    void Input(const Picture& picture, const Shape& shape) override
    {
        m_pFile->inputFrame(
            picture.bytes.data(),
            static_cast<unsigned int>(picture.bytes.size()),
            {{"frametype", 'V'},
             {"framesubtype", picture.is_key ? frameSubtypeIFrame : frameSubtypePFrame},
             {"encodetype", encodeTypeH264},
             {"width", shape.width},
             {"height", shape.height},
             {"rate", shape.rate}});
    }

    const Kept* Index() override
    {
        SharedPtr<IWraptonData> backup;
        FrameAttributes info;
        if (!m_pFile->getbackup(backup, info)) return nullptr;
        m_kept.end = info.at("seekpos");
        m_kept.index.assign(backup->getBuffer(), backup->getBuffer() + backup->getLen());
        return &m_kept;
    }

private:
    struct Releaser
    {
        void operator()(IFilePackage* file) const { file->release(); }
    };
    std::unique_ptr<IFilePackage, Releaser> m_pFile;
};

/// Keeps a copy behind every key picture, and stops without a tailer.
void RecordUntilThePowerIsGone(const Type& type,
                               const Shape& shape,
                               const std::vector<Picture>& pictures,
                               const char* output,
                               const char* kept_name)
{
    std::unique_ptr<Recording> recording;
    if (type.type == SG_STREAM_TYPE_3GP)
        recording = std::make_unique<FileRecording>(type, output);
    else
        recording = std::make_unique<FlatRecording>(type, output);
    for (const Picture& picture : pictures)
    {
        recording->Input(picture, shape);
        const Kept* const kept = picture.is_key ? recording->Index() : nullptr;
        if (kept != nullptr) Keep(*kept, kept_name);
    }
}

/// Puts the index behind the data that it knows, and says how long the data is.
void Mend(const Kept& kept, const char* name)
{
    if (std::filesystem::file_size(name) < static_cast<uint64_t>(kept.end))
        throw std::runtime_error("less media data than the copy knows: an older one is needed");

    std::fstream file(name, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(kept.data_header + kept.size_at);
    for (int64_t byte = kept.size_length; byte > 0; --byte)
        file.put(static_cast<char>((kept.end - kept.data_header) >> 8 * (byte - 1)));
    file.seekp(kept.end);
    file.write(kept.index.data(), std::ssize(kept.index));
    file.close();
    if (!file) throw std::runtime_error("the file cannot be mended");
    std::filesystem::resize_file(name, static_cast<uint64_t>(kept.end) + kept.index.size());
}

uint32_t Number(const char* text)
{
    return static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string_view task = argc > 1 ? argv[1] : "";
    if (!(task == "record" && argc == 9) && !(task == "repair" && argc == 4))
    {
        std::cerr << "usage: mend record TYPE WIDTH HEIGHT PER_SECOND INPUT.h264 OUTPUT KEPT\n"
                     "       mend repair OUTPUT KEPT\n";
        return 2;
    }
    try
    {
        if (task == "record")
            RecordUntilThePowerIsGone(TypeNamed(argv[2]),
                                      {Number(argv[3]), Number(argv[4]), Number(argv[5])},
                                      read_pictures(argv[6]),
                                      argv[7],
                                      argv[8]);
        else
            Mend(ReadKept(argv[3]), argv[2]);
    }
    catch (const std::exception& error)
    {
        std::cerr << "mend: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
