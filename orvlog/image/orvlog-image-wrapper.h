// Puts copies of image operands, whose callbacks log what passes through them, in the place of a client's.

#pragma once

#include "orvlog/image/orvlog-image-context.h"

#include <cstdint>

// Exchanges an image operand for a wrapped one; others stay as they are. `kept_flag` is set to 0, and to 1 when
// the renderer keeps the image; it must live until ORVLOG_EndImageCall. Without memory the operand stays the
// client's, and a warning is queued.
void ORVLOG_ReplaceImageOperand(ORVLOG_Session* session, GOP_OperandPointer** operand, uint32_t* kept_flag);

// Wraps one record of a client's. The new one is linked behind the last record of `chain`, unless that is null.
// 1, or 0 without memory or without an image in the record.
uint32_t ORVLOG_WrapImage(const ORVLOG_Writer* writer, ORVLOG_ImageContext* context,
                          GOP_OperandImagePointer* client_record, GOP_OperandImagePointer** wrapped,
                          GOP_OperandImagePointer* chain);

// Says that the call which replaced the operand has ended: frees the image unless the renderer has kept it, the client
// has agreed to that, and it has not been released yet.
void ORVLOG_EndImageCall(GOP_OperandImagePointer* record, uint32_t kept);

// Frees all that belongs to a wrapped image at once, and closes its files. Gives the parent allocator. Records that
// were not wrapped here are left alone.
GMM_Allocator* ORVLOG_DeleteImagePool(GOP_OperandImagePointer* record);

// At the end of the session: frees the images that were kept and never released, and closes their logs, without a
// word. What renderers still hold of any image is not known from then on: its callbacks give 0 and do nothing.
void orvlog_close_images(ORVLOG_Session* session);
