// Puts copies of image operands, whose callbacks log what passes through them, in the place of a client's.

#pragma once

#include "orvlog/interface/gop-image.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// Exchanges an image operand for a wrapped one; others stay as they are. `kept_flag` is set to 0, and to 1 when
// the renderer keeps the image.
void ORVLOG_ReplaceImageOperand(ORVLOG_Session* session, GOP_OperandPointer** operand, uint32_t* kept_flag);

// Frees all that belongs to a wrapped image at once.
void ORVLOG_DeleteImagePool(GOP_OperandImagePointer* operand);
