// The dispatch over all kinds of operands that a call can pass.

#pragma once

#include "orvlog/interface/gop-image.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

bool orvlog_operand_is_image(const GOP_OperandPointer* operand);

// The pointer element of the operand's kind. 0 when an image had to be read and could not, otherwise 1.
uint32_t ORVLOG_DumpOperandPointer(ORVLOG_Session* session, GOP_OperandPointer* operand);

// The frame "parent.member" around it, with its result; 1 and nothing written for null.
uint32_t ORVLOG_DumpNamedOperand(ORVLOG_Session* session, const char* parent, const char* member,
                                 GOP_OperandPointer* operand);
