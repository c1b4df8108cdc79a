#include "orvlog/records/gpa-path-dump.h"

void dump_GPA_PathStrokingParams(ORVLOG_Writer*, const GPA_PathStrokingParams*) {}
