#ifndef WRAPTON_TOOL_FACTORYREGISTRY_H
#define WRAPTON_TOOL_FACTORYREGISTRY_H

#include <mutex>

namespace Orbel::Wrapton
{

/**
 * Keeps other threads out of the registry of factories.
 *
 * Who holds it while a factory is constructed hides the factory until it is whole: its base class
 * registers it.
 */
class CFactoryRegistryLock
{
public:
    CFactoryRegistryLock() noexcept;

private:
    std::unique_lock<std::recursive_mutex> m_lock;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_FACTORYREGISTRY_H
