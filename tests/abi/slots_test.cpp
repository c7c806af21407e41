// The order of the virtual operations, read from the vtables of an Itanium C++ ABI.
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include <wrapton/IFilePackage.h>
#include <wrapton/IWrapton.h>

namespace Orbel::Wrapton
{
namespace
{

/// The slot that a call through a pointer to a virtual member takes: such a pointer is one more
/// than the slot's distance in the vtable.
template <class Member>
std::ptrdiff_t SlotOf(Member member)
{
    std::ptrdiff_t raw[2] = {};
    static_assert(sizeof(member) == sizeof(raw));
    std::memcpy(raw, &member, sizeof(raw));
    EXPECT_EQ(raw[0] & 1, 1) << "not virtual";
    EXPECT_EQ(raw[1], 0) << "of another base";
    return (raw[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

using Slot = bool (*)(void* self);

/// The operation in a slot, called as one without arguments.
bool CallSlot(void* object, std::size_t slot)
{
    void** vtable = nullptr;
    std::memcpy(&vtable, object, sizeof(vtable));
    Slot function = nullptr;
    std::memcpy(&function, vtable + slot, sizeof(function));
    return function(object);
}

class BareStream final : public IWrapton
{
public:
    [[nodiscard]] VersionInfo getVersion() const override { return {}; }
};

class BareFile final : public IFilePackage
{
public:
    [[nodiscard]] VersionInfo getVersion() const override { return {}; }
};

TEST(Slots, OfTheComponentBaseComeFirst)
{
    // 0 and 1 are the two destructors.
    EXPECT_EQ(SlotOf(&IComponentBase::destroy), 2);
    EXPECT_EQ(SlotOf(&IComponentBase::getVersion), 3);
    EXPECT_EQ(SlotOf(&IComponentBase::addRef), 4);
    EXPECT_EQ(SlotOf(&IComponentBase::release), 5);
}

TEST(Slots, OfTheStreamComponentFollowInOrder)
{
    EXPECT_EQ(SlotOf(&IWrapton::inputFrame), 6);
    EXPECT_EQ(SlotOf(&IWrapton::getPacket), 7);
    EXPECT_EQ(SlotOf(&IWrapton::inputFrameEx), 8);
    EXPECT_EQ(SlotOf(&IWrapton::setParam), 9);
    EXPECT_EQ(SlotOf(&IWrapton::getParam), 10);
    EXPECT_EQ(SlotOf(&IWrapton::setExtInfo), 11);
    EXPECT_EQ(SlotOf(&IWrapton::getExtInfo), 12);
    const std::vector<bool (IWrapton::*)()> reserved = {
        &IWrapton::rev_func24, &IWrapton::rev_func23, &IWrapton::rev_func22, &IWrapton::rev_func21,
        &IWrapton::rev_func20, &IWrapton::rev_func19, &IWrapton::rev_func18, &IWrapton::rev_func17,
        &IWrapton::rev_func16, &IWrapton::rev_func15, &IWrapton::rev_func14, &IWrapton::rev_func13,
        &IWrapton::rev_func12, &IWrapton::rev_func11, &IWrapton::rev_func10, &IWrapton::rev_func9,
        &IWrapton::rev_func8,  &IWrapton::rev_func7,  &IWrapton::rev_func6,  &IWrapton::rev_func5,
        &IWrapton::rev_func4,  &IWrapton::rev_func3,  &IWrapton::rev_func2,  &IWrapton::rev_func1};
    ASSERT_EQ(reserved.size(), 24u);
    for (std::size_t i = 0; i < reserved.size(); ++i)
    {
        EXPECT_EQ(SlotOf(reserved[i]), static_cast<std::ptrdiff_t>(13 + i));
    }
}

TEST(Slots, OfTheFileComponentFollowInOrder)
{
    EXPECT_EQ(SlotOf<bool (IFilePackage::*)(const char*)>(&IFilePackage::open), 6);
    EXPECT_EQ(SlotOf(&IFilePackage::inputFrame), 7);
    EXPECT_EQ(SlotOf(&IFilePackage::close), 8);
    EXPECT_EQ(SlotOf<bool (IFilePackage::*)(const FilePackageProc&)>(&IFilePackage::open), 9);
    EXPECT_EQ(SlotOf(&IFilePackage::getbackup), 10);
    const std::vector<bool (IFilePackage::*)()> reserved = {
        &IFilePackage::rev_func26, &IFilePackage::rev_func25, &IFilePackage::rev_func24,
        &IFilePackage::rev_func23, &IFilePackage::rev_func22, &IFilePackage::rev_func21,
        &IFilePackage::rev_func20, &IFilePackage::rev_func19, &IFilePackage::rev_func18,
        &IFilePackage::rev_func17, &IFilePackage::rev_func16, &IFilePackage::rev_func15,
        &IFilePackage::rev_func14, &IFilePackage::rev_func13, &IFilePackage::rev_func12,
        &IFilePackage::rev_func11, &IFilePackage::rev_func10, &IFilePackage::rev_func9,
        &IFilePackage::rev_func8,  &IFilePackage::rev_func7,  &IFilePackage::rev_func6,
        &IFilePackage::rev_func5,  &IFilePackage::rev_func4,  &IFilePackage::rev_func3,
        &IFilePackage::rev_func2,  &IFilePackage::rev_func1};
    ASSERT_EQ(reserved.size(), 26u);
    for (std::size_t i = 0; i < reserved.size(); ++i)
    {
        EXPECT_EQ(SlotOf(reserved[i]), static_cast<std::ptrdiff_t>(11 + i));
    }
}

/// Calls the reserved slots of an object through its vtable.
void ExpectReserved(void* object, std::size_t first, std::size_t count)
{
    for (std::size_t slot = first; slot < first + count; ++slot)
    {
        setLastError(0);
        EXPECT_FALSE(CallSlot(object, slot)) << slot;
        EXPECT_EQ(getLastError(), 0x10030010u) << slot;
    }
    setLastError(0);
}

TEST(ReservedSlots, SayThatTheyAreNotImplemented)
{
    BareStream stream;
    ExpectReserved(&stream, 13, 24);
    BareFile file;
    ExpectReserved(&file, 11, 26);
}

TEST(ReservedSlots, DoSoInTheLibrarysComponents)
{
    initWraptonComponentLibrary();
    for (const char* type : {"rtp", "unknown"})
    {
        IComponentBase* const stream = IComponentFactory::find(kWraptonClsid)->create(type);
        ExpectReserved(stream, 13, 24);
        stream->release();
    }
    for (const char* type : {"wav", "unknown"})
    {
        IComponentBase* const file = IComponentFactory::find(kFilePackageClsid)->create(type);
        ExpectReserved(file, 11, 26);
        file->release();
    }
}

template <class Call>
void ExpectNotImplemented(Call call)
{
    setLastError(0);
    EXPECT_FALSE(call());
    EXPECT_EQ(getLastError(), kErrorNotImplemented);
    setLastError(0);
}

TEST(Defaults, OfEveryOperationSayThatItIsNotImplemented)
{
    BareStream stream;
    SharedPtr<IWraptonData> data;
    FrameAttributes attrs;
    PacketBuffer packet(1);
    long value = 5;
    ExpectNotImplemented([&] { return stream.inputFrame("", 1, attrs); });
    ExpectNotImplemented([&] { return stream.getPacket(data); });
    ExpectNotImplemented([&] { return stream.inputFrameEx("", 1, attrs, packet); });
    ExpectNotImplemented([&] { return stream.setParam("rtp_ssrc", 1); });
    ExpectNotImplemented([&] { return stream.getParam("rtp_ssrc", value); });
    ExpectNotImplemented([&] { return stream.setExtInfo("rtp_custom_data", "", 1); });
    ExpectNotImplemented([&] { return stream.getExtInfo("rtp_extension_data", data); });
    BareFile file;
    ExpectNotImplemented([&] { return file.open("/dev/null"); });
    ExpectNotImplemented([&] { return file.inputFrame("", 1, attrs); });
    ExpectNotImplemented([&] { return file.close(); });
    ExpectNotImplemented(
        [&] { return file.open([](FrameAttributes&, IWraptonData&) { return true; }); });
    ExpectNotImplemented([&] { return file.getbackup(data, attrs); });
    EXPECT_EQ(value, 5);
    EXPECT_EQ(data, nullptr);
    EXPECT_TRUE(attrs.empty());
}

}  // namespace
}  // namespace Orbel::Wrapton
