#include "renderers/cairo/image-layout.h"

#include <algorithm>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr uint64_t kMaxRowBytes = uint64_t{1} << 30;
constexpr uint32_t kMaxImageSide = uint32_t{1} << 28;

}  // namespace

uint32_t depth_bits(uint32_t code)
{
    return code <= GNC_BMP_DEPTH_32_FL ? 1U << code : 0U;
}

uint32_t colour_channels(const GOP_OperandImagePointer& record, ColourSpaces& spaces,
                         std::shared_ptr<const ColourSpace>& space)
{
    const GOP_OperandImage& image = *record.imp_Image;
    uint32_t known = 0;
    if (GOP_COLOR_INFO_SPACE(image.im_Operand.go_ColorInfo) == GOP_OCS_RENDER)
        known = std::max<uint32_t>(image.im_NumNonalphaChans, 1U);
    if (GOP_COLOR_INFO_SPACE(image.im_Operand.go_ColorInfo) == GOP_OCS_OTHER && record.imp_Csd.cp_Csd != nullptr)
        known =
            static_cast<uint32_t>(record.imp_Csd.cp_Csd->csd_NumBaseChans) + record.imp_Csd.cp_Csd->csd_NumNamedChans;
    space = spaces.find(image.im_Operand, &record.imp_Csd, known);
    return known != 0 ? known : space->channels();
}

bool make_layout(const GOP_OperandImagePointer& record, uint32_t colour_count, Layout& layout)
{
    const GOP_OperandImage& image = *record.imp_Image;
    layout.width = image.im_ImageWidthPixels;
    layout.height = image.im_ImageHeightPixels;
    layout.indexed = (image.im_Flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0;
    layout.alpha = (image.im_Flags & GOP_OP_FLAGS_HAS_ALPHA) != 0;
    layout.premultiplied = (image.im_Flags & GOP_OP_FLAGS_IS_PREMULTIPLIED) != 0;
    layout.big_endian = (image.im_Flags & GOP_OP_FLAGS_ENDIAN_BIG) != 0;
    if ((image.im_Flags & GOP_OP_FLAGS_HAS_CONSTANT_ALPHA) != 0)
        layout.constant_alpha = image.im_Alpha > 0.0F ? std::min(static_cast<double>(image.im_Alpha), 1.0) : 0.0;
    layout.bits = depth_bits(image.im_Operand.go_Count);
    layout.planar = image.im_ImageEncoding == GOP_ENCODING_PLANAR && !layout.indexed;
    layout.channels = colour_count + (layout.alpha ? 1U : 0U);
    const uint64_t stored = layout.indexed || layout.planar ? 1 : layout.channels;
    layout.row_bytes = (layout.width * stored * layout.bits + 7) / 8;
    layout.rows = layout.planar ? static_cast<uint64_t>(layout.height) * layout.channels : layout.height;
    if (layout.indexed && (record.imp_IndexColorTable == nullptr || layout.bits > 16))
        return false;
    return image.im_ImageEncoding <= GOP_ENCODING_PLANAR && layout.bits != 0 && layout.width != 0 &&
           layout.height != 0 && layout.width <= kMaxImageSide && layout.height <= kMaxImageSide &&
           layout.row_bytes <= kMaxRowBytes;
}

}  // namespace orvlog::cairo_renderer
