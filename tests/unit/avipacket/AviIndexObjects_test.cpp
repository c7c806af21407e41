// The three indexes of an AVI file, each as it stands in the file.
#include "avipacket/AviIdx1Object.h"
#include "avipacket/AviIndxObject.h"
#include "avipacket/AviIxObject.h"

#include "Wrapton.h"
#include "golden/avi/Pieces.h"

namespace Orbel::Wrapton
{
namespace
{

using Golden::Bytes;
using Support::Same;

template <class Object>
Bytes Image(Object& object)
{
    return {object.GetBuffer(), object.GetBuffer() + object.GetBufferLen()};
}

Bytes Image(CAviIndxObject& object)
{
    return {object.GetBuffer().begin(), object.GetBuffer().end()};
}

TEST(CAviIdx1Object, IsAHeaderAloneAtFirst)
{
    CAviIdx1Object index;
    ASSERT_EQ(index.Init(), SG_ERR_NOERR);
    EXPECT_EQ(index.GetEntryCount(), 0u);
    EXPECT_TRUE(Same(Image(index), Golden::Idx1({})));
}

TEST(CAviIdx1Object, StoresCodeOf8BytesKeyAndOffset)
{
    CAviIdx1Object index;
    ASSERT_EQ(index.Init(), SG_ERR_NOERR);
    const Avi_Idx1Entry entry{.tag = kAudioChunk, .key = 0x10, .offset = 0xFEDCBA98};
    EXPECT_EQ(index.InputEntry(&entry), SG_ERR_NOERR);
    EXPECT_EQ(index.GetEntryCount(), 1u);
    EXPECT_TRUE(Same(Image(index), Golden::Idx1({{"01wb", 16, 0xFEDCBA98}})));
}

TEST(CAviIdx1Object, RefusesANullEntryAndStaysAsItIs)
{
    CAviIdx1Object index;
    ASSERT_EQ(index.Init(), SG_ERR_NOERR);
    EXPECT_EQ(index.InputEntry(nullptr), SG_ERR_EMPTY_POINTER);
    EXPECT_TRUE(Same(Image(index), Golden::Idx1({})));
}

TEST(CAviIxObject, HasNoLengthWithoutEntries)
{
    CAviIxObject index;
    ASSERT_EQ(index.Init(AVI_VIDEO_STREAM, 4124), SG_ERR_NOERR);
    EXPECT_EQ(index.GetBufferLen(), 0u);
    EXPECT_EQ(index.GetEntryCount(), 0u);
}

TEST(CAviIxObject, BaseOffsetHas64Bits)
{
    CAviIxObject index;
    ASSERT_EQ(index.Init(AVI_AUDIO_STREAM, 0x123456789ABCDEF0), SG_ERR_NOERR);
    const stdindex_entry first{.offset = 12, .size = 3};
    const stdindex_entry second{.offset = 0xFFFFFFFF, .size = 0x80000005};
    EXPECT_EQ(index.InputEntry(&first), SG_ERR_NOERR);
    EXPECT_EQ(index.InputEntry(&second), SG_ERR_NOERR);
    EXPECT_TRUE(
        Same(Image(index),
             Golden::Ix("ix01", "01wb", 0x123456789ABCDEF0, {{12, 3}, {0xFFFFFFFF, 0x80000005}})));
}

TEST(CAviIxObject, RefusesAnUnknownStream)
{
    CAviIxObject index;
    for (const uint32_t stream : {0u, 3u, UINT32_MAX})
    {
        EXPECT_EQ(index.Init(stream, 0), SG_ERR_PARAM_ERR) << stream;
    }
}

TEST(CAviIxObject, RefusesANullEntry)
{
    CAviIxObject index;
    ASSERT_EQ(index.Init(AVI_VIDEO_STREAM, 0), SG_ERR_NOERR);
    EXPECT_EQ(index.InputEntry(nullptr), SG_ERR_EMPTY_POINTER);
    EXPECT_EQ(index.GetEntryCount(), 0u);
}

// The buffer starts at 4096 bytes, header of 32 included: 508 entries.
TEST(CAviIxObject, GrowsAtThe509thEntryWithoutLosingOne)
{
    CAviIxObject index;
    ASSERT_EQ(index.Init(AVI_VIDEO_STREAM, 7), SG_ERR_NOERR);
    std::vector<Golden::IxEntry> expected;
    for (uint32_t at = 0; at < 510; ++at)
    {
        const stdindex_entry entry{.offset = at * 3, .size = at};
        ASSERT_EQ(index.InputEntry(&entry), SG_ERR_NOERR);
        expected.push_back({at * 3, at});
        if (at < 507) continue;
        EXPECT_TRUE(Same(Image(index), Golden::Ix("ix00", "00dc", 7, expected)));
    }
}

TEST(CAviIndxObject, IsJunkUntilTheFirstEntry)
{
    CAviIndxObject index;
    index.Init(kVideoChunk);
    EXPECT_TRUE(Same(Image(index), Golden::Indx("00dc", {})));
    const superindex_entry entry{.offset = 0x1122334455667788, .size = 40, .entrycount = 1};
    EXPECT_EQ(index.InputEntry(&entry), SG_ERR_NOERR);
    EXPECT_TRUE(Same(Image(index), Golden::Indx("00dc", {{0x1122334455667788, 40, 1}})));
    EXPECT_EQ(CAviIndxObject::GetBufferLen(), 1032u);
}

TEST(CAviIndxObject, RefusesANullEntryAndStaysJunk)
{
    CAviIndxObject index;
    index.Init(kAudioChunk);
    EXPECT_EQ(index.InputEntry(nullptr), SG_ERR_EMPTY_POINTER);
    EXPECT_TRUE(Same(Image(index), Golden::Indx("01wb", {})));
}

TEST(CAviIndxObject, Holds62EntriesAndStoresNoneBehindThem)
{
    CAviIndxObject index;
    index.Init(kVideoChunk);
    Bytes entries;
    for (uint32_t at = 0; at < 62; ++at)
    {
        const superindex_entry entry{.offset = at + 1, .size = at + 2, .entrycount = at + 3};
        ASSERT_EQ(index.InputEntry(&entry), SG_ERR_NOERR);
        Support::Append(entries, Support::Lsb64(at + 1));
        Support::Append(entries, Support::Lsb32(at + 2));
        Support::Append(entries, Support::Lsb32(at + 3));
    }
    const Bytes full = Image(index);
    EXPECT_TRUE(Same(Support::Slice(full, 12, 4), Support::Lsb32(62)));
    EXPECT_TRUE(Same(Support::Slice(full, 32, 992), entries));
    EXPECT_TRUE(Same(Support::Slice(full, 1024, 8), Support::Zero(8)));

    const superindex_entry late{.offset = ~uint64_t{0}, .size = ~0u, .entrycount = ~0u};
    EXPECT_EQ(index.InputEntry(&late), SG_ERR_NOERR);
    EXPECT_EQ(index.GetEntryCount(), 62u);
    EXPECT_TRUE(Same(Image(index), full));
}

}  // namespace
}  // namespace Orbel::Wrapton
