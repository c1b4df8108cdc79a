// URLs and local names: the parser, the normaliser and the resolvers. The first byte chooses syntax and kinds, a
// zero byte parts the name from its base.

#include "fuzz/fuzz.h"
#include "holv-core/gio/gio-url.h"

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

using orvlog::fuzz::expect;

namespace
{

bool lies_within(const GIO_UrlPart& part, const char* text, size_t size)
{
    return part.text == nullptr || (part.text >= text && part.text + part.length <= text + size);
}

void check_parse(const std::string& text)
{
    GIO_UrlParts parts;
    if (gio_ParseUrl(text.c_str(), &parts) != 0)
        return;
    expect(parts.text_size == std::strlen(text.c_str()) + 1, "the size is the text with its terminator");
    for (const GIO_UrlPart& part : {parts.scheme, parts.authority, parts.path, parts.query, parts.fragment})
        expect(lies_within(part, text.c_str(), parts.text_size - 1), "a part lies within the text");
}

// What is brought into one form stays as it is.
void check_normalise(const std::string& text, uint32_t syntax, uint32_t flags)
{
    const std::vector<char> exact(text.begin(), text.end());
    const GIO_UrlPart part = {exact.data(), static_cast<uint32_t>(exact.size())};
    const int64_t length = gio_NormalisePart(&part, GIO_CLASS_PATH, syntax, flags, nullptr);
    if (length < 0)
        return;
    expect(static_cast<size_t>(length) <= exact.size(), "one form is no longer than the part");
    std::vector<char> once(static_cast<size_t>(length)), twice(static_cast<size_t>(length));
    expect(gio_NormalisePart(&part, GIO_CLASS_PATH, syntax, flags, once.data()) == length,
           "counting and writing agree");
    if (flags != 0)
        return;
    const GIO_UrlPart again = {once.data(), static_cast<uint32_t>(length)};
    expect(gio_NormalisePart(&again, GIO_CLASS_PATH, GIO_PATH_URL, 0, twice.data()) == length,
           "one form keeps its length");
    expect(once == twice, "one form stays as it is");
}

void check_dot_segments(const std::string& text, uint32_t syntax)
{
    std::vector<char> exact(text.begin(), text.end());
    const uint32_t length = gio_RemoveDotSegments(exact.data(), static_cast<uint32_t>(exact.size()), syntax);
    expect(length <= exact.size(), "no text grows");
}

void check_resolve_url(const char* name, uint32_t kind, const char* base)
{
    GIO_UrlParts parts = {};
    uint32_t size = 0;
    if (gio_ResolveUrl(name, kind, base, &parts, &size) != GIO_ERR_NO_MEMORY)
        return;
    std::vector<char> exact(size);
    parts.text = exact.data();
    expect(gio_ResolveUrl(name, kind, base, &parts, &size) == GIO_OK, "the room asked for is enough");
    expect(size <= exact.size() && exact[size - 1] == '\0' && parts.text_size == size, "the result fits and ends");
    for (const GIO_UrlPart& part : {parts.scheme, parts.authority, parts.path, parts.query, parts.fragment})
        expect(lies_within(part, exact.data(), size - 1), "a part lies within the result");
}

void check_resolve_path(const char* name, const char* base)
{
    uint32_t size = 0;
    if (gio_ResolvePath(name, base, nullptr, &size) != GIO_ERR_NO_MEMORY)
        return;
    std::vector<char> exact(size);
    expect(gio_ResolvePath(name, base, exact.data(), &size) == GIO_OK, "the room asked for is enough");
    expect(size <= exact.size() && exact[size - 1] == '\0', "the result fits and ends");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const uint32_t kind = data[0] & 3;
    const uint32_t flags = (data[0] >> 2) & 3;
    const bool with_base = (data[0] & 0x10) != 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string name = text.substr(0, text.find('\0'));
    const std::string base = name.size() < text.size() ? text.substr(name.size() + 1) : "";
    const char* const base_text = with_base ? base.c_str() : nullptr;
    check_parse(text);
    check_normalise(text, kind, flags);
    check_dot_segments(text, kind);
    check_resolve_url(name.c_str(), kind, base_text);
    check_resolve_path(name.c_str(), base_text);
    return 0;
}
