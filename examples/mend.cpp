// Records JPEG pictures into an MP4 file as a machine that loses power would, and mends the file
// with the copy of its index that was kept.
//
//     mend 320 240 12 camera.mjpeg camera.mp4

#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>
#include <wrapton/wrapton.hpp>

namespace
{

using namespace Orbel::Wrapton;

/// What is kept beside a recording, in a file of its own for example.
struct Kept
{
    int64_t end = 0;                   ///< of the media data that the index knows
    std::vector<unsigned char> index;  ///< SG_GetBackup()
    int64_t data_header = 0;           ///< where the header of the media data stands
};

/// Records, keeps a copy after every picture but the last, and stops without a tailer.
Kept RecordUntilThePowerIsGone(const std::vector<unsigned char>& stream,
                               const SGFrameInfo& attributes,
                               const char* output)
{
    constexpr std::array<unsigned char, 3> kStartOfImage = {0xFF, 0xD8, 0xFF};
    const auto next_picture = [&](auto from)
    { return std::search(from, stream.end(), kStartOfImage.begin(), kStartOfImage.end()); };

    Kept kept;
    bool has_frames = false;
    FileSink sink(output, SG_STREAM_TYPE_MP4);
    Packager mp4(SG_STREAM_TYPE_MP4,
                 [&](const Block& block)
                 {
                     // What comes ahead of the frames ends with the header of the media data.
                     if (!has_frames) kept.data_header = block.offset + std::ssize(block.bytes) - 8;
                     return sink(block);
                 });
    mp4.Header(SGHeaderInfo{});
    has_frames = true;
    for (auto at = next_picture(stream.begin()); at != stream.end();)
    {
        if (const auto backup = mp4.Backup())
            kept = {backup->offset, {backup->bytes.begin(), backup->bytes.end()}, kept.data_header};
        const auto end = next_picture(at + 1);
        mp4.Input({at, end}, attributes);
        at = end;
    }
    return kept;
}

/// Puts the index behind the data that it knows, and says how long the data is.
void Mend(const Kept& kept, const char* name)
{
    std::fstream file(name, std::ios::in | std::ios::out | std::ios::binary);
    const auto length = static_cast<uint32_t>(kept.end - kept.data_header);
    const std::array<char, 4> size = {static_cast<char>(length >> 24),
                                      static_cast<char>(length >> 16),
                                      static_cast<char>(length >> 8),
                                      static_cast<char>(length)};
    file.seekp(kept.data_header);
    file.write(size.data(), size.size());
    file.seekp(kept.end);
    file.write(reinterpret_cast<const char*>(kept.index.data()), std::ssize(kept.index));
    file.close();
    std::filesystem::resize_file(name, static_cast<uint64_t>(kept.end) + kept.index.size());
}

uint32_t Number(const char* text)
{
    return static_cast<uint32_t>(std::strtoul(text, nullptr, 10));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 6)
    {
        std::cerr << "usage: mend WIDTH HEIGHT PER_SECOND INPUT.mjpeg OUTPUT.mp4\n";
        return 2;
    }
    try
    {
        std::ifstream file(argv[4], std::ios::binary);
        const std::vector<unsigned char> stream{std::istreambuf_iterator<char>(file), {}};
        const SGFrameInfo attributes = VideoFrame(SG_ENCODE_VIDEO_JPEG,
                                                  SG_FRAME_SUB_TYPE_I,
                                                  Number(argv[1]),
                                                  Number(argv[2]),
                                                  Number(argv[3]));
        Mend(RecordUntilThePowerIsGone(stream, attributes, argv[5]), argv[5]);
    }
    catch (const std::exception& error)
    {
        std::cerr << "mend: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
