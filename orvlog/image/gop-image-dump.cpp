#include "orvlog/image/gop-image-dump.h"

#include "orvlog/colour/gcm-csd-dump.h"
#include "orvlog/image/gop-image-geometry.h"
#include "orvlog/image/orvlog-side-file.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gop-operand-dump.h"

namespace
{

constexpr uint32_t kRow = 50;

void dump_attributes(ORVLOG_Writer* writer, const GOP_OperandImagePointer* record, uint32_t flags, uint32_t id)
{
    orvlog_attr_uint(writer, "Id", id);
    orvlog_attr_uint(writer, "op_UniqueId", record->op_UniqueId);
    orvlog_attr_bool(writer, "imp_DirectImage", record->imp_DirectImage != nullptr);
    orvlog_attr_uint(writer, "imp_RowStep", record->imp_RowStep);
    orvlog_attr_uint(writer, "imp_CompressedStreamLength", record->imp_CompressedStreamLength);
    orvlog_attr_bool(writer, "imp_ImageResetFn", record->imp_ImageResetFn != nullptr);
    if ((flags & GOP_OP_FLAGS_ASYNCH_ACCESS) != 0)
    {
        orvlog_attr_bool(writer, "imp_ImageKeepFn", record->imp_ImageKeepFn != nullptr);
        orvlog_attr_bool(writer, "imp_ImageReleaseFn", record->imp_ImageReleaseFn != nullptr);
    }
    orvlog_attr_enum(writer, "imp_GrayscaleDetectStatus", &ORVLOG_GRAYSCALE_STATUS, record->imp_GrayscaleDetectStatus);
}

void dump_direct_data(ORVLOG_Writer* writer, const uint8_t* bytes, uint32_t count)
{
    const ORVLOG_Element element(writer, "imp_DirectImageData");
    orvlog_elem_bytes(writer, bytes, count, kRow);
}

void dump_direct_file(ORVLOG_Writer* writer, ORVLOG_ImageContext* context, const uint8_t* bytes, uint64_t count)
{
    GIO_Stream* file = nullptr;
    char* name = nullptr;
    if (ORVLOG_OpenSideFile(context, &file, &name, "dir") != 0)
    {
        orvlog_attr_string(writer, "imp_DirectImageFileName", name);
        orvlog_side_file_write(file, bytes, count);
        orvlog_close_stream(&file);
    }
    else
    {
        orvlog_writer_warn(writer, "Could not open new image file");
    }
    if (name != nullptr)
        context->allocator->gmm_Free(context->allocator, name);
}

void dump_children(ORVLOG_Writer* writer, const GOP_OperandImagePointer* record)
{
    const GOP_OperandImage* image = record->imp_Image;
    if (image == nullptr)
        return;
    if (image->im_Operand.go_OpType == GOP_OPERAND_IMAGE_TILE)
        dump_GOP_TilingParameters(writer, record->imp_TilingParameters);
    ORVLOG_DumpImageOperand(writer, image);
    if (GOP_COLOR_INFO_SPACE(image->im_Operand.go_ColorInfo) == GOP_OCS_OTHER)
        ORVLOG_DumpCsdPointer(writer, &record->imp_Csd);
}

void dump_pointer(ORVLOG_Writer* writer, const GOP_OperandImagePointer* record, const ORVLOG_ImageWrapper* wrapper,
                  uint32_t with_data)
{
    ORVLOG_ImageContext* context = wrapper != nullptr ? wrapper->context : nullptr;
    const uint32_t flags = record->imp_Image != nullptr ? record->imp_Image->im_Flags : 0;
    ORVLOG_ImageSize size;
    const bool sized =
        ORVLOG_ImageGeometry(record, context != nullptr ? context->render_description : nullptr, &size) != 0;
    orvlog_writer_begin_element(writer, "GOP_OperandImagePointer");
    dump_attributes(writer, record, flags, wrapper != nullptr ? wrapper->id : 0);
    if ((flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0 && sized)
        orvlog_attr_uint8_array(writer, "imp_IndexColorTable", size.color_table, size.color_table_bytes);
    if (with_data != 0 && size.too_large != 0)
        orvlog_writer_warn(writer, "Image is too large.");
    if (with_data == 0 || !sized)
        size.direct_image = nullptr;
    // The bytes of a direct image stand in a file, which an attribute names, or within the element.
    const bool in_file = size.direct_image != nullptr && context != nullptr && context->params->has_file_prefix != 0;
    const uint32_t count = size.rows * size.row_bytes;
    if (in_file)
        dump_direct_file(writer, context, size.direct_image, count);
    const ORVLOG_Content content(writer, "GOP_OperandImagePointer");
    if (size.direct_image != nullptr && !in_file)
        dump_direct_data(writer, size.direct_image, count);
    dump_children(writer, record);
}

}  // namespace

void orvlog_attr_bit_depth(ORVLOG_Writer* writer, const char* name, uint32_t depth)
{
    orvlog_attr_enum(writer, name, &ORVLOG_BIT_DEPTH, depth);
}

void ORVLOG_DumpImageOperand(ORVLOG_Writer* writer, const GOP_OperandImage* image)
{
    if (image == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GOP_OperandImage");
    orvlog_attr_uint(writer, "im_ImageEncoding", image->im_ImageEncoding);
    if ((image->im_Flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0)
        orvlog_attr_uint(writer, "im_IndexColorDepth", image->im_IndexColorDepth);
    orvlog_attr_enum(writer, "im_QualitySetting", &ORVLOG_IMAGE_QUALITY, image->im_QualitySetting);
    orvlog_attr_uint(writer, "im_NumNonalphaChans", image->im_NumNonalphaChans);
    orvlog_attr_flags(writer, "im_Flags", &ORVLOG_IMAGE_FLAGS, image->im_Flags);
    orvlog_attr_float(writer, "im_Alpha", image->im_Alpha);
    orvlog_attr_uint(writer, "im_ImageWidthPixels", image->im_ImageWidthPixels);
    orvlog_attr_uint(writer, "im_ImageHeightPixels", image->im_ImageHeightPixels);
    ggo_attr_matrix(writer, "im_Transform", &image->im_Transform);
    const ORVLOG_Content content(writer, "GOP_OperandImage");
    ORVLOG_DumpOperand(writer, &image->im_Operand);
}

void ORVLOG_DumpImagePointer(ORVLOG_Writer* writer, const GOP_OperandImagePointer* record, uint32_t with_data)
{
    if (record != nullptr)
        dump_pointer(writer, record, orvlog_image_wrapper_of(record), with_data);
}

void orvlog_dump_wrapped_image(ORVLOG_Writer* writer, const GOP_OperandImagePointer* record,
                               const ORVLOG_ImageWrapper* wrapper)
{
    dump_pointer(writer, record, wrapper, 0);
}
