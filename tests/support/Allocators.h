/**
 * @file Allocators.h
 * An allocator pair that keeps account of every call and can be told to fail.
 */
#ifndef WRAPTON_TESTS_SUPPORT_ALLOCATORS_H
#define WRAPTON_TESTS_SUPPORT_ALLOCATORS_H

#include <cstddef>
#include <vector>

namespace Support
{

/**
 * While an object of this class lives, Malloc and Free of its thread report to it; the functions of
 * the create record have no user pointer, so there is one object at a time.
 */
class AllocatorLog
{
public:
    AllocatorLog();
    AllocatorLog(const AllocatorLog&) = delete;
    AllocatorLog& operator=(const AllocatorLog&) = delete;
    ~AllocatorLog();

    static void* Malloc(int size);
    /// Fails the test when the memory is not from Malloc, is given back twice or with another size.
    static void Free(void* memory, int size);

    /// The @p number-th call from now on, counted from 1, gives null; 0 lets every call succeed.
    void FailCall(std::size_t number) { m_failIn = number; }

    /// Sizes asked for, in order, failed calls included.
    [[nodiscard]] const std::vector<int>& Asked() const { return m_asked; }
    /// Sizes given back, in order.
    [[nodiscard]] const std::vector<int>& Released() const { return m_released; }
    [[nodiscard]] std::size_t LiveCount() const { return m_live.size(); }

private:
    struct Piece
    {
        void* memory;
        int size;
    };

    std::size_t m_failIn = 0;
    std::vector<int> m_asked;
    std::vector<int> m_released;
    std::vector<Piece> m_live;
};

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_ALLOCATORS_H
