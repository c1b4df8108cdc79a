#include "holv-core/gio/gio-file.h"

#include "holv-core/gio/gio-file-host.h"
#include "holv-core/gio/gio-result.h"
#include "holv-core/gio/gio-utf8.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstdio>
#include <cstring>

namespace
{

// A stream is one block: its handle, its instance, and a table of its own, which can be changed for it alone.
struct FileStreamBlock
{
    GIO_Stream handle;
    GIO_FileInstance instance;
    GIO_StreamOps ops;
};

struct StandardStreams
{
    GIO_FileInstance input;
    GIO_FileInstance output;
    GIO_FileInstance error;
    GIO_Stream error_handle;
};

// The file of an instance; null sets GIO_ERR_BAD_HANDLE.
FILE* file_of(void* c)
{
    auto* instance = static_cast<GIO_FileInstance*>(c);
    if (instance != nullptr && instance->tag <= GIO_FILE_STANDARD)
        if (FILE* file = __atomic_load_n(&instance->file, __ATOMIC_RELAXED))
            return file;
    gio_set_error(GIO_ERR_BAD_HANDLE);
    return nullptr;
}

bool appends(void* c)
{
    const uint32_t mode = static_cast<const GIO_FileInstance*>(c)->open_mode;
    return mode == GIO_OPEN_APPEND || mode == GIO_OPEN_APPEND_UPDATE;
}

bool lacks(const void* buffer, uint64_t item_size, uint64_t item_count)
{
    if (buffer != nullptr && item_size != 0 && item_count != 0)
        return false;
    gio_set_error(GIO_ERR_INVALID);
    return true;
}

uint64_t file_read(void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    FILE* file = file_of(c);
    if (file == nullptr || lacks(buffer, item_size, item_count))
        return 0;
    return std::fread(buffer, item_size, item_count, file);
}

uint64_t file_write(const void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    FILE* file = file_of(c);
    if (file == nullptr || lacks(buffer, item_size, item_count))
        return 0;
    if (appends(c) && gio_host_seek(file, 0, SEEK_END) != 0)
        return 0;
    return std::fwrite(buffer, item_size, item_count, file);
}

int32_t file_seek64(void* c, int64_t offset, int32_t origin)
{
    FILE* file = file_of(c);
    if (file == nullptr)
        return -1;
    if (origin < GIO_SEEK_SET || origin > GIO_SEEK_END)
    {
        gio_set_error(GIO_ERR_INVALID);
        return -1;
    }
    const GIO_Stream* handle = static_cast<const GIO_FileInstance*>(c)->handle;
    const bool forward_only = handle != nullptr && (handle->kind & GIO_KIND_FORWARD_ONLY) != 0;
    if (forward_only && (offset < 0 || (origin == GIO_SEEK_SET && offset < gio_host_tell(file))))
    {
        gio_set_error(GIO_ERR_INVALID);
        return -1;
    }
    return gio_host_seek(file, offset, origin) == 0 ? 0 : -1;
}

int32_t file_seek(void* c, int32_t offset, int32_t origin)
{
    return file_seek64(c, offset, origin);
}

int64_t file_tell64(void* c)
{
    FILE* file = file_of(c);
    return file != nullptr ? gio_host_tell(file) : -1;
}

int32_t file_tell(void* c)
{
    const int64_t position = file_tell64(c);
    if (position <= INT32_MAX)
        return static_cast<int32_t>(position);
    gio_set_error(GIO_ERR_RANGE);
    return -1;
}

int32_t file_flush(void* c)
{
    FILE* file = file_of(c);
    return file != nullptr ? std::fflush(file) : -1;
}

char* file_gets(char* buffer, int32_t size, void* c)
{
    FILE* file = file_of(c);
    if (file == nullptr)
        return nullptr;
    if (buffer == nullptr || size < 0)
    {
        gio_set_error(GIO_ERR_INVALID);
        return nullptr;
    }
    return std::fgets(buffer, size, file);
}

int32_t file_puts(const char* text, void* c)
{
    FILE* file = file_of(c);
    if (file == nullptr)
        return 0;
    if (text == nullptr)
    {
        gio_set_error(GIO_ERR_INVALID);
        return -1;
    }
    return std::fputs(text, file);
}

int32_t file_getc(void* c)
{
    FILE* file = file_of(c);
    return file != nullptr ? std::fgetc(file) : -1;
}

int32_t file_putc(int32_t byte, void* c)
{
    FILE* file = file_of(c);
    return file != nullptr ? std::fputc(byte, file) : -1;
}

const char* file_get_path(void* c, uint32_t* path_kind)
{
    if (file_of(c) == nullptr)
        return nullptr;
    if (path_kind == nullptr)
    {
        gio_set_error(GIO_ERR_INVALID);
        return nullptr;
    }
    const auto* instance = static_cast<const GIO_FileInstance*>(c);
    *path_kind = instance->path_kind;
    return instance->path;
}

// A file cannot lend its bytes.
int32_t file_read_buffer(void* c, void**, uint64_t*)
{
    if (file_of(c) != nullptr)
        gio_set_error(GIO_ERR_UNSUPPORTED);
    return 0;
}

int32_t file_vprintf(void* c, const char* format, va_list args)
{
    FILE* file = file_of(c);
    if (file == nullptr)
        return -1;
    if (format == nullptr)
    {
        gio_set_error(GIO_ERR_INVALID);
        return -1;
    }
    return std::vfprintf(file, format, args);
}

void file_clear_err(void* c)
{
    FILE* file = file_of(c);
    if (file == nullptr)
        return;
    std::clearerr(file);
    gio_clear_error();
}

int32_t file_eof(void* c)
{
    FILE* file = file_of(c);
    return file != nullptr ? std::feof(file) : -1;
}

int32_t file_error(void* c)
{
    FILE* file = file_of(c);
    return file != nullptr ? std::ferror(file) : -1;
}

int32_t file_last_error(void*)
{
    return gio_host_error();
}

int64_t file_size(void* c)
{
    FILE* file = file_of(c);
    return file != nullptr ? gio_host_size(file) : -1;
}

int32_t file_close(void* c)
{
    gio_clear_error();
    FILE* file = file_of(c);
    if (file == nullptr)
        return GIO_ERR_BAD_HANDLE;
    auto* instance = static_cast<GIO_FileInstance*>(c);
    if (instance->tag == GIO_FILE_STANDARD)
        return GIO_OK;
    std::fclose(file);
    instance->file = nullptr;
    GMM_Allocator* allocator = instance->allocator;
    if (allocator == nullptr || instance->handle == nullptr)
    {
        gio_set_error(GIO_ERR_BAD_HANDLE);
        return GIO_ERR_BAD_HANDLE;
    }
    const int32_t result = gio_host_failure();
    if (instance->path != nullptr)
        allocator->gmm_Free(allocator, instance->path);
    allocator->gmm_Free(allocator, instance->handle);
    return result;
}

constexpr GIO_StreamOps kFileOps = {
    file_read,      file_write, file_seek,  file_tell,       file_seek64,   file_tell64,      file_flush,
    file_gets,      file_puts,  file_getc,  file_putc,       file_get_path, file_read_buffer, file_vprintf,
    file_clear_err, file_eof,   file_error, file_last_error, file_size,     file_close,
};

// All but their files, which no program knows before it runs, stands in them from the start, so that several threads
// may set them up at once.
constinit StandardStreams standard = {
    {GIO_FILE_STANDARD, nullptr, nullptr, nullptr, nullptr, GIO_FILE_PATH_KIND, GIO_OPEN_READ},
    {GIO_FILE_STANDARD, nullptr, &gio_standard_output, nullptr, nullptr, GIO_FILE_PATH_KIND, GIO_OPEN_WRITE},
    {GIO_FILE_STANDARD, nullptr, &standard.error_handle, nullptr, nullptr, GIO_FILE_PATH_KIND, GIO_OPEN_WRITE},
    {&standard.error, GIO_KIND_FILE, &kFileOps},
};

// Whoever comes first puts it there; nobody writes to it again. By the compilers' own operations, since not every
// standard library has atomic_ref.
void set_file(GIO_FileInstance* instance, FILE* file)
{
    FILE* nothing = nullptr;
    __atomic_compare_exchange_n(&instance->file, &nothing, file, false, __ATOMIC_RELAXED, __ATOMIC_RELAXED);
}

struct PathLook
{
    bool valid;
    bool ascii;
    uint64_t units;  // in UTF-16
};

PathLook look_at(const char* path)
{
    PathLook look = {true, true, 0};
    for (uint32_t length; *path != '\0'; path += length)
    {
        const int32_t code_point = gio_utf8_decode(path, &length);
        if (code_point < 0)
            return {false, false, 0};
        look.ascii = look.ascii && code_point < 0x80;
        look.units += code_point < 0x10000 ? 1 : 2;
    }
    return look;
}

FILE* open_file(const char* path, uint32_t mode_index, GMM_Allocator* allocator, int32_t* code)
{
    const PathLook look = look_at(path);
    if (!look.valid)
    {
        *code = GIO_ERR_BAD_NAME;
        return nullptr;
    }
    uint32_t no_memory = 0;
    gio_clear_error();
    FILE* file = gio_host_open(path, mode_index, look.units, look.ascii ? 1 : 0, allocator, &no_memory);
    if (file != nullptr)
        *code = GIO_OK;
    else if (no_memory != 0)
        *code = GIO_ERR_NO_MEMORY;
    else
        *code = gio_host_failure() != GIO_OK ? gio_host_failure() : static_cast<int32_t>(GIO_ERR_OTHER);
    return file;
}

}  // namespace

int32_t gio_file_open_instance(const char* path, uint32_t mode, uint32_t text, GIO_FileInstance* instance,
                               GMM_Allocator* allocator)
{
    if (path == nullptr || instance == nullptr || allocator == nullptr || text >= 2 || mode > GIO_OPEN_APPEND_UPDATE)
        return GIO_ERR_INVALID;
    instance->file = nullptr;
    instance->path = nullptr;
    const size_t size = std::strlen(path) + 1;
    auto* copy = gmm_alloc_array<char>(allocator, size);
    if (copy == nullptr)
        return GIO_ERR_NO_MEMORY;
    std::memcpy(copy, path, size);
    int32_t code = GIO_OK;
    instance->file = open_file(path, text + 2 * mode, allocator, &code);
    if (instance->file == nullptr)
    {
        allocator->gmm_Free(allocator, copy);
        return code;
    }
    instance->path = copy;
    instance->path_kind = GIO_FILE_PATH_KIND;
    instance->tag = GIO_FILE_OPENED;
    instance->allocator = allocator;
    instance->open_mode = mode;
    return GIO_OK;
}

int32_t gio_OpenFile(const char* path, uint32_t mode, uint32_t text, GMM_Allocator* allocator, GIO_Stream** handle_out)
{
    if (path == nullptr || allocator == nullptr || handle_out == nullptr)
        return GIO_ERR_INVALID;
    *handle_out = nullptr;
    auto* block = gmm_alloc_record<FileStreamBlock>(allocator);
    if (block == nullptr)
        return GIO_ERR_NO_MEMORY;
    block->instance.handle = &block->handle;
    const int32_t code = gio_file_open_instance(path, mode, text, &block->instance, allocator);
    if (code != GIO_OK)
    {
        allocator->gmm_Free(allocator, block);
        return code;
    }
    block->ops = kFileOps;
    block->handle = {&block->instance, GIO_KIND_FILE, &block->ops};
    *handle_out = &block->handle;
    return GIO_OK;
}

constinit GIO_Stream gio_standard_output = {&standard.output, GIO_KIND_FORWARD_ONLY, &kFileOps};

void gio_setup_standard_streams(void)
{
    set_file(&standard.input, stdin);
    set_file(&standard.output, stdout);
    set_file(&standard.error, stderr);
}

GIO_Stream* gio_stdout(void)
{
    return &gio_standard_output;
}

GIO_Stream* gio_stderr(void)
{
    return &standard.error_handle;
}

GIO_FileInstance* gio_stdin_instance(void)
{
    return &standard.input;
}

int32_t GIO_FileDelete(const char* path)
{
    if (path == nullptr)
        return GIO_ERR_INVALID;
    gio_clear_error();
    return gio_host_remove(path) == 0 ? static_cast<int32_t>(GIO_OK) : gio_host_failure();
}
