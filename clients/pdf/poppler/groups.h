// SPDX-License-Identifier: GPL-2.0-or-later
//
// Transparency groups and soft masks. A mask's group is drawn into pictures; once poppler says how they are to be
// understood, they become the mask of what is painted next.

#pragma once

#include "clients/pdf/poppler/canvas.h"

#include <cstddef>
#include <functional>
#include <memory>

class Function;

namespace orvlog::pdf_client
{

struct SoftMasks
{
    MaskPictures pictures;                          // of the mask's group that was drawn last
    std::unique_ptr<GfxColorSpace> pictures_space;  // of its blending; may be null
    std::shared_ptr<const MaskImage> set_aside;     // while a stencil is the mask
};

// A group as poppler describes it; `box` in user space, the blending space null if the document gives none.
struct GroupStart
{
    const double* box;
    GfxColorSpace* blending_space;
    bool isolated;
    bool knockout;
    bool for_soft_mask;
};

void begin_group(Canvas& canvas, GfxState* state, const GroupStart& start);
// Does nothing if no group is open.
void end_group(SoftMasks& masks, Canvas& canvas);

// Paints what the current fill consists of, so many pieces. They count as one thing where they don't simply cover
// what lies below, and where a clip would have to be said again with each of very many.
void paint_as_one(Canvas& canvas, GfxState* state, size_t pieces, const std::function<void(const PaintState&)>& paint);

// Makes a mask of the pictures drawn last: of their alpha or their luminosity over the backdrop. The transfer
// function and the backdrop may be null; the function isn't kept.
void set_soft_mask(SoftMasks& masks, Canvas& canvas, bool alpha, Function* transfer, const GfxColor* backdrop);

// Makes the stencil the mask until the one that is in force now is restored.
void set_stencil_mask(SoftMasks& masks, Canvas& canvas, GfxState* state, const Image& stencil);
void restore_mask(SoftMasks& masks, Canvas& canvas);

}  // namespace orvlog::pdf_client
