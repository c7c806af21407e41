#include "Face.h"

#include <random>
#include <system_error>
#include <utility>

#include "ComponentFaces.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// The eight functions, by their face for C++.
class FlatFace final : public Face
{
public:
    explicit FlatFace(Wrapton::Packager packager) : m_packager(std::move(packager)) {}

    int DescribeRtp(const RtpStream& stream) override
    {
        std::error_code error;
        SGRtpPackageParam param = m_packager.Rtp(error);
        if (error) return error.value();

        ++param.sequence_number;  // a get tells that of the last packet, a set takes the next one's
        param.payload_type = stream.payload_type;
        param.audio_sample = stream.clock;
        // The library's own is the same in every run of the command.
        param.ssrc = std::random_device{}();
        m_packager.SetRtp(param, error);
        return error.value();
    }

    int CreateHeader(const SGHeaderInfo* header) override
    {
        std::error_code error;
        if (header == nullptr)
            m_packager.Header(error);
        else
            m_packager.Header(*header, error);
        return error.value();
    }

    int InputFrame(std::span<unsigned char> bytes, const SGFrameInfo& frame) override
    {
        std::error_code error;
        m_packager.InputInPlace(bytes, frame, error);
        return error.value();
    }

    int CreateTailer() override
    {
        std::error_code error;
        m_packager.Tailer(error);
        return error.value();
    }

private:
    Wrapton::Packager m_packager;
};

std::unique_ptr<Face> MakeFlatFace(unsigned int type, Face::Receiver receiver)
{
    // Without a receiver it is only asked whether there is one.
    if (!receiver) receiver = [](const Block& block) { return block.bytes.size(); };
    std::error_code error;
    Wrapton::Packager packager(type, std::move(receiver), error);
    return packager ? std::make_unique<FlatFace>(std::move(packager)) : nullptr;
}

}  // namespace

std::unique_ptr<Face> MakeFace(const Container& container, Face::Receiver receiver)
{
    switch (container.face)
    {
        case FaceKind::kFlat:
            return MakeFlatFace(container.type, std::move(receiver));
        case FaceKind::kStream:
        case FaceKind::kPacket:
            return MakeStreamFace(container, std::move(receiver));
        case FaceKind::kFile:
            return MakeFileFace(container, std::move(receiver));
    }
    return nullptr;
}

}  // namespace Orbel::Wrapton::Command
