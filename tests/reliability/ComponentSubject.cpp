#include "reliability/ComponentSubject.h"

#include <cctype>
#include <utility>

namespace Reliability
{

using namespace Orbel::Wrapton;
using Support::Frame;

const std::vector<ComponentKind> kComponents = {
    {"asf", false},      {"flv", false},  {"omf", false},    {"rtp", false},  {"ts", false},
    {"ps", false},       {"qvps", false}, {"gaysps", false}, {"mov64", true}, {"mp464", true},
    {"mp4noseek", true}, {"mp4", true},   {"3gp", true},     {"mov", true},   {"asf", true},
    {"mkv", true},       {"avi", true},   {"omf", true},     {"flv", true},   {"wav", true}};

std::string ComponentKind::Name() const
{
    std::string name = type;
    name[0] = static_cast<char>(std::toupper(name[0]));
    return (isFile ? "File" : "Stream") + name;
}

namespace
{

/// The component of a kind, or null without memory for it.
template <class Interface>
Interface* Create(const char* clsid, const std::string& type)
{
    return dynamic_cast<Interface*>(IComponentFactory::find(clsid)->create(type));
}

}  // namespace

ComponentSubject::ComponentSubject(const ComponentKind& kind, Take take, CallGuard* guard)
    : m_kind(kind), m_take(std::move(take)), m_guard(guard)
{
    initWraptonComponentLibrary();
    const std::string type = kind.type;
    Guarded(
        [&]
        {
            if (kind.isFile) m_file.reset(Create<IFilePackage>(kFilePackageClsid, type));
            if (!kind.isFile) m_stream.reset(Create<IWrapton>(kWraptonClsid, type));
            return true;
        });
    // The source of the packets would be another in each run.
    if (m_stream != nullptr) m_stream->setParam("rtp_ssrc", 5);
}

bool ComponentSubject::Begin()
{
    if (m_file == nullptr) return true;

    const FilePackageProc proc = [this](FrameAttributes& info, IWraptonData& block)
    {
        m_take(info.at("fileoffset"), block.getBuffer(), block.getLen());
        return true;
    };
    return Guarded([&] { return m_file->open(proc); });
}

bool ComponentSubject::Input(const Frame& frame)
{
    if (m_stream != nullptr) return InputIntoStream(frame);

    return Support::WithExactBytes(
        frame,
        [&](const void* data, unsigned int len, const FrameAttributes& attrs)
        { return Guarded([&] { return m_file->inputFrame(data, len, attrs); }); });
}

bool ComponentSubject::InputIntoStream(const Frame& frame)
{
    // Transport packets come in no other way.
    const bool into_packet = std::string(m_kind.type) == "ts";
    PacketBuffer packet(1);
    const bool accepted = Support::WithExactBytes(
        frame,
        [&](const void* data, unsigned int len, const FrameAttributes& attrs)
        {
            return Guarded(
                [&]
                {
                    return into_packet ? m_stream->inputFrameEx(data, len, attrs, packet)
                                       : m_stream->inputFrame(data, len, attrs);
                });
        });
    if (into_packet && accepted && packet.Size() != 0) m_take(-1, packet.Data(), packet.Size());
    return accepted && TakeWaiting();
}

bool ComponentSubject::TakeWaiting()
{
    SharedPtr<IWraptonData> block;
    if (!Guarded([&] { return m_stream->getPacket(block); }))
        return getLastError() == errorNoOutPut;

    m_take(-1, block->getBuffer(), block->getLen());
    return true;
}

void ComponentSubject::Backup()
{
    if (m_file == nullptr) return;

    SharedPtr<IWraptonData> header;
    FrameAttributes info;
    Guarded([&] { return m_file->getbackup(header, info); });
}

bool ComponentSubject::End()
{
    return m_file == nullptr || Guarded([&] { return m_file->close(); });
}

template <class Call>
bool ComponentSubject::Guarded(Call call)
{
    if (m_guard != nullptr) m_guard->Begin();
    const bool result = call();
    if (m_guard != nullptr) m_guard->End();
    return result;
}

std::vector<Frame> SmallFrames()
{
    const auto& script = Script();
    return {script.begin(), script.begin() + 12};
}

void BlockSum::Add(int64_t position, const unsigned char* bytes, std::size_t size)
{
    Add(static_cast<uint64_t>(position));
    for (std::size_t i = 0; i < size; ++i)
        Add(bytes[i]);
}

}  // namespace Reliability
