// Copying, moving and looking for files, joining paths, and two small helpers for sizes and lists.

#ifndef HOLV_CORE_GIO_FILE_UTILS_H
#define HOLV_CORE_GIO_FILE_UTILS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Room for a joined path, terminator included.
enum
{
    GIO_PATH_ROOM = 1024
};

// Paths are UTF-8. All give 0 or a code of gio-stream.h.

// Copies a file; one that stands at `target` is replaced.
int32_t GIO_FileCopyPlain(const char* source, const char* target);

// Copies or moves a file. A target that is a directory, or null for the present one, receives it under the last
// element of the source's path. GIO_ERR_PERMISSION when a file stands there and `overwrite` is 0. A move replaces
// and crosses volumes; GIO_ERR_PLATFORM when it fails, and then the target is as it was. Across volumes files alone are
// moved, with their permissions; a source that cannot be removed behind its copy stays, and the move has succeeded.
int32_t GIO_FileCopy(const char* source, const char* target, uint32_t overwrite);
int32_t GIO_FileRename(const char* source, const char* target, uint32_t overwrite);

// 0 when something stands at the path, whose length must be 1 to 1023; `is_directory` takes 1 or 0, and
// otherwise stays as it was.
int32_t GIO_FileExists(const char* path, uint32_t* is_directory);

// Writes to `joined`, of GIO_PATH_ROOM bytes, the directory, a backslash if it does not end in a separator, and the
// last element of the source. Null for the directory gives the element alone. GIO_ERR_BAD_NAME without room.
int32_t GIO_PathJoin(const char* source, const char* directory, char* joined);

// The value rounded up to a multiple of the unit; the value itself if either is 0.
uint64_t GIO_RoundUp(uint64_t value, uint64_t unit);

// A doubly linked list between two sentinels. Null arguments do nothing, nor does a tail that isn't set up.
typedef struct GIO_ListNode GIO_ListNode;

struct GIO_ListNode
{
    GIO_ListNode* prev;
    GIO_ListNode* next;
};

void GIO_ListInit(GIO_ListNode* head, GIO_ListNode* tail);
void GIO_ListAppend(GIO_ListNode* element, GIO_ListNode* tail);

#ifdef __cplusplus
}
#endif

#endif
