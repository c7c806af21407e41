// Records a raw H.264 stream into a file; its type is the output's extension.
//
//     file 640 360 25 camera.h264 camera.3gp
#include <cstdlib>
#include <iostream>

#include <wrapton/IFilePackage.h>

#include "pictures.h"

using namespace Orbel::Wrapton;

int main(int argc, char** argv)
{
    const std::vector<Picture> pictures =
        argc == 6 ? read_pictures(argv[4]) : std::vector<Picture>();
    if (pictures.empty())
    {
        std::cerr << "usage: file WIDTH HEIGHT FRAMES_PER_SECOND INPUT.h264 OUTPUT.TYPE\n";
        return 2;
    }
    const std::string path = argv[5];

    initWraptonComponentLibrary();
    IComponentFactory* const factory = IComponentFactory::find(kFilePackageClsid);
    auto* const file =
        static_cast<IFilePackage*>(factory->create(path.substr(path.rfind('.') + 1)));

    FrameAttributes attributes = {{"frametype", 'V'},
                                  {"encodetype", encodeTypeH264},
                                  {"width", std::strtol(argv[1], nullptr, 10)},
                                  {"height", std::strtol(argv[2], nullptr, 10)},
                                  {"rate", std::strtol(argv[3], nullptr, 10)}};
    bool good = file != nullptr && file->open(path.c_str());
    for (const Picture& picture : pictures)
    {
        if (!good) break;
        attributes["framesubtype"] = picture.is_key ? frameSubtypeIFrame : frameSubtypePFrame;
        const auto size = static_cast<unsigned int>(picture.bytes.size());
        good = file->inputFrame(picture.bytes.data(), size, attributes);
    }
    if (good) setLastError(0);  // asks close() about the whole recording
    good = good && file->close() && getLastError() != kErrorWrite;
    if (file != nullptr) file->release();

    if (!good)
    {
        std::cerr << "file: " << path << " was not written (error " << getLastError() << ")\n";
        return 1;
    }
    return 0;
}
