#include "reliability/Subject.h"

#include <memory>
#include <new>

#include "tspacket/TsPacket.h"

namespace Reliability
{

using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::Frame;

namespace
{

constexpr uint32_t kDate = 1700000000;

Bytes ParameterSets()
{
    return Support::Join({Support::Nal(Support::Hex("67 42 C0 1E D9 00 A0 47 FE 88")),
                          Support::Nal(Support::Hex("68 CE 3C 80"))});
}

Bytes Picture(uint32_t header, std::size_t size, uint32_t seed)
{
    return Support::Nal(Support::Join({Support::U8(header), Support::Payload(size, seed)}));
}

Frame Key(std::size_t size, uint32_t seed)
{
    return Support::H264I(Support::Join({ParameterSets(), Picture(0x65, size, seed)}));
}

void AppendSecond(std::vector<Frame>& script, uint32_t second)
{
    script.push_back(Key(5000 + 61440 * second, second));
    for (uint32_t picture = 1; picture < 5; ++picture)
    {
        script.push_back(Support::H264P(Picture(0x41, 100 * picture, picture)));
        script.push_back(Support::Audio(SG_ENCODE_AUDIO_PCM16, Support::Payload(320), 8000, 1, 16));
        script.push_back(Support::Audio(SG_ENCODE_AUDIO_G711A, Support::Payload(161), 8000, 1, 8));
        script.push_back(Support::Mp2(Support::Payload(288), 16000, 1));
        script.push_back(Support::Aac(Support::Adts(7 + 90, Support::Payload(90)), 16000, 1));
    }
    script.push_back(Support::Ext(Support::Payload(33)));
}

std::vector<Frame> MakeScript()
{
    std::vector<Frame> script;
    for (uint32_t second = 0; second < 3; ++second)
    {
        AppendSecond(script, second);
    }
    // More than the first buffer of RTP and AVI, less than the work buffer of any other container.
    script.push_back(Key(1200000, 9));
    uint32_t time = 40;
    for (Frame& frame : script)
    {
        frame.time = time;
        frame.date = kDate;
        time += 10;
    }
    return script;
}

}  // namespace

std::string NameOf(uint32_t type)
{
    static const char* const kNames[] = {"Mp4",
                                         "Asf",
                                         "Avi",
                                         "Omf",
                                         "Flv",
                                         "StreamAsf",
                                         "Mov",
                                         "None",
                                         "StreamFlv",
                                         "Rtp",
                                         "Ts",
                                         "Ps",
                                         "Mp4Noseek",
                                         "Mkv",
                                         "Mp4Wide",
                                         "MovWide",
                                         "Wav",
                                         "QvPs",
                                         "GaysPs"};
    return kNames[type];
}

Subject::Subject(uint32_t type, const SGCreateParam& create, CallGuard* guard)
    : m_type(type), m_create(create), m_guard(guard)
{
    Guarded(
        [&]
        {
            m_handle = type == SG_STREAM_TYPE_TS
                           ? static_cast<CPackage*>(new (std::nothrow) CTsPacket(&m_create))
                           : SG_CreateHandle(type, &m_create);
            return 0;
        });
}

Subject::~Subject()
{
    if (!Exists()) return;
    EXPECT_EQ(SG_DestroyHandle(m_handle), SG_ERR_NOERR);
}

int Subject::Header()
{
    return Guarded([&] { return SG_CreateHeader(m_handle, nullptr); });
}

int Subject::Input(const Frame& frame)
{
    const auto bytes = std::make_unique<unsigned char[]>(frame.bytes.size());
    std::copy(frame.bytes.begin(), frame.bytes.end(), bytes.get());
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = bytes.get();
    if (m_type == SG_STREAM_TYPE_TS) return InputIntoPacket(record);
    return Guarded([&] { return SG_InputFrame(m_handle, &record); });
}

int Subject::Tailer()
{
    return Guarded([&] { return SG_CreateTailer(m_handle, nullptr); });
}

int Subject::Backup()
{
    SGOutputData backup{};
    return Guarded([&] { return SG_GetBackup(m_handle, &backup); });
}

template <class Call>
int Subject::Guarded(Call call)
{
    if (m_guard != nullptr) m_guard->Begin();
    const int result = call();
    if (m_guard != nullptr) m_guard->End();
    return result;
}

int Subject::InputIntoPacket(SGFrameInfo& record)
{
    PacketBuffer packet;
    const int result =
        Guarded([&] { return static_cast<CPackage*>(m_handle)->InputData(&record, packet); });
    if (packet.Size() == 0) return result;

    SGOutputData block{};
    block.struct_size = sizeof(block);
    block.data_pointer = packet.Data();
    block.data_size = static_cast<int32_t>(packet.Size());
    block.offset_type = 1;
    m_create.sg_datacb(&block, m_create.user);
    return result;
}

const std::vector<Frame>& Script()
{
    static const std::vector<Frame> script = MakeScript();
    return script;
}

}  // namespace Reliability
