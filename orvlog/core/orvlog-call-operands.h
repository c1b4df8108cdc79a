// The operands that a paint or a group carries, on their way through its wrapper.

#pragma once

#include "orvlog/session/orvlog-session.h"

#include <cstdint>

struct ORVLOG_CallOperand
{
    GOP_OperandPointer* operand = nullptr;  // as it came, then as replaced
    uint32_t counts = 0;                    // the operator uses it: it is logged and may be replaced
    uint32_t replaced = 0;
    uint32_t kept = 0;  // set when the renderer keeps the image
};

// Decides which of the three operands count for an operator that may be null.
void orvlog_count_operands(ORVLOG_CallOperand* operands, const GOP_Operator* op);
// Operand 2 of a group or a resource counts when the operator has a mask mode.
void orvlog_count_mask_operand(ORVLOG_CallOperand* operand, const GOP_Operator* op);
// Exchanges the images among the operands that count.
void orvlog_replace_operands(ORVLOG_Session* session, ORVLOG_CallOperand* operands, uint32_t count);
// Writes the operands that count, each in its member of `element`. 0 when an image had to be read and could not.
uint32_t orvlog_dump_operands(ORVLOG_Session* session, const char* element, const char* const* members,
                              const ORVLOG_CallOperand* operands, uint32_t count);
// Frees what was exchanged and has not been kept.
void orvlog_release_operands(const ORVLOG_CallOperand* operands, uint32_t count);
