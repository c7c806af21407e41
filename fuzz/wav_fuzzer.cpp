// Call sequences on a WAV handle against a model of the container.
#include <algorithm>
#include <string>
#include <vector>

#include "ByteSource.h"
#include "FrameMaker.h"
#include "Require.h"
#include "Wrapton.h"

using namespace Orbel::Wrapton;
using Fuzz::Require;

namespace
{

using Bytes = std::vector<unsigned char>;

constexpr int kMostCalls = 100;

struct ExpectedBlock
{
    uint32_t position;
    Bytes bytes;
};

void PutLsb(Bytes& to, uint32_t value, int width)
{
    for (int i = 0; i < width; ++i)
    {
        to.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

/// What the container is to do, and the sink that compares.
class Model
{
public:
    explicit Model(bool lowering) : m_lowering(lowering) {}

    static void Receive(SGOutputData* block, void* user)
    {
        static_cast<Model*>(user)->Compare(*block);
    }

    int Header()
    {
        ExpectHeader();
        m_offset += 44;
        m_header = true;
        return SG_ERR_NOERR;
    }

    int Tailer()
    {
        if (!m_header) return SG_ERR_PARAM_ERR;
        ExpectHeader();
        return SG_ERR_NOERR;
    }

    int Frame(const SGFrameInfo& frame)
    {
        const bool valid = frame.struct_size == 112 && frame.frame_pointer != nullptr &&
                           frame.frame_size != 0 && m_header &&
                           frame.frame_type == SG_FRAME_TYPE_AUDIO;
        if (!valid) return SG_ERR_PARAM_ERR;
        if (frame.frame_encode != SG_ENCODE_AUDIO_PCM16 &&
            frame.frame_encode != SG_ENCODE_AUDIO_G711A)
        {
            return SG_ERR_NOERR;
        }
        if (!m_audio)
        {
            m_audio = true;
            ExpectHeader();
            return SG_ERR_NOERR;
        }
        m_expected = {m_offset, Bytes(frame.frame_pointer, frame.frame_pointer + frame.frame_size)};
        m_waiting = m_counts = true;
        return SG_ERR_NOERR;
    }

    /// To be called behind every call of the library.
    void Finish() const { Require(!m_waiting, "every expected block came"); }

private:
    void ExpectHeader()
    {
        static constexpr std::string_view kRiff = "RIFF";
        static constexpr std::string_view kWave = "WAVEfmt ";
        static constexpr std::string_view kData = "data";
        Bytes header(kRiff.begin(), kRiff.end());
        PutLsb(header, m_offset - 8, 4);
        header.insert(header.end(), kWave.begin(), kWave.end());
        PutLsb(header, 16, 4);     // size of the format
        PutLsb(header, 1, 2);      // PCM
        PutLsb(header, 1, 2);      // channels
        PutLsb(header, 8000, 4);   // samples per second
        PutLsb(header, 16000, 4);  // bytes per second
        PutLsb(header, 2, 2);      // bytes per sample
        PutLsb(header, 16, 2);     // bits per sample
        header.insert(header.end(), kData.begin(), kData.end());
        PutLsb(header, m_offset - 44, 4);
        m_expected = {0, header};
        m_waiting = true;
        m_counts = false;
    }

    void Compare(SGOutputData& block)
    {
        Require(m_waiting, "no block comes that is not expected");
        m_waiting = false;
        Require(block.struct_size == 40, "a block says its record's size");
        Require(block.offset_type == 0, "positions count from the start");
        Require(block.offset_pos64 == m_expected.position, "a block comes for its position");
        Require(block.offset_pos == m_expected.position, "both positions are filled");
        Require(block.data_size == static_cast<int32_t>(m_expected.bytes.size()),
                "a block has its size");
        Require(std::equal(m_expected.bytes.begin(), m_expected.bytes.end(), block.data_pointer),
                "a block has its bytes");
        if (m_lowering) block.data_size /= 2;
        if (m_counts) m_offset += static_cast<uint32_t>(block.data_size);
    }

    bool m_lowering;
    bool m_header = false;
    bool m_audio = false;
    bool m_waiting = false;
    bool m_counts = false;  // the block that is expected moves the position
    uint32_t m_offset = 0;
    ExpectedBlock m_expected{};
};

void Call(void* handle, Model& model, Fuzz::ByteSource& source)
{
    switch (source.U8() % 8)
    {
        case 0:
        {
            const int expected = model.Header();
            Require(SG_CreateHeader(handle, nullptr) == expected, "result of the header call");
            break;
        }
        case 1:
        {
            const int expected = model.Tailer();
            Require(SG_CreateTailer(handle, nullptr) == expected, "result of the tailer call");
            break;
        }
        case 2:
        {
            SGOutputData backup{};
            backup.data_size = 5;
            Require(SG_GetBackup(handle, &backup) == 0, "result of the backup call");
            Require(backup.data_size == 5, "the backup record is left alone");
            break;
        }
        default:
        {
            Fuzz::MadeFrame frame = Fuzz::MakeFrame(source);
            const int expected = model.Frame(frame.record);
            Require(SG_InputFrame(handle, &frame.record) == expected, "result of the frame call");
            break;
        }
    }
    model.Finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::ByteSource source(data, size);
    Model model((source.U8() & 1) != 0);
    SGCreateParam create{};
    create.user = &model;
    create.sg_datacb = &Model::Receive;
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_WAV, &create);
    Require(handle != nullptr, "a handle is created");
    for (int i = 0; i < kMostCalls && !source.Empty(); ++i)
    {
        Call(handle, model, source);
    }
    Require(SG_DestroyHandle(handle) == 0, "result of the destroy call");
    model.Finish();
    return 0;
}
