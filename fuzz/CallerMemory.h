#ifndef WRAPTON_FUZZ_CALLERMEMORY_H
#define WRAPTON_FUZZ_CALLERMEMORY_H

#include <map>

namespace Fuzz
{

/// A caller's allocator that keeps account of what is out and fails by plan. The functions of the
/// create record have no user pointer, so there is one object at a time.
class CallerMemory
{
public:
    /// @param plan below 128 every call succeeds; from there on its low 3 bits choose the call that
    ///        fails, and bit 3 whether every such call fails or all from it on
    explicit CallerMemory(unsigned plan);
    CallerMemory(const CallerMemory&) = delete;
    CallerMemory& operator=(const CallerMemory&) = delete;
    /// Everything must have been given back.
    ~CallerMemory();

    /// Whether no call fails.
    [[nodiscard]] bool Plenty() const;

    static void* Allocate(int size);
    static void Release(void* memory, int size);

private:
    [[nodiscard]] bool Fails();

    unsigned m_plan;
    unsigned m_calls = 0;
    std::map<void*, int> m_out;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_CALLERMEMORY_H
