// Reads an image to its end, so that its bytes are in the log even if no renderer asks for them.

#pragma once

#include "orvlog/image/orvlog-image-context.h"

#include <cstdint>

// Prepares, reads and finishes through the callbacks given, which are those of `record` before the prepare. Gives
// the result of the last read; 0 when the prepare failed or no read took place. Sets `endless` of the context and
// gives 0 for an image that goes on far beyond its size.
uint32_t ORVLOG_ReadThroughImage(ORVLOG_ImageContext* context, GOP_ImagePrepareFn prepare, void* callback_context,
                                 GOP_ImageReadFn read, GOP_ImageFinishFn finish, GOP_OperandImagePointer* record,
                                 uint32_t req_bit_depth, uint32_t row_step);

// What base mode does for a wrapped image once its element has been written. 1, or 0 when its size cannot be worked
// out or a read has failed. Direct images are read for their attribute data alone.
uint32_t orvlog_capture_image(GOP_OperandImagePointer* record);
