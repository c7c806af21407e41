#ifndef WRAPTON_TOOL_CALLERBUFFER_H
#define WRAPTON_TOOL_CALLERBUFFER_H

#include <memory>

#include "Wrapton.h"

namespace Orbel::Wrapton
{

/// Gives memory back to the allocator that it came from.
struct CallerRelease
{
    SGFree_t func_free = nullptr;
    int size = 0;

    void operator()(unsigned char* memory) const noexcept { func_free(memory, size); }
};

/// A working buffer from the caller's allocator.
using CallerBuffer = std::unique_ptr<unsigned char[], CallerRelease>;

/// @p size bytes from the allocator pair; null when it has none.
inline CallerBuffer AllocateCallerBuffer(SGMalloc_t func_malloc,
                                         SGFree_t func_free,
                                         int size) noexcept
{
    return {static_cast<unsigned char*>(func_malloc(size)), CallerRelease{func_free, size}};
}

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_CALLERBUFFER_H
