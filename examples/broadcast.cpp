// Packages a raw H.264 stream as an MPEG-2 transport stream, picture by picture.
//
//     broadcast 25 camera.h264 camera.ts
#include <cstdlib>
#include <fstream>
#include <iostream>

#include <wrapton/IWrapton.h>

#include "pictures.h"

using namespace Orbel::Wrapton;

int main(int argc, char** argv)
{
    const std::vector<Picture> pictures =
        argc == 4 ? read_pictures(argv[2]) : std::vector<Picture>();
    if (pictures.empty())
    {
        std::cerr << "usage: broadcast FRAMES_PER_SECOND INPUT.h264 OUTPUT.ts\n";
        return 2;
    }

    initWraptonComponentLibrary();
    IComponentFactory* const factory = IComponentFactory::find(kWraptonClsid);
    auto* const stream = static_cast<IWrapton*>(factory->create("ts"));

    std::ofstream output(argv[3], std::ios::binary);
    FrameAttributes attributes = {{"frametype", 'V'},
                                  {"encodetype", encodeTypeH264},
                                  {"rate", std::strtol(argv[1], nullptr, 10)}};
    PacketBuffer packet(188);  // grows as needed
    bool good = stream != nullptr;
    for (const Picture& picture : pictures)
    {
        attributes["framesubtype"] = picture.is_key ? frameSubtypeIFrame : frameSubtypePFrame;
        const auto size = static_cast<unsigned int>(picture.bytes.size());
        good = good && stream->inputFrameEx(picture.bytes.data(), size, attributes, packet);
        if (!good) break;
        output.write(reinterpret_cast<const char*>(packet.Data()),
                     static_cast<std::streamsize>(packet.Size()));
    }
    if (stream != nullptr) stream->release();

    if (!good || !output.flush())
    {
        std::cerr << "broadcast: " << argv[3] << " was not written (error " << getLastError()
                  << ")\n";
        return 1;
    }
    return 0;
}
