/**
 * @file FailingNew.h
 * Lets allocations of the C++ allocator fail.
 *
 * FailingNew.cpp replaces the global allocator, so it is a source of the executables that want it
 * and not a part of what all tests share. The replacement reaches the library through the dynamic
 * linker.
 */
#ifndef WRAPTON_TESTS_SUPPORT_FAILINGNEW_H
#define WRAPTON_TESTS_SUPPORT_FAILINGNEW_H

#include <cstddef>

namespace Support
{

/**
 * For its lifetime the @p number-th allocation of this thread, counted from 1, finds no memory, and
 * with @p onwards all behind it neither. 0 lets every one succeed and counts only.
 */
class FailingNew
{
public:
    explicit FailingNew(std::size_t number, bool onwards = false);
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;
    ~FailingNew();

    /// Allocations asked for since the construction.
    [[nodiscard]] static std::size_t Asked();
};

/**
 * One failure in the course of several calls: while an object lives, the allocation behind the
 * first
 * @p left of this thread finds no memory. When it ends, @p left is what remained: below 0 once the
 * failure has come, and then nothing fails any more.
 */
class Shortage
{
public:
    explicit Shortage(long& left);
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;
    ~Shortage();

private:
    long& m_left;
};

/// Suspends failing and counting, for a callback that allocates for itself.
class Plenty
{
public:
    Plenty();
    Plenty(const Plenty&) = delete;
    Plenty& operator=(const Plenty&) = delete;
    ~Plenty();

private:
    bool m_wasActive;
};

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_FAILINGNEW_H
