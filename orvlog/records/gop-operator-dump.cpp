#include "orvlog/records/gop-operator-dump.h"

void ORVLOG_DumpOperator(ORVLOG_Writer*, const GOP_Operator*) {}

void ORVLOG_DumpNamedOperator(ORVLOG_Writer* writer, const char* parent, const char* member, const GOP_Operator* op)
{
    if (op == nullptr)
        return;
    orvlog_writer_open_member(writer, parent, member);
    orvlog_writer_close_member(writer, parent, member);
}
