// Records a file of JPEG pictures into an MP4 file, with the header for C++20.
//
//     record_pictures 320 240 12 camera.mjpeg camera.mp4

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

void Record(uint32_t width, uint32_t height, uint32_t rate, const char* input, const char* output)
{
    std::ifstream file(input, std::ios::binary);
    const std::vector<unsigned char> stream{std::istreambuf_iterator<char>(file), {}};
    constexpr std::array<unsigned char, 3> kStartOfImage = {0xFF, 0xD8, 0xFF};
    const auto next_picture = [&](auto from)
    { return std::search(from, stream.end(), kStartOfImage.begin(), kStartOfImage.end()); };

    FileSink sink(output, SG_STREAM_TYPE_MP4);
    Packager mp4(SG_STREAM_TYPE_MP4, std::ref(sink));
    mp4.Header({.video = {}, .audio = {}, .pre_header_len = 64 * 1024, .struct_size = 0});
    for (auto at = next_picture(stream.begin()); at != stream.end();)
    {
        const auto end = next_picture(at + 1);
        mp4.Input({at, end},
                  VideoFrame(SG_ENCODE_VIDEO_JPEG, SG_FRAME_SUB_TYPE_I, width, height, rate));
        at = end;
    }
    mp4.Tailer();
    sink.Finish();  // tells every write that failed
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
        std::cerr << "usage: record_pictures WIDTH HEIGHT PER_SECOND INPUT.mjpeg OUTPUT.mp4\n";
        return 2;
    }
    try
    {
        Record(Number(argv[1]), Number(argv[2]), Number(argv[3]), argv[4], argv[5]);
    }
    catch (const std::exception& error)
    {
        std::cerr << "record_pictures: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
