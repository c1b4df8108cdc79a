#include "orvlog/image/gop-image-geometry.h"

#include "orvlog/image/orvlog-image-context.h"

namespace
{

constexpr uint32_t kCodes = 6;
constexpr uint8_t kBitsByCode[kCodes] = {1, 2, 4, 8, 16, 32};
constexpr uint32_t kEntriesByCode[kCodes] = {2, 4, 16, 256, 65536, 0};

uint32_t bits_of(uint32_t code)
{
    return code < kCodes ? kBitsByCode[code] : 0;
}

uint32_t entries_of(uint32_t code)
{
    return code < kCodes ? kEntriesByCode[code] : 0;
}

// Bytes for so many bits, which are the product of three numbers; false above `limit`.
bool bytes_for(uint64_t a, uint64_t b, uint64_t c, uint64_t limit, uint32_t* bytes)
{
    uint64_t bits = 0;
    if (__builtin_mul_overflow(a, b, &bits) || __builtin_mul_overflow(bits, c, &bits) || bits > UINT64_MAX - 7 ||
        (bits + 7) / 8 > limit)
        return false;
    *bytes = static_cast<uint32_t>((bits + 7) / 8);
    return true;
}

bool count_input_channels(const GOP_Operand* head, uint64_t* channels)
{
    switch (head->go_ColorSpaceFamily)
    {
    case GCM_CSF_GRAY:
        *channels = 1;
        return true;
    case GCM_CSF_RGB:
        *channels = 3;
        return true;
    case GCM_CSF_CMYK:
        *channels = 4;
        return true;
    default:
        return false;
    }
}

bool count_channels(const GOP_OperandImagePointer* record, const uint32_t* render_description, uint64_t* channels)
{
    const GOP_OperandImage* image = record->imp_Image;
    const GCM_Csd* csd = record->imp_Csd.cp_Csd;
    switch (GOP_COLOR_INFO_SPACE(image->im_Operand.go_ColorInfo))
    {
    case GOP_OCS_INPUT:
        return count_input_channels(&image->im_Operand, channels);
    case GOP_OCS_RENDER:
        *channels = image->im_NumNonalphaChans;
        if (*channels == 0 && (image->im_Flags & GOP_OP_FLAGS_HAS_ALPHA) != 0 && render_description != nullptr)
            *channels = render_description[ORVLOG_RENDER_CHANNELS_WORD];
        return true;
    case GOP_OCS_OTHER:
        if (csd == nullptr)
            return false;
        *channels = uint64_t{csd->csd_NumBaseChans} + csd->csd_NumNamedChans;
        return true;
    default:
        return false;
    }
}

bool size_rows(const GOP_OperandImage* image, uint64_t channels, uint64_t alphas, ORVLOG_ImageSize* size)
{
    const uint64_t width = image->im_ImageWidthPixels;
    const uint32_t bits = bits_of(image->im_Operand.go_Count);
    size->rows = image->im_ImageHeightPixels;
    if ((image->im_Flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0)
    {
        const uint64_t entries = entries_of(image->im_Operand.go_Count);
        // A row counts indices: whatever an entry of the table holds, alpha too, has no part in it.
        return bytes_for(bits_of(image->im_IndexColorDepth), channels + alphas, entries, UINT32_MAX,
                         &size->color_table_bytes) &&
               bytes_for(width, bits, 1, INT32_MAX, &size->row_bytes);
    }
    if (size->encoding == GOP_ENCODING_CHUNKY)
        return bytes_for(width, channels + alphas, bits, INT32_MAX, &size->row_bytes);
    uint64_t rows = 0;
    if (__builtin_mul_overflow(channels + alphas, uint64_t{image->im_ImageHeightPixels}, &rows) || rows > UINT32_MAX)
        return false;
    size->rows = static_cast<uint32_t>(rows);
    return bytes_for(width, bits, 1, INT32_MAX, &size->row_bytes);
}

}  // namespace

uint32_t ORVLOG_ImageGeometry(const GOP_OperandImagePointer* record, const uint32_t* render_description,
                              ORVLOG_ImageSize* size)
{
    *size = {};
    const GOP_OperandImage* image = record->imp_Image;
    if (image == nullptr)
        return 0;
    size->encoding = image->im_ImageEncoding;
    size->direct_image = record->imp_DirectImage;
    size->row_step = record->imp_DirectImage != nullptr ? record->imp_RowStep : 0;
    size->context = record->imp_Context;
    size->prepare = record->imp_ImagePrepareFn;
    size->read = record->imp_ImageReadFn;
    size->finish = record->imp_ImageFinishFn;
    size->depth = image->im_Operand.go_Count;
    if ((image->im_Flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0)
    {
        size->depth = image->im_IndexColorDepth;
        size->color_table = record->imp_IndexColorTable;
    }
    if (size->encoding > GOP_ENCODING_PLANAR)
        return 1;
    uint64_t channels = 0;
    if (!count_channels(record, render_description, &channels))
        return 0;
    const uint64_t alphas = (image->im_Flags & GOP_OP_FLAGS_HAS_ALPHA) != 0 ? 1 : 0;
    const bool fits = size_rows(image, channels, alphas, size) &&
                      (size->direct_image == nullptr || uint64_t{size->rows} * size->row_bytes <= UINT32_MAX);
    size->too_large = fits ? 0 : 1;
    return fits ? 1 : 0;
}
