/**
 * @file BlockLog.h
 * What left through the callback, to be compared with what another run gave.
 */
#ifndef WRAPTON_TESTS_RELIABILITY_BLOCKLOG_H
#define WRAPTON_TESTS_RELIABILITY_BLOCKLOG_H

#include <cstdint>
#include <vector>

#include "Wrapton.h"
#include "support/Bytes.h"

namespace Reliability
{

struct LoggedBlock
{
    int32_t origin = 0;
    int64_t position = 0;
    Support::Bytes bytes;

    bool operator==(const LoggedBlock& other) const = default;
};

using BlockLog = std::vector<LoggedBlock>;

/// The callback for a BlockLog.
inline void Log(Orbel::Wrapton::SGOutputData* block, void* log)
{
    static_cast<BlockLog*>(log)->push_back(
        {block->offset_type,
         block->offset_pos64,
         {block->data_pointer, block->data_pointer + block->data_size}});
}

inline Orbel::Wrapton::SGCreateParam LogTo(BlockLog& log)
{
    Orbel::Wrapton::SGCreateParam create{};
    create.struct_size = sizeof(create);
    create.user = &log;
    create.sg_datacb = &Log;
    return create;
}

}  // namespace Reliability

#endif  // WRAPTON_TESTS_RELIABILITY_BLOCKLOG_H
