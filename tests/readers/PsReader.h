/**
 * @file PsReader.h
 * A program stream read structure by structure, ISO/IEC 13818-1 2.5.
 */
#ifndef WRAPTON_TESTS_READERS_PSREADER_H
#define WRAPTON_TESTS_READERS_PSREADER_H

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

namespace Readers
{

/// The bytes are not what the standard asks for.
class PsError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct PesPacket
{
    uint32_t stream = 0;  ///< stream_id
    std::optional<uint64_t> pts;
    std::optional<uint64_t> dts;
    std::vector<unsigned char> payload;
};

struct ProgramStream
{
    std::vector<uint64_t> clocks;  ///< SCR base of each pack
    std::size_t systemHeaders = 0;
    std::size_t maps = 0;
    std::vector<PesPacket> packets;
};

/// Reads structures to the last byte; throws PsError.
/// @param mapSurplus bytes that a program stream map counts and does not have
ProgramStream ReadPs(std::span<const unsigned char> bytes, std::size_t mapSurplus = 0);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_PSREADER_H
