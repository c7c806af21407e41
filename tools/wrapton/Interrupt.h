#pragma once

namespace Orbel::Wrapton::Command
{

/// From here on SIGINT, SIGTERM and SIGHUP are noted instead of ending the process, unless the
/// caller had them ignored. The second one of a kind ends it at once, so that a stuck file system
/// cannot hold the user.
void CatchInterrupts();

/// The signal that was noted, 0 while there is none.
int CaughtSignal();

}  // namespace Orbel::Wrapton::Command
