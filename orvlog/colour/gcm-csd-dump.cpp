#include "orvlog/colour/gcm-csd-dump.h"

void ORVLOG_DumpCsdPointer(ORVLOG_Writer*, const GCM_CsdPointer*) {}
