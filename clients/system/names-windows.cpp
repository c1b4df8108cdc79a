// Names of files are UTF-8 in this project. The C library here takes them in the code page of the machine, and the C++
// library takes each byte for a character, so the linker puts these functions in the place of theirs (--wrap).

#include <cerrno>
#include <cstdio>
#include <cwchar>
#include <string>

#include <windows.h>

namespace
{

bool widened(const char* text, std::wstring* wide)
{
    const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
    if (size <= 0)
    {
        errno = EILSEQ;
        return false;
    }
    wide->resize(static_cast<size_t>(size));
    MultiByteToWideChar(CP_UTF8, 0, text, -1, wide->data(), size);
    wide->pop_back();
    return true;
}

constexpr auto kBroken = static_cast<size_t>(-1);
constexpr auto kCutShort = static_cast<size_t>(-2);

// Bytes of the character that begins with this one; 0 if none does.
size_t length_of(unsigned char first)
{
    return first < 0x80U ? 1 : first < 0xC2U ? 0 : first < 0xE0U ? 2 : first < 0xF0U ? 3 : first < 0xF5U ? 4 : 0;
}

}  // namespace

extern "C" {

std::FILE* __wrap_fopen(const char* name, const char* mode);
int __wrap_remove(const char* name);
size_t __wrap_mbrtowc(wchar_t* to, const char* from, size_t size, mbstate_t* state);

std::FILE* __wrap_fopen(const char* name, const char* mode)
{
    std::wstring wide_name;
    std::wstring wide_mode;
    return widened(name, &wide_name) && widened(mode, &wide_mode) ? _wfopen(wide_name.c_str(), wide_mode.c_str())
                                                                  : nullptr;
}

int __wrap_remove(const char* name)
{
    std::wstring wide;
    return widened(name, &wide) ? _wremove(wide.c_str()) : -1;
}

// A character beyond 16 bits comes as two units: the second one waits in the state, and takes the last byte.
size_t __wrap_mbrtowc(wchar_t* to, const char* from, size_t size, mbstate_t* state)
{
    if (from == nullptr)
        return 0;
    if (state != nullptr && *state != 0)
    {
        if (to != nullptr)
            *to = static_cast<wchar_t>(*state);
        *state = 0;
        return 1;
    }
    if (size == 0)
        return kCutShort;
    const size_t length = length_of(static_cast<unsigned char>(*from));
    if (length > size)
        return kCutShort;
    wchar_t units[2] = {};
    const int count =
        length == 0 ? 0 : MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, from, static_cast<int>(length), units, 2);
    if (count == 0)
    {
        errno = EILSEQ;
        return kBroken;
    }
    if (to != nullptr)
        *to = units[0];
    if (count == 1 || state == nullptr)
        return *from == '\0' ? 0 : length;
    *state = units[1];
    return length - 1;
}

}  // extern "C"
