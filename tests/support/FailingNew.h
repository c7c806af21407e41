/**
 * @file FailingNew.h
 * Lets one allocation of the C++ allocator fail.
 *
 * FailingNew.cpp replaces the global allocator, so it is a source of the executables that want it
 * and not a part of what all tests share. The replacement reaches the library through the dynamic
 * linker.
 */
#ifndef WRAPTON_TESTS_SUPPORT_FAILINGNEW_H
#define WRAPTON_TESTS_SUPPORT_FAILINGNEW_H

namespace Support
{

/**
 * While one lives, the allocations of its thread are counted, and the one behind the first @p left
 * gives nothing. When it ends, @p left is what remained: below 0 once the failure has come, and
 * then nothing fails any more.
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

/// Suspends the shortage, for a callback that allocates for itself.
class Plenty
{
public:
    Plenty();
    Plenty(const Plenty&) = delete;
    Plenty& operator=(const Plenty&) = delete;
    ~Plenty();

private:
    long m_left;
};

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_FAILINGNEW_H
