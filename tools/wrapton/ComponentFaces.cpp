#include "ComponentFaces.h"

#include <algorithm>
#include <string>
#include <utility>

#include <wrapton/IFilePackage.h>
#include <wrapton/IWrapton.h>

namespace Orbel::Wrapton::Command
{
namespace
{

struct Releaser
{
    void operator()(IComponentBase* component) const { component->release(); }
};

template <class Component>
using Owned = std::unique_ptr<Component, Releaser>;

/// Null when the library has no such components.
template <class Component>
Owned<Component> Create(const char* clsid, const Container& container)
{
    initWraptonComponentLibrary();
    IComponentFactory* const factory = IComponentFactory::find(clsid);
    if (factory == nullptr) return nullptr;
    IComponentBase* const made = factory->create(std::string(container.component));
    return Owned<Component>(static_cast<Component*>(made));
}

FrameSubtype SubtypeOf(uint32_t sub_type)
{
    switch (sub_type)
    {
        case SG_FRAME_SUB_TYPE_I:
            return frameSubtypeIFrame;
        case SG_FRAME_SUB_TYPE_P:
            return frameSubtypePFrame;
        case SG_FRAME_SUB_TYPE_B:
            return frameSubtypeBFrame;
        default:
            return frameSubtypeUnknown;
    }
}

FrameAttributes AttributesOf(const SGFrameInfo& frame)
{
    const bool is_video = frame.frame_type == SG_FRAME_TYPE_VIDEO;
    const auto* const codec =
        std::find_if(kCodecs.begin(),
                     kCodecs.end(),
                     [&](const CodecEntry& entry) { return entry.encode == frame.frame_encode; });
    return {{"frametype", is_video ? 'V' : 'A'},
            {"framesubtype", SubtypeOf(frame.frame_sub_type)},
            {"encodetype", codec != kCodecs.end() ? codec->component : encodeTypeUnknown},
            {"timestamp", frame.frame_time},
            {"width", frame.width},
            {"height", frame.heigth},
            {"rate", frame.frame_rate},
            {"deinterlace", frame.deinter_lace},
            {"samplespersec", frame.sample_rate},
            {"bitspersample", frame.bit_per_sample},
            {"channels", frame.channels},
            {"bitrate", frame.bit_rate}};
}

/// A frame of 4 GiB is cut to what its field holds; no input gives one.
uint32_t Length(std::span<const unsigned char> bytes)
{
    return static_cast<uint32_t>(std::min<std::size_t>(bytes.size(), UINT32_MAX));
}

/// The reason for a false answer.
int Answer(bool done)
{
    if (done) return SG_ERR_NOERR;
    const auto error = static_cast<int>(getLastError());
    return error != SG_ERR_NOERR ? error : SG_ERR_PARAM_ERR;
}

/// Every frame gives at most one block, which continues the output.
class StreamFace final : public Face
{
public:
    StreamFace(Owned<IWrapton> stream, bool into_packet, Receiver receiver)
        : m_stream(std::move(stream)), m_bIntoPacket(into_packet), m_receiver(std::move(receiver))
    {
    }

    int InputFrame(std::span<unsigned char> bytes, const SGFrameInfo& frame) override
    {
        const FrameAttributes attrs = AttributesOf(frame);
        if (m_bIntoPacket)
        {
            m_packet.Resize(0);  // a frame that is passed over leaves it as it was
            const bool done = m_stream->inputFrameEx(bytes.data(), Length(bytes), attrs, m_packet);
            if (done) Hand(m_packet.Data(), m_packet.Size());
            return Answer(done);
        }
        const bool done = m_stream->inputFrame(bytes.data(), Length(bytes), attrs);
        SharedPtr<IWraptonData> block;
        if (m_stream->getPacket(block)) Hand(block->getBuffer(), block->getLen());
        return done ? SG_ERR_NOERR : int{errorParam};
    }

private:
    void Hand(const unsigned char* bytes, std::size_t size)
    {
        if (size == 0) return;  // the frame was dropped
        m_receiver({0, Origin::kCurrent, {bytes, size}});
    }

    Owned<IWrapton> m_stream;
    bool m_bIntoPacket;
    Receiver m_receiver;
    PacketBuffer m_packet{1};  // grows
};

class FileFace final : public Face
{
public:
    FileFace(Owned<IFilePackage> file, Receiver receiver)
        : m_file(std::move(file)), m_receiver(std::move(receiver))
    {
    }

    int CreateHeader(const SGHeaderInfo* /*header*/) override
    {
        return Answer(m_file->open(
            [this](FrameAttributes& info, IWraptonData& data)
            {
                m_receiver({info.at("fileoffset"),
                            static_cast<Origin>(info.at("offsettype")),
                            {data.getBuffer(), data.getLen()}});
                return true;
            }));
    }

    int InputFrame(std::span<unsigned char> bytes, const SGFrameInfo& frame) override
    {
        return Answer(m_file->inputFrame(bytes.data(), Length(bytes), AttributesOf(frame)));
    }

    int CreateTailer() override { return Answer(m_file->close()); }

private:
    Owned<IFilePackage> m_file;
    Receiver m_receiver;
};

}  // namespace

std::unique_ptr<Face> MakeStreamFace(const Container& container, Face::Receiver receiver)
{
    Owned<IWrapton> stream = Create<IWrapton>(kWraptonClsid, container);
    // One of an unknown type refuses any parameter.
    if (stream == nullptr || !stream->setParam("", 0)) return nullptr;
    return std::make_unique<StreamFace>(
        std::move(stream), container.face == FaceKind::kPacket, std::move(receiver));
}

std::unique_ptr<Face> MakeFileFace(const Container& container, Face::Receiver receiver)
{
    Owned<IFilePackage> file = Create<IFilePackage>(kFilePackageClsid, container);
    // One of an unknown type cannot be closed.
    if (file == nullptr || !file->close()) return nullptr;
    return std::make_unique<FileFace>(std::move(file), std::move(receiver));
}

}  // namespace Orbel::Wrapton::Command
