// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/operand-record.h"

#include "clients/pdf/records/colour-record.h"

#include <algorithm>
#include <cstring>

namespace orvlog::pdf_client
{

namespace
{

double stop_alpha(double alpha)
{
    return alpha < 1 ? alpha : -1;
}

}  // namespace

OperandRecord OperandRecord::make(const ColourSpace& space, size_t operand_size, size_t pointer_size)
{
    OperandRecord record;
    record.operand_.resize(operand_size);
    record.pointer_.resize(pointer_size);
    record.space_ = std::make_unique<SpaceRecord>(space);
    GOP_OperandPointer* pointer = record_in<GOP_OperandPointer>(record.pointer_);
    pointer->op_Operand = record.head();
    pointer->op_Csd = record.space_->pointer();
    return record;
}

GOP_Operand* OperandRecord::head()
{
    return record_in<GOP_Operand>(operand_);
}

GOP_OperandPointer* OperandRecord::get(uint32_t unique_id)
{
    GOP_OperandPointer* pointer = record_in<GOP_OperandPointer>(pointer_);
    pointer->op_UniqueId = unique_id;
    return pointer;
}

void OperandRecord::set_head(uint8_t kind, size_t count, double alpha)
{
    head()->go_OpType = kind;
    head()->go_ColorInfo = static_cast<uint8_t>(space_->colour_info() | (GCM_CF_OTHER << 6));
    head()->go_Count = static_cast<uint16_t>(count);
    head()->go_Hints = alpha < 1 ? GOP_OPD_HINT_NONE : GOP_OPD_HINT_IS_OPAQUE;
    head()->go_ColorSpaceFamily = space_->family();
}

const GBC_Color* OperandRecord::add_colour(const Colour& colour, double alpha)
{
    parts_.push_back(colour_block(colour, stop_alpha(alpha)));
    return record_in<GBC_Color>(parts_.back());
}

const GOP_GradStop* OperandRecord::add_stop(const GradientStop& stop, double alpha)
{
    const Block colour = colour_block(stop.colour, stop_alpha(alpha));
    Block block(std::max(sizeof(GOP_GradStop), offsetof(GOP_GradStop, gs_StopColor) + colour.size()));
    record_in<GOP_GradStop>(block)->gs_StopPosn = stop.position;
    std::memcpy(block.data() + offsetof(GOP_GradStop, gs_StopColor), colour.data(), colour.size());
    parts_.push_back(std::move(block));
    return record_in<GOP_GradStop>(parts_.back());
}

void OperandRecord::add_stops(const std::vector<GradientStop>& stops, double alpha, size_t offset)
{
    const GOP_GradStop** to = part_in<const GOP_GradStop*>(pointer_, offset);
    for (const GradientStop& stop : stops)
        *to++ = add_stop(stop, alpha);
}

OperandRecord OperandRecord::flat(const Colour& colour, double alpha)
{
    const Block block = colour_block(colour, stop_alpha(alpha));
    const size_t size = std::max(sizeof(GOP_OperandFlat), offsetof(GOP_OperandFlat, fl_Color) + block.size());
    OperandRecord record = make(colour.space, size, sizeof(GOP_OperandFlatPointer));
    record.set_head(GOP_OPERAND_FLAT, 0, alpha);
    record.head()->go_ColorInfo = static_cast<uint8_t>(record.space_->colour_info() | (colour_flag(colour) << 6));
    std::memcpy(record.operand_.data() + offsetof(GOP_OperandFlat, fl_Color), block.data(), block.size());
    return record;
}

OperandRecord OperandRecord::constant_mask(double alpha)
{
    Colour gray;
    gray.value[0] = static_cast<float>(alpha);
    return flat(gray, 1);
}

}  // namespace orvlog::pdf_client
