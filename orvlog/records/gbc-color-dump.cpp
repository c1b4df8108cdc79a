#include "orvlog/records/gbc-color-dump.h"

void ORVLOG_DumpColor(ORVLOG_Writer*, const GBC_Color*) {}

void ORVLOG_DumpNamedColor(ORVLOG_Writer* writer, const char* parent, const char* member, const GBC_Color* color)
{
    if (color == nullptr)
        return;
    orvlog_writer_open_member(writer, parent, member);
    orvlog_writer_close_member(writer, parent, member);
}
