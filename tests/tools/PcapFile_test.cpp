#include "PcapFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "support/Bytes.h"

namespace Orbel::Wrapton::Command
{
namespace
{

namespace fs = std::filesystem;
using Support::Bytes;
using Support::Hex;
using Support::Same;

class PcapFileTest : public ::testing::Test
{
protected:
    PcapFileTest()
    {
        std::string pattern = (fs::temp_directory_path() / "wrapton-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) m_directory = pattern;
        m_path = (m_directory / "out.pcap").string();
    }
    ~PcapFileTest() override
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }

    fs::path m_directory;
    std::string m_path;
};

const Bytes kFileHeader =
    Hex("D4 C3 B2 A1 "   // little-endian, times in microseconds
        "02 00 04 00 "   // version 2.4
        "00 00 00 00 "   // time zone
        "00 00 00 00 "   // accuracy
        "FF FF 00 00 "   // longest packet
        "65 00 00 00");  // link type 101: raw IP

TEST_F(PcapFileTest, BeginsWithAHeaderOf24Bytes)
{
    OutputFile output(m_path, {});
    PcapFile(output).Begin();
    output.Finish();
    EXPECT_TRUE(Same(Support::ReadFile(m_path), kFileHeader));
}

TEST_F(PcapFileTest, HoldsPacketsAsDatagramsWithTimesLengthsAndChecksums)
{
    OutputFile output(m_path, {});
    PcapFile capture(output);
    capture.Begin();
    capture.Put(12345, Hex("80 60 01"));
    capture.Put(4294967295u, {});
    output.Finish();
    EXPECT_TRUE(Same(Support::ReadFile(m_path),
                     Support::Join({
                         kFileHeader,
                         Hex("0C 00 00 00 "   // 12 seconds
                             "A8 43 05 00 "   // 345000 microseconds
                             "1F 00 00 00 "   // 31 bytes here
                             "1F 00 00 00 "   // and on the wire
                             "45 00 00 1F "   // version 4, 5 words; length 31
                             "00 00 40 00 "   // identification 0, don't fragment
                             "40 11 B6 CA "   // time to live 64, UDP, checksum
                             "C0 00 02 01 "   // 192.0.2.1
                             "C0 00 02 02 "   // 192.0.2.2
                             "13 8C 13 8C "   // ports 5004
                             "00 0B D3 5B "   // length 11, checksum
                             "80 60 01"),     // the packet
                         Hex("37 89 41 00 "   // 4294967 seconds
                             "58 80 04 00 "   // 295000 microseconds
                             "1C 00 00 00 "   // 28 bytes
                             "1C 00 00 00 "   //
                             "45 00 00 1C "   //
                             "00 01 40 00 "   // identification 1
                             "40 11 B6 CC "   //
                             "C0 00 02 01 "   //
                             "C0 00 02 02 "   //
                             "13 8C 13 8C "   //
                             "00 08 54 C2"),  // no payload
                     })));
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
