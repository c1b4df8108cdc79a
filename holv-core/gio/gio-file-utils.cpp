#include "holv-core/gio/gio-file-utils.h"

#include "holv-core/gio/gio-file-utils-host.h"
#include "holv-core/gio/gio-result.h"

#include <cstdio>
#include <cstring>

namespace
{

constexpr size_t kPiece = 512;

using Transfer = int32_t (*)(const char* source, const char* target);

bool is_separator(char c)
{
    return c == '/' || c == '\\';
}

int32_t copy_pieces(FILE* from, FILE* to)
{
    char piece[kPiece];
    for (;;)
    {
        const size_t count = std::fread(piece, 1, kPiece, from);
        if (std::ferror(from) != 0)
            return gio_host_failure();
        if (count != 0 && std::fwrite(piece, 1, count, to) != count)
            return gio_host_failure();
        if (std::feof(from) != 0)
            return GIO_OK;
    }
}

const char* last_element(const char* path)
{
    const char* element = path;
    for (const char* at = path; *at != '\0'; ++at)
        if (is_separator(*at))
            element = at + 1;
    return element;
}

int32_t join(const char* source, const char* directory, char separator, char* joined)
{
    const char* element = last_element(source);
    const size_t element_length = std::strlen(element);
    const size_t length = directory != nullptr ? std::strlen(directory) : 0;
    const bool separated = directory == nullptr || (length > 0 && is_separator(directory[length - 1]));
    const size_t start = separated ? length : length + 1;
    if (start + element_length >= GIO_PATH_ROOM)
        return GIO_ERR_BAD_NAME;
    if (length != 0)
        std::memcpy(joined, directory, length);
    if (!separated)
        joined[length] = separator;
    std::memcpy(joined + start, element, element_length + 1);
    return GIO_OK;
}

int32_t move(const char* source, const char* target)
{
    return gio_host_move(source, target) == 0 ? static_cast<int32_t>(GIO_OK) : static_cast<int32_t>(GIO_ERR_PLATFORM);
}

int32_t transfer(const char* source, const char* target, uint32_t overwrite, Transfer operation)
{
    if (source == nullptr)
        return GIO_ERR_INVALID;
    uint32_t is_directory = 0;
    int32_t code = GIO_OK;
    if (target != nullptr)
    {
        code = GIO_FileExists(target, &is_directory);
        if (code == GIO_OK && is_directory == 0 && overwrite == 0)
            return GIO_ERR_PERMISSION;
        if (code != GIO_OK || is_directory == 0)
            return operation(source, target);
    }
    char joined[GIO_PATH_ROOM];
    code = join(source, target, gio_host_separator, joined);
    if (code != GIO_OK)
        return code;
    if (overwrite == 0 && GIO_FileExists(joined, &is_directory) == GIO_OK)
        return GIO_ERR_PERMISSION;
    return operation(source, joined);
}

}  // namespace

int32_t GIO_FileCopyPlain(const char* source, const char* target)
{
    if (source == nullptr || target == nullptr)
        return GIO_ERR_INVALID;
    gio_clear_error();
    FILE* from = gio_host_open_binary(source, 0);
    if (from == nullptr)
        return gio_host_failure();
    FILE* to = gio_host_open_binary(target, 1);
    if (to == nullptr)
    {
        const int32_t code = gio_host_failure();
        std::fclose(from);
        return code;
    }
    int32_t code = copy_pieces(from, to);
    std::fclose(from);
    if (std::fclose(to) != 0 && code == GIO_OK)
        code = gio_host_failure();
    return code;
}

int32_t GIO_FileCopy(const char* source, const char* target, uint32_t overwrite)
{
    return transfer(source, target, overwrite, GIO_FileCopyPlain);
}

int32_t GIO_FileRename(const char* source, const char* target, uint32_t overwrite)
{
    return transfer(source, target, overwrite, move);
}

int32_t GIO_FileExists(const char* path, uint32_t* is_directory)
{
    if (path == nullptr || is_directory == nullptr)
        return GIO_ERR_INVALID;
    const size_t length = std::strlen(path);
    if (length < 1 || length >= GIO_PATH_ROOM)
        return GIO_ERR_INVALID;
    char plain[GIO_PATH_ROOM];
    std::memcpy(plain, path, length + 1);
    if (length > 1 && is_separator(plain[length - 1]))
        plain[length - 1] = '\0';
    gio_clear_error();
    return gio_host_status(plain, is_directory) == 0 ? static_cast<int32_t>(GIO_OK) : gio_host_failure();
}

int32_t GIO_PathJoin(const char* source, const char* directory, char* joined)
{
    if (source == nullptr || joined == nullptr)
        return GIO_ERR_INVALID;
    return join(source, directory, '\\', joined);
}

uint64_t GIO_RoundUp(uint64_t value, uint64_t unit)
{
    const uint64_t beyond = unit != 0 ? value % unit : 0;
    return beyond != 0 ? value + (unit - beyond) : value;
}

void GIO_ListInit(GIO_ListNode* head, GIO_ListNode* tail)
{
    if (head == nullptr || tail == nullptr)
        return;
    *head = {nullptr, tail};
    *tail = {head, nullptr};
}

void GIO_ListAppend(GIO_ListNode* element, GIO_ListNode* tail)
{
    if (element == nullptr || tail == nullptr || tail->prev == nullptr)
        return;
    *element = {tail->prev, tail};
    tail->prev->next = element;
    tail->prev = element;
}
