#include "holv-core/gio/gio-url.h"

#include "tests/support/guarded-block.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace
{

std::string show(const GIO_UrlPart& part)
{
    if (part.text == nullptr)
        return "-";
    std::string shown(1, '<');
    return shown.append(part.text, part.length).append(1, '>');
}

// scheme, its kind, authority, whether there is one, path, query, fragment.
std::string show(const GIO_UrlParts& p)
{
    return show(p.scheme) + std::to_string(p.scheme_kind) + " " + show(p.authority) + std::to_string(p.has_authority) +
           " " + show(p.path) + std::to_string(p.path_syntax) + " " + show(p.query) + " " + show(p.fragment);
}

std::string parse(const std::string& text)
{
    GIO_UrlParts parts;
    std::memset(&parts, 0xEE, sizeof(parts));
    const int32_t code = gio_ParseUrl(text.c_str(), &parts);
    if (code != 0)
    {
        EXPECT_EQ(code, -1);
        EXPECT_EQ(parts.text, nullptr);
        EXPECT_EQ(parts.path.text, nullptr);
        return "no URL";
    }
    EXPECT_EQ(parts.text_size, text.size() + 1);
    return show(parts);
}

std::string normalise(const std::string& text, uint32_t char_class, uint32_t flags = 0, uint32_t syntax = GIO_PATH_URL)
{
    const GIO_UrlPart part = {text.data(), static_cast<uint32_t>(text.size())};
    const int64_t length = gio_NormalisePart(&part, char_class, syntax, flags, nullptr);
    std::string out(text.size(), '#');
    EXPECT_EQ(gio_NormalisePart(&part, char_class, syntax, flags, out.data()), length) << text;
    return length < 0 ? "bad" : out.substr(0, static_cast<size_t>(length));
}

std::string path(const std::string& text, uint32_t flags = 0, uint32_t syntax = GIO_PATH_URL)
{
    return normalise(text, GIO_CLASS_PATH, flags, syntax);
}

std::string undot(std::string text, uint32_t syntax = GIO_PATH_URL)
{
    text.resize(gio_RemoveDotSegments(text.data(), static_cast<uint32_t>(text.size()), syntax));
    return text;
}

std::string resolve(const char* name, uint32_t kind, const char* base, GIO_UrlParts* parts)
{
    uint32_t size = 0;
    parts->text = nullptr;
    int32_t code = gio_ResolveUrl(name, kind, base, parts, &size);
    if (code != GIO_ERR_NO_MEMORY)
        return "code " + std::to_string(code);
    static char buffer[512];
    const uint32_t needed = size;
    parts->text = buffer;
    size = needed - 1;
    EXPECT_EQ(gio_ResolveUrl(name, kind, base, parts, &size), GIO_ERR_NO_MEMORY) << name;
    EXPECT_EQ(size, needed);
    code = gio_ResolveUrl(name, kind, base, parts, &size);
    EXPECT_EQ(code, GIO_OK) << name;
    EXPECT_EQ(size, std::strlen(buffer) + 1);
    EXPECT_EQ(parts->text_size, size);
    EXPECT_EQ(parts->text, buffer);
    return buffer;
}

std::string resolve(const char* name, const char* base = "http://a/b/c/d", uint32_t kind = GIO_PATH_URL)
{
    GIO_UrlParts parts;
    return resolve(name, kind, base, &parts);
}

std::string resolve_path(const char* name, const char* base)
{
    uint32_t size = 0;
    char buffer[256];
    int32_t code = gio_ResolvePath(name, base, nullptr, &size);
    if (code != GIO_ERR_NO_MEMORY)
        return "code " + std::to_string(code);
    --size;
    EXPECT_EQ(gio_ResolvePath(name, base, buffer, &size), GIO_ERR_NO_MEMORY) << name;
    code = gio_ResolvePath(name, base, buffer, &size);
    EXPECT_EQ(code, GIO_OK) << name;
    EXPECT_EQ(size, std::strlen(buffer) + 1);
    return buffer;
}

TEST(UrlRecords, HaveTheirLayout)
{
    EXPECT_EQ(offsetof(GIO_UrlPart, text), 0U);
    EXPECT_EQ(offsetof(GIO_UrlPart, length), 8U);
    EXPECT_EQ(offsetof(GIO_UrlParts, text), 0U);
    EXPECT_EQ(offsetof(GIO_UrlParts, text_size), 8U);
    EXPECT_EQ(offsetof(GIO_UrlParts, scheme), 16U);
    EXPECT_EQ(offsetof(GIO_UrlParts, scheme_kind), 32U);
    EXPECT_EQ(offsetof(GIO_UrlParts, authority), 40U);
    EXPECT_EQ(offsetof(GIO_UrlParts, path), 56U);
    EXPECT_EQ(offsetof(GIO_UrlParts, path_syntax), 72U);
    EXPECT_EQ(offsetof(GIO_UrlParts, query), 80U);
    EXPECT_EQ(offsetof(GIO_UrlParts, fragment), 96U);
    EXPECT_EQ(offsetof(GIO_UrlParts, has_authority), 112U);
    EXPECT_EQ(sizeof(GIO_UrlParts), 120U);
}

// Each of the 256 bytes, plain, in each class.
TEST(Normalise, ClassesOfAllBytes)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const std::string in_path = letters + "!$&'()+,-./:;=@[]^_`{}~";
    const std::pair<uint32_t, std::string> classes[] = {{1, letters + "+-."}, {2, letters + "+-.:@[]_"},
                                                        {4, in_path},         {8, in_path},
                                                        {16, in_path},        {32, letters + "-._~"}};
    for (const auto& [char_class, members] : classes)
        for (int byte = 0; byte < 256; ++byte)
        {
            const std::string text(1, static_cast<char>(byte));
            const bool member = byte != '%' && members.find(text[0]) != std::string::npos;
            EXPECT_EQ(normalise(text, char_class), member ? text : "bad") << char_class << " " << byte;
        }
}

// Each of the 256 escapes alone: unreserved ones are replaced, those from 0x80 up are no UTF-8.
TEST(Normalise, AllEscapes)
{
    const std::string unreserved = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~";
    for (int byte = 0; byte < 256; ++byte)
    {
        const char digits[] = "0123456789abcdef";
        const std::string text = {'%', digits[byte / 16], digits[byte % 16]};
        const std::string character(1, static_cast<char>(byte));
        const bool replaced = byte != 0 && unreserved.find(character) != std::string::npos;
        EXPECT_EQ(path(text), replaced ? character : byte < 0x80 ? text : "bad") << byte;
        EXPECT_EQ(path(text, GIO_NORMALISE_DECODE), byte != 0 && byte < 0x80 ? character : "bad") << byte;
        EXPECT_EQ(normalise(text, GIO_CLASS_AUTHORITY), replaced && byte != '~'    ? character
                                                        : byte < 0x80 && !replaced ? text
                                                                                   : "bad")
            << byte;
    }
}

TEST(Normalise, NullParts)
{
    const GIO_UrlPart none = {nullptr, 0};
    const GIO_UrlPart broken = {nullptr, 5};
    EXPECT_EQ(gio_NormalisePart(nullptr, GIO_CLASS_PATH, GIO_PATH_URL, 0, nullptr), -1);
    EXPECT_EQ(gio_NormalisePart(&none, GIO_CLASS_PATH, GIO_PATH_URL, 0, nullptr), 0);
    EXPECT_EQ(gio_NormalisePart(&broken, GIO_CLASS_PATH, GIO_PATH_URL, 0, nullptr), -1);
}

TEST(ParseUrl, WholeUrls)
{
    EXPECT_EQ(parse("http://h/p?q#f"), "<http>2 <h>1 </p>3 <q> <f>");
    EXPECT_EQ(parse("HTTP://x/y"), "<HTTP>2 <x>1 </y>3 - -");
    EXPECT_EQ(parse("File:///c:/x"), "<File>1 <>1 </c:/x>3 - -");
    EXPECT_EQ(parse("file://server/c:/x"), "<file>1 <server>1 </c:/x>3 - -");
    EXPECT_EQ(parse("ftp://x/y"), "<ftp>0 <x>1 </y>3 - -");
    EXPECT_EQ(parse("http:///p"), "<http>2 <>0 </p>3 - -");
    EXPECT_EQ(parse("x-1+2.3://h"), "<x-1+2.3>0 <h>1 -0 - -");
    EXPECT_EQ(parse("https://h"), "<https>0 <h>1 -0 - -");
}

TEST(ParseUrl, FirstCharacterDecides)
{
    EXPECT_EQ(parse("#f"), "-0 -0 -0 - <f>");
    EXPECT_EQ(parse("#"), "-0 -0 -0 - <>");
    EXPECT_EQ(parse("?q"), "-0 -0 -0 <q> -");
    EXPECT_EQ(parse("?"), "-0 -0 -0 <> -");
    EXPECT_EQ(parse("?#"), "-0 -0 -0 <> <>");
    EXPECT_EQ(parse("./a:b"), "-0 -0 <./a:b>3 - -");
    EXPECT_EQ(parse("/a"), "-0 -0 </a>3 - -");
    EXPECT_EQ(parse("/"), "-0 -0 </>3 - -");
    EXPECT_EQ(parse("//h/a"), "-0 <h>1 </a>3 - -");
    EXPECT_EQ(parse("//"), "no URL");
    EXPECT_EQ(parse("///a"), "no URL");
    EXPECT_EQ(parse(""), "-0 -0 <>3 - -");
    EXPECT_EQ(parse("a/b"), "-0 -0 <a/b>3 - -");
    EXPECT_EQ(parse("1:b"), "-0 -0 <1:b>3 - -");
    EXPECT_EQ(parse("a_b:c"), "-0 -0 <a_b:c>3 - -");
    EXPECT_EQ(parse("*"), "no URL");
}

TEST(ParseUrl, BehindTheScheme)
{
    EXPECT_EQ(parse("x:"), "no URL");
    EXPECT_EQ(parse("x:a"), "<x>0 -0 <a>3 - -");
    EXPECT_EQ(parse("mailto:bob@h"), "<mailto>0 -0 <bob@h>3 - -");
    EXPECT_EQ(parse("x:1"), "no URL");
    EXPECT_EQ(parse("x:%41"), "no URL");
    EXPECT_EQ(parse("x:/"), "no URL");
    EXPECT_EQ(parse("x://"), "no URL");
    // A "/" as either of the next two characters leads to an authority.
    EXPECT_EQ(parse("x:/ab/c"), "<x>0 <b>1 </c>3 - -");
    EXPECT_EQ(parse("x:a/b/c"), "<x>0 <b>1 </c>3 - -");
    EXPECT_EQ(parse("file:a"), "<file>1 -1 <a>3 - -");
    EXPECT_EQ(parse("x:a//b"), "<x>0 <>0 </b>3 - -");
    EXPECT_EQ(parse("x:////b"), "no URL");
}

TEST(ParseUrl, Authority)
{
    EXPECT_EQ(parse("http://a.b-c_d%41+e@[f]:80"), "<http>2 <a.b-c_d%41+e@[f]:80>1 -0 - -");
    EXPECT_EQ(parse("http://9"), "<http>2 <9>1 -0 - -");
    EXPECT_EQ(parse("http://h?q"), "<http>2 <h>1 -0 <q> -");
    EXPECT_EQ(parse("http://h#f"), "<http>2 <h>1 -0 - <f>");
    EXPECT_EQ(parse("http://-h"), "no URL");
    EXPECT_EQ(parse("http://[::1]"), "no URL");
    EXPECT_EQ(parse("http://h~/"), "no URL");
    EXPECT_EQ(parse("http://h h"), "no URL");
}

TEST(ParseUrl, PathQueryAndFragment)
{
    const std::string all = "!$%&'()+,-./:;=@[]^_`{}~aZ09";
    std::string url(1, '/');
    std::string expected("-0 -0 </");
    url.append(all).append("?").append(all).append("#").append(all);
    expected.append(all).append(">3 <").append(all).append("> <").append(all).append(">");
    EXPECT_EQ(parse(url), expected);
    EXPECT_EQ(parse("http://h//a"), "no URL");
    EXPECT_EQ(parse("/a?b?c"), "no URL");
    EXPECT_EQ(parse("/a#b#c"), "no URL");
    EXPECT_EQ(parse("/a#b?c"), "no URL");
    EXPECT_EQ(parse("/a?"), "-0 -0 </a>3 <> -");
    for (const char* outside : {"\\", "*", "\"", "<", ">", "|", " ", "\t", "\x7F", "\x80", "\xC3\xA9", "\xFF"})
    {
        EXPECT_EQ(parse(std::string("/a") + outside), "no URL");
        EXPECT_EQ(parse(std::string("?a") + outside), "no URL");
        EXPECT_EQ(parse(std::string("#a") + outside), "no URL");
    }
}

TEST(ParseUrl, NullArguments)
{
    GIO_UrlParts parts;
    EXPECT_EQ(gio_ParseUrl(nullptr, &parts), -1);
    EXPECT_EQ(parts.text, nullptr);
    EXPECT_EQ(gio_ParseUrl("a", nullptr), -1);
}

TEST(ParseUrl, ReadsNoByteBeyondTheTerminator)
{
    for (const char* text : {"", "#", "?", "/", "//", "x:", "x:/", "x://", "x:///", "x:a", "x:a/", "http://h", "."})
    {
        orvlog::test::GuardedBlock block(text, std::strlen(text) + 1);
        GIO_UrlParts guarded, plain;
        EXPECT_EQ(gio_ParseUrl(block.as<const char>(), &guarded), gio_ParseUrl(text, &plain)) << text;
        EXPECT_EQ(guarded.path.length, plain.path.length) << text;
    }
}

TEST(Normalise, PlainCharactersAndUnreservedEscapes)
{
    EXPECT_EQ(path("/a%41%2d%2E%5f%7Eb"), "/aA-._~b");
    EXPECT_EQ(path("%2F"), "%2F");
    EXPECT_EQ(path("%2f%20%00"), "%2f%20%00");
    EXPECT_EQ(path("a*"), "bad");
    EXPECT_EQ(path("a b"), "bad");
    EXPECT_EQ(path(""), "");
    EXPECT_EQ(normalise("h%41", GIO_CLASS_AUTHORITY), "hA");
    EXPECT_EQ(normalise("h%7E", GIO_CLASS_AUTHORITY), "bad");
    EXPECT_EQ(normalise("h/", GIO_CLASS_AUTHORITY), "bad");
    EXPECT_EQ(normalise("ab+", GIO_CLASS_SCHEME), "ab+");
    EXPECT_EQ(normalise("a/", GIO_CLASS_SCHEME), "bad");
    EXPECT_EQ(normalise("q=%7e", GIO_CLASS_QUERY), "q=~");
    EXPECT_EQ(normalise("f\\", GIO_CLASS_FRAGMENT), "bad");
}

TEST(Normalise, BrokenEscapes)
{
    for (const char* text : {"%", "%4", "%G0", "%0G", "a%", "%%41", "%4%41", "%-1"})
        EXPECT_EQ(path(text), "bad") << text;
}

TEST(Normalise, Utf8RunsAcrossEscapes)
{
    EXPECT_EQ(path("%C3%A9"), "%C3%A9");
    EXPECT_EQ(path("%e2%82%aC%F0%90%80%80%f4%8F%BF%bF"), "%e2%82%aC%F0%90%80%80%f4%8F%BF%bF");
    EXPECT_EQ(path("%C3"), "bad");
    EXPECT_EQ(path("%E9x"), "bad");
    EXPECT_EQ(path("%C3%41"), "bad");
    EXPECT_EQ(path("%C3x%A9"), "bad");
    EXPECT_EQ(path("%A9"), "bad");
    EXPECT_EQ(path("%C1%80"), "bad");
    EXPECT_EQ(path("%E0%9F%80"), "bad");
    EXPECT_EQ(path("%E0%A0%80"), "%E0%A0%80");
    EXPECT_EQ(path("%ED%A0%80"), "bad");
    EXPECT_EQ(path("%ED%9F%80"), "%ED%9F%80");
    EXPECT_EQ(path("%F0%8F%80%80"), "bad");
    EXPECT_EQ(path("%F4%90%80%80"), "bad");
    EXPECT_EQ(path("%F5%80%80%80"), "bad");
    EXPECT_EQ(path("%E2%82"), "bad");
    EXPECT_EQ(path("\xC3\xA9"), "bad");
}

TEST(Normalise, DecodingMode)
{
    EXPECT_EQ(path("/%2F%20%41%C3%A9", GIO_NORMALISE_DECODE), "// A\xC3\xA9");
    EXPECT_EQ(path("%00", GIO_NORMALISE_DECODE), "bad");
    EXPECT_EQ(path("%C3", GIO_NORMALISE_DECODE), "bad");
}

TEST(Normalise, CuttingMode)
{
    EXPECT_EQ(path("/a/b", GIO_NORMALISE_CUT), "/a/");
    EXPECT_EQ(path("a/", GIO_NORMALISE_CUT), "a/");
    EXPECT_EQ(path("/", GIO_NORMALISE_CUT), "/");
    EXPECT_EQ(path("a", GIO_NORMALISE_CUT), "bad");
    EXPECT_EQ(path("", GIO_NORMALISE_CUT), "bad");
    EXPECT_EQ(path("a%2Fb", GIO_NORMALISE_CUT), "bad");
    EXPECT_EQ(path("/a/*", GIO_NORMALISE_CUT), "bad");
}

TEST(Normalise, SeparatorsOfTheSyntax)
{
    EXPECT_EQ(path("a\\b/c", 0, GIO_PATH_LOCAL), "a/b/c");
    EXPECT_EQ(path("a:b", 0, GIO_PATH_COLON), "a/b");
    EXPECT_EQ(path("a/b", 0, GIO_PATH_SLASH), "a/b");
    EXPECT_EQ(path("a\\b", 0, GIO_PATH_SLASH), "bad");
    EXPECT_EQ(path("a\\b\\c", GIO_NORMALISE_CUT, GIO_PATH_LOCAL), "a/b/");
    EXPECT_EQ(normalise("a\\b", GIO_CLASS_QUERY, 0, GIO_PATH_LOCAL), "bad");
}

TEST(DotSegments, Url)
{
    EXPECT_EQ(undot("/a/b/c/./../../g"), "/a/g");
    EXPECT_EQ(undot("mid/content=5/../6"), "mid/6");
    EXPECT_EQ(undot("./a"), "a");
    EXPECT_EQ(undot("../a"), "a");
    EXPECT_EQ(undot("../../././a"), "a");
    EXPECT_EQ(undot(".././"), "");
    EXPECT_EQ(undot("."), ".");
    EXPECT_EQ(undot(".."), "..");
    EXPECT_EQ(undot("./.."), "..");
    EXPECT_EQ(undot("a/../b"), "/b");
    EXPECT_EQ(undot("a/b/../c"), "a/c");
    EXPECT_EQ(undot("/a/."), "/a/");
    EXPECT_EQ(undot("/a/.."), "/");
    EXPECT_EQ(undot("a/.."), "/");
    EXPECT_EQ(undot("/.."), "/");
    EXPECT_EQ(undot("/../../a"), "/a");
    EXPECT_EQ(undot("/."), "/");
    EXPECT_EQ(undot("/..."), "/...");
    EXPECT_EQ(undot("/.a/..b/c."), "/.a/..b/c.");
    EXPECT_EQ(undot("/a//../b"), "/a/b");
    EXPECT_EQ(undot(""), "");
    EXPECT_EQ(undot("..a"), "..a");
}

TEST(DotSegments, OtherSyntaxes)
{
    EXPECT_EQ(undot("\\a\\..\\.\\b\\..", GIO_PATH_LOCAL), "\\");
    EXPECT_EQ(undot("..\\a/../b", GIO_PATH_LOCAL), "a/../b");
    EXPECT_EQ(undot(".a:b", GIO_PATH_COLON), "");
    EXPECT_EQ(undot("a:.:b:..:c", GIO_PATH_COLON), "a:c");
    EXPECT_EQ(undot("..a", GIO_PATH_SLASH), "");
    EXPECT_EQ(undot("./a/../b", GIO_PATH_SLASH), "/b");
    EXPECT_EQ(undot("./a", 4), "./a");
    EXPECT_EQ(gio_RemoveDotSegments(nullptr, 5, GIO_PATH_URL), 0U);
}

TEST(DotSegments, StaysWithinTheBuffer)
{
    for (const char* text : {"/..", "/.", "/", ".", "..", "./", "../", "a/..", "/../..", "/a/../."})
    {
        orvlog::test::GuardedBlock block(text, std::strlen(text));
        const auto length = static_cast<uint32_t>(std::strlen(text));
        EXPECT_LE(gio_RemoveDotSegments(block.as<char>(), length, GIO_PATH_URL), length) << text;
    }
}

TEST(ResolveUrl, AbsoluteNamesStandAlone)
{
    EXPECT_EQ(resolve("http://h/a/../b"), "http://h/b");
    EXPECT_EQ(resolve("http://h/%41%2e%2E/x", nullptr), "http://h/A../x");
    EXPECT_EQ(resolve("http://h/a/%2e%2E/x", nullptr), "http://h/x");
    EXPECT_EQ(resolve("FILE:///c:/x", nullptr), "FILE:///c:/x");
    EXPECT_EQ(resolve("ftp://x/y", nullptr), "ftp://x/y");
    EXPECT_EQ(resolve("http:///y", nullptr), "http:/y");
    EXPECT_EQ(resolve("x:a", nullptr), "x:a");
}

TEST(ResolveUrl, RelativeNames)
{
    EXPECT_EQ(resolve("g"), "http://a/b/c/g");
    EXPECT_EQ(resolve("../g"), "http://a/b/g");
    EXPECT_EQ(resolve("../../../../g"), "http://a/g");
    EXPECT_EQ(resolve("./g/."), "http://a/b/c/g/");
    EXPECT_EQ(resolve("/g"), "http://a/g");
    EXPECT_EQ(resolve("//g/x"), "http://g/x");
    EXPECT_EQ(resolve("//g"), "http://g");
    EXPECT_EQ(resolve("?y"), "http://a/b/c/d?y");
    EXPECT_EQ(resolve("?y", "http://a/b?q"), "http://a/b?y");
    EXPECT_EQ(resolve("#s", "http://a/b?q"), "http://a/b?q#s");
    EXPECT_EQ(resolve("", "http://a/b?q"), "http://a/b?q");
    EXPECT_EQ(resolve("g?y#s", "http://a/b?q"), "http://a/g?y#s");
    EXPECT_EQ(resolve("g", "http://a/b?q"), "http://a/g");
    EXPECT_EQ(resolve("?", "http://a/b?q"), "http://a/b?");
    EXPECT_EQ(resolve("g", "file:///c:/d/e"), "file:///c:/d/g");
}

// What has an escape without need loses it, in each part by its own rules.
TEST(ResolveUrl, EscapesInTheFragment)
{
    EXPECT_EQ(resolve("#%41%7e%2F%3f"), "http://a/b/c/d#A~%2F%3f");
    EXPECT_EQ(resolve("http://h/x#%23%2541", nullptr), "http://h/x#%23%2541");
    EXPECT_EQ(resolve("?%41%26#%c3%a4%41"), "http://a/b/c/d?A%26#%c3%a4A");
    EXPECT_EQ(resolve("#%4"), "code 38");
    EXPECT_EQ(resolve("#%E9x"), "code 38");
}

TEST(ResolveUrl, RefusesWhatCantBeJoined)
{
    EXPECT_EQ(resolve("g", nullptr), "code 22");
    EXPECT_EQ(resolve("g", "b/c"), "code 38");
    EXPECT_EQ(resolve("g", "http://a/b#f"), "code 38");
    EXPECT_EQ(resolve("g", "http://a"), "code 38");
    EXPECT_EQ(resolve("g", "*"), "code 38");
    EXPECT_EQ(resolve("a b"), "code 38");
    EXPECT_EQ(resolve("http://h/%C3"), "code 38");
    EXPECT_EQ(resolve("http://h/%E9x"), "code 38");
    EXPECT_EQ(resolve("g%"), "code 38");
    EXPECT_EQ(resolve("g", "http://a/b/c", 4), "code 22");
    EXPECT_EQ(resolve("//h%7E/x"), "code 38");
}

TEST(ResolveUrl, LocalNames)
{
    EXPECT_EQ(resolve("c:\\d\\e", nullptr, GIO_PATH_LOCAL), "file://c:/d/e");
    EXPECT_EQ(resolve("\\d", nullptr, GIO_PATH_LOCAL), "file:///d");
    EXPECT_EQ(resolve("x\\..\\y", "http://a/b/c", GIO_PATH_LOCAL), "http://a/b/y");
    EXPECT_EQ(resolve("a:b", "http://a/b/c", GIO_PATH_LOCAL), "code 38");
    EXPECT_EQ(resolve("a b", "http://a/b/c", GIO_PATH_LOCAL), "code 38");
    EXPECT_EQ(resolve("x", nullptr, GIO_PATH_LOCAL), "code 22");
    EXPECT_EQ(resolve("x/y", "http://a/b/c", GIO_PATH_SLASH), "http://a/b/x/y");
    GIO_UrlParts parts;
    EXPECT_EQ(resolve("c:\\d", GIO_PATH_LOCAL, nullptr, &parts), "file://c:/d");
    EXPECT_EQ(show(parts), "<file>1 -1 <c:/d>3 - -");
}

TEST(ResolveUrl, PartsPointIntoTheResult)
{
    GIO_UrlParts parts;
    EXPECT_EQ(resolve("x/../y#f", GIO_PATH_URL, "HTTP://h:80/p/", &parts), "HTTP://h:80/p/y#f");
    EXPECT_EQ(show(parts), "<HTTP>2 <h:80>1 </p/y>3 - <f>");
    EXPECT_EQ(parts.scheme.text, parts.text);
}

TEST(ResolveUrl, AQueryGivesThePathItsLength)
{
    GIO_UrlParts parts;
    EXPECT_EQ(resolve("http://h/path?qu", GIO_PATH_URL, nullptr, &parts), "http://h/path?qu");
    EXPECT_EQ(show(parts), "<http>2 <h>1 </p>3 <> -");
    EXPECT_EQ(resolve("file:///p?query", GIO_PATH_URL, nullptr, &parts), "file:///p?query");
    EXPECT_EQ(show(parts), "<file>1 <>1 </p?qu>3 <> -");
}

TEST(ResolveUrl, NeedsNoMoreRoomThanItAsksFor)
{
    // The end of the base's path, which is cut, is longer than what is put behind it.
    orvlog::test::GuardedBlock block(11);
    GIO_UrlParts parts = {};
    parts.text = block.as<char>();
    uint32_t size = 11;
    EXPECT_EQ(gio_ResolveUrl("x", GIO_PATH_URL, "http://h/a/a-long-last-segment", &parts, &size), GIO_ERR_NO_MEMORY);
    EXPECT_EQ(size, 13U);
    EXPECT_EQ(gio_ResolveUrl("x", GIO_PATH_URL, "http://h/a-long-last-segment", &parts, &size), GIO_OK);
    EXPECT_STREQ(block.as<const char>(), "http://h/x");
}

TEST(ResolveUrl, NullArguments)
{
    GIO_UrlParts parts = {};
    uint32_t size = 100;
    EXPECT_EQ(gio_ResolveUrl(nullptr, 3, nullptr, &parts, &size), 22);
    EXPECT_EQ(gio_ResolveUrl("http://h", 3, nullptr, nullptr, &size), 22);
    EXPECT_EQ(gio_ResolveUrl("http://h", 3, nullptr, &parts, nullptr), 22);
    EXPECT_EQ(gio_ResolveUrl("http://h", 3, nullptr, &parts, &size), 22);
    EXPECT_EQ(size, 9U);
}

TEST(AbsolutePath, SaysSo)
{
    const auto absolute = [](const char* name)
    {
        uint32_t is_absolute = 9;
        const int32_t code = gio_IsAbsolutePath(name, &is_absolute);
        return code == 0 ? std::to_string(is_absolute) : "code " + std::to_string(code);
    };
    EXPECT_EQ(absolute("\\"), "1");
    EXPECT_EQ(absolute("\\x:y"), "1");
    EXPECT_EQ(absolute("c:\\x"), "1");
    EXPECT_EQ(absolute("c:/x"), "1");
    EXPECT_EQ(absolute(":/"), "1");
    EXPECT_EQ(absolute("x"), "0");
    EXPECT_EQ(absolute("/x"), "0");
    EXPECT_EQ(absolute(""), "0");
    EXPECT_EQ(absolute("c:"), "code 38");
    EXPECT_EQ(absolute("c:x"), "code 38");
    EXPECT_EQ(absolute("c:x:\\y"), "code 38");
    EXPECT_EQ(absolute(nullptr), "code 22");
    EXPECT_EQ(gio_IsAbsolutePath("x", nullptr), 22);
}

TEST(ResolvePath, AbsoluteNames)
{
    EXPECT_EQ(resolve_path("\\a\\..\\b", nullptr), "\\a\\..\\b");
    EXPECT_EQ(resolve_path("c:\\x", "\\base\\"), "c:\\x");
    EXPECT_EQ(resolve_path("c:/x", nullptr), "c:/x");
    EXPECT_EQ(resolve_path("\\a:b", nullptr), "\\a:b");
    EXPECT_EQ(resolve_path("long:\\x", nullptr), "long:\\x");
    EXPECT_EQ(resolve_path("a:b", "\\base\\"), "code 38");
    EXPECT_EQ(resolve_path("a:", "\\base\\"), "code 38");
    EXPECT_EQ(resolve_path("a:b:\\c", "\\base\\"), "code 38");
}

TEST(ResolvePath, RelativeNames)
{
    EXPECT_EQ(resolve_path("x", "c:\\d\\e"), "c:\\d\\x");
    EXPECT_EQ(resolve_path("x", "c:\\d\\"), "c:\\d\\x");
    EXPECT_EQ(resolve_path("..\\x\\.\\y", "c:\\d\\e"), "c:\\x\\y");
    EXPECT_EQ(resolve_path("..\\..\\..\\x", "c:\\d\\e"), "\\x");
    EXPECT_EQ(resolve_path("", "c:\\d\\e"), "c:\\d\\");
    EXPECT_EQ(resolve_path("/x", "c:\\d\\e"), "c:\\d\\/x");
    EXPECT_EQ(resolve_path("x", nullptr), "code 22");
    EXPECT_EQ(resolve_path("x", ""), "code 38");
    EXPECT_EQ(resolve_path("x", "d\\e"), "code 38");
    EXPECT_EQ(resolve_path("x", "a:b"), "code 38");
    EXPECT_EQ(resolve_path("x", "c:/d/e"), "code 38");
}

TEST(ResolvePath, NullArguments)
{
    uint32_t size = 100;
    char buffer[4];
    EXPECT_EQ(gio_ResolvePath(nullptr, nullptr, buffer, &size), 22);
    EXPECT_EQ(gio_ResolvePath("\\x", nullptr, buffer, nullptr), 22);
    EXPECT_EQ(gio_ResolvePath("\\x", nullptr, nullptr, &size), 22);
}

}  // namespace
