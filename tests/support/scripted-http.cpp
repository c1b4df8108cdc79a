#include "tests/support/scripted-http.h"

#include <algorithm>
#include <cstring>

namespace orvlog::test
{

ScriptedHttp* ScriptedHttp::current = nullptr;

ScriptedHttp::ScriptedHttp(std::string content) : ops_{}, content_(std::move(content))
{
    ops_.http_Open = [](const char* agent) -> void*
    {
        if (!current->step(std::string("open ") + agent))
            return nullptr;
        ++current->open_handles_;
        return &current->session_;
    };
    ops_.http_OpenUrl = [](void*, const char* url) -> void*
    {
        if (!current->step(std::string("url ") + url))
            return nullptr;
        ++current->open_handles_;
        current->position_ = 0;
        return &current->request_;
    };
    ops_.http_Read = [](void*, void* buffer, uint32_t count, uint32_t* length)
    { return current->read(buffer, count, length); };
    ops_.http_SetPosition = [](void*, int32_t distance, uint32_t origin) { return current->seek(distance, origin); };
    ops_.http_Close = [](void* handle)
    {
        current->step(handle == &current->request_ ? "close request" : "close session");
        --current->open_handles_;
    };
    current = this;
    gio_SetHttpClient(&ops_);
}

ScriptedHttp::~ScriptedHttp()
{
    gio_SetHttpClient(nullptr);
    current = nullptr;
}

bool ScriptedHttp::step(std::string call)
{
    calls_.push_back(std::move(call));
    return calls_.size() != fail_at_;
}

int32_t ScriptedHttp::read(void* buffer, uint32_t count, uint32_t* length)
{
    if (!step("read " + std::to_string(count)))
        return 0;
    const auto left = static_cast<uint32_t>(content_.size() - static_cast<size_t>(position_));
    *length = std::min({count, left, piece_});
    std::memcpy(buffer, content_.data() + position_, *length);
    position_ += *length;
    if (claims_too_much_)
        *length = count + 1;
    return 1;
}

int32_t ScriptedHttp::seek(int32_t distance, uint32_t origin)
{
    if (!step("seek " + std::to_string(distance) + " " + std::to_string(origin)))
        return -1;
    const auto size = static_cast<int64_t>(content_.size());
    const int64_t to = (origin == 0 ? 0 : origin == 1 ? position_ : size) + distance;
    if (to < 0 || to > size)
        return -1;
    position_ = to;
    return static_cast<int32_t>(to);
}

}  // namespace orvlog::test
