// The packager without the flat interface around it.
#include "mkvpacket/Mkvpacket.h"
#include "golden/mkv/Pieces.h"
#include "support/Frames.h"
#include "support/Sinks.h"

namespace Orbel::Wrapton
{
namespace
{

using Golden::Bytes;

class Packet : public ::testing::Test
{
protected:
    Packet()
    {
        m_create.user = &m_sink;
        m_create.sg_datacb = &Support::Sink::Callback;
        m_packet = std::make_unique<CMkvPacket>(13, &m_create);
    }

    int Input(uint32_t size = 10)
    {
        Bytes bytes = Support::Payload(size);
        SGFrameInfo record = Support::RecordOf(Support::Mpeg4I(bytes));
        record.frame_pointer = bytes.data();
        return m_packet->InputData(&record, 0);
    }

    Support::SeekingSink m_sink;
    SGCreateParam m_create{};
    std::unique_ptr<CMkvPacket> m_packet;
};

TEST_F(Packet, NeedsInitAheadOfTheHeader)
{
    EXPECT_EQ(m_packet->GetType(), 13u);
    EXPECT_EQ(m_packet->CreateHeader(nullptr, 0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(Input(), SG_ERR_PARAM_ERR);
    EXPECT_EQ(m_packet->CreateTailer(nullptr, 0), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(m_sink.Blocks().empty());
}

TEST_F(Packet, NeedsTheHeaderAheadOfFramesAndTailer)
{
    EXPECT_EQ(m_packet->Init(), SG_ERR_NOERR);
    EXPECT_EQ(Input(), SG_ERR_PARAM_ERR);
    EXPECT_EQ(m_packet->CreateTailer(nullptr, 0), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(m_sink.Blocks().empty());
    EXPECT_EQ(m_packet->Init(), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateHeader(nullptr, 0), SG_ERR_NOERR);
    EXPECT_EQ(Input(), SG_ERR_NOERR);
}

TEST_F(Packet, SecondHeaderWithoutInitIsRefused)
{
    EXPECT_EQ(m_packet->Init(), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateHeader(nullptr, 0), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateHeader(nullptr, 0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(m_packet->Init(), SG_ERR_PARAM_ERR);
    EXPECT_EQ(m_sink.Blocks().size(), 6u);
}

TEST_F(Packet, DeinitLetsFramesAndTailersGoOn)
{
    EXPECT_EQ(m_packet->Init(), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateHeader(nullptr, 0), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateTailer(nullptr, 0), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->Deinit(), SG_ERR_NOERR);
    EXPECT_EQ(Input(), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateTailer(nullptr, 0), SG_ERR_NOERR);
}

TEST_F(Packet, NullFrameIsRefused)
{
    EXPECT_EQ(m_packet->Init(), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateHeader(nullptr, 0), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->InputData(nullptr, 0), SG_ERR_PARAM_ERR);
}

TEST_F(Packet, RunsWithoutACallback)
{
    EXPECT_EQ(m_packet->SetDataCallBack(nullptr, nullptr), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->Init(), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateHeader(nullptr, 0), SG_ERR_NOERR);
    EXPECT_EQ(Input(), SG_ERR_NOERR);
    EXPECT_EQ(m_packet->CreateTailer(nullptr, 0), SG_ERR_NOERR);
    EXPECT_TRUE(m_sink.Blocks().empty());
}

}  // namespace
}  // namespace Orbel::Wrapton
