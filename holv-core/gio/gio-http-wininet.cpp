#include "holv-core/gio/gio-http-client.h"
#include "holv-core/gio/gio-http.h"

#include <windows.h>

#include <wininet.h>

#include <string>

namespace
{

constexpr uint32_t kUsualConnect = 10000;
constexpr uint32_t kUsualTotal = 60000;
constexpr DWORD kFirstSuccess = 200;
constexpr DWORD kBeyondSuccess = 300;

DWORD connect_limit = kUsualConnect;
DWORD total_limit = kUsualTotal;

// URLs and agents are ASCII.
std::wstring widen(const char* text)
{
    return std::wstring(text, text + std::char_traits<char>::length(text));
}

void limit(HINTERNET handle, DWORD option, DWORD milliseconds)
{
    InternetSetOptionW(handle, option, &milliseconds, sizeof(milliseconds));
}

void* open_session(const char* agent)
{
    HINTERNET session = InternetOpenW(widen(agent).c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
    if (session == nullptr)
        return nullptr;
    limit(session, INTERNET_OPTION_CONNECT_TIMEOUT, connect_limit);
    limit(session, INTERNET_OPTION_SEND_TIMEOUT, total_limit);
    limit(session, INTERNET_OPTION_RECEIVE_TIMEOUT, total_limit);
    return session;
}

bool is_refusal(HINTERNET request)
{
    DWORD status = 0;
    DWORD size = sizeof(status);
    const DWORD what = HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER;
    if (HttpQueryInfoW(request, what, &status, &size, nullptr) == FALSE)
        return true;
    return status < kFirstSuccess || status >= kBeyondSuccess;
}

void* open_url(void* session, const char* url)
{
    HINTERNET request = InternetOpenUrlW(session, widen(url).c_str(), nullptr, 0, 0, 0);
    if (request == nullptr)
        return nullptr;
    if (is_refusal(request))
    {
        InternetCloseHandle(request);
        return nullptr;
    }
    limit(request, INTERNET_OPTION_RECEIVE_TIMEOUT, total_limit);
    return request;
}

int32_t read(void* request, void* buffer, uint32_t count, uint32_t* length)
{
    DWORD got = 0;
    const BOOL done = InternetReadFile(request, buffer, count, &got);
    *length = got;
    return done != FALSE ? 1 : 0;
}

int32_t set_position(void* request, int32_t distance, uint32_t origin)
{
    const DWORD reached = InternetSetFilePointer(request, distance, nullptr, origin, 0);
    return static_cast<int32_t>(reached);
}

void close_handle(void* handle)
{
    InternetCloseHandle(handle);
}

constexpr GIO_HttpOps kWinInet = {
    .http_Open = open_session,
    .http_OpenUrl = open_url,
    .http_Read = read,
    .http_SetPosition = set_position,
    .http_Close = close_handle,
};

}  // namespace

void gio_InstallHttpClient(void)
{
    gio_SetHttpClient(&kWinInet);
}

void gio_SetHttpLimits(uint32_t connect, uint32_t total)
{
    connect_limit = connect != 0 ? connect : kUsualConnect;
    total_limit = total != 0 ? total : kUsualTotal;
}
