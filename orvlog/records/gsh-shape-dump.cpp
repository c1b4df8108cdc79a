#include "orvlog/records/gsh-shape-dump.h"

void dump_shape_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapePointer* shape)
{
    if (shape == nullptr)
        return;
    orvlog_writer_open_member(&session->writer, owner, member);
    orvlog_writer_close_member(&session->writer, owner, member);
}

void dump_shape_list_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapeList* list)
{
    if (list == nullptr)
        return;
    orvlog_writer_open_member(&session->writer, owner, member);
    orvlog_writer_close_member(&session->writer, owner, member);
}
