#include "holv-core/gio/gio-http-client.h"
#include "holv-core/gio/gio-http.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr uint32_t kUsualConnect = 10000;
constexpr uint32_t kUsualTotal = 60000;
constexpr size_t kEnoughInStore = 256 * 1024;
constexpr int64_t kSkippedByReading = 64 * 1024;

uint32_t connect_limit = kUsualConnect;
uint32_t total_limit = kUsualTotal;

// A session is its agent's name, kept once for all sessions that have it: a session that opens no URL is not given up
// by its stream. Names are never changed nor dropped, so that any thread may read one.
std::mutex agents_lock;
std::set<std::string> agents;

struct CloseEasy
{
    void operator()(CURL* easy) const
    {
        curl_easy_cleanup(easy);
    }
};

struct CloseMulti
{
    void operator()(CURLM* multi) const
    {
        curl_multi_cleanup(multi);
    }
};

// One URL, read through one transfer after another: a new one whenever the position leaves the running one.
struct Request
{
    std::unique_ptr<CURLM, CloseMulti> multi{curl_multi_init()};
    std::unique_ptr<CURL, CloseEasy> easy{curl_easy_init()};
    const std::string* agent = nullptr;
    std::string url;
    std::string store;      // bytes that came and were not read yet
    size_t taken = 0;       // how many at its start were read
    int64_t at = 0;         // position of the first byte not read
    int64_t position = 0;   // where the reader wants to be
    int64_t size = -1;      // of the whole; -1 if the server doesn't tell
    bool attached = false;  // a transfer is under way
    bool started = false;   // its first body byte, or its end, has come
    bool paused = false;
    bool ended = false;
    bool failed = false;
    Clock::duration waited{};
    Clock::duration limit{};

    ~Request()
    {
        detach();
    }

    void detach()
    {
        if (attached)
            curl_multi_remove_handle(multi.get(), easy.get());
        attached = false;
    }
};

size_t keep(char* data, size_t, size_t length, void* context)
{
    auto* r = static_cast<Request*>(context);
    r->started = true;
    if (r->store.size() - r->taken >= kEnoughInStore)
    {
        r->paused = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    r->store.erase(0, r->taken);
    r->taken = 0;
    r->store.append(data, length);
    return length;
}

void set_options(Request* r, int64_t from)
{
    CURL* easy = r->easy.get();
    curl_easy_reset(easy);
    curl_easy_setopt(easy, CURLOPT_URL, r->url.c_str());
    curl_easy_setopt(easy, CURLOPT_USERAGENT, r->agent->c_str());
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 5L);
    curl_easy_setopt(easy, CURLOPT_HTTP09_ALLOWED, 0L);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connect_limit));
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, keep);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, r);
    if (from > 0)
        curl_easy_setopt(easy, CURLOPT_RANGE, (std::to_string(from) + "-").c_str());
}

void note_end_of_transfer(Request* r)
{
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(r->multi.get(), &left))
    {
        if (message->msg != CURLMSG_DONE)
            continue;
        r->started = true;
        r->ended = true;
        r->failed = message->data.result != CURLE_OK;
    }
}

// Lets the transfer go on until something came or it is over; false when the limit is reached.
bool wait_for_more(Request* r)
{
    const auto begun = Clock::now();
    int running = 0;
    curl_multi_perform(r->multi.get(), &running);
    note_end_of_transfer(r);
    if (!r->ended && r->store.size() == r->taken)
        curl_multi_poll(r->multi.get(), nullptr, 0, 100, nullptr);
    r->waited += Clock::now() - begun;
    if (r->waited <= r->limit || r->ended)
        return true;
    r->failed = true;
    return false;
}

// A transfer from `from` on. A server that knows no ranges sends all: what lies before is skipped.
bool start(Request* r, int64_t from)
{
    r->detach();
    r->store.clear();
    r->taken = 0;
    r->started = r->paused = r->ended = r->failed = false;
    r->at = from;
    set_options(r, from);
    if (curl_multi_add_handle(r->multi.get(), r->easy.get()) != CURLM_OK)
        return false;
    r->attached = true;
    while (!r->started)
        if (!wait_for_more(r))
            return false;
    long status = 0;
    curl_easy_getinfo(r->easy.get(), CURLINFO_RESPONSE_CODE, &status);
    if (r->failed && r->store.empty())
        return false;
    if (from > 0 && status != 206)
        r->at = 0;
    curl_off_t length = -1;
    curl_easy_getinfo(r->easy.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    if (length >= 0)
        r->size = r->at + length;
    return status >= 200 && status < 300;
}

// Up to `count` bytes at `at`; a null buffer drops them. A negative result is a failure, 0 the end.
int64_t take(Request* r, char* buffer, int64_t count)
{
    while (r->store.size() == r->taken && !r->ended)
    {
        if (r->paused)
        {
            r->paused = false;
            curl_easy_pause(r->easy.get(), CURLPAUSE_CONT);
        }
        if (!wait_for_more(r))
            return -1;
    }
    const int64_t length = std::min(count, static_cast<int64_t>(r->store.size() - r->taken));
    if (length == 0 && r->failed)
        return -1;
    if (buffer != nullptr)
        std::memcpy(buffer, r->store.data() + r->taken, static_cast<size_t>(length));
    r->taken += static_cast<size_t>(length);
    r->at += length;
    return length;
}

// Brings the running transfer, or a new one, to the position.
bool reach_position(Request* r)
{
    const int64_t ahead = r->position - r->at;
    if ((ahead < 0 || ahead > kSkippedByReading) && !start(r, r->position))
        return false;
    while (r->at < r->position)
    {
        const int64_t dropped = take(r, nullptr, r->position - r->at);
        if (dropped <= 0)
            return dropped == 0;
    }
    return true;
}

void* open_session(const char* agent)
{
    const std::lock_guard guard(agents_lock);
    return const_cast<std::string*>(&*agents.emplace(agent).first);
}

bool is_session(const void* handle)
{
    const std::lock_guard guard(agents_lock);
    return std::any_of(agents.begin(), agents.end(), [=](const std::string& agent) { return &agent == handle; });
}

void* open_url(void* session, const char* url)
{
    auto request = std::make_unique<Request>();
    if (request->multi == nullptr || request->easy == nullptr)
        return nullptr;
    request->agent = static_cast<const std::string*>(session);
    request->url = url;
    request->limit = std::chrono::milliseconds(total_limit);
    return start(request.get(), 0) ? request.release() : nullptr;
}

int32_t read(void* handle, void* buffer, uint32_t count, uint32_t* length)
{
    auto* r = static_cast<Request*>(handle);
    *length = 0;
    if (r->size >= 0 && r->position >= r->size && !r->failed)
        return 1;
    if (r->at != r->position && !reach_position(r))
        return 0;
    const int64_t got = r->at == r->position ? take(r, static_cast<char*>(buffer), count) : 0;
    if (got < 0)
        return 0;
    r->position += got;
    *length = static_cast<uint32_t>(got);
    return 1;
}

int32_t set_position(void* handle, int32_t distance, uint32_t origin)
{
    auto* r = static_cast<Request*>(handle);
    const int64_t from = origin == 0 ? 0 : origin == 1 ? r->position : r->size;
    const int64_t to = from + distance;
    if (from < 0 || to < 0 || to > INT32_MAX || (r->size >= 0 && to > r->size))
        return -1;
    r->position = to;
    return static_cast<int32_t>(to);
}

void close_handle(void* handle)
{
    if (!is_session(handle))
        delete static_cast<Request*>(handle);
}

constexpr GIO_HttpOps kCurl = {
    .http_Open = open_session,
    .http_OpenUrl = open_url,
    .http_Read = read,
    .http_SetPosition = set_position,
    .http_Close = close_handle,
};

}  // namespace

void gio_InstallHttpClient(void)
{
    if (curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK)
        gio_SetHttpClient(&kCurl);
}

void gio_SetHttpLimits(uint32_t connect, uint32_t total)
{
    connect_limit = connect != 0 ? connect : kUsualConnect;
    total_limit = total != 0 ? total : kUsualTotal;
}
