#include "holv-core/gio/gio-file.h"
#include "holv-core/gio/gio-url-stream.h"
#include "holv-core/gio/gio-url.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstring>

namespace
{

struct Name
{
    const char* text;
    uint32_t kind;
    const char* base;
    uint32_t base_kind;
};

// The syntax that a name is resolved by: its own if it is absolute, otherwise its base's.
int32_t working_kind(const Name& name, uint32_t* kind)
{
    uint32_t absolute = 0;
    if (name.kind == GIO_PATH_URL)
    {
        GIO_UrlParts parts;
        if (gio_ParseUrl(name.text, &parts) != 0)
            return GIO_ERR_BAD_NAME;
        absolute = parts.scheme.text != nullptr ? 1 : 0;
    }
    else
    {
        const int32_t code = gio_IsAbsolutePath(name.text, &absolute);
        if (code != GIO_OK)
            return code;
    }
    *kind = absolute != 0 || name.base == nullptr ? name.kind : name.base_kind;
    return *kind > GIO_PATH_URL ? GIO_ERR_INVALID : GIO_OK;
}

int32_t resolve(const Name& name, uint32_t kind, char* buffer, GIO_UrlParts* parts, uint32_t* size)
{
    *parts = {};
    parts->text = buffer;
    if (kind == GIO_PATH_URL)
        return gio_ResolveUrl(name.text, name.kind, name.base, parts, size);
    return gio_ResolvePath(name.text, name.base, buffer, size);
}

bool is_local_host(const GIO_UrlPart& authority)
{
    constexpr const char* kLocalHost = "localhost";
    return authority.length <= std::strlen(kLocalHost) &&
           std::memcmp(authority.text, kLocalHost, authority.length) == 0;
}

void turn_separators(char* text, bool server)
{
    for (; *text != '\0'; ++text)
    {
        if (*text == '/')
            *text = '\\';
        if (server && *text == ':')
            *text = '$';
    }
}

// Writes the local name of a "file:" URL to `target`, which has room for two separators, the authority and the path.
int32_t file_target(const GIO_UrlParts& parts, char* target)
{
    const bool server = parts.authority.length != 0 && !is_local_host(parts.authority);
    uint64_t lead = 0;
    if (server)
    {
        std::memcpy(target, "\\\\", 2);
        std::memcpy(target + 2, parts.authority.text, parts.authority.length);
        lead = 2 + static_cast<uint64_t>(parts.authority.length);
    }
    char* path = target + lead;
    const int64_t decoded = gio_NormalisePart(&parts.path, GIO_CLASS_PATH, GIO_PATH_URL, GIO_NORMALISE_DECODE, path);
    if (decoded < 0)
        return GIO_ERR_BAD_NAME;
    path[decoded] = '\0';
    if (!server && decoded > 0)
        std::memmove(path, path + 1, static_cast<uint64_t>(decoded));
    turn_separators(target, server);
    return GIO_OK;
}

int32_t open_file_url(const GIO_UrlParts& parts, GMM_Allocator* allocator, GIO_Stream** out_stream)
{
    const uint64_t room = 3 + static_cast<uint64_t>(parts.authority.length) + parts.path.length;
    auto* target = gmm_alloc_array<char>(allocator, room);
    if (target == nullptr)
        return GIO_ERR_NO_MEMORY;
    int32_t code = file_target(parts, target);
    if (code == GIO_OK)
        code = gio_OpenFile(target, GIO_OPEN_READ, 0, allocator, out_stream);
    allocator->gmm_Free(allocator, target);
    return code;
}

int32_t open_resolved(uint32_t kind, const GIO_UrlParts& parts, const char* text, GMM_Allocator* allocator,
                      GIO_Stream** out_stream)
{
    if (kind == GIO_PATH_LOCAL)
        return gio_OpenFile(text, GIO_OPEN_READ, 0, allocator, out_stream);
    if (parts.scheme_kind == GIO_SCHEME_FILE)
        return open_file_url(parts, allocator, out_stream);
    if (parts.scheme_kind == GIO_SCHEME_HTTP)
        return gio_OpenHttp(parts.text, parts.text_size, allocator, out_stream);
    return GIO_ERR_INVALID;
}

}  // namespace

int32_t gio_OpenUrlOrPath(const char* name, uint32_t name_kind, const char* base, uint32_t base_kind,
                          GMM_Allocator* allocator, GIO_Stream** out_stream)
{
    if (out_stream != nullptr)
        *out_stream = nullptr;
    if (name == nullptr || name_kind > GIO_PATH_URL || allocator == nullptr || out_stream == nullptr)
        return GIO_ERR_INVALID;
    const Name wanted = {name, name_kind, base, base_kind};
    uint32_t kind = 0;
    int32_t code = working_kind(wanted, &kind);
    if (code != GIO_OK)
        return code;
    GIO_UrlParts parts;
    uint32_t size = 0;
    code = resolve(wanted, kind, nullptr, &parts, &size);
    if (code != GIO_ERR_NO_MEMORY || size == 0)
        return code;
    auto* buffer = gmm_alloc_array<char>(allocator, size);
    if (buffer == nullptr)
        return code;
    code = resolve(wanted, kind, buffer, &parts, &size);
    if (code == GIO_OK)
        code = open_resolved(kind, parts, buffer, allocator, out_stream);
    allocator->gmm_Free(allocator, buffer);
    return code;
}
