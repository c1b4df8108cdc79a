#include "clients/system/signals.h"

#include "clients/system/signal-set-posix.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvlog::system
{

namespace
{

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE};
constexpr size_t kMostFolders = 4;

// What the handler looks at. All of it is changed with signals held.
char folders[kMostFolders][4096];
volatile ProcessId program = 0;
volatile sig_atomic_t received = 0;
void (*previous[NSIG])(int);

// As the system gives them, behind one another.
struct Entry
{
    uint64_t inode;
    int64_t next;
    uint16_t size;
    uint8_t type;
    char name[1];
};

// Removes a folder that holds files only, by calls that a signal's handler may make.
void remove_folder(const char* folder)
{
    const int opened = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    alignas(Entry) char block[4096];
    long size = 0;
    while (opened >= 0 && (size = syscall(SYS_getdents64, opened, block, sizeof block)) > 0)
    {
        for (long at = 0; at < size;)
        {
            const auto* entry = reinterpret_cast<const Entry*>(block + at);
            unlinkat(opened, reinterpret_cast<const char*>(entry) + offsetof(Entry, name), 0);
            at += entry->size;
        }
    }
    if (opened >= 0)
        close(opened);
    rmdir(folder);
}

void on_signal(int signal)
{
    const int reason = errno;
    if (program > 0)
    {
        if (received == 0)
            received = signal;
        if (signal != SIGPIPE)
            kill(static_cast<pid_t>(program), signal);
        errno = reason;
        return;
    }
    for (char* folder : folders)
        if (folder[0] != '\0')
            remove_folder(folder);
    if (previous[signal] == SIG_DFL)
        _exit(kSignalStatus + signal);
    previous[signal](signal);
}

void catch_signal(int signal)
{
    struct sigaction known = {};
    sigaction(signal, nullptr, &known);
    if (known.sa_handler == SIG_IGN || known.sa_handler == on_signal)
        return;
    previous[signal] = known.sa_handler;
    struct sigaction ours = {};
    ours.sa_handler = on_signal;
    ours.sa_flags = SA_RESTART;
    for (const int other : kSignals)
        sigaddset(&ours.sa_mask, other);
    sigaction(signal, &ours, nullptr);
}

}  // namespace

void catch_signals()
{
    for (const int signal : kSignals)
        catch_signal(signal);
}

int signal_received()
{
    return received;
}

void set_running_program(ProcessId running)
{
    program = running;
}

void note_folder(const std::string& folder)
{
    for (char* place : folders)
    {
        if (place[0] != '\0' || folder.size() >= sizeof folders[0])
            continue;
        std::memcpy(place, folder.c_str(), folder.size() + 1);
        return;
    }
}

void forget_folder(const std::string& folder)
{
    for (char* place : folders)
        if (folder == place)
            place[0] = '\0';
}

SignalsHeld::SignalsHeld() : before_(std::make_unique<SignalSet>())
{
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : kSignals)
        sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &before_->signals);
}

SignalsHeld::~SignalsHeld()
{
    sigprocmask(SIG_SETMASK, &before_->signals, nullptr);
}

}  // namespace orvlog::system
