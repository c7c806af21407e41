#include "tool/AutoLock.h"

#include <new>

namespace Orbel::Wrapton
{

CSGMutex::CSGMutex() noexcept : m_pData(new (std::nothrow) pthread_mutex_t)
{
    if (m_pData == nullptr) return;

    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(m_pData.get(), &attributes);
    pthread_mutexattr_destroy(&attributes);
}

CSGMutex::~CSGMutex()
{
    if (m_pData != nullptr) pthread_mutex_destroy(m_pData.get());
}

void CSGMutex::Lock() noexcept
{
    if (m_pData != nullptr) pthread_mutex_lock(m_pData.get());
}

void CSGMutex::Unlock() noexcept
{
    if (m_pData != nullptr) pthread_mutex_unlock(m_pData.get());
}

CSGAutoMutexLock::CSGAutoMutexLock(CSGMutex& mutex) noexcept : m_csMutex(mutex)
{
    m_csMutex.Lock();
}

CSGAutoMutexLock::~CSGAutoMutexLock()
{
    if (m_bLocked) m_csMutex.Unlock();
}

void CSGAutoMutexLock::Lock() noexcept
{
    m_csMutex.Lock();
}

void CSGAutoMutexLock::Unlock() noexcept
{
    m_csMutex.Unlock();
    m_bLocked = false;
}

}  // namespace Orbel::Wrapton
