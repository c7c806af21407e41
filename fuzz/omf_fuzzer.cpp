// Call sequences on a packager of native recordings, in both of its forms. Every frame is compared
// with what went in; the whole recording is read back at the end.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "ByteSource.h"
#include "FrameMaker.h"
#include "Package.h"
#include "Require.h"
#include "omfpacket/OmfReader.h"
#include "readers/OmfFrames.h"

using namespace Orbel::Wrapton;
using Fuzz::Require;

namespace
{

using Bytes = std::vector<unsigned char>;

constexpr int kMostCalls = 200;
constexpr size_t kMostOutput = 6u << 20;
constexpr size_t kHeaderLen = 24;
constexpr size_t kTailerLen = 8;

/// A frame with the attributes that only this container looks at.
struct SplitFrame
{
    Fuzz::MadeFrame made;
    std::unique_ptr<SGBlockInfo[]> blocks;
};

SplitFrame MakeSplitFrame(Fuzz::ByteSource& source)
{
    SplitFrame frame{.made = Fuzz::MakeFrame(source), .blocks = nullptr};
    const unsigned shape = source.U8();
    SGFrameInfo& record = frame.made.record;
    if ((shape & 1) != 0)
    {
        const int32_t n = source.U8() % 24;
        const int32_t m = source.U8() % 24;
        const auto count = static_cast<size_t>(n) * static_cast<size_t>(m);
        frame.blocks = std::make_unique<SGBlockInfo[]>(count);
        record.split_info = {1, (shape & 2) != 0 ? -n : n, m, frame.blocks.get()};
        for (size_t i = 0; i < count; ++i)
        {
            frame.blocks[i].offset = static_cast<int32_t>(i);
        }
    }
    if ((shape & 4) != 0) record.rotation_angle = source.U16();
    if ((shape & 8) != 0) record.company_type = static_cast<uint16_t>(source.U16());
    if ((shape & 16) != 0) record.bit_rate = source.U8() * 1000u;
    if ((shape & 32) != 0) record.deinter_lace = source.U8();
    return frame;
}

class Session
{
public:
    Session()
    {
        SGCreateParam create{};
        create.user = this;
        create.sg_datacb = &Session::Receive;
        m_handle = SG_CreateHandle(SG_STREAM_TYPE_OMF, &create);
        Require(m_handle != nullptr, "a handle is created");
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session()
    {
        Require(SG_DestroyHandle(m_handle) == 0, "result of the destroy call");
        Require(!m_waiting, "every expected block came");
    }

    [[nodiscard]] bool Full() const { return m_recording.size() > kMostOutput; }

    void Call(Fuzz::ByteSource& source)
    {
        switch (source.U8() % 8)
        {
            case 0:
                Require(SG_CreateHeader(m_handle, nullptr) == 0, "result of the header call");
                break;
            case 1:
                Require(SG_CreateTailer(m_handle, nullptr) == 0, "result of the tailer call");
                break;
            case 2:
                FrameIntoPacket(source);
                break;
            default:
                Frame(source);
                break;
        }
        Require(!m_waiting, "every expected block came");
    }

    /// Reads everything that left through the callback.
    void ReadBack()
    {
        COmfMemory input(m_recording);
        COmfReader reader(input);
        size_t frames = 0;
        while (const auto frame = reader.Next())
        {
            Require(frame->intact, "a frame is whole");
            Require(frames < m_payloads.size(), "no frame comes that did not go in");
            Require(std::equal(frame->payload.begin(),
                               frame->payload.end(),
                               m_payloads[frames].begin(),
                               m_payloads[frames].end()),
                    "a payload comes back");
            ++frames;
        }
        Require(frames == m_payloads.size(), "every frame comes back");
        Require(reader.Skipped() == 0, "nothing stands between frames");
    }

private:
    static void Receive(SGOutputData* block, void* self)
    {
        static_cast<Session*>(self)->Take(*block);
    }

    void Take(const SGOutputData& block)
    {
        Require(m_waiting, "no block comes that is not expected");
        m_waiting = false;
        Require(block.struct_size == 40, "a block says its record's size");
        Require(block.offset_type == 1, "a block is appended");
        Require(block.offset_pos == 0 && block.offset_pos64 == 0, "right at the end");
        Require(block.data_size > 0, "a block is not empty");
        m_block.assign(block.data_pointer, block.data_pointer + block.data_size);
    }

    /// The result that the frame must have; moves the counters when it is taken.
    int Expect(const SGFrameInfo& frame)
    {
        if (frame.frame_pointer == nullptr || frame.frame_size == 0) return SG_ERR_PARAM_ERR;
        switch (frame.frame_type)
        {
            case SG_FRAME_TYPE_VIDEO:
                m_keySeen = m_keySeen || frame.frame_sub_type == SG_FRAME_SUB_TYPE_I ||
                            frame.frame_sub_type == SG_FRAME_SUB_TYPE_JPEG_FRAME;
                if (!m_keySeen) return SG_ERR_PARAM_ERR;
                m_number = ++m_pictures;
                break;
            case SG_FRAME_TYPE_AUDIO:
            case SG_FRAME_TYPE_EXT:
                m_number = ++m_others;
                break;
            default:
                return SG_ERR_PARAM_ERR;
        }
        m_waiting = true;
        return SG_ERR_NOERR;
    }

    void Frame(Fuzz::ByteSource& source)
    {
        SplitFrame frame = MakeSplitFrame(source);
        SGFrameInfo& record = frame.made.record;
        const int expected = record.struct_size == 112 ? Expect(record) : int{SG_ERR_PARAM_ERR};
        Require(SG_InputFrame(m_handle, &record) == expected, "result of the frame call");
        if (expected != 0) return;

        m_lastLength = static_cast<uint32_t>(m_block.size());
        const Bytes payload(record.frame_pointer, record.frame_pointer + record.frame_size);
        CheckBlock(payload, record.split_info.flag != 0);
        m_recording.insert(m_recording.end(), m_block.begin(), m_block.end());
        m_payloads.push_back(payload);
    }

    void CheckBlock(const Bytes& payload, bool split) const
    {
        // The strict reader goes by the declared length, which wraps for a large split.
        if (!split)
        {
            const auto frames = Readers::ReadOmf(m_block);
            Require(frames.size() == 1, "a block is one frame");
            Require(frames[0].number == m_number, "frames are numbered");
            Require(frames[0].payload == payload, "a payload is kept");
            return;
        }
        Require(m_block.size() >= kHeaderLen + payload.size() + kTailerLen,
                "a frame has its parts");
        const auto from = m_block.end() - static_cast<std::ptrdiff_t>(kTailerLen + payload.size());
        Require(std::equal(payload.begin(), payload.end(), from), "a payload is kept");
    }

    void FrameIntoPacket(Fuzz::ByteSource& source)
    {
        PacketBuffer packet(source.U8());
        SplitFrame frame = MakeSplitFrame(source);
        SGFrameInfo& record = frame.made.record;
        const int expected = Expect(record);
        auto* const package = static_cast<CPackage*>(m_handle);
        Require(package->InputData(&record, packet) == expected, "result of the packet call");
        if (expected == 0)
        {
            m_lastLength = static_cast<uint32_t>(m_block.size());
            Require(m_block.size() >= kHeaderLen + 8 + record.frame_size + kTailerLen,
                    "a packet has room for the whole frame");
            Require(std::equal(record.frame_pointer,
                               record.frame_pointer + record.frame_size,
                               m_block.begin() + static_cast<std::ptrdiff_t>(kHeaderLen)),
                    "a payload stands at 24");
            Require(std::equal(m_block.begin(), m_block.end(), packet.Data()),
                    "the packet is what left through the callback");
        }
        Require(packet.Size() == m_lastLength, "the packet is as long as the last frame");
    }

    void* m_handle = nullptr;
    bool m_waiting = false;  // a block is to come
    bool m_keySeen = false;
    uint32_t m_pictures = 0;
    uint32_t m_others = 0;
    uint32_t m_number = 0;  // of the frame on its way
    uint32_t m_lastLength = 0;
    Bytes m_block;
    Bytes m_recording;
    std::vector<Bytes> m_payloads;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::ByteSource source(data, size);
    Session session;
    for (int i = 0; i < kMostCalls && !source.Empty() && !session.Full(); ++i)
    {
        session.Call(source);
    }
    session.ReadBack();
    return 0;
}
