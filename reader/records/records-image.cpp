#include "reader/records/record-parts.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::reader
{

GOP_OperandImagePointer* RecordReader::image(const Element* element)
{
    if (element == nullptr || element->name != "GOP_OperandImagePointer")
        return nullptr;
    const Element* inside = element->child("GOP_OperandImage");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
    {
        ++unknown_;
        return nullptr;
    }
    auto* record = arena_.make<GOP_OperandImage>();
    read_head(*head, &record->im_Operand);
    record->im_ImageEncoding = read_byte(*inside, "im_ImageEncoding");
    record->im_IndexColorDepth = read_byte(*inside, "im_IndexColorDepth");
    record->im_QualitySetting = static_cast<uint8_t>(read_enum(*inside, "im_QualitySetting"));
    record->im_NumNonalphaChans = read_byte(*inside, "im_NumNonalphaChans");
    record->im_Flags = read_flags(*inside, "im_Flags");
    record->im_Alpha = read_float(*inside, "im_Alpha");
    record->im_ImageWidthPixels = read_uint(*inside, "im_ImageWidthPixels");
    record->im_ImageHeightPixels = read_uint(*inside, "im_ImageHeightPixels");
    record->im_Transform = read_matrix(*inside, "im_Transform");
    auto* pointer = arena_.make<GOP_OperandImagePointer>();
    pointer->imp_Image = record;
    pointer->op_UniqueId = read_uint(*element, "op_UniqueId");
    pointer->imp_RowStep = read_uint(*element, "imp_RowStep");
    pointer->imp_CompressedStreamLength = read_uint(*element, "imp_CompressedStreamLength");
    pointer->imp_GrayscaleDetectStatus = read_enum(*element, "imp_GrayscaleDetectStatus");
    const GCM_CsdPointer* space = csd(element->child("GCM_CsdPointer"));
    if (space != nullptr)
        pointer->imp_Csd = *space;
    if (element->has("imp_IndexColorTable"))
    {
        const std::vector<uint32_t> table = to_uints(element->value("imp_IndexColorTable"));
        const std::span<uint8_t> copy = arena_.make_array<uint8_t>(table.size());
        std::ranges::transform(table, copy.begin(), [](uint32_t value) { return static_cast<uint8_t>(value); });
        pointer->imp_IndexColorTable = table.empty() ? nullptr : copy.data();
    }
    const Element* tiling = element->child("GOP_TilingParameters");
    if (tiling != nullptr)
    {
        auto* tile = arena_.make<GOP_TilingParameters>();
        tile->it_XRepetitionInterval = read_double(*tiling, "it_XRepetitionInterval");
        tile->it_YRepetitionInterval = read_double(*tiling, "it_YRepetitionInterval");
        tile->it_XFlip = static_cast<uint16_t>(read_uint(*tiling, "it_XFlip"));
        tile->it_YFlip = static_cast<uint16_t>(read_uint(*tiling, "it_YFlip"));
        pointer->imp_TilingParameters = tile;
    }
    if (on_image)
        on_image(pointer, *element);
    return pointer;
}

}  // namespace orvlog::reader
