#include "Containers.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "Measure.h"
#include "PackageImpl.h"
#include "mp4packet/Mp4Packet.h"
#include "rtppacket/RtpPacket.h"
#include "tspacket/TsPacket.h"

namespace Bench
{
namespace
{

using namespace Orbel::Wrapton;

constexpr uint32_t kRate = 25;
constexpr size_t kWorkLen = 3u << 20;

constexpr std::array<Goal, 3> Pictures(Goal w1, Goal w2, Goal w3)
{
    w1.load = WorkloadW1;
    w2.load = WorkloadW2;
    w3.load = WorkloadW3;
    return {w1, w2, w3};
}

constexpr Goal Reach(double copies, double faster)
{
    return {nullptr, copies, faster};
}

constexpr auto kMp4Goals = Pictures(Reach(1.5, 6.5), Reach(3.5, 3.5), Reach(1.25, 4.2));
constexpr auto kFlvGoals = Pictures(Reach(1.5, 9.5), Reach(3.0, 6.5), Reach(1.25, 5));
constexpr auto kMkvGoals = Pictures(Reach(1.6, 30), Reach(3.5, 12), Reach(1.25, 19));
constexpr auto kMkvPlainGoals = Pictures(Reach(1.6, 7.5), Reach(3.5, 3.9), Reach(1.25, 4.6));
constexpr auto kAsfGoals = Pictures(Reach(1.3, 2.5), Reach(2.8, 1.95), Reach(1.1, 1.3));
constexpr auto kAviGoals = Pictures(Reach(1.15, 1.6), Reach(2.2, 2.3), Reach(1.05, 1.15));
constexpr auto kPsWholeGoals = Pictures(Reach(1.15, 4.8), Reach(1.7, 5.5), Reach(1.05, 2.5));
constexpr auto kPsSplitGoals = Pictures(Reach(1.5, 2.9), Reach(2.5, 3.5), Reach(1.25, 2));
constexpr auto kTsGoals = Pictures(Reach(1.7, 4.2), Reach(2.3, 5.6), Reach(1.25, 2.9));
constexpr auto kRtpGoals = Pictures(Reach(2.0, 6), Reach(3.3, 4.5), Reach(1.4, 4.7));
constexpr auto kOmfGoals = Pictures(Reach(1.4, 0), Reach(2.5, 0), Reach(1.2, 0));
constexpr std::array<Goal, 3> kWavGoals = {
    {{WorkloadA1, 1.5, 2.8}, {WorkloadA2, 0.4, 3.5}, {nullptr, 0, 0}}};

constexpr uint32_t kNoSound = 0;
constexpr uint32_t kRtpPacketLen = 1000;
constexpr uint32_t kRtpLengthLen = 2;

constexpr std::array kContainers = std::to_array<Container>({
    {"MP4", SG_STREAM_TYPE_MP4, SG_ENCODE_AUDIO_AAC, Sound::kAac, "mp4", nullptr, 0, kMp4Goals},
    {"MOV", SG_STREAM_TYPE_MOV, SG_ENCODE_AUDIO_AAC, Sound::kAac, "mov", nullptr, 0, kMp4Goals},
    {"3GP", SG_STREAM_TYPE_3GP, SG_ENCODE_AUDIO_AAC, Sound::kAac, "3gp", nullptr, 0, kMp4Goals},
    {"FLV", SG_STREAM_TYPE_FLV, SG_ENCODE_AUDIO_PCM16, Sound::kPcm, "flv", nullptr, 0, kFlvGoals},
    {"Matroska", SG_STREAM_TYPE_MKV, kNoSound, Sound::kNone, "matroska", nullptr, 0, kMkvGoals},
    {"Matroska, peer without checksums",
     SG_STREAM_TYPE_MKV,
     kNoSound,
     Sound::kNone,
     "matroska",
     "write_crc32=0",
     0,
     kMkvPlainGoals},
    {"ASF", SG_STREAM_TYPE_ASF, SG_ENCODE_AUDIO_PCM16, Sound::kPcm, "asf", nullptr, 0, kAsfGoals},
    {"AVI", SG_STREAM_TYPE_AVI, SG_ENCODE_AUDIO_PCM16, Sound::kPcm, "avi", nullptr, 0, kAviGoals},
    {"PS, standard",
     SG_STREAM_TYPE_PS,
     SG_ENCODE_AUDIO_MP2,
     Sound::kMp2,
     "vob",
     nullptr,
     0,
     kPsSplitGoals},
    {"PS, QV",
     SG_STREAM_TYPE_QVPS,
     SG_ENCODE_AUDIO_MP2,
     Sound::kMp2,
     "vob",
     nullptr,
     0,
     kPsSplitGoals},
    {"PS, GAYS",
     SG_STREAM_TYPE_GAYSPS,
     SG_ENCODE_AUDIO_MP2,
     Sound::kMp2,
     "vob",
     nullptr,
     0,
     kPsWholeGoals},
    {"TS", SG_STREAM_TYPE_TS, SG_ENCODE_AUDIO_AAC, Sound::kAdts, "mpegts", nullptr, 0, kTsGoals},
    {"RTP", SG_STREAM_TYPE_RTP, kNoSound, Sound::kNone, "rtp", nullptr, kRtpPacketLen, kRtpGoals},
    {"OMF", SG_STREAM_TYPE_OMF, SG_ENCODE_AUDIO_PCM16, Sound::kPcm, nullptr, nullptr, 0, kOmfGoals},
    {"WAV", SG_STREAM_TYPE_WAV, SG_ENCODE_AUDIO_PCM16, Sound::kPcm, "wav", nullptr, 0, kWavGoals},
});

std::unique_ptr<CPackage> Make(const Container& container, const SGCreateParam& create)
{
    switch (container.type)
    {
        case SG_STREAM_TYPE_3GP:  // no handle gives these two, their classes do
            return std::make_unique<CMp4Packet>(container.type, &create);
        case SG_STREAM_TYPE_TS:
            return std::make_unique<CTsPacket>(&create);
        case SG_STREAM_TYPE_RTP:
        {
            auto rtp = std::make_unique<CRtpPacket>(container.type, &create);
            rtp->m_nMaxPacketSize = static_cast<int>(container.packet_size + kRtpLengthLen);
            return rtp;
        }
        default:
            return CreatePackage(container.type, &create);
    }
}

SGFrameInfo PictureRecord()
{
    SGFrameInfo record{};
    record.struct_size = sizeof(record);
    record.frame_type = SG_FRAME_TYPE_VIDEO;
    record.frame_encode = SG_ENCODE_VIDEO_HI_H264;
    record.width = 1920;
    record.heigth = 1080;
    record.frame_rate = kRate;
    return record;
}

SGFrameInfo SoundRecord(const Container& container)
{
    SGFrameInfo record{};
    record.struct_size = sizeof(record);
    record.frame_type = SG_FRAME_TYPE_AUDIO;
    record.frame_encode = container.sound_encode;
    // 11025 Hz is the one rate of PCM that every container here and its peer take.
    const bool pcm = container.sound == Sound::kPcm;
    const bool layer2 = container.sound == Sound::kMp2;
    record.sample_rate = pcm ? 11025 : layer2 ? 16000 : 48000;
    record.bit_per_sample = 16;
    record.channels = 1;
    return record;
}

}  // namespace

std::span<const Container> Containers()
{
    return kContainers;
}

Packager::Packager(const Container& container)
    : m_bPacket(container.type == SG_STREAM_TYPE_TS),
      m_bRestores(container.type == SG_STREAM_TYPE_MKV),
      m_picture(PictureRecord()),
      m_sound(SoundRecord(container))
{
    SGCreateParam create = Discarding();
    create.sg_datacb = Discard;
    create.user = this;
    m_package = Make(container, create);
    Expect(m_package->Init() == SG_ERR_NOERR);
}

void Packager::Discard(SGOutputData* block, void* user)
{
    benchmark::DoNotOptimize(block->data_pointer);
    benchmark::ClobberMemory();
    static_cast<Packager*>(user)->m_nOutput += static_cast<uint32_t>(block->data_size);
}

void Packager::Header()
{
    Expect(m_package->CreateHeader(nullptr, 0) == SG_ERR_NOERR);
}

void Packager::Picture(const Frame& frame, uint32_t number)
{
    if (m_bRestores) frame.Restore();
    m_picture.frame_sub_type = frame.IsKey() ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P;
    m_picture.frame_time = number * (1000 / kRate) + 1;
    Input(m_picture, frame);
}

void Packager::SoundFrame(const Frame& frame, uint32_t number)
{
    m_sound.frame_time = number * (500 / kRate) + 1;
    Input(m_sound, frame);
}

void Packager::Input(SGFrameInfo& record, const Frame& frame)
{
    record.frame_pointer = frame.Data();
    record.frame_size = frame.Size();
    if (!m_bPacket)
    {
        Expect(m_package->InputData(&record, 0) == SG_ERR_NOERR);
        return;
    }
    Expect(m_package->InputData(&record, m_packet) == SG_ERR_NOERR);
    benchmark::DoNotOptimize(m_packet.Data());
    benchmark::ClobberMemory();
    m_nOutput += m_packet.Size();
}

void Packager::Tailer()
{
    Expect(m_package->CreateTailer(nullptr, 0) == SG_ERR_NOERR);
}

Run RunPackager(const Container& container, const Recording& recording, uint32_t count)
{
    Run run;
    run.seconds = Seconds(
        [&]
        {
            Packager packager(container);
            packager.Header();
            recording.ForEach(
                count,
                [&](const Frame& frame, uint32_t number)
                {
                    run.payload += frame.Size();
                    packager.Picture(frame, number);
                },
                [&](const Frame& frame, uint32_t number)
                {
                    run.payload += frame.Size();
                    packager.SoundFrame(frame, number);
                });
            packager.Tailer();
            run.output = packager.Output();
        });
    recording.Restore();
    return run;
}

Run RunCopy(const Recording& recording, uint32_t count)
{
    constexpr size_t kLead = 16;
    static std::vector<unsigned char> buffer(kWorkLen, 1);

    Run run;
    const auto copy = [&](const Frame& frame, uint32_t /*number*/)
    {
        std::memcpy(buffer.data() + kLead, frame.Data(), frame.Size());
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
        run.payload += frame.Size();
    };
    run.seconds = Seconds([&] { recording.ForEach(count, copy, copy); });
    run.output = run.payload;
    return run;
}

}  // namespace Bench
