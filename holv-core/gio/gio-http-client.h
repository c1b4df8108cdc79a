// The system's HTTP client, for programs that want "http:" names to open. It is a library of its own, so that the
// logger depends on no client.

#ifndef HOLV_CORE_GIO_HTTP_CLIENT_H
#define HOLV_CORE_GIO_HTTP_CLIENT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Sets the system's client as the table of gio-http.h: WinINet on Windows, elsewhere libcurl where the build has
// it. Where it hasn't, does nothing. Call it once, before any thread is started.
//
// A request that the server answers with anything but success gives no handle. libcurl follows up to five
// redirections, within "http:" alone, and asks no proxy; on Windows both are the system's affair.
void gio_InstallHttpClient(void);

// How long connecting may take, and how long one request may wait for its server in all (on Windows, for each piece
// of its answer), in milliseconds; 0 stands for the usual 10 and 60 seconds. For requests opened from now on.
void gio_SetHttpLimits(uint32_t connect, uint32_t total);

#ifdef __cplusplus
}
#endif

#endif
