#include "clients/system/unfinished.h"

#include "clients/system/signals.h"

#include <csignal>
#include <cstring>
#include <unistd.h>

namespace orvlog::system
{

namespace
{

// What a signal that ends the program takes away first: the file itself, and names of those beside it, one behind the
// other, each with its zero. The latter change with signals held only.
char unfinished[4096];
std::string* beside = nullptr;
void (*previous[NSIG])(int);

// Whoever waited for the signal before has something to take away, too.
void end_by_signal(int signal)
{
    if (unfinished[0] != '\0')
        unlink(unfinished);
    for (size_t at = 0; beside != nullptr && at < beside->size(); at += std::strlen(beside->c_str() + at) + 1)
        unlink(beside->c_str() + at);
    void (*const next)(int) = previous[signal];
    previous[signal] = SIG_DFL;
    if (next != SIG_DFL && next != SIG_ERR)
        return next(signal);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void wait_for_signals()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        void (*const known)(int) = std::signal(signal, end_by_signal);
        if (known == SIG_IGN)
            std::signal(signal, SIG_IGN);
        else if (known != end_by_signal)
            previous[signal] = known;
    }
}

}  // namespace

void set_unfinished(const std::string& part)
{
    if (part.size() >= sizeof unfinished)
        return;
    std::memcpy(unfinished, part.c_str(), part.size() + 1);
    if (!part.empty())
        wait_for_signals();
}

void note_file_beside(const std::string& path)
{
    static std::string names;
    const SignalsHeld held;
    beside = &names;
    names.append(path).push_back('\0');
    wait_for_signals();
}

void forget_files_beside()
{
    const SignalsHeld held;
    if (beside != nullptr)
        beside->clear();
}

}  // namespace orvlog::system
