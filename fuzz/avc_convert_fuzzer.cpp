// CAvcConvert against a reference that looks at every position.
#include <algorithm>
#include <memory>
#include <vector>

#include "ByteSource.h"
#include "Require.h"
#include "readers/AnnexBReference.h"
#include "tool/AvcConvert.h"

using Fuzz::Require;
using Orbel::Wrapton::CAvcConvert;
using Readers::ReferenceResult;

namespace
{

using Operation = int32_t (CAvcConvert::*)(const unsigned char*,
                                           unsigned int,
                                           unsigned char*,
                                           unsigned int) const;

/// Calls an operation with an output of exactly @p capacity bytes and compares.
void Compare(Operation operation,
             std::span<const unsigned char> data,
             std::size_t capacity,
             const ReferenceResult& expected)
{
    constexpr unsigned char kUntouched = 0xEE;
    const auto out = std::make_unique<unsigned char[]>(capacity);
    std::fill_n(out.get(), capacity, kUntouched);
    const int32_t result = (CAvcConvert().*operation)(data.data(),
                                                      static_cast<unsigned int>(data.size()),
                                                      out.get(),
                                                      static_cast<unsigned int>(capacity));
    Require(result == expected.result, "the result is the reference's");
    Require(std::equal(expected.written.begin(), expected.written.end(), out.get()),
            "the bytes are the reference's");
    Require(std::all_of(out.get() + expected.written.size(),
                        out.get() + capacity,
                        [](unsigned char byte) { return byte == kUntouched; }),
            "nothing behind the result is written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Fuzz::ByteSource source(data, size);
    const std::size_t choice = source.U16();
    const std::span<const uint8_t> rest = source.Take(size);
    const auto exact = std::make_unique<unsigned char[]>(rest.size());
    std::copy(rest.begin(), rest.end(), exact.get());
    const std::span<const unsigned char> stream(exact.get(), rest.size());

    const std::size_t capacity = 1 + choice % (2 * stream.size() + 16);
    Compare(&CAvcConvert::getSPS,
            stream,
            capacity,
            Readers::ReferenceParameterSet(stream, 7, capacity));
    Compare(&CAvcConvert::getPPS,
            stream,
            capacity,
            Readers::ReferenceParameterSet(stream, 8, capacity));
    Compare(
        &CAvcConvert::H264ToAvc, stream, capacity, Readers::ReferenceH264ToAvc(stream, capacity));
    return 0;
}
