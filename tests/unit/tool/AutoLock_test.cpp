#include "tool/AutoLock.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <type_traits>

#include <gtest/gtest.h>

namespace Orbel::Wrapton
{
namespace
{

static_assert(std::has_virtual_destructor_v<CSGMutex>);
static_assert(std::has_virtual_destructor_v<CSGAutoMutexLock>);
static_assert(!std::is_copy_assignable_v<CSGAutoMutexLock>);

/// Another thread that wants a mutex. It gives the mutex back as soon as it has had it.
class Rival
{
public:
    explicit Rival(CSGMutex& mutex)
        : m_thread(
              [this, &mutex]
              {
                  mutex.Lock();
                  m_had = true;
                  mutex.Unlock();
              })
    {
    }
    Rival(const Rival&) = delete;
    Rival& operator=(const Rival&) = delete;
    /// Whoever holds the mutex must have let it go.
    ~Rival() { m_thread.join(); }

    /// Whether the mutex stayed out of reach for a while.
    [[nodiscard]] bool Waits() const
    {
        for (int i = 0; i < 30 && !m_had; ++i)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return !m_had;
    }

private:
    std::atomic<bool> m_had = false;
    std::thread m_thread;
};

/// Whether nobody holds the mutex: another thread gets it. Hangs the test if that is not so.
bool IsFree(CSGMutex& mutex)
{
    bool had = false;
    std::thread other(
        [&]
        {
            mutex.Lock();
            had = true;
            mutex.Unlock();
        });
    other.join();
    return had;
}

TEST(CSGMutex, KeepsOtherThreadsOut)
{
    CSGMutex mutex;
    mutex.Lock();
    std::optional<Rival> rival(mutex);
    EXPECT_TRUE(rival->Waits());
    mutex.Unlock();
    rival.reset();
    EXPECT_TRUE(IsFree(mutex));
}

TEST(CSGMutex, MayBeLockedAgainByTheThreadThatHoldsIt)
{
    CSGMutex mutex;
    mutex.Lock();
    mutex.Lock();
    mutex.Lock();
    mutex.Unlock();
    mutex.Unlock();
    std::optional<Rival> rival(mutex);
    EXPECT_TRUE(rival->Waits());
    mutex.Unlock();
    rival.reset();
    EXPECT_TRUE(IsFree(mutex));
}

TEST(CSGMutex, OrdersTheWorkOfTwoThreads)
{
    CSGMutex mutex;
    int count = 0;
    const auto work = [&]
    {
        for (int i = 0; i < 5000; ++i)
        {
            const CSGAutoMutexLock lock(mutex);
            ++count;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(count, 10000);
}

TEST(CSGAutoMutexLock, HoldsTheMutexForItsScope)
{
    CSGMutex mutex;
    std::optional<CSGAutoMutexLock> lock(mutex);
    std::optional<Rival> rival(mutex);
    EXPECT_TRUE(rival->Waits());
    lock.reset();
    rival.reset();
    EXPECT_TRUE(IsFree(mutex));
}

TEST(CSGAutoMutexLock, NestsInOneThread)
{
    CSGMutex mutex;
    std::optional<CSGAutoMutexLock> outer(mutex);
    {
        const CSGAutoMutexLock inner(mutex);
    }
    std::optional<Rival> rival(mutex);
    EXPECT_TRUE(rival->Waits());
    outer.reset();
}

TEST(CSGAutoMutexLock, UnlockLetsGoAndLeavesNothingToTheDestructor)
{
    CSGMutex mutex;
    mutex.Lock();  // a second unlock by the destructor would take this one away
    {
        CSGAutoMutexLock lock(mutex);
        lock.Unlock();
    }
    std::optional<Rival> rival(mutex);
    EXPECT_TRUE(rival->Waits());
    mutex.Unlock();
}

TEST(CSGAutoMutexLock, LockAfterUnlockIsNotUndoneByTheDestructor)
{
    CSGMutex mutex;
    {
        CSGAutoMutexLock lock(mutex);
        lock.Unlock();
        EXPECT_TRUE(IsFree(mutex));
        lock.Lock();
    }
    // Kept: locking again does not set the mark that the destructor goes by.
    std::optional<Rival> rival(mutex);
    EXPECT_TRUE(rival->Waits());
    mutex.Unlock();
}

TEST(CSGAutoMutexLock, LockInsideTheScopeNeedsItsOwnUnlock)
{
    CSGMutex mutex;
    {
        CSGAutoMutexLock lock(mutex);
        lock.Lock();
    }
    std::optional<Rival> rival(mutex);
    EXPECT_TRUE(rival->Waits());
    mutex.Unlock();
}

}  // namespace
}  // namespace Orbel::Wrapton
