// What ends a command here is told by the console, to a thread of the system's own.

#include "clients/system/signals.h"

#include "clients/system/unfinished.h"
#include "clients/system/waited-signals.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <vector>

#include <windows.h>

namespace orvlog::system
{

namespace fs = std::filesystem;

// That no signal is delivered is told by who holds the lock.
struct SignalSet
{
};

namespace
{

constexpr DWORD kLookAgain = 10;  // milliseconds
constexpr int kHangUp = 1;        // the number that the console's end has on other systems
constexpr uintptr_t kMostHandles = 4096;

class Lock
{
public:
    Lock()
    {
        InitializeCriticalSection(&section_);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    void take()
    {
        EnterCriticalSection(&section_);
    }
    void leave()
    {
        LeaveCriticalSection(&section_);
    }

private:
    CRITICAL_SECTION section_;
};

// What the console's thread looks at, with the lock held.
struct Noted
{
    Lock lock;
    bool caught = false;
    std::vector<std::string> folders;
    std::string unfinished;
    std::vector<std::string> beside;
    int waiting = 0;  // for signals
    int received = 0;
    HANDLE comes = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

// Never destroyed: the console's thread may come at any time.
Noted& noted_things()
{
    static auto* const noted = new Noted;
    return *noted;
}

// A file that is open can't be removed. Pipes are left alone: to ask one that is being read would wait for it.
void close_files()
{
    const HANDLE kept[] = {GetStdHandle(STD_INPUT_HANDLE), GetStdHandle(STD_OUTPUT_HANDLE),
                           GetStdHandle(STD_ERROR_HANDLE)};
    for (uintptr_t i = 1; i <= kMostHandles; ++i)
    {
        HANDLE handle = reinterpret_cast<HANDLE>(4 * i);
        if (std::find(std::begin(kept), std::end(kept), handle) == std::end(kept) &&
            GetFileType(handle) == FILE_TYPE_DISK)
            CloseHandle(handle);
    }
}

int number_of(DWORD event)
{
    return event == CTRL_C_EVENT ? SIGINT : event == CTRL_BREAK_EVENT ? SIGBREAK : kHangUp;
}

BOOL WINAPI on_event(DWORD event)
{
    Noted& noted = noted_things();
    noted.lock.take();
    if (noted.waiting > 0)
    {
        noted.received = number_of(event);
        SetEvent(noted.comes);
        noted.lock.leave();
        return TRUE;
    }
    close_files();
    std::error_code none;
    for (const std::string& file : noted.beside)
        fs::remove(file, none);
    if (!noted.unfinished.empty())
        fs::remove(noted.unfinished, none);
    for (const std::string& folder : noted.folders)
        fs::remove_all(folder, none);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(kSignalStatus + number_of(event)));
    return TRUE;
}

}  // namespace

void catch_signals()
{
    const SignalsHeld held;
    if (!noted_things().caught)
        SetConsoleCtrlHandler(on_event, TRUE);
    noted_things().caught = true;
}

int signal_received()
{
    return noted_things().received;
}

// Programs that are run here are told by the console themselves.
void set_running_program(ProcessId /*running*/) {}

void note_folder(const std::string& folder)
{
    const SignalsHeld held;
    noted_things().folders.push_back(folder);
}

void forget_folder(const std::string& folder)
{
    const SignalsHeld held;
    std::erase(noted_things().folders, folder);
}

void set_unfinished(const std::string& part)
{
    const SignalsHeld held;
    noted_things().unfinished = part;
    if (!part.empty())
        catch_signals();
}

void note_file_beside(const std::string& path)
{
    const SignalsHeld held;
    noted_things().beside.push_back(path);
    catch_signals();
}

void forget_files_beside()
{
    const SignalsHeld held;
    noted_things().beside.clear();
}

SignalsHeld::SignalsHeld()
{
    noted_things().lock.take();
}

SignalsHeld::~SignalsHeld()
{
    noted_things().lock.leave();
}

WaitedSignals::WaitedSignals()
{
    const SignalsHeld held;
    catch_signals();
    ++noted_things().waiting;
}

WaitedSignals::~WaitedSignals()
{
    const SignalsHeld held;
    --noted_things().waiting;
}

// The end of a process isn't told here.
void WaitedSignals::wait(long milliseconds)
{
    WaitForSingleObject(noted_things().comes, std::min(static_cast<DWORD>(milliseconds), kLookAgain));
    const SignalsHeld held;
    received_ = noted_things().received;
}

void WaitedSignals::give_back() const {}

}  // namespace orvlog::system
