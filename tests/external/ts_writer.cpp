// Writes a transport stream of sample streams with the packager's class, for readers outside.
//
//     ts_writer VIDEO AUDIO|- OUTPUT
//
// VIDEO ends in .h264 or .m4v, AUDIO in .mp2 or .aac; two frames of sound follow each picture.
#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "support/Frames.h"
#include "support/Streams.h"
#include "tspacket/TsPacket.h"

namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

std::vector<Frame> Pictures(const std::string& path)
{
    const Bytes stream = ReadFile(path);
    std::vector<Frame> frames;
    if (path.ends_with(".h264"))
    {
        for (const Bytes& unit : AccessUnits(stream))
        {
            frames.push_back(IsIdr(unit) ? H264I(unit) : H264P(unit));
        }
        return frames;
    }
    for (const Bytes& picture : Mpeg4Pictures(stream))
    {
        frames.push_back(IsMpeg4Intra(picture) ? Mpeg4I(picture) : Mpeg4P(picture));
    }
    return frames;
}

std::vector<Frame> Sounds(const std::string& path)
{
    std::vector<Frame> frames;
    if (path == "-") return frames;
    const bool aac = path.ends_with(".aac");
    const Bytes stream = ReadFile(path);
    for (const Bytes& bytes : aac ? AdtsFrames(stream) : Layer2Frames(stream))
    {
        frames.push_back(aac ? Aac(bytes) : Mp2(bytes));
    }
    return frames;
}

class Writer
{
public:
    explicit Writer(const std::string& path) : m_file(path, std::ios::binary) {}

    void Write(Frame frame)
    {
        SGFrameInfo record = RecordOf(frame);
        record.frame_pointer = frame.bytes.data();
        m_package.InputData(&record, m_packet);
        const Bytes packets(m_packet.Data(), m_packet.Data() + m_packet.Size());
        std::copy(packets.begin(), packets.end(), std::ostreambuf_iterator<char>(m_file));
        if (packets.empty() || !m_file) throw std::runtime_error("a frame was not written");
    }

private:
    CTsPacket m_package{nullptr};
    PacketBuffer m_packet;
    std::ofstream m_file;
};

void Run(const std::string& video, const std::string& audio, const std::string& output)
{
    const std::vector<Frame> sounds = Sounds(audio);
    Writer writer(output);
    std::size_t sound = 0;
    for (const Frame& picture : Pictures(video))
    {
        writer.Write(picture);
        for (int i = 0; i < 2 && sound < sounds.size(); ++i)
        {
            writer.Write(sounds[sound++]);
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    try
    {
        if (argc != 4) throw std::runtime_error("ts_writer VIDEO AUDIO|- OUTPUT");
        Run(argv[1], argv[2], argv[3]);
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
