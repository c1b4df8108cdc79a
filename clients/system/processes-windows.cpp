#include "clients/system/processes.h"

#include "clients/system/errors-windows.h"
#include "clients/system/system.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include <windows.h>

namespace orvlog::system
{

namespace
{

// Tells a program that it does the work of one that was started by the same command line, and which block they share.
constexpr const wchar_t* kApart = L"ORVLOG_APART";
constexpr DWORD kLookAgain = 10;  // milliseconds
// Statuses from here on are those of exceptions.
constexpr DWORD kExceptions = 0xC0000000;
constexpr UINT kStopped = kSignalStatus + 9;  // as where programs are killed by a signal
constexpr DWORD kLongestPath = 32768;

HANDLE handle_of(intptr_t value)
{
    return reinterpret_cast<HANDLE>(value);
}

intptr_t value_of(HANDLE handle)
{
    return reinterpret_cast<intptr_t>(handle);
}

// A group of processes that ends with its handle.
HANDLE make_group()
{
    HANDLE group = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (group != nullptr)
        SetInformationJobObject(group, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return group;
}

// What a new process may have of this one's: nothing but these handles.
class Inheritance
{
public:
    explicit Inheritance(std::vector<HANDLE> handles) : handles_(std::move(handles))
    {
        std::vector<HANDLE> distinct;
        for (HANDLE handle : handles_)
        {
            SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
            bool known = handle == nullptr || handle == INVALID_HANDLE_VALUE;
            for (HANDLE other : distinct)
                known = known || other == handle;
            if (!known)
                distinct.push_back(handle);
        }
        handles_ = distinct;
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        room_.resize(size);
        auto* list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room_.data());
        good_ = InitializeProcThreadAttributeList(list, 1, 0, &size) != 0 &&
                UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                          handles_.size() * sizeof(HANDLE), nullptr, nullptr) != 0;
    }
    Inheritance(const Inheritance&) = delete;
    Inheritance& operator=(const Inheritance&) = delete;
    ~Inheritance()
    {
        if (good_)
            DeleteProcThreadAttributeList(list());
    }
    LPPROC_THREAD_ATTRIBUTE_LIST list()
    {
        return good_ ? reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room_.data()) : nullptr;
    }

private:
    std::vector<HANDLE> handles_;
    std::vector<char> room_;
    bool good_ = false;
};

struct Streams
{
    HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
};

// The new process is in the group before it does anything. Null with errno set on failure.
HANDLE start_in(HANDLE group, const wchar_t* program, std::wstring line, const Streams& streams,
                std::vector<HANDLE> inherited)
{
    std::fflush(nullptr);
    for (HANDLE stream : {streams.input, streams.output, streams.error})
        inherited.push_back(stream);
    Inheritance inheritance(std::move(inherited));
    STARTUPINFOEXW start = {};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = streams.input;
    start.StartupInfo.hStdOutput = streams.output;
    start.StartupInfo.hStdError = streams.error;
    start.lpAttributeList = inheritance.list();
    PROCESS_INFORMATION made = {};
    if (!noted(CreateProcessW(program, line.data(), nullptr, nullptr, TRUE,
                              CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &start.StartupInfo,
                              &made) != 0))
        return nullptr;
    AssignProcessToJobObject(group, made.hProcess);
    ResumeThread(made.hThread);
    CloseHandle(made.hThread);
    return made.hProcess;
}

std::string name_of_exception(DWORD status)
{
    switch (status)
    {
    case EXCEPTION_ACCESS_VIOLATION:
        return "access violation";
    case EXCEPTION_STACK_OVERFLOW:
        return "stack overflow";
    case EXCEPTION_ILLEGAL_INSTRUCTION:
        return "illegal instruction";
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
        return "integer division by zero";
    case 0xC0000374:
        return "heap corruption";
    case 0xC0000409:
        return "stack buffer overrun";
    default:
        return "unknown";
    }
}

LONG WINAPI leave_by_exception(EXCEPTION_POINTERS* exception)
{
    TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

void tell_end(DWORD status, ProcessEnd* end)
{
    end->status = static_cast<int>(status);
    if (status < kExceptions)
        return;
    char digits[24];
    std::snprintf(digits, sizeof digits, "0x%08lX", status);
    end->status = 0;
    end->how = std::string("ended by exception ") + digits;
    end->name = name_of_exception(status);
}

// The command interpreter takes what stands between the outer quotes as it is.
std::wstring line_of_shell(const std::string& command)
{
    return L"cmd.exe /d /s /c \"" + std::filesystem::path(command).wstring() + L"\"";
}

std::filesystem::path shell()
{
    wchar_t name[MAX_PATH];
    const DWORD length = GetEnvironmentVariableW(L"ComSpec", name, MAX_PATH);
    if (length > 0 && length < MAX_PATH)
        return name;
    const UINT folder = GetSystemDirectoryW(name, MAX_PATH);
    return std::filesystem::path(std::wstring(name, folder)) / "cmd.exe";
}

}  // namespace

WorkApart::WorkApart(size_t size) : size_(size)
{
    wchar_t told[24];
    const DWORD length = GetEnvironmentVariableW(kApart, told, 24);
    if (length > 0 && length < 24)
    {
        SetEnvironmentVariableW(kApart, nullptr);
        section_ = static_cast<intptr_t>(std::wcstoull(told, nullptr, 10));
        is_apart_ = true;
    }
    else
    {
        SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        section_ = value_of(
            CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0, static_cast<DWORD>(size), nullptr));
    }
    block_ = MapViewOfFile(handle_of(section_), FILE_MAP_ALL_ACCESS, 0, 0, size);
    noted(block_ != nullptr);
}

WorkApart::~WorkApart()
{
    if (block_ != nullptr)
        UnmapViewOfFile(block_);
    if (section_ != 0)
        CloseHandle(handle_of(section_));
}

bool WorkApart::run(const std::function<int()>& work, const std::function<bool()>& goes_on, ProcessEnd* end)
{
    if (is_apart_)
    {
        // Without a debugger or a window: the other process tells of it.
        SetUnhandledExceptionFilter(leave_by_exception);
        const int status = work();
        std::fflush(nullptr);
        _exit(status);
    }
    std::vector<wchar_t> program(kLongestPath);
    GetModuleFileNameW(nullptr, program.data(), kLongestPath);
    SetEnvironmentVariableW(kApart, std::to_wstring(section_).c_str());
    HANDLE group = make_group();
    HANDLE child = start_in(group, program.data(), GetCommandLineW(), {}, {handle_of(section_)});
    SetEnvironmentVariableW(kApart, nullptr);
    const int reason = errno;
    bool in_time = true;
    while (child != nullptr && in_time && WaitForSingleObject(child, kLookAgain) != 0)
        in_time = goes_on();
    DWORD status = 0;
    if (child != nullptr && in_time)
        GetExitCodeProcess(child, &status);
    if (child != nullptr)
        CloseHandle(child);
    if (group != nullptr)
        CloseHandle(group);
    errno = reason;
    tell_end(status, end);
    return child != nullptr;
}

bool ShellRun::start(const std::string& command, bool show_errors, const std::function<bool()>& before,
                     const WaitedSignals& /*signals*/)
{
    if (!before())
    {
        status_ = kRefused;
        return true;
    }
    SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE nothing = CreateFileW(std::filesystem::path(null_device()).c_str(), GENERIC_READ | GENERIC_WRITE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0, nullptr);
    Streams streams;
    streams.input = nothing;
    streams.output = nothing;
    streams.error = show_errors ? streams.error : nothing;
    group_ = value_of(make_group());
    process_ = value_of(start_in(handle_of(group_), shell().c_str(), line_of_shell(command), streams, {}));
    const int reason = errno;
    CloseHandle(nothing);
    errno = reason;
    return process_ != 0;
}

bool ShellRun::has_ended()
{
    if (status_ >= 0)
        return true;
    if (WaitForSingleObject(handle_of(process_), 0) != WAIT_OBJECT_0)
        return false;
    DWORD status = 0;
    GetExitCodeProcess(handle_of(process_), &status);
    stop();
    status_ = status < kExceptions ? static_cast<int>(status) : kSignalStatus;
    return true;
}

// The group goes with its handle; nothing is there before the process has gone, too.
void ShellRun::stop()
{
    if (status_ >= 0 || process_ == 0)
        return;
    TerminateJobObject(handle_of(group_), kStopped);
    WaitForSingleObject(handle_of(process_), INFINITE);
    CloseHandle(handle_of(process_));
    CloseHandle(handle_of(group_));
    process_ = 0;
    group_ = 0;
    status_ = kStopped;
}

}  // namespace orvlog::system
