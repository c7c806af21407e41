#include "CallSequence.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <type_traits>

#include "CallerMemory.h"
#include "Package.h"
#include "Require.h"
#include "support/FailingNew.h"

namespace Fuzz
{
namespace
{

using namespace Orbel::Wrapton;

constexpr int kMostCalls = 200;
constexpr uint64_t kMostOutput = 6u << 20;
constexpr int kLastCode = SG_ERR_EMPTY_POINTER;
constexpr unsigned kNewFails = 128;
constexpr std::array<uint32_t, 8> kReserves = {
    0, 500, 65536, 0xFFFFFFFF, 1, 2000, 2100, (64u << 20) + 1};

bool IsCode(int result)
{
    return result >= 0 && result <= kLastCode;
}

using RecordBytes = std::array<unsigned char, sizeof(SGFrameInfo)>;

RecordBytes BytesOf(const SGFrameInfo& record)
{
    RecordBytes bytes{};
    std::memcpy(bytes.data(), &record, bytes.size());
    return bytes;
}

/// One handle and the calls on it.
class Session
{
public:
    Session(ByteSource& source, Container& container)
        : m_source(source),
          m_container(container),
          m_memory(source.U8()),
          m_sink(static_cast<Answer>(source.U8() % kAnswers), container.Rules())
    {
        const unsigned shortage = source.U8();
        m_shortage = shortage >= kNewFails ? static_cast<long>(shortage - kNewFails) : -1;
        m_plenty = m_memory.Plenty() && m_shortage < 0;
        SGCreateParam create{};
        create.user = &m_sink;
        create.sg_malloc = CallerMemory::Allocate;
        create.sg_free = CallerMemory::Release;
        create.sg_datacb = &BlockSink::Receive;
        m_handle = Short([&] { return m_container.Create(m_source, create); });
        Require(m_handle != nullptr || !m_plenty, "a handle is created");
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session()
    {
        if (m_handle == nullptr) return;

        Require(SG_DestroyHandle(m_handle) == 0, "result of the destroy call");
        Require(m_sink.TakeBlocks().empty(), "destroying emits nothing");
        m_container.AtEnd(OutputOf({}));
    }

    [[nodiscard]] bool Goes() const
    {
        return m_handle != nullptr && !m_source.Empty() && m_sink.Offered() < kMostOutput;
    }

    void Call()
    {
        switch (m_source.U8() % 16)
        {
            case 0:
                Header();
                break;
            case 1:
                Tailer();
                break;
            case 2:
                Backup();
                break;
            case 3:
                m_container.Parameters(m_handle, m_source);
                break;
            case 4:
                Frame(m_container.TakesPackets());
                break;
            default:
                Frame(m_container.TakesOnlyPackets());
                break;
        }
    }

private:
    [[nodiscard]] Output OutputOf(const std::vector<Block>& blocks) const
    {
        return {
            .blocks = blocks, .file = m_sink.File(), .honest = m_sink.Honest(), .plenty = m_plenty};
    }

    /// Makes a call in which an allocation may fail.
    template <class Made>
    std::invoke_result_t<Made> Short(Made made)
    {
        const Support::Shortage shortage(m_shortage);
        return made();
    }

    void Header()
    {
        SGHeaderInfo header{};
        const unsigned shape = m_source.U8();
        header.pre_header_len = m_source.Choose(kReserves);
        header.video = {static_cast<int32_t>(shape & 2), 2, 640, 360, static_cast<int32_t>(shape)};
        header.audio = {static_cast<int32_t>(shape & 4), 16, 1, 16, 8000};
        SGHeaderInfo* const given = (shape & 1) != 0 ? nullptr : &header;
        const int result = Short([&] { return SG_CreateHeader(m_handle, given); });
        Require(IsCode(result), "result of the header call");
        const std::vector<Block> blocks = m_sink.TakeBlocks();
        m_container.AfterHeader(result, OutputOf(blocks));
    }

    void Tailer()
    {
        const int result = Short([&] { return SG_CreateTailer(m_handle, nullptr); });
        Require(IsCode(result), "result of the tailer call");
        const std::vector<Block> blocks = m_sink.TakeBlocks();
        m_container.AfterTailer(result, OutputOf(blocks));
    }

    void Backup()
    {
        SGOutputData backup{};
        backup.data_size = kNoBackup;
        const int result = Short([&] { return SG_GetBackup(m_handle, &backup); });
        Require(result >= 0, "result of the backup call");
        Require(m_sink.TakeBlocks().empty(), "a backup emits nothing");
        m_container.AfterBackup(result, backup, OutputOf({}));
    }

    void Frame(bool withPacket)
    {
        PacketBuffer packet(withPacket ? m_source.U8() : 0);
        MadeFrame frame = MakeFrame(m_source, m_container.Frames());
        SGFrameInfo& record = frame.record;
        m_container.Adorn(record, m_source);
        const RecordBytes untouched = BytesOf(record);
        Bytes before(frame.bytes.get(), frame.bytes.get() + frame.size);
        const int result = Short(
            [&] { return withPacket ? Pack(record, packet) : SG_InputFrame(m_handle, &record); });
        Require(IsCode(result), "result of the frame call");
        Require(BytesOf(record) == untouched, "a record is left alone");
        Bytes after(frame.bytes.get(), frame.bytes.get() + frame.size);
        Require(m_container.WritesToFrames() || after == before, "a frame is left alone");
        before.resize(std::min<std::size_t>(before.size(), record.frame_size));
        after.resize(before.size());
        const std::vector<Block> blocks = m_sink.TakeBlocks();
        Require(result == 0 || blocks.empty(), "a refused frame emits nothing");

        Bytes packed;
        if (withPacket && packet.Size() != 0)
            packed.assign(packet.Data(), packet.Data() + packet.Size());
        m_container.AfterFrame({.record = record,
                                .before = before,
                                .after = after,
                                .result = result,
                                .blocks = blocks,
                                .packet = withPacket ? &packed : nullptr,
                                .plenty = m_plenty});
    }

    /// As the interface makes calls: nothing but a failed allocation is thrown.
    int Pack(SGFrameInfo& record, PacketBuffer& packet)
    {
        try
        {
            return static_cast<CPackage*>(m_handle)->InputData(&record, packet);
        }
        catch (const std::bad_alloc&)
        {
            return SG_ERR_MEMORY_OUT;
        }
    }

    ByteSource& m_source;
    Container& m_container;
    CallerMemory m_memory;
    BlockSink m_sink;
    long m_shortage = -1;   // allocations of the library until one fails; below 0: none does
    bool m_plenty = false;  // none fails in any call, of either allocator
    void* m_handle = nullptr;
};

}  // namespace

void Container::Parameters(void* handle, ByteSource& source)
{
    std::array<unsigned char, 64> record{};
    unsigned int length = source.U8();
    Require(SG_SetParam(handle, source.U8(), record.data(), length) == 0, "no parameters");
    Require(SG_GetParam(handle, source.U8(), record.data(), &length) == 0, "no parameters");
    Require(length == 0, "no parameters");
}

void RunCalls(ByteSource source, Container& container)
{
    Session session(source, container);
    for (int i = 0; i < kMostCalls && session.Goes(); ++i)
    {
        session.Call();
    }
}

}  // namespace Fuzz
