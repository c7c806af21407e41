#include "support/Components.h"

#include <stdexcept>

namespace Support
{

using namespace Orbel::Wrapton;

namespace
{

template <class Interface>
Interface* Make(const char* clsid, const std::string& type)
{
    initWraptonComponentLibrary();
    IComponentFactory* const factory = IComponentFactory::find(clsid);
    if (factory == nullptr) throw std::runtime_error("no factory");
    auto* const component = dynamic_cast<Interface*>(factory->create(type));
    if (component == nullptr) throw std::runtime_error("no component");
    return component;
}

/// The component's number of an encoding.
long EncodeTypeOf(const Frame& frame)
{
    if (frame.type == SG_FRAME_TYPE_VIDEO)
    {
        switch (frame.encode)
        {
            case SG_ENCODE_VIDEO_MPEG4:
                return encodeTypeMpeg4;
            case SG_ENCODE_VIDEO_HI_H264:
                return encodeTypeH264;
            case SG_ENCODE_VIDEO_JPEG:
                return encodeTypeJpeg;
            default:
                return encodeTypeUnknown;
        }
    }
    switch (frame.encode)
    {
        case SG_ENCODE_AUDIO_PCM16:
            return encodeTypePcm16;
        case SG_ENCODE_AUDIO_G711A:
            return encodeTypeG711a;
        case SG_ENCODE_AUDIO_AAC:
            return encodeTypeAac;
        case SG_ENCODE_AUDIO_MP2:
            return encodeTypeMp2;
        default:
            return encodeTypeUnknown;
    }
}

long SubtypeOf(uint32_t subType)
{
    switch (subType)
    {
        case SG_FRAME_SUB_TYPE_I:
            return frameSubtypeIFrame;
        case SG_FRAME_SUB_TYPE_P:
            return frameSubtypePFrame;
        case SG_FRAME_SUB_TYPE_B:
            return frameSubtypeBFrame;
        case SG_FRAME_SUB_TYPE_JPEG_FRAME:
            return frameSubtypeJpegFrame;
        default:
            return frameSubtypeUnknown;
    }
}

}  // namespace

Stream MakeStream(const std::string& type)
{
    return Stream(Make<IWrapton>(kWraptonClsid, type));
}

File MakeFile(const std::string& type)
{
    return File(Make<IFilePackage>(kFilePackageClsid, type));
}

FrameAttributes AttributesOf(const Frame& frame)
{
    constexpr char kTypes[] = {'?', 'V', 'A', 'X'};
    FrameAttributes attrs = {{"frametype", kTypes[frame.type & 3]},
                             {"framesubtype", SubtypeOf(frame.subType)},
                             {"encodetype", EncodeTypeOf(frame)},
                             {"timestamp", frame.time}};
    if (frame.type == SG_FRAME_TYPE_VIDEO)
    {
        attrs["width"] = frame.width;
        attrs["height"] = frame.height;
        attrs["rate"] = frame.rate;
    }
    else
    {
        attrs["samplespersec"] = frame.sampleRate;
        attrs["bitspersample"] = frame.bits;
        attrs["channels"] = frame.channels;
    }
    return attrs;
}

bool InputEx(IWrapton& stream, const Frame& frame, PacketBuffer& packet)
{
    return WithExactBytes(frame,
                          [&](const void* data, unsigned int len, const FrameAttributes& attrs)
                          { return stream.inputFrameEx(data, len, attrs, packet); });
}

Bytes Packet(IWrapton& stream)
{
    SharedPtr<IWraptonData> block;
    EXPECT_TRUE(stream.getPacket(block));
    return block != nullptr ? BytesOf(*block) : Bytes();
}

Bytes BytesOf(const IWraptonData& data)
{
    return {data.getBuffer(), data.getBuffer() + data.getLen()};
}

Bytes BytesOf(const PacketBuffer& packet)
{
    return {packet.Data(), packet.Data() + packet.Size()};
}

}  // namespace Support
