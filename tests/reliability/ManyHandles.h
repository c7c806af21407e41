/**
 * @file ManyHandles.h
 * Any number of handles of one container, or of components of one type, at once.
 */
#ifndef WRAPTON_TESTS_RELIABILITY_MANYHANDLES_H
#define WRAPTON_TESTS_RELIABILITY_MANYHANDLES_H

#include <cstdint>

#include "reliability/ComponentSubject.h"
#include "reliability/Subject.h"

namespace Reliability
{

/**
 * Feeds @p count handles in turn and fails the test unless each gives what one gives alone, and
 * unless memory stays within what is said of idle and active handles in docs/reliability.md. Prints
 * the memory of each.
 */
void ExpectHandlesApart(uint32_t type, std::size_t count);
/// The same for components.
void ExpectComponentsApart(const ComponentKind& kind, std::size_t count);

}  // namespace Reliability

#endif  // WRAPTON_TESTS_RELIABILITY_MANYHANDLES_H
