#include "holv-core/gio/gio-url.h"

#include "holv-core/gio/gio-utf8.h"

#include <array>
#include <cstring>

namespace
{

constexpr uint64_t kLongestText = 0x3FFFFFFF;

constexpr bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr std::array<uint8_t, 128> make_classes()
{
    std::array<uint8_t, 128> classes = {};
    for (char c = '0'; c <= 'z'; ++c)
        if (is_letter(c) || is_digit(c))
            classes[static_cast<uint8_t>(c)] = 63;
    const auto add = [&classes](const char* members, unsigned bits)
    {
        for (; *members != '\0'; ++members)
            classes[static_cast<uint8_t>(*members)] |= static_cast<uint8_t>(bits);
    };
    add("+-.", GIO_CLASS_SCHEME);
    add("%+-.:@[]_", GIO_CLASS_AUTHORITY);
    add("!$%&'()+,-./:;=@[]^_`{}~", GIO_CLASS_PATH | GIO_CLASS_QUERY | GIO_CLASS_FRAGMENT);
    add("-._~", GIO_CLASS_UNRESERVED);
    return classes;
}

constexpr std::array<uint8_t, 128> kClasses = make_classes();

bool is_in(char c, uint32_t char_class)
{
    const auto byte = static_cast<uint8_t>(c);
    return byte < kClasses.size() && (kClasses[byte] & char_class) != 0;
}

const char* scan(const char* from, uint32_t char_class)
{
    while (is_in(*from, char_class))
        ++from;
    return from;
}

GIO_UrlPart part_of(const char* from, const char* to)
{
    return {from, static_cast<uint32_t>(to - from)};
}

// The part from `at` as far as the class goes, if one of `stops` or the end of the text is behind it.
const char* take(GIO_UrlPart* part, const char* at, uint32_t char_class, const char* stops)
{
    const char* end = scan(at, char_class);
    *part = part_of(at, end);
    return *end == '\0' || std::strchr(stops, *end) != nullptr ? end : nullptr;
}

bool equals_word(const GIO_UrlPart& part, const char* word)
{
    if (part.length != std::strlen(word))
        return false;
    for (uint32_t i = 0; i < part.length; ++i)
        if ((part.text[i] | 0x20) != word[i])
            return false;
    return true;
}

bool take_fragment(GIO_UrlParts* parts, const char* at)
{
    return take(&parts->fragment, at, GIO_CLASS_FRAGMENT, "") != nullptr;
}

bool take_query(GIO_UrlParts* parts, const char* at)
{
    const char* end = take(&parts->query, at, GIO_CLASS_QUERY, "#");
    return end != nullptr && (*end == '\0' || take_fragment(parts, end + 1));
}

// What may follow an authority or a path.
bool take_tail(GIO_UrlParts* parts, const char* at)
{
    if (*at == '\0')
        return true;
    return *at == '?' ? take_query(parts, at + 1) : take_fragment(parts, at + 1);
}

bool take_path(GIO_UrlParts* parts, const char* at)
{
    if (at[0] == '/' && at[1] == '/')
        return false;
    const char* end = take(&parts->path, at, GIO_CLASS_PATH, "#?");
    parts->path_syntax = GIO_PATH_URL;
    return end != nullptr && take_tail(parts, end);
}

bool take_authority(GIO_UrlParts* parts, const char* at)
{
    if (!is_letter(*at) && !is_digit(*at))
        return false;
    const char* end = take(&parts->authority, at, GIO_CLASS_AUTHORITY, "#/?");
    return end != nullptr && (*end == '/' ? take_path(parts, end) : take_tail(parts, end));
}

// A "/" as either of the next two characters leads to an authority: names written so are relied on.
bool take_behind_scheme(GIO_UrlParts* parts, const char* at)
{
    if (at[0] != '\0' && at[1] != '\0' && (at[0] == '/' || at[1] == '/'))
    {
        if (at[2] != '/')
            return take_authority(parts, at + 2);
        parts->authority = part_of(at + 2, at + 2);
        return take_path(parts, at + 2);
    }
    return is_letter(at[0]) && take_path(parts, at);
}

bool take_scheme_or_path(GIO_UrlParts* parts, const char* text)
{
    const char* end = is_letter(*text) ? scan(text, GIO_CLASS_SCHEME) : text;
    if (*end != ':' || end == text)
        return take_path(parts, text);
    parts->scheme = part_of(text, end);
    if (equals_word(parts->scheme, "file"))
        parts->scheme_kind = GIO_SCHEME_FILE;
    if (equals_word(parts->scheme, "http"))
        parts->scheme_kind = GIO_SCHEME_HTTP;
    return take_behind_scheme(parts, end + 1);
}

bool take_all(GIO_UrlParts* parts, const char* text)
{
    if (text[0] == '#')
        return take_fragment(parts, text + 1);
    if (text[0] == '?')
        return take_query(parts, text + 1);
    if (text[0] == '/' && text[1] == '/')
        return take_authority(parts, text + 2);
    if (text[0] == '.' || text[0] == '/')
        return take_path(parts, text);
    return take_scheme_or_path(parts, text);
}

int hex_digit(char c)
{
    if (is_digit(c))
        return c - '0';
    const auto letter = static_cast<char>(c | 0x20);
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// Where a run of escapes stands within a UTF-8 sequence.
struct EscapeRun
{
    const GIO_Utf8Row* row = nullptr;
    uint32_t seen = 0;  // continuation bytes

    bool pending() const
    {
        return row != nullptr;
    }

    bool step(uint8_t byte)
    {
        if (row == nullptr)
        {
            if (byte < 0x80)
                return true;
            row = gio_utf8_row(byte);
            seen = 0;
            return row != nullptr && GIO_UTF8_IS_VALID(row);
        }
        if (byte < row->range[seen][0] || byte > row->range[seen][1])
            return false;
        ++seen;
        if (seen == static_cast<uint32_t>(GIO_UTF8_CONTINUATIONS(row)))
            row = nullptr;
        return true;
    }
};

struct Output
{
    char* text;    // null: counts only
    int64_t room;  // what is beyond is counted and not written
    int64_t length;
    int64_t behind_separator;  // 0 as long as there is none

    void put(char c)
    {
        if (text != nullptr && length < room)
            text[length] = c;
        ++length;
    }
};

// The byte that the escape at the start of `text` stands for, or -1.
int escaped_byte(const char* text, uint32_t left)
{
    if (left < 3)
        return -1;
    const int high = hex_digit(text[1]), low = hex_digit(text[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

bool copy_escape(const char* text, uint32_t left, uint32_t char_class, bool decode, EscapeRun* run, Output* out)
{
    const int byte = escaped_byte(text, left);
    if (byte < 0 || !run->step(static_cast<uint8_t>(byte)) || (decode && byte == 0))
        return false;
    const auto character = static_cast<char>(byte);
    if (byte < 0x80 && is_in(character, GIO_CLASS_UNRESERVED))
    {
        out->put(character);
        return is_in(character, char_class);
    }
    if (decode)
        out->put(character);
    for (int i = 0; !decode && i < 3; ++i)
        out->put(text[i]);
    return true;
}

bool copy_plain(char c, uint32_t char_class, char separator, Output* out)
{
    if (char_class == GIO_CLASS_PATH && c == separator)
    {
        out->put('/');
        out->behind_separator = out->length;
        return true;
    }
    out->put(c);
    if (char_class == GIO_CLASS_PATH && c == '/')
        out->behind_separator = out->length;
    return is_in(c, char_class);
}

char separator_of(uint32_t syntax)
{
    return syntax == GIO_PATH_LOCAL ? '\\' : syntax == GIO_PATH_COLON ? ':' : '/';
}

bool starts_with(const char* text, uint32_t length, const char* word)
{
    const size_t size = std::strlen(word);
    return length >= size && std::memcmp(text, word, size) == 0;
}

// How many dots make a dot segment between the separator at `text` and the next one, or the end; 0 for none.
uint32_t dots_behind(const char* text, uint32_t left, char separator)
{
    uint32_t dots = 0;
    while (dots < 3 && 1 + dots < left && text[1 + dots] == '.')
        ++dots;
    const bool ends = 1 + dots == left || text[1 + dots] == separator;
    return dots < 3 && ends ? dots : 0;
}

uint32_t without_last_segment(const char* buffer, uint32_t length, char separator)
{
    while (length > 0)
    {
        --length;
        if (buffer[length] == separator)
            break;
    }
    return length;
}

uint32_t behind_leading_dots(const char* buffer, uint32_t length, char separator)
{
    uint32_t at = 0;
    while (at < length && buffer[at] == '.')
    {
        const uint32_t dots = at + 1 < length && buffer[at + 1] == '.' ? 2 : 1;
        if (at + dots >= length || buffer[at + dots] != separator)
            break;
        at += dots + 1;
    }
    return at;
}

}  // namespace

int32_t gio_ParseUrl(const char* text, GIO_UrlParts* parts)
{
    if (parts == nullptr)
        return -1;
    *parts = {};
    if (text == nullptr)
        return -1;
    const uint64_t length = std::strlen(text);
    if (length > kLongestText || !take_all(parts, text))
    {
        *parts = {};
        return -1;
    }
    parts->has_authority = parts->authority.length != 0 || parts->scheme_kind == GIO_SCHEME_FILE ? 1 : 0;
    parts->text = text;
    parts->text_size = static_cast<uint32_t>(length) + 1;
    return 0;
}

int64_t gio_NormalisePart(const GIO_UrlPart* part, uint32_t char_class, uint32_t syntax, uint32_t flags, char* out)
{
    if (part == nullptr || (part->text == nullptr && part->length != 0))
        return -1;
    const bool cut = (flags & GIO_NORMALISE_CUT) != 0;
    const int64_t room =
        cut && out != nullptr ? gio_NormalisePart(part, char_class, syntax, flags, nullptr) : INT64_MAX;
    Output output = {out, room, 0, 0};
    EscapeRun run;
    for (uint32_t i = 0; i < part->length; ++i)
    {
        if (part->text[i] == '%')
        {
            const bool decode = (flags & GIO_NORMALISE_DECODE) != 0;
            if (!copy_escape(part->text + i, part->length - i, char_class, decode, &run, &output))
                return -1;
            i += 2;
            continue;
        }
        if (run.pending() || !copy_plain(part->text[i], char_class, separator_of(syntax), &output))
            return -1;
    }
    if (run.pending())
        return -1;
    if (!cut)
        return output.length;
    return output.behind_separator != 0 ? output.behind_separator : -1;
}

uint32_t gio_RemoveDotSegments(char* buffer, uint32_t length, uint32_t syntax)
{
    if (buffer == nullptr || syntax > GIO_PATH_URL)
        return buffer == nullptr ? 0 : length;
    if (syntax == GIO_PATH_COLON && starts_with(buffer, length, "."))
        return 0;
    if (syntax == GIO_PATH_SLASH && starts_with(buffer, length, ".."))
        return 0;
    const char separator = separator_of(syntax);
    uint32_t to = 0;
    uint32_t from = behind_leading_dots(buffer, length, separator);
    while (from < length)
    {
        const uint32_t dots = buffer[from] == separator ? dots_behind(buffer + from, length - from, separator) : 0;
        if (dots == 0)
        {
            buffer[to++] = buffer[from++];
            continue;
        }
        if (dots == 2)
            to = without_last_segment(buffer, to, separator);
        from += dots + 1;
        if (from == length)
            buffer[to++] = separator;
    }
    return to;
}

int32_t gio_IsAbsolutePath(const char* name, uint32_t* absolute)
{
    if (name == nullptr || absolute == nullptr)
        return GIO_ERR_INVALID;
    *absolute = 1;
    if (name[0] == '\\')
        return GIO_OK;
    const char* colon = std::strchr(name, ':');
    *absolute = colon != nullptr && (colon[1] == '\\' || colon[1] == '/') ? 1 : 0;
    return colon != nullptr && *absolute == 0 ? GIO_ERR_BAD_NAME : GIO_OK;
}
