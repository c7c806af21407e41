#ifndef WRAPTON_PACKAGEIMPL_H
#define WRAPTON_PACKAGEIMPL_H

#include <memory>

#include "Package.h"

namespace Orbel::Wrapton
{

/// The packager of an SG_STREAM_TYPE; null for a type that has none here. Throws std::bad_alloc.
std::unique_ptr<CPackage> CreatePackage(unsigned int nType, const SGCreateParam* pCreateParam);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PACKAGEIMPL_H
