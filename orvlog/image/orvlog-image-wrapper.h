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

// An image whose client has refused to have it kept is held all the same until the renderer releases it, but only so
// many of them at once, and not beyond the session: a renderer that was refused need not come back.
constexpr uint32_t ORVLOG_MAX_REFUSED_IMAGES = 8;

// Says that the call which replaced the operand has ended: frees the image unless the renderer has kept it and not
// released it yet. `record` is what ORVLOG_ReplaceImageOperand gave, or null; what the renderer has written to it has
// no part in this.
void ORVLOG_EndImageCall(GOP_OperandImagePointer* record, uint32_t kept);

// Frees all that belongs to a wrapped image at once, and closes its files. Gives the parent allocator. Records that
// were not wrapped here are left alone.
GMM_Allocator* ORVLOG_DeleteImagePool(GOP_OperandImagePointer* record);

// Frees an image; what ORVLOG_DeleteImagePool does for the record of one.
GMM_Allocator* orvlog_end_image(ORVLOG_ImageContext* context);

// Queues a warning in the session's log, unless the session has ended or `warned` is set, and sets that. The image's
// own writer would drop it.
void orvlog_image_warn_once(const ORVLOG_ImageSlots* slots, uint32_t* warned, const char* message);

// At the end of the session, ahead of that of its coder: parts it from the images that are kept. They live on until
// their release, log what they have to say as plain text, and warn of nothing any more. Those whose keep was refused
// are freed.
void orvlog_detach_images(ORVLOG_Session* session);
