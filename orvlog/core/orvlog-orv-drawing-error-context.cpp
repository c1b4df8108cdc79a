// ORV_drawing_error_context: the logger answers by itself, and writes nothing.

#include "orvlog/core/orvlog-orv.h"

void* orvlog_drawing_error_context(const ORV_DrawingInterface* table)
{
    const ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::drawing_error_context);
    return drawing != nullptr ? drawing->error_context : nullptr;
}
