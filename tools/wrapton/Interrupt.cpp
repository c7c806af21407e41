#include "Interrupt.h"

#include <csignal>

namespace Orbel::Wrapton::Command
{
namespace
{

volatile std::sig_atomic_t s_caught = 0;

extern "C" void NoteSignal(int number)
{
    s_caught = number;
}

void Catch(int number)
{
    // Of nohup, and of a shell for what it runs in the background: such a signal stays ignored.
    struct sigaction before = {};
    if (sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) return;

    struct sigaction action = {};
    action.sa_handler = NoteSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags =
        static_cast<int>(SA_RESETHAND);  // no SA_RESTART: a blocked read has to return
    sigaction(number, &action, nullptr);
}

}  // namespace

void CatchInterrupts()
{
    Catch(SIGINT);
    Catch(SIGTERM);
    Catch(SIGHUP);
}

int CaughtSignal()
{
    return s_caught;
}

}  // namespace Orbel::Wrapton::Command
