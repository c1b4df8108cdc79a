#include "holv-core/gio/gio-wide-path-windows.h"

#include "holv-core/gio/gio-utf8.h"

void gio_wide_convert(const char* path, wchar_t* wide)
{
    for (uint32_t length; *path != '\0'; path += length)
    {
        const int32_t code_point = gio_utf8_decode(path, &length);
        if (code_point < 0x10000)
        {
            *wide++ = static_cast<wchar_t>(code_point);
            continue;
        }
        const auto above = static_cast<uint32_t>(code_point) - 0x10000;
        *wide++ = static_cast<wchar_t>(((above >> 10) & 0x3FF) + 0xD800);
        *wide++ = static_cast<wchar_t>((above & 0x3FF) + 0xDC00);
    }
    *wide = 0;
}

uint32_t gio_wide_path(const char* path, wchar_t* wide)
{
    uint32_t units = 0;
    const char* at = path;
    for (uint32_t length; *at != '\0'; at += length)
    {
        const int32_t code_point = gio_utf8_decode(at, &length);
        units += code_point < 0x10000 ? 1 : 2;
        if (code_point < 0 || units > GIO_WIDE_PATH_LIMIT)
            return 0;
    }
    gio_wide_convert(path, wide);
    return 1;
}
