// What becomes of the components' calls when an allocation fails: the call is refused, nothing is
// thrown, and the next call finds everything as it was.
#include "implement/FilePackageImpl.h"
#include "implement/WraptonImpl.h"
#include "support/Components.h"
#include "support/FailingNew.h"
#include "support/TemporaryDirectory.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Support;

const Bytes kPicture = Hex("00 00 00 01 65 88 84");

FrameAttributes SplitPicture()
{
    FrameAttributes attrs = AttributesOf(H264I(kPicture));
    attrs["n_slice"] = 2;
    attrs["m_slice"] = 2;
    attrs["blockpos_top_4"] = 8;
    return attrs;
}

/// Fails each allocation of @p call in turn. @return how many there are
template <class Prepare, class Call>
std::size_t FailEach(Prepare prepare, Call call)
{
    for (std::size_t number = 1;; ++number)
    {
        auto component = prepare();
        bool result = false;
        std::size_t asked = 0;
        setLastError(0);
        {
            const FailingNew fail(number);
            result = call(component);
            asked = FailingNew::Asked();
        }
        if (asked < number)
        {
            EXPECT_TRUE(result);
            EXPECT_EQ(getLastError(), 0u);
            return number - 1;
        }
        EXPECT_FALSE(result) << "allocation " << number;
        EXPECT_EQ(getLastError(), uint32_t{errorParam}) << "allocation " << number;
        EXPECT_TRUE(call(component)) << "the same again after allocation " << number;
    }
}

TEST(WithoutMemory, AFactoryGivesNothing)
{
    CWrapton::CFactory streams;
    CFilePackage::CFactory files;
    const std::string type = "omf";
    for (IComponentFactory* factory :
         {static_cast<IComponentFactory*>(&streams), static_cast<IComponentFactory*>(&files)})
    {
        for (std::size_t number = 1; number <= 2; ++number)
        {
            setLastError(0);
            IComponentBase* component = nullptr;
            {
                const FailingNew fail(number);
                component = factory->create(type);
            }
            EXPECT_EQ(component, nullptr);
            EXPECT_EQ(getLastError(), uint32_t{errorParam});
        }
    }
}

TEST(WithoutMemory, AStreamRefusesASplitPicture)
{
    const FrameAttributes attrs = SplitPicture();
    const std::size_t failures =
        FailEach([] { return MakeStream("omf"); },
                 [&](Stream& stream) { return stream->inputFrame(kPicture.data(), 7, attrs); });
    EXPECT_GE(failures, 2u);  // the blocks, and the frame that is composed
}

TEST(WithoutMemory, AFileRefusesASplitPicture)
{
    const FrameAttributes attrs = SplitPicture();
    const std::size_t failures =
        FailEach([] { return MakeFile("omf"); },
                 [&](File& file) { return file->inputFrame(kPicture.data(), 7, attrs); });
    EXPECT_GE(failures, 2u);
}

TEST(WithoutMemory, ABlockGoesOnWaiting)
{
    const std::size_t failures = FailEach(
        []
        {
            Stream stream = MakeStream("ps");
            EXPECT_TRUE(stream->inputFrame(kPicture.data(), 7, AttributesOf(H264I(kPicture))));
            return stream;
        },
        [](Stream& stream)
        {
            SharedPtr<IWraptonData> block;
            return stream->getPacket(block);
        });
    EXPECT_EQ(failures, 1u);
}

TEST(WithoutMemory, ABlockThatCannotBeTakenOverIsNotGiven)
{
    Stream stream = MakeStream("ps");
    const FrameAttributes attrs = AttributesOf(H264I(kPicture));
    EXPECT_TRUE(stream->inputFrame(kPicture.data(), 7, attrs));
    {
        const FailingNew fail(1);
        EXPECT_FALSE(stream->inputFrame(nullptr, 0, attrs));
    }
    SharedPtr<IWraptonData> block;
    EXPECT_FALSE(stream->getPacket(block));
    EXPECT_EQ(getLastError(), uint32_t{errorNoOutPut});
}

TEST(WithoutMemory, TheHeaderExtensionStays)
{
    Stream stream = MakeStream("rtp");
    EXPECT_TRUE(stream->setExtInfo("rtp_extension_data", "abcd", 4));
    {
        const FailingNew fail(1);
        EXPECT_FALSE(stream->setExtInfo("rtp_extension_data", "efghijkl", 8));
    }
    EXPECT_EQ(getLastError(), uint32_t{errorParam});
    SharedPtr<IWraptonData> data;
    {
        const FailingNew fail(1);
        EXPECT_FALSE(stream->getExtInfo(rtpExtensionDataName(), data));
    }
    EXPECT_EQ(data, nullptr);
    ASSERT_TRUE(stream->getExtInfo(rtpExtensionDataName(), data));
    EXPECT_TRUE(Same(BytesOf(*data), Text("abcd")));
}

TEST(WithoutMemory, ARecordingDoesNotBegin)
{
    const TemporaryDirectory directory;
    const std::string path = directory.Path("a.mp4");
    const auto before = OpenDescriptors();
    {
        const std::size_t failures = FailEach([] { return MakeFile("mp4"); },
                                              [&](File& file) { return file->open(path.c_str()); });
        EXPECT_GE(failures, 4u);
    }
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST(WithoutMemory, ABackupIsNotGiven)
{
    FrameAttributes info;
    SharedPtr<IWraptonData> header;
    File file = MakeFile("mp4");
    ASSERT_TRUE(file->open([](FrameAttributes&, IWraptonData&) { return true; }));
    // The first allocation is the packager's own, which it tells by giving no header.
    for (std::size_t number = 2; number <= 4; ++number)
    {
        File other = MakeFile("mp4");
        ASSERT_TRUE(other->open([](FrameAttributes&, IWraptonData&) { return true; }));
        info.clear();
        header.reset();
        {
            const FailingNew fail(number);
            EXPECT_FALSE(other->getbackup(header, info)) << number;
        }
        EXPECT_EQ(header, nullptr);
        EXPECT_TRUE(other->getbackup(header, info));
    }
    EXPECT_EQ(info.size(), 2u);
}

TEST(WithoutMemory, ABlockThatTheCallableDoesNotGetIsToldOf)
{
    File file = MakeFile("wav");
    int calls = 0;
    ASSERT_TRUE(file->open([&](FrameAttributes&, IWraptonData&) { return ++calls != 0; }));
    EXPECT_EQ(calls, 1);
    const Frame sound = Audio(SG_ENCODE_AUDIO_PCM16, Payload(4), 8000, 1, 16);
    EXPECT_TRUE(Input(*file, sound));
    const FrameAttributes attrs = AttributesOf(sound);
    setLastError(0);
    {
        const FailingNew fail(1);
        EXPECT_TRUE(file->inputFrame(sound.bytes.data(), 4, attrs));
    }
    EXPECT_EQ(getLastError(), kErrorWrite);
    EXPECT_EQ(calls, 2);
    setLastError(0);
    EXPECT_TRUE(file->close());
    EXPECT_EQ(getLastError(), kErrorWrite);
    EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace Orbel::Wrapton
