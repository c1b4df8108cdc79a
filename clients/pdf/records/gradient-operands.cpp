// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/operand-record.h"

#include <algorithm>
#include <cstddef>

namespace orvlog::pdf_client
{

namespace
{

uint8_t extend_mode(bool start, bool end)
{
    return static_cast<uint8_t>((start ? 1 : 0) | (end ? 2 : 0));
}

bool spans_from_end_to_end(const std::vector<GradientStop>& stops)
{
    return stops.size() == 2 && stops[0].position == 0 && stops[1].position == 1;
}

const ColourSpace& space_of(const std::vector<GradientStop>& stops)
{
    static const ColourSpace gray;
    return stops.empty() ? gray : stops[0].colour.space;
}

}  // namespace

OperandRecord OperandRecord::gradient(const AxialGradient& gradient, double alpha)
{
    const size_t count = gradient.stops.size();
    if (spans_from_end_to_end(gradient.stops))
    {
        OperandRecord record =
            make(space_of(gradient.stops), sizeof(GOP_OperandGrad2Pt), sizeof(GOP_OperandGrad2PtPointer));
        record.set_head(GOP_OPERAND_GRAD_2PT, count, alpha);
        GOP_OperandGrad2Pt* operand = record_in<GOP_OperandGrad2Pt>(record.operand_);
        operand->g2_Transform = gradient.transform;
        operand->g2_Pt1 = gradient.start;
        operand->g2_Pt2 = gradient.end;
        operand->g2_UseInterpColorSpace = 1;
        operand->g2_GradientExtendMode = extend_mode(gradient.extend_start, gradient.extend_end);
        GOP_OperandGrad2PtPointer* pointer = record_in<GOP_OperandGrad2PtPointer>(record.pointer_);
        pointer->g2p_Color1 = record.add_colour(gradient.stops[0].colour, alpha);
        pointer->g2p_Color2 = record.add_colour(gradient.stops[1].colour, alpha);
        return record;
    }
    const size_t pointer_size =
        offsetof(GOP_OperandGradMultistopPointer, gmp_GradStop) + std::max<size_t>(count, 1) * sizeof(void*);
    OperandRecord record = make(space_of(gradient.stops), sizeof(GOP_OperandGradMultistop), pointer_size);
    record.set_head(GOP_OPERAND_GRAD_MULTISTOP, count, alpha);
    GOP_OperandGradMultistop* operand = record_in<GOP_OperandGradMultistop>(record.operand_);
    operand->gm_Transform = gradient.transform;
    operand->gm_Pt1 = gradient.start;
    operand->gm_Pt2 = gradient.end;
    operand->gm_UseInterpColorSpace = 1;
    operand->gm_GradientExtendMode = extend_mode(gradient.extend_start, gradient.extend_end);
    record.add_stops(gradient.stops, alpha, offsetof(GOP_OperandGradMultistopPointer, gmp_GradStop));
    return record;
}

OperandRecord OperandRecord::gradient(const RadialGradient& gradient, double alpha)
{
    const size_t count = gradient.stops.size();
    const size_t pointer_size =
        offsetof(GOP_OperandGradRadialPointer, grp_GradStop) + std::max<size_t>(count, 1) * sizeof(void*);
    // The record ends with a colour that isn't used: gray with one channel.
    OperandRecord record = make(space_of(gradient.stops), sizeof(GOP_OperandGradRadial), pointer_size);
    record.set_head(GOP_OPERAND_GRAD_RADIAL, count, alpha);
    GOP_OperandGradRadial* operand = record_in<GOP_OperandGradRadial>(record.operand_);
    operand->gr_Transform = gradient.transform;
    operand->gr_Center1 = gradient.centre1;
    operand->gr_Radius1 = gradient.radius1;
    operand->gr_Center2 = gradient.centre2;
    operand->gr_Radius2 = gradient.radius2;
    operand->gr_UseInterpColorSpace = 1;
    operand->gr_GradientExtendMode = extend_mode(gradient.extend_start, gradient.extend_end);
    operand->gr_Color.num_chans = 1;
    operand->gr_Color.bit_depth = 32;
    record.add_stops(gradient.stops, alpha, offsetof(GOP_OperandGradRadialPointer, grp_GradStop));
    return record;
}

OperandRecord OperandRecord::gradient(const Triangle& triangle, double alpha)
{
    OperandRecord record =
        make(triangle.colour[0].space, sizeof(GOP_OperandGrad3Pt), sizeof(GOP_OperandGrad3PtPointer));
    // The count of a three-point gradient says whether its colour space definition counts.
    record.set_head(GOP_OPERAND_GRAD_3PT, 1, alpha);
    GOP_OperandGrad3Pt* operand = record_in<GOP_OperandGrad3Pt>(record.operand_);
    operand->g3_Transform = identity();
    operand->g3_Pt1 = triangle.corner[0];
    operand->g3_Pt2 = triangle.corner[1];
    operand->g3_Pt3 = triangle.corner[2];
    GOP_OperandGrad3PtPointer* pointer = record_in<GOP_OperandGrad3PtPointer>(record.pointer_);
    for (size_t i = 0; i < 3; ++i)
        pointer->g3p_Color[i] = record.add_colour(triangle.colour[i], alpha);
    return record;
}

}  // namespace orvlog::pdf_client
