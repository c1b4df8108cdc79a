// The six callbacks of a wrapped record. Each calls the client's, writes an element, and gives the client's result.

#pragma once

#include "orvlog/interface/gop-image.h"

#include <cstdint>

uint32_t orvlog_image_prepare(GOP_OperandImagePointer** operand_p, uint32_t object_type, uint32_t decompress,
                              uint32_t rescale, float max_width_rescale, float min_width_rescale,
                              float max_height_rescale, float min_height_rescale, uint32_t use_render_color_space,
                              uint32_t req_bit_depth, uint32_t need_attr);

// Fails, too, when side files are on and the first read cannot open them. No more than what the buffers hold is
// looked at, whatever the client says it has returned.
uint32_t orvlog_image_read(GOP_OperandImagePointer* operand_p, void* context, uint32_t skip_pixels,
                           uint8_t* image_buffer, uint32_t image_size, int32_t img_row_step, int32_t* img_returned,
                           uint8_t* attr_buffer, uint32_t attr_size, int32_t attr_row_step, int32_t* attr_returned);

// Gives 1, whatever the client's says; the log alone shows that.
uint32_t orvlog_image_finish(GOP_OperandImagePointer* operand_p, void* context);

uint32_t orvlog_image_reset(GOP_OperandImagePointer* operand_p, void* context);

// From here on the image logs to a file of its own. Without that file it gives 0 and the client is not told.
uint32_t orvlog_image_keep(GOP_OperandImagePointer* operand_p);

// Ends the log of a kept image, and the image, unless the call that replaced the operand is still under way, which
// ends it then. Gives the parent of the image's allocator when the image is gone, otherwise null.
void* orvlog_image_release(GOP_OperandImagePointer* operand_p);
