// Call sequences on components: frames with any attributes into every stream and file container,
// parameters, packets of any size, files that cannot be written, and memory that runs out.
#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "BlockSink.h"
#include "ByteSource.h"
#include "FirstRecording.h"
#include "FrameMaker.h"
#include "IFilePackage.h"
#include "Require.h"
#include "readers/Mp4Boxes.h"
#include "support/FailingNew.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<const char*, 10> kStreams = {
    "asf", "flv", "OMF", "rtp", "ts", "PS", "qvps", "gaysps", "Flv", ""};
constexpr std::array<const char*, 14> kFiles = {"mp4",
                                                "MP464",
                                                "mp4noseek",
                                                "mov",
                                                "mov64",
                                                "3gp",
                                                "asf",
                                                "mkv",
                                                "avi",
                                                "omf",
                                                "flv",
                                                "wav",
                                                "Wav",
                                                "rtp"};
/// Places that take everything, nothing, and no file at all.
constexpr std::array<const char*, 4> kPaths = {"/dev/null", "/dev/full", "/nowhere/file", nullptr};
constexpr std::array<const char*, 22> kKeys = {"timestamp",      "year",
                                               "month",          "day",
                                               "hour",           "minute",
                                               "second",         "width",
                                               "height",         "rate",
                                               "deinterlace",    "samplespersec",
                                               "bitspersample",  "channels",
                                               "bitrate",        "n_slice",
                                               "m_slice",        "rotationangle",
                                               "tpcompanytype",  "tpstreamheaderlen",
                                               "blockpos_top_1", "blockdata_offset_2"};
constexpr std::array<const char*, 10> kParameters = {"max_rtp_packet_length",
                                                     "rtp_sequence_number",
                                                     "rtp_timestamp",
                                                     "rtp_ssrc",
                                                     "rtp_audio_sample",
                                                     "rtp_payload_type",
                                                     "rtp_packet_output_all_flag",
                                                     "rtp_encode_type",
                                                     "another",
                                                     ""};
constexpr std::array<long, 14> kNumbers = {
    0, 1, 2, 25, 64, 640, 8000, 90000, -1, INT32_MAX, INT32_MIN, UINT32_MAX, INT64_MAX, INT64_MIN};
constexpr std::array<long, 6> kFrameTypes = {'V', 'V', 'A', 'A', 'X', 0};
constexpr std::array<uint32_t, 6> kSizes = {999, 2048, 61441, 65536, 0x100000, 0x1FFFF0};
constexpr std::array<uint32_t, 1> kNoEncodings = {0};
constexpr int kMostCalls = 150;
constexpr uint64_t kMostOutput = 6u << 20;

template <class Value, size_t Count>
Value Choose(Fuzz::ByteSource& source, const std::array<Value, Count>& values)
{
    return values[source.U8() % Count];
}

struct Frame
{
    Fuzz::MadeFrame made;
    FrameAttributes attrs;

    [[nodiscard]] const void* Data() const { return made.record.frame_pointer; }
    [[nodiscard]] unsigned int Len() const { return made.record.frame_size; }
};

Frame MakeAttributed(Fuzz::ByteSource& source)
{
    Frame frame{.made = Fuzz::MakeFrame(source, {.encodings = kNoEncodings, .sizes = kSizes}),
                .attrs = {}};
    const unsigned shape = source.U8();
    if (shape != 0)  // otherwise not even these are there
    {
        frame.attrs["frametype"] = Choose(source, kFrameTypes);
        frame.attrs["framesubtype"] = source.U8() % 12;
        frame.attrs["encodetype"] = source.U8() % 44;
    }
    for (unsigned more = shape % 8; more > 0; --more)
    {
        const char* const key = Choose(source, kKeys);
        frame.attrs[key] = Choose(source, kNumbers);
    }
    return frame;
}

/// Makes calls in which one allocation of the library may fail.
class Scarce
{
public:
    explicit Scarce(unsigned plan)
        : m_plenty(plan < 128), m_left(m_plenty ? -1 : static_cast<long>(plan - 128))
    {
    }

    /// Whether nothing fails in any call.
    [[nodiscard]] bool Plenty() const { return m_plenty; }

    template <class Call>
    std::invoke_result_t<Call> operator()(Call call)
    {
        const Support::Shortage shortage(m_left);
        return call();
    }

private:
    bool m_plenty;
    long m_left;
};

template <class Interface>
struct Release
{
    void operator()(Interface* component) const { component->release(); }
};

/// A component of the type; none when there was no memory for it.
template <class Interface>
std::unique_ptr<Interface, Release<Interface>> Create(const char* clsid,
                                                      const std::string& type,
                                                      Scarce& scarce)
{
    initWraptonComponentLibrary();
    IComponentFactory* const factory = IComponentFactory::find(clsid);
    Require(factory != nullptr, "the factory is there");
    auto* const made = scarce([&] { return factory->create(type); });
    return std::unique_ptr<Interface, Release<Interface>>(static_cast<Interface*>(made));
}

/// Reads every byte of a view.
Bytes CopyOf(const IWraptonData& data)
{
    if (data.getLen() == 0) return {};
    Require(data.getBuffer() != nullptr, "a view has bytes");
    return {data.getBuffer(), data.getBuffer() + data.getLen()};
}

class StreamSession
{
public:
    StreamSession(Fuzz::ByteSource& source, Scarce scarce)
        : m_source(source),
          m_scarce(scarce),
          m_stream(Create<IWrapton>(kWraptonClsid, Choose(source, kStreams), m_scarce))
    {
    }

    [[nodiscard]] bool Goes() const { return m_stream != nullptr && m_output < kMostOutput; }

    void Finish() {}

    void Call()
    {
        switch (m_source.U8() % 12)
        {
            case 0:
                SetParam();
                break;
            case 1:
                SetExtInfo();
                break;
            case 2:
                GetExtInfo();
                break;
            case 3:
            case 4:
            case 5:
                GetPacket();
                break;
            case 6:
                setLastError(0);
                Require(!m_stream->rev_func7(), "a reserved slot");
                Require(getLastError() == kErrorNotImplemented, "a reserved slot's error");
                break;
            case 7:
            case 8:
                InputIntoPacket();
                break;
            default:
                Input();
                break;
        }
    }

private:
    void Input()
    {
        const Frame frame = MakeAttributed(m_source);
        m_scarce([&] { return m_stream->inputFrame(frame.Data(), frame.Len(), frame.attrs); });
    }

    void InputIntoPacket()
    {
        PacketBuffer packet;
        if (m_source.U8() % 4 != 0) packet.Resize(m_source.U8());
        const bool valid = packet.IsValid();
        const Frame frame = MakeAttributed(m_source);
        const bool done = m_scarce(
            [&] { return m_stream->inputFrameEx(frame.Data(), frame.Len(), frame.attrs, packet); });
        Require(valid || !done, "a packet must be valid");
        const Bytes bytes(packet.Data(), packet.Data() + packet.Size());
        m_output += bytes.size();
    }

    void GetPacket()
    {
        SharedPtr<IWraptonData> block;
        const bool done = m_scarce([&] { return m_stream->getPacket(block); });
        Require(done == (block != nullptr), "a block comes with its success");
        if (!done) return;

        m_output += CopyOf(*block).size();
        SharedPtr<IWraptonData> again;
        Require(!m_stream->getPacket(again), "a block is handed out once");
    }

    void SetParam()
    {
        const char* const name = Choose(m_source, kParameters);
        const long value = Choose(m_source, kNumbers);
        const bool set = m_scarce([&] { return m_stream->setParam(name, value); });
        long read = 0;
        Require(m_stream->getParam(name, read) == set, "what can be set can be read");
    }

    void SetExtInfo()
    {
        const std::string name = m_source.U8() % 2 != 0 ? "rtp_custom_data" : "rtp_extension_data";
        const Bytes bytes(m_source.U16() % 4 == 0 ? m_source.U16() : m_source.U8(), 0xE5);
        const bool null = m_source.U8() % 8 == 0;
        m_scarce(
            [&]
            {
                return m_stream->setExtInfo(name.c_str(),
                                            null ? nullptr : bytes.data(),
                                            static_cast<unsigned int>(bytes.size()));
            });
    }

    void GetExtInfo()
    {
        SharedPtr<IWraptonData> info;
        const bool named = m_source.U8() % 4 != 0;
        m_scarce(
            [&] {
                return m_stream->getExtInfo(named ? rtpExtensionDataName() : "rtp_extension_date",
                                            info);
            });
        Require(named || info == nullptr, "another name names nothing");
        if (info != nullptr) CopyOf(*info);
    }

    Fuzz::ByteSource& m_source;
    Scarce m_scarce;
    std::unique_ptr<IWrapton, Release<IWrapton>> m_stream;
    uint64_t m_output = 0;
};

class FileSession
{
public:
    FileSession(Fuzz::ByteSource& source, Scarce scarce)
        : FileSession(source, scarce, Choose(source, kFiles))
    {
    }

    [[nodiscard]] bool Goes() const { return m_file != nullptr && m_output < kMostOutput; }

    /// Ends the recording; one that was closed already takes another close.
    void Finish()
    {
        if (m_file != nullptr) Close();
    }

    void Call()
    {
        switch (m_source.U8() % 12)
        {
            case 0:
                if (m_scarce([&] { return m_file->open(Choose(m_source, kPaths)); }))
                    m_recording.Opened(false);
                break;
            case 1:
            case 2:
                OpenCallable();
                break;
            case 3:
                Close();
                break;
            case 4:
                Backup();
                break;
            default:
                Input();
                break;
        }
    }

private:
    FileSession(Fuzz::ByteSource& source, Scarce scarce, const char* type)
        : m_source(source),
          m_scarce(scarce),
          m_file(Create<IFilePackage>(kFilePackageClsid, type, m_scarce)),
          m_recording(type, scarce.Plenty())
    {
    }

    void Close()
    {
        if (m_scarce([&] { return m_file->close(); })) m_recording.Closed();
    }

    void OpenCallable()
    {
        FilePackageProc proc;
        if (m_source.U8() % 8 != 0)
            proc = [this](FrameAttributes& info, IWraptonData& block) { return Take(info, block); };
        const bool empty = !proc;
        const bool done = m_scarce([&] { return m_file->open(proc); });
        Require(!done || !empty, "an empty callable opens nothing");
        if (done) m_recording.Opened(true);
    }

    bool Take(const FrameAttributes& info, const IWraptonData& block)
    {
        const Support::Plenty account;
        Require(info.count("fileoffset") == 1 && info.at("fileoffset") >= 0, "a block's position");
        Require(info.count("offsettype") == 1 && info.at("offsettype") <= 2, "a block's origin");
        const Bytes bytes = CopyOf(block);
        m_recording.Take(info, bytes);
        m_output += bytes.size();
        return m_output % 2 == 0;
    }

    void Input()
    {
        const Frame frame = MakeAttributed(m_source);
        const unsigned before = m_recording.Blocks();
        m_scarce([&] { return m_file->inputFrame(frame.Data(), frame.Len(), frame.attrs); });
        if (m_recording.Blocks() != before)
            m_recording.Add(frame.attrs, {frame.made.bytes.get(), frame.Len()});
    }

    void Backup()
    {
        SharedPtr<IWraptonData> header;
        FrameAttributes info;
        const bool done = m_scarce([&] { return m_file->getbackup(header, info); });
        Require(done == (header != nullptr), "a header comes with its success");
        if (!done) return;

        Require(info.count("seekpos") == 1 && info.count("seektype") == 1, "a header's place");
        try
        {
            Require(Readers::TypesOf(Readers::ReadBoxes(CopyOf(*header))) == "moov",
                    "a header is a movie box");
        }
        catch (const Readers::Mp4Error& error)
        {
            Require(false, error.what());
        }
    }

    Fuzz::ByteSource& m_source;
    Scarce m_scarce;
    std::unique_ptr<IFilePackage, Release<IFilePackage>> m_file;
    Fuzz::FirstRecording m_recording;
    uint64_t m_output = 0;
};

template <class Session>
void Run(Fuzz::ByteSource& source, Scarce scarce)
{
    Session session(source, scarce);
    for (int call = 0; call < kMostCalls && session.Goes() && !source.Empty(); ++call)
    {
        session.Call();
    }
    session.Finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::ByteSource source(data, size);
    const bool file = source.U8() % 2 != 0;
    const Scarce scarce(source.U8());
    file ? Run<FileSession>(source, scarce) : Run<StreamSession>(source, scarce);
    return 0;
}
