#include "tool/FactoryRegistry.h"

#include <cstring>
#include <type_traits>

#include "Platform.h"

namespace Orbel::Wrapton
{
namespace
{

// Both are there before any constructor runs and after every destructor: factories may be static.
// The list runs through the factories themselves, so that nothing here needs memory.
constinit std::recursive_mutex s_mutex;
static_assert(std::is_trivially_destructible_v<std::recursive_mutex>);
constinit IComponentFactory* s_pFirst = nullptr;

}  // namespace

CFactoryRegistryLock::CFactoryRegistryLock() noexcept : m_lock(s_mutex) {}

void IComponentFactory::add(IComponentFactory& factory) noexcept
{
    const CFactoryRegistryLock lock;
    factory.m_pNext = s_pFirst;
    s_pFirst = &factory;
}

void IComponentFactory::remove(IComponentFactory& factory) noexcept
{
    const CFactoryRegistryLock lock;
    IComponentFactory** link = &s_pFirst;
    while (*link != nullptr && *link != &factory)
        link = &(*link)->m_pNext;
    if (*link != nullptr) *link = factory.m_pNext;
}

IComponentFactory* IComponentFactory::find(const char* clsid) noexcept
{
    if (clsid == nullptr) return nullptr;

    const CFactoryRegistryLock lock;
    IComponentFactory* factory = s_pFirst;
    while (factory != nullptr &&
           (factory->m_pClsid == nullptr || std::strcmp(factory->m_pClsid, clsid) != 0))
        factory = factory->m_pNext;
    return factory;
}

}  // namespace Orbel::Wrapton
