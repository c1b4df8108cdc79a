// URLs and local names: taken apart, brought into one form, and resolved against a base.
//
// Texts are bytes with a terminator. In a URL, bytes from 0x80 up stand only as escapes ("%" and two hexadecimal
// digits), and only as well-formed UTF-8.

#ifndef HOLV_CORE_GIO_URL_H
#define HOLV_CORE_GIO_URL_H

#include "holv-core/gio/gio-stream.h"

#ifdef __cplusplus
extern "C" {
#endif

// The syntax of a name.
enum
{
    GIO_PATH_LOCAL = 0,  // separator "\"
    GIO_PATH_COLON = 1,  // separator ":"; nothing opens these
    GIO_PATH_SLASH = 2,  // separator "/"; likewise
    GIO_PATH_URL = 3     // separator "/"
};

enum
{
    GIO_SCHEME_OTHER = 0,
    GIO_SCHEME_FILE = 1,
    GIO_SCHEME_HTTP = 2
};

// A piece of the text that was parsed; a null `text` where there is no such part.
typedef struct GIO_UrlPart
{
    const char* text;
    uint32_t length;
} GIO_UrlPart;

typedef struct GIO_UrlParts
{
    const char* text;      // the whole URL
    uint32_t text_size;    // its length and 1
    GIO_UrlPart scheme;    // before the first ":"
    uint32_t scheme_kind;  // GIO_SCHEME_*, whatever the case of its letters
    GIO_UrlPart authority;
    GIO_UrlPart path;
    uint32_t path_syntax;  // GIO_PATH_URL if there is a path
    GIO_UrlPart query;     // without the "?"; may be there with length 0
    GIO_UrlPart fragment;  // without the "#"; likewise
    uint32_t has_authority;
} GIO_UrlParts;

// Character classes, as bits.
enum
{
    GIO_CLASS_SCHEME = 1,
    GIO_CLASS_AUTHORITY = 2,
    GIO_CLASS_PATH = 4,
    GIO_CLASS_QUERY = 8,
    GIO_CLASS_FRAGMENT = 16,
    GIO_CLASS_UNRESERVED = 32
};

// How a part is brought into one form.
enum
{
    GIO_NORMALISE_DECODE = 1,  // escapes become the bytes that they stand for
    GIO_NORMALISE_CUT = 2      // ends behind the last "/"
};

// Takes a URL apart; `parts` point into `text`. Gives 0, or -1 with no parts for a text that is none, and for
// null arguments. Readers of names rely on these:
// - behind "scheme:", a "/" as either of the next two characters skips both, and an authority follows, or a path
//   if the third is a "/", too; otherwise only a letter may follow, and starts a path;
// - an empty text is a path of length 0;
// - `has_authority` is 1 for an authority that isn't empty, and always for "file:".
int32_t gio_ParseUrl(const char* text, GIO_UrlParts* parts);

// Copies a part to `out`, which has to be as long as the result, or null to learn its length; no terminator is
// written. A plain character has to be in `char_class`. An escape of an unreserved character becomes that
// character; any other stays or is decoded. In a path, the separator of `syntax` becomes "/"; for other parts
// `syntax` is GIO_PATH_URL. Gives the length, or -1: for "%" without two digits, for bytes from 0x80 up that are
// not well-formed UTF-8, for an escaped 0 that would be decoded, for GIO_NORMALISE_CUT without any "/", for null.
int64_t gio_NormalisePart(const GIO_UrlPart* part, uint32_t char_class, uint32_t syntax, uint32_t flags, char* out);

// Removes "." and ".." segments in place and gives the new length; no terminator is read or written. All leading
// "./" and "../" go, a lone "." or ".." stays, and "a/../b" is "/b" (with the separator of `syntax` for "/").
// With GIO_PATH_COLON a name that starts with "." becomes empty, with GIO_PATH_SLASH one that starts with "..".
uint32_t gio_RemoveDotSegments(char* buffer, uint32_t length, uint32_t syntax);

// Both resolvers take the room at their result in `*inout_size`, in bytes. If it is too small they store a size that is
// enough and give GIO_ERR_NO_MEMORY; otherwise they store the size of the result, its terminator included, and
// give 0. Other codes: GIO_ERR_INVALID for null arguments, an unknown kind, or a relative name without a base;
// GIO_ERR_BAD_NAME for names that are malformed or can't be joined.

// Resolves a name of any kind against a base URL, which may be null for an absolute name, into the writable buffer
// that `parts_out->text` names (null with a room of 0). The parts then point into it, with one quirk that openers
// rely on: if there is a query, `path.length` is the query's length and `query.length` is 0. An absolute local
// name becomes the path of a "file:" URL as it is, with separators turned. A name without a path, or with one of
// length 0, takes the base's.
int32_t gio_ResolveUrl(const char* name, uint32_t name_kind, const char* base, GIO_UrlParts* parts_out,
                       uint32_t* inout_size);

// Resolves a local name against an absolute local base. An absolute name stands alone, with its dot segments. A
// relative one goes behind the base's last "\".
int32_t gio_ResolvePath(const char* name, const char* base, char* buffer, uint32_t* inout_size);

// Whether a local name is absolute: it starts with "\", or its first ":" has a "\" or "/" behind it. Gives
// 0, GIO_ERR_BAD_NAME for a ":" with anything else behind it, or GIO_ERR_INVALID for null.
int32_t gio_IsAbsolutePath(const char* name, uint32_t* absolute);

#ifdef __cplusplus
}
#endif

#endif
