// What of the file utilities differs between systems. Paths are UTF-8; failures leave the reason in the error
// variable.

#ifndef HOLV_CORE_GIO_FILE_UTILS_HOST_H
#define HOLV_CORE_GIO_FILE_UTILS_HOST_H

#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

extern const char gio_host_separator;

FILE* gio_host_open_binary(const char* path, uint32_t for_writing);
// 0 when the status is known.
int32_t gio_host_status(const char* path, uint32_t* is_directory);
// Moves a file, replacing and crossing volumes; 0 for success.
int32_t gio_host_move(const char* source, const char* target);

#ifdef __cplusplus
}
#endif

#endif
