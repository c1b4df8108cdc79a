// How large an image is.

#pragma once

#include "orvlog/interface/gop-image.h"

#include <cstdint>

struct ORVLOG_ImageSize
{
    uint32_t rows;       // 0 for a compressed image, as row_bytes
    uint32_t row_bytes;  // at most what a signed row step can say
    uint32_t encoding;   // GOP_ENCODING_*
    uint32_t depth;      // GNC_BMP_DEPTH_*: of a pixel, or of an entry of the colour table
    GOP_ImagePrepareFn prepare;
    GOP_ImageReadFn read;
    GOP_ImageFinishFn finish;
    void* context;
    const uint8_t* direct_image;  // null when the callbacks deliver the bytes
    uint32_t row_step;            // of the direct image
    const uint8_t* color_table;   // of an indexed image
    uint32_t color_table_bytes;
    uint32_t too_large;  // 1 when the result is 0 since a size passes its range
};

// Works out the size from the records. `render_description` (may be null) has the number of render channels in its
// fourth word. 1, or 0 when the number of channels cannot be worked out or a size passes its range: the bytes of a row
// that of a signed row step; the rows, the bytes of a colour table and all bytes of a direct image 32 bits.
uint32_t ORVLOG_ImageGeometry(const GOP_OperandImagePointer* record, const uint32_t* render_description,
                              ORVLOG_ImageSize* size);
