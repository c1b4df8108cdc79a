#include "holv-core/gio/gio-url.h"

#include <cstring>

namespace
{

constexpr uint64_t kLongestName = 0x3FFFFFFF;

// Where each part of the result comes from. A path may be joined from two.
struct Sources
{
    GIO_UrlPart scheme;
    uint32_t scheme_kind;
    uint32_t has_authority;
    GIO_UrlPart authority;
    GIO_UrlPart base_path;  // cut behind its last "/", if `joined`
    bool joined;
    GIO_UrlPart path;
    uint32_t path_syntax;
    GIO_UrlPart query;
    GIO_UrlPart fragment;
};

void take_tail(const GIO_UrlParts& from, Sources* to)
{
    to->path = from.path;
    to->path_syntax = from.path_syntax;
    to->query = from.query;
}

void take_scheme(const GIO_UrlParts& from, Sources* to)
{
    to->scheme = from.scheme;
    to->scheme_kind = from.scheme_kind;
}

void take_authority(const GIO_UrlParts& from, Sources* to)
{
    to->has_authority = from.has_authority;
    to->authority = from.authority;
}

// A name without a scheme.
void join(const GIO_UrlParts& name, const GIO_UrlParts& base, Sources* to)
{
    take_scheme(base, to);
    to->fragment = name.fragment;
    take_authority(name.has_authority != 0 ? name : base, to);
    if (name.has_authority != 0 || name.path.length != 0)
        take_tail(name, to);
    else
        take_tail(base, to);
    if (name.has_authority != 0)
        return;
    if (name.path.length == 0 && name.query.text != nullptr)
        to->query = name.query;
    if (name.path.length != 0 && name.path.text[0] != '/')
    {
        to->joined = true;
        to->base_path = base.path;
    }
}

int32_t parse_name(const char* name, uint32_t name_kind, GIO_UrlParts* parts)
{
    if (name_kind == GIO_PATH_URL)
        return gio_ParseUrl(name, parts) == 0 ? GIO_OK : GIO_ERR_BAD_NAME;
    *parts = {};
    const uint64_t length = std::strlen(name);
    uint32_t absolute = 0;
    const int32_t code = gio_IsAbsolutePath(name, &absolute);
    if (code != GIO_OK || length > kLongestName)
        return GIO_ERR_BAD_NAME;
    parts->path = {name, static_cast<uint32_t>(length)};
    parts->path_syntax = name_kind;
    if (absolute != 0)
    {
        parts->scheme = {"file:", 4};
        parts->scheme_kind = GIO_SCHEME_FILE;
        parts->has_authority = 1;
    }
    return GIO_OK;
}

int32_t find_sources(const char* name, uint32_t name_kind, const char* base, Sources* sources)
{
    GIO_UrlParts parts;
    const int32_t code = parse_name(name, name_kind, &parts);
    if (code != GIO_OK)
        return code;
    if (parts.scheme.text != nullptr)
    {
        take_scheme(parts, sources);
        sources->fragment = parts.fragment;
        take_authority(parts, sources);
        take_tail(parts, sources);
        return GIO_OK;
    }
    if (base == nullptr)
        return GIO_ERR_INVALID;
    GIO_UrlParts base_parts;
    if (gio_ParseUrl(base, &base_parts) != 0 || base_parts.scheme.text == nullptr ||
        base_parts.fragment.text != nullptr)
        return GIO_ERR_BAD_NAME;
    join(parts, base_parts, sources);
    return GIO_OK;
}

// Writes a URL, or with no buffer counts its bytes.
struct Composer
{
    char* buffer;
    uint64_t length = 0;
    bool failed = false;

    char* here() const
    {
        return buffer == nullptr ? nullptr : buffer + length;
    }

    void put(const char* text)
    {
        const size_t size = std::strlen(text);
        if (buffer != nullptr)
            std::memcpy(here(), text, size);
        length += size;
    }

    // The part as it stands in the result.
    GIO_UrlPart put(const GIO_UrlPart& part, uint32_t char_class, uint32_t syntax, uint32_t flags)
    {
        const char* at = here();
        const int64_t written = failed ? -1 : gio_NormalisePart(&part, char_class, syntax, flags, here());
        failed = written < 0;
        const uint32_t size = failed ? 0 : static_cast<uint32_t>(written);
        length += size;
        return {at, size};
    }

    GIO_UrlPart put_path(const Sources& sources)
    {
        const char* at = here();
        const uint64_t start = length;
        if (sources.joined)
            put(sources.base_path, GIO_CLASS_PATH, GIO_PATH_URL, GIO_NORMALISE_CUT);
        put(sources.path, GIO_CLASS_PATH, sources.path_syntax, 0);
        auto size = static_cast<uint32_t>(length - start);
        if (buffer != nullptr && !failed)
            size = gio_RemoveDotSegments(buffer + start, size, GIO_PATH_URL);
        length = start + size;
        return {at, size};
    }
};

void compose(const Sources& sources, Composer* composer, GIO_UrlParts* parts)
{
    const uint32_t syntax = GIO_PATH_URL;
    parts->scheme = composer->put(sources.scheme, GIO_CLASS_SCHEME, syntax, 0);
    composer->put(":");
    if (sources.has_authority != 0)
        composer->put("//");
    if (sources.authority.text != nullptr)
        parts->authority = composer->put(sources.authority, GIO_CLASS_AUTHORITY, syntax, 0);
    parts->path = composer->put_path(sources);
    if (sources.query.text != nullptr)
    {
        composer->put("?");
        parts->query = composer->put(sources.query, GIO_CLASS_QUERY, syntax, 0);
        // Openers of resolved names rely on the path's length being the query's.
        parts->path.length = parts->query.length;
        parts->query.length = 0;
    }
    if (sources.fragment.text != nullptr)
    {
        composer->put("#");
        parts->fragment = composer->put(sources.fragment, GIO_CLASS_FRAGMENT, syntax, 0);
    }
}

}  // namespace

int32_t gio_ResolveUrl(const char* name, uint32_t name_kind, const char* base, GIO_UrlParts* parts_out,
                       uint32_t* inout_size)
{
    if (name == nullptr || parts_out == nullptr || inout_size == nullptr || name_kind > GIO_PATH_URL)
        return GIO_ERR_INVALID;
    Sources sources = {};
    const int32_t code = find_sources(name, name_kind, base, &sources);
    if (code != GIO_OK)
        return code;
    GIO_UrlParts parts = {};
    Composer count = {nullptr};
    compose(sources, &count, &parts);
    if (count.failed)
        return GIO_ERR_BAD_NAME;
    const uint32_t room = *inout_size;
    *inout_size = static_cast<uint32_t>(count.length) + 1;
    if (room < *inout_size)
        return GIO_ERR_NO_MEMORY;
    if (parts_out->text == nullptr)
        return GIO_ERR_INVALID;
    parts = {};
    Composer written = {const_cast<char*>(parts_out->text)};
    compose(sources, &written, &parts);
    *written.here() = '\0';
    *inout_size = static_cast<uint32_t>(written.length) + 1;
    parts.text = parts_out->text;
    parts.text_size = *inout_size;
    parts.scheme_kind = sources.scheme_kind;
    parts.path_syntax = GIO_PATH_URL;
    parts.has_authority = sources.has_authority;
    *parts_out = parts;
    return GIO_OK;
}

int32_t gio_ResolvePath(const char* name, const char* base, char* buffer, uint32_t* inout_size)
{
    if (name == nullptr || inout_size == nullptr)
        return GIO_ERR_INVALID;
    uint32_t absolute = 0;
    int32_t code = gio_IsAbsolutePath(name, &absolute);
    if (code != GIO_OK)
        return code;
    uint64_t cut = 0;
    if (absolute == 0)
    {
        uint32_t base_absolute = 0;
        if (base == nullptr)
            return GIO_ERR_INVALID;
        code = gio_IsAbsolutePath(base, &base_absolute);
        const char* last = std::strrchr(base, '\\');
        if (code != GIO_OK || base_absolute == 0 || last == nullptr)
            return GIO_ERR_BAD_NAME;
        cut = static_cast<uint64_t>(last - base) + 1;
    }
    const uint64_t length = std::strlen(name);
    if (cut > kLongestName || length > kLongestName)
        return GIO_ERR_BAD_NAME;
    const uint32_t room = *inout_size;
    *inout_size = static_cast<uint32_t>(cut + length) + 1;
    if (room < *inout_size)
        return GIO_ERR_NO_MEMORY;
    if (buffer == nullptr)
        return GIO_ERR_INVALID;
    if (cut != 0)
        std::memcpy(buffer, base, cut);
    std::memcpy(buffer + cut, name, length + 1);
    if (absolute != 0)
        return GIO_OK;
    const uint32_t kept = gio_RemoveDotSegments(buffer, static_cast<uint32_t>(cut + length), GIO_PATH_LOCAL);
    buffer[kept] = '\0';
    *inout_size = kept + 1;
    return GIO_OK;
}
