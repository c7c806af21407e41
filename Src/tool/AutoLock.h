#ifndef WRAPTON_TOOL_AUTOLOCK_H
#define WRAPTON_TOOL_AUTOLOCK_H

#include <pthread.h>

#include <memory>

namespace Orbel::Wrapton
{

/// A recursive mutex: the thread that holds it may lock it again.
class CSGMutex
{
public:
    CSGMutex() noexcept;
    virtual ~CSGMutex();
    CSGMutex(const CSGMutex&) = delete;
    CSGMutex& operator=(const CSGMutex&) = delete;

    /// Both do nothing when there was no memory for the mutex.
    void Lock() noexcept;
    void Unlock() noexcept;

private:
    std::unique_ptr<pthread_mutex_t> m_pData;
};

/// Holds a mutex for a scope.
class CSGAutoMutexLock
{
public:
    explicit CSGAutoMutexLock(CSGMutex& mutex) noexcept;
    virtual ~CSGAutoMutexLock();
    CSGAutoMutexLock(const CSGAutoMutexLock&) = delete;
    CSGAutoMutexLock& operator=(const CSGAutoMutexLock&) = delete;

    /// Locks once more. The scope's end does not undo it: that is the caller's Unlock() to do.
    void Lock() noexcept;
    void Unlock() noexcept;

private:
    CSGMutex& m_csMutex;
    bool m_bLocked = true;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_AUTOLOCK_H
