#include "Package.h"

#include <array>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;

/// What the packagers below were asked to do, in order.
std::vector<std::string> s_calls;

/// Overrides everything that can be overridden and notes which operation ran.
class NotingPackage : public CPackage
{
public:
    NotingPackage() : CPackage(77, nullptr) {}
    NotingPackage(const NotingPackage&) = delete;
    NotingPackage& operator=(const NotingPackage&) = delete;
    ~NotingPackage() override { s_calls.emplace_back("destructor"); }
    int SetDataCallBack(SGDataCB_t, void*) override { return Note("SetDataCallBack", 2); }
    int Init() override { return Note("Init", 3); }
    int Deinit() override { return Note("Deinit", 4); }
    int CreateHeader(SGHeaderInfo*, unsigned int) override { return Note("CreateHeader", 5); }
    int InputData(SGFrameInfo*, unsigned int) override { return Note("InputData frame", 6); }
    int InputData(SGFrameInfo*, PacketBuffer&) override { return Note("InputData packet", 7); }
    int CreateTailer(SGTailerInfo*, unsigned int) override { return Note("CreateTailer", 8); }
    int SetParam(const void*, int) override { return Note("SetParam", 9); }
    int GetParam(void*&, int&) override { return Note("GetParam", 10); }
    int GetFileHeader(SGOutputData*) override { return Note("GetFileHeader", 11); }

private:
    static int Note(const char* operation, int number)
    {
        s_calls.emplace_back(operation);
        return number;
    }
};

/// Supplies the pure operations only; shows the members and Emit.
class PlainPackage : public CPackage
{
public:
    explicit PlainPackage(uint32_t nType = 16, const SGCreateParam* pCreateParam = nullptr)
        : CPackage(nType, pCreateParam)
    {
    }
    int Init() override { return SG_ERR_NOERR; }
    int Deinit() override { return SG_ERR_NOERR; }
    int CreateHeader(SGHeaderInfo*, unsigned int) override { return SG_ERR_NOERR; }
    using CPackage::InputData;
    int InputData(SGFrameInfo*, unsigned int) override { return SG_ERR_NOERR; }
    int CreateTailer(SGTailerInfo*, unsigned int) override { return SG_ERR_NOERR; }

    using CPackage::Emit;
    using CPackage::func_datacb;
    using CPackage::func_free;
    using CPackage::func_malloc;
    using CPackage::m_pUser;
    using CPackage::Origin;
};

/// An entry of a virtual table, called as the compiler calls it.
template <class Result, class... Arguments>
Result CallSlot(CPackage* package, std::size_t slot, Arguments... arguments)
{
    const auto* const table = *reinterpret_cast<void* const* const*>(package);
    const auto entry = reinterpret_cast<Result (*)(CPackage*, Arguments...)>(table[slot]);
    return entry(package, arguments...);
}

TEST(CPackage, KeepsTheOrderOfItsVirtualOperations)
{
    s_calls.clear();
    auto* const package = new NotingPackage;
    PacketBuffer packet;
    void* parameter = nullptr;
    int length = 0;
    // A destructor takes two entries: for an object in place, and for one to be deleted.
    EXPECT_EQ((CallSlot<int, SGDataCB_t, void*>(package, 2, nullptr, nullptr)), 2);
    EXPECT_EQ(CallSlot<int>(package, 3), 3);
    EXPECT_EQ(CallSlot<int>(package, 4), 4);
    EXPECT_EQ((CallSlot<int, SGHeaderInfo*, unsigned int>(package, 5, nullptr, 0)), 5);
    EXPECT_EQ((CallSlot<int, SGFrameInfo*, unsigned int>(package, 6, nullptr, 0)), 6);
    EXPECT_EQ((CallSlot<int, SGFrameInfo*, PacketBuffer&>(package, 7, nullptr, packet)), 7);
    EXPECT_EQ((CallSlot<int, SGTailerInfo*, unsigned int>(package, 8, nullptr, 0)), 8);
    EXPECT_EQ((CallSlot<int, const void*, int>(package, 9, nullptr, 0)), 9);
    EXPECT_EQ((CallSlot<int, void*&, int&>(package, 10, parameter, length)), 10);
    EXPECT_EQ((CallSlot<int, SGOutputData*>(package, 11, nullptr)), 11);
    CallSlot<void>(package, 1);  // deletes the object
    EXPECT_EQ(s_calls,
              (std::vector<std::string>{"SetDataCallBack",
                                        "Init",
                                        "Deinit",
                                        "CreateHeader",
                                        "InputData frame",
                                        "InputData packet",
                                        "CreateTailer",
                                        "SetParam",
                                        "GetParam",
                                        "GetFileHeader",
                                        "destructor"}));
}

TEST(CPackage, KeepsItsTypeNumberWhateverItIs)
{
    EXPECT_EQ(PlainPackage(0).GetType(), 0u);
    EXPECT_EQ(PlainPackage(16).GetType(), 16u);
    EXPECT_EQ(PlainPackage(0xFFFFFFFF).GetType(), 0xFFFFFFFFu);
}

TEST(CPackage, HasItsDefaultsWithoutACreateRecord)
{
    const PlainPackage package;
    EXPECT_EQ(package.m_pUser, nullptr);
    EXPECT_EQ(package.func_malloc, &SGMalloc);
    EXPECT_EQ(package.func_free, &SGFree);
    EXPECT_EQ(package.func_datacb, &SGDataCB);
}

void* OtherMalloc(int /*size*/)
{
    return nullptr;
}
void OtherFree(void* /*memory*/, int /*size*/) {}
void OtherCallback(SGOutputData* /*block*/, void* /*user*/) {}

TEST(CPackage, TakesEachFieldOfTheCreateRecordThatIsSet)
{
    int user = 0;
    SGCreateParam none{};
    const PlainPackage untouched(16, &none);
    EXPECT_EQ(untouched.m_pUser, nullptr);
    EXPECT_EQ(untouched.func_malloc, &SGMalloc);
    EXPECT_EQ(untouched.func_free, &SGFree);
    EXPECT_EQ(untouched.func_datacb, &SGDataCB);

    SGCreateParam onlyUser{};
    onlyUser.user = &user;
    const PlainPackage withUser(16, &onlyUser);
    EXPECT_EQ(withUser.m_pUser, &user);
    EXPECT_EQ(withUser.func_malloc, &SGMalloc);
    EXPECT_EQ(withUser.func_free, &SGFree);
    EXPECT_EQ(withUser.func_datacb, &SGDataCB);

    SGCreateParam onlyMalloc{};
    onlyMalloc.sg_malloc = OtherMalloc;
    const PlainPackage withMalloc(16, &onlyMalloc);
    EXPECT_EQ(withMalloc.func_malloc, &OtherMalloc);
    EXPECT_EQ(withMalloc.func_free, &SGFree);
    EXPECT_EQ(withMalloc.func_datacb, &SGDataCB);

    SGCreateParam onlyFree{};
    onlyFree.sg_free = OtherFree;
    const PlainPackage withFree(16, &onlyFree);
    EXPECT_EQ(withFree.func_malloc, &SGMalloc);
    EXPECT_EQ(withFree.func_free, &OtherFree);
    EXPECT_EQ(withFree.func_datacb, &SGDataCB);

    SGCreateParam onlyCallback{};
    onlyCallback.sg_datacb = OtherCallback;
    const PlainPackage withCallback(16, &onlyCallback);
    EXPECT_EQ(withCallback.m_pUser, nullptr);
    EXPECT_EQ(withCallback.func_malloc, &SGMalloc);
    EXPECT_EQ(withCallback.func_free, &SGFree);
    EXPECT_EQ(withCallback.func_datacb, &OtherCallback);
}

TEST(CPackage, DoesNotLookAtTheCreateRecordsSize)
{
    for (const uint32_t size : {0u, 1u, 40u, 0xFFFFFFFFu})
    {
        SGCreateParam create{};
        create.struct_size = size;
        create.sg_datacb = OtherCallback;
        EXPECT_EQ(PlainPackage(16, &create).func_datacb, &OtherCallback);
    }
}

TEST(CPackage, StoresCallbackAndUserAsTheyAreGiven)
{
    int user = 0;
    PlainPackage package;
    EXPECT_EQ(package.SetDataCallBack(OtherCallback, &user), 0);
    EXPECT_EQ(package.func_datacb, &OtherCallback);
    EXPECT_EQ(package.m_pUser, &user);
    // Null does not bring the default back.
    EXPECT_EQ(package.SetDataCallBack(nullptr, nullptr), 0);
    EXPECT_EQ(package.func_datacb, nullptr);
    EXPECT_EQ(package.m_pUser, nullptr);
}

TEST(CPackage, DoesNothingInTheOperationsWithADefault)
{
    PlainPackage package;
    PacketBuffer packet;
    SGFrameInfo frame{};
    EXPECT_EQ(package.InputData(&frame, packet), 0);
    EXPECT_EQ(package.InputData(nullptr, packet), 0);
    EXPECT_FALSE(packet.IsValid());
    EXPECT_EQ(package.SetParam(nullptr, 0), 0);
    EXPECT_EQ(package.SetParam(&frame, 112), 0);

    int target = 0;
    void* parameter = &target;
    int length = 5;
    EXPECT_EQ(package.GetParam(parameter, length), 0);
    EXPECT_EQ(parameter, &target);
    EXPECT_EQ(length, 5);
}

TEST(CPackage, HasNoFileHeaderByDefault)
{
    unsigned char byte = 0;
    SGOutputData output{};
    output.struct_size = 99;
    output.data_pointer = &byte;
    output.data_size = 1;
    output.offset_type = 2;
    output.offset_pos = 3;
    output.offset_pos64 = 4;
    PlainPackage package;
    EXPECT_EQ(package.GetFileHeader(&output), 0);
    EXPECT_EQ(output.struct_size, 99u);  // stays
    EXPECT_EQ(output.data_pointer, nullptr);
    EXPECT_EQ(output.data_size, 0);
    EXPECT_EQ(output.offset_type, 0);
    EXPECT_EQ(output.offset_pos, 0u);
    EXPECT_EQ(output.offset_pos64, 4);  // stays
    EXPECT_EQ(package.GetFileHeader(nullptr), SG_ERR_PARAM_ERR);
}

TEST(DefaultFunctions, AllocateReleaseAndDiscard)
{
    void* const memory = SGMalloc(100);
    ASSERT_NE(memory, nullptr);
    std::memset(memory, 0x5A, 100);
    SGFree(memory, 1);  // the size is ignored
    SGFree(nullptr, 100);

    void* const nothing = SGMalloc(0);
    SGFree(nothing, 0);
    EXPECT_EQ(SGMalloc(-1), nullptr);
    EXPECT_EQ(SGMalloc(INT_MIN), nullptr);

    SGOutputData block{};
    block.data_size = 7;
    SGDataCB(&block, nullptr);
    SGDataCB(nullptr, nullptr);
    EXPECT_EQ(block.data_size, 7);
}

/// What a callback saw, and what it answers with.
struct Receiver
{
    SGOutputData seen{};
    int32_t answer = 0;
    int calls = 0;
};

void Receive(SGOutputData* block, void* user)
{
    auto& receiver = *static_cast<Receiver*>(user);
    receiver.seen = *block;
    ++receiver.calls;
    block->data_size = receiver.answer;
}

TEST(Emit, FillsTheWholeBlock)
{
    Receiver receiver{.answer = 5};
    PlainPackage package;
    package.SetDataCallBack(Receive, &receiver);
    const Bytes bytes = Support::Payload(5);
    EXPECT_EQ(package.Emit(bytes.data(), 5, PlainPackage::Origin::kStart, 0x123456789A), 5u);
    EXPECT_EQ(receiver.calls, 1);
    EXPECT_EQ(receiver.seen.struct_size, 40u);
    EXPECT_EQ(receiver.seen.data_pointer, bytes.data());
    EXPECT_EQ(receiver.seen.data_size, 5);
    EXPECT_EQ(receiver.seen.offset_type, 0);
    EXPECT_EQ(receiver.seen.offset_pos, 0x3456789Au);  // the low 32 bits
    EXPECT_EQ(receiver.seen.offset_pos64, 0x123456789A);
}

TEST(Emit, KnowsTheThreeOriginsOfASeek)
{
    Receiver receiver{.answer = 1};
    PlainPackage package;
    package.SetDataCallBack(Receive, &receiver);
    const unsigned char byte = 1;
    package.Emit(&byte, 1, PlainPackage::Origin::kStart, 0);
    EXPECT_EQ(receiver.seen.offset_type, 0);
    package.Emit(&byte, 1, PlainPackage::Origin::kCurrent, 0);
    EXPECT_EQ(receiver.seen.offset_type, 1);
    package.Emit(&byte, 1, PlainPackage::Origin::kEnd, -1);
    EXPECT_EQ(receiver.seen.offset_type, 2);
    EXPECT_EQ(receiver.seen.offset_pos, 0xFFFFFFFFu);
    EXPECT_EQ(receiver.seen.offset_pos64, -1);
}

TEST(Emit, CountsWhatTheCallbackSaysItTook)
{
    struct Case
    {
        int32_t answer;
        uint32_t counted;
    };
    // A negative answer means none, a raised one means all.
    for (const Case c : {Case{100, 100},
                         Case{99, 99},
                         Case{1, 1},
                         Case{0, 0},
                         Case{-1, 0},
                         Case{INT_MIN, 0},
                         Case{101, 100},
                         Case{INT_MAX, 100}})
    {
        Receiver receiver{.answer = c.answer};
        PlainPackage package;
        package.SetDataCallBack(Receive, &receiver);
        const Bytes bytes(100);
        EXPECT_EQ(package.Emit(bytes.data(), 100, PlainPackage::Origin::kStart, 0), c.counted)
            << c.answer;
    }
}

TEST(Emit, DiscardsWithoutACallback)
{
    PlainPackage package;
    const Bytes bytes(10);
    EXPECT_EQ(package.Emit(bytes.data(), 10, PlainPackage::Origin::kStart, 0), 10u);
    package.SetDataCallBack(nullptr, nullptr);
    EXPECT_EQ(package.Emit(bytes.data(), 10, PlainPackage::Origin::kStart, 0), 10u);
}

TEST(PacketBuffer, BecomesValidWhenItGetsMemory)
{
    PacketBuffer packet;
    EXPECT_FALSE(packet.IsValid());
    EXPECT_EQ(packet.Size(), 0u);
    ASSERT_TRUE(packet.Resize(3));
    EXPECT_TRUE(packet.IsValid());
    EXPECT_EQ(Bytes(packet.Data(), packet.Data() + packet.Size()), Bytes(3, 0));
    EXPECT_TRUE(packet.Resize(0));
    EXPECT_TRUE(packet.IsValid());
    EXPECT_EQ(packet.Size(), 0u);

    const PacketBuffer sized(5);
    EXPECT_TRUE(sized.IsValid());
    EXPECT_EQ(Bytes(sized.Data(), sized.Data() + sized.Size()), Bytes(5, 0));
}

TEST(PacketBuffer, KeepsItsBytesWhenItGrows)
{
    PacketBuffer packet(2);
    packet.Data()[0] = 1;
    packet.Data()[1] = 2;
    ASSERT_TRUE(packet.Resize(100000));
    EXPECT_EQ(packet.Data()[0], 1);
    EXPECT_EQ(packet.Data()[1], 2);
    EXPECT_EQ(packet.Data()[99999], 0);
}

TEST(PacketBuffer, IsUnchangedByASizeThatCannotBe)
{
    PacketBuffer packet(2);
    packet.Data()[1] = 9;
    EXPECT_FALSE(packet.Resize(SIZE_MAX));
    EXPECT_EQ(packet.Size(), 2u);
    EXPECT_EQ(packet.Data()[1], 9);
    const PacketBuffer impossible(SIZE_MAX);
    EXPECT_FALSE(impossible.IsValid());
}

}  // namespace
}  // namespace Orbel::Wrapton
