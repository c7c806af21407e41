#include "Face.h"

#include <utility>

#include "ComponentFaces.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// The eight functions.
class FlatFace final : public Face
{
public:
    FlatFace(unsigned int type, Receiver receiver) : m_receiver(std::move(receiver))
    {
        SGCreateParam create = {};
        create.struct_size = sizeof create;
        create.user = this;
        create.sg_datacb = OnBlock;
        m_pHandle = SG_CreateHandle(type, &create);
    }
    FlatFace(const FlatFace&) = delete;
    FlatFace& operator=(const FlatFace&) = delete;
    ~FlatFace() override { SG_DestroyHandle(m_pHandle); }

    [[nodiscard]] bool IsThere() const { return m_pHandle != nullptr; }

    int DescribeRtp(const RtpStream& stream) override
    {
        SGRtpPackageParam param = {};
        unsigned int length = sizeof param;
        const int got = SG_GetParam(m_pHandle, SG_RTP_PARAM_TYPE_PACKAGE, &param, &length);
        if (got != SG_ERR_NOERR) return got;

        ++param.sequence_number;  // a get tells that of the last packet, a set takes that of the
                                  // next
        param.payload_type = stream.payload_type;
        param.audio_sample = stream.clock;
        return SG_SetParam(m_pHandle, SG_RTP_PARAM_TYPE_PACKAGE, &param, sizeof param);
    }

    int CreateHeader(SGHeaderInfo* header) override { return SG_CreateHeader(m_pHandle, header); }
    int InputFrame(SGFrameInfo& frame) override { return SG_InputFrame(m_pHandle, &frame); }
    int CreateTailer() override { return SG_CreateTailer(m_pHandle, nullptr); }

private:
    static void OnBlock(SGOutputData* block, void* self) noexcept
    {
        static_cast<FlatFace*>(self)->m_receiver(*block);
    }

    Receiver m_receiver;
    void* m_pHandle = nullptr;
};

std::unique_ptr<Face> MakeFlatFace(unsigned int type, Face::Receiver receiver)
{
    auto face = std::make_unique<FlatFace>(type, std::move(receiver));
    return face->IsThere() ? std::move(face) : nullptr;
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
