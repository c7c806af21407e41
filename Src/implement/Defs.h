#ifndef WRAPTON_IMPLEMENT_DEFS_H
#define WRAPTON_IMPLEMENT_DEFS_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "IWrapton.h"
#include "Package.h"

namespace Orbel::Wrapton
{

/// One packager under the two spellings of its name.
struct ComponentType
{
    std::string_view small;
    std::string_view capital;
    uint32_t type;  // SG_STREAM_TYPE
};

/// The packager of a component, with every default; null when @p name, taken as it is, stands not
/// in
/// @p types. Throws std::bad_alloc.
std::unique_ptr<CPackage> CreateComponentPackage(std::span<const ComponentType> types,
                                                 const std::string& name);

/// The version of both components.
VersionInfo ComponentVersion() noexcept;

/// Runs the body of an operation; what it throws, for want of memory, makes it false with
/// errorParam.
template <class Body>
bool Guarded(Body body) noexcept
{
    try
    {
        return body();
    }
    catch (...)
    {
        setLastError(errorParam);
        return false;
    }
}

/// A new component with one reference; null, with errorParam, when there is no memory.
template <class Component>
Component* CreateComponent(const std::string& type) noexcept
{
    try
    {
        return new Component(type);
    }
    catch (...)
    {
        setLastError(errorParam);
        return nullptr;
    }
}

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_IMPLEMENT_DEFS_H
