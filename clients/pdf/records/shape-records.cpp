// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/shape-records.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace orvlog::pdf_client
{

FilledShape::FilledShape(const Path& path, Winding winding, uint16_t hints) : bounds_(path.bounds()), path_(path)
{
    header_.fps_Shape.sh_ShapeType = GSH_SHAPE_FILL;
    header_.fps_Shape.sh_Hints = hints;
    header_.fps_Shape.sh_Transform = identity();
    header_.fps_WindingRule = winding == Winding::odd_even ? GPA_WINDING_ODD_EVEN : GPA_WINDING_NON_ZERO;
    pointer_.sp_HeaderPtr = &header_.fps_Shape;
    pointer_.sp_U.filled_path = path_.get();
}

const GSH_ShapePointer* FilledShape::get() const
{
    return &pointer_;
}

const GGO_BoxFloat& FilledShape::bounds() const
{
    return bounds_;
}

StrokedShape::StrokedShape(const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style)
    : path_(path), stroke_(style)
{
    const size_t dashes = stroke_.get()->psp_DashCount;
    const size_t params_size = offsetof(GPA_PathStrokingParams, psp_DashLength) + dashes * sizeof(float);
    header_.resize(
        std::max(sizeof(GSH_StrokedPathShape), offsetof(GSH_StrokedPathShape, sps_StrokingParams) + params_size));
    GSH_StrokedPathShape* header = record_in<GSH_StrokedPathShape>(header_);
    header->sps_Shape.sh_ShapeType = GSH_SHAPE_STROKE;
    header->sps_Shape.sh_Transform = to_content;
    header->sps_WindingRule = GPA_WINDING_NON_ZERO;
    std::memcpy(header_.data() + offsetof(GSH_StrokedPathShape, sps_StrokingParams), stroke_.get(), params_size);
    pointer_.sp_HeaderPtr = &header->sps_Shape;
    pointer_.sp_U.stroked_path = path_.get();
}

const GSH_ShapePointer* StrokedShape::get() const
{
    return &pointer_;
}

const GPA_PathStrokingParams* StrokedShape::params() const
{
    return stroke_.get();
}

ImageShape::ImageShape(uint32_t width, uint32_t height, const GGO_Matrix& pixels_to_content)
{
    header_.irs_Shape.sh_ShapeType = GSH_SHAPE_IMAGE_RECT;
    header_.irs_Shape.sh_Transform = pixels_to_content;
    header_.irs_ImageWidth = width;
    header_.irs_ImageHeight = height;
    pointer_.sp_HeaderPtr = &header_.irs_Shape;
}

const GSH_ShapePointer* ImageShape::get() const
{
    return &pointer_;
}

}  // namespace orvlog::pdf_client
