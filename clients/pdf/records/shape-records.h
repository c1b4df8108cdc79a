// SPDX-License-Identifier: GPL-2.0-or-later
//
// Shapes: filled and stroked paths, and the rectangles of images. Each owns its memory; the pointers that it gives are
// valid as long as it lives and isn't assigned to.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/path-record.h"
#include "clients/pdf/records/stroke-record.h"
#include "orvlog/interface/orv-interface.h"

namespace orvlog::pdf_client
{

// A filled path as a shape.
class FilledShape
{
public:
    FilledShape(const Path& path, Winding winding, uint16_t hints = 0);
    const GSH_ShapePointer* get() const;
    const GGO_BoxFloat& bounds() const;

private:
    GGO_BoxFloat bounds_;
    PathRecord path_;
    GSH_FilledPathShape header_{};
    GSH_ShapePointer pointer_{};
};

// A path to be stroked as a shape: `to_content` maps the path's space to the content space. With a style the
// shape carries its parameters and is itself the stroked line, as clips need it.
class StrokedShape
{
public:
    StrokedShape(const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style);
    const GSH_ShapePointer* get() const;
    const GPA_PathStrokingParams* params() const;

private:
    PathRecord path_;
    StrokeRecord stroke_;
    Block header_;
    GSH_ShapePointer pointer_{};
};

// The rectangle of an image, from (0, 0) to its size in pixels under `pixels_to_content`.
class ImageShape
{
public:
    ImageShape(uint32_t width, uint32_t height, const GGO_Matrix& pixels_to_content);
    const GSH_ShapePointer* get() const;

private:
    GSH_ImageRectShape header_{};
    GSH_ShapePointer pointer_{};
};

}  // namespace orvlog::pdf_client
