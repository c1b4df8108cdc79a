#include "holv-core/gio/gio-http-client.h"

void gio_InstallHttpClient(void) {}

void gio_SetHttpLimits(uint32_t, uint32_t) {}
