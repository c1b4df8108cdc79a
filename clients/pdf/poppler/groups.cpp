// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/groups.h"

#include "clients/colour/icc-profile.h"
#include "clients/pdf/poppler/glyph-runs.h"
#include "clients/pdf/poppler/images.h"
#include "clients/pdf/records/clip.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include <Function.h>

namespace orvlog::pdf_client
{

namespace
{

GGO_BoxFloat bounds_of(const double* box, const GGO_Matrix& to_content)
{
    return rectangle({box[0], box[1], box[2], box[3]}).transformed(to_content).bounds();
}

// How light the black ink of a CMYK space is as it is shown; 0 for other spaces, which have a black of their own.
double black_of(GfxColorSpace& space, SpaceStore& spaces)
{
    if (space.getNComps() != 4 || !passes_as_channels(space.getMode()))
        return 0;
    if (const std::shared_ptr<const SpaceDefinition> definition = spaces.cmyk_profile(&space); definition != nullptr)
    {
        const std::optional<double> light = colour::lightness_of_black(definition->profile);
        if (light)
            return std::min(*light, 0.5);
    }
    GfxColor ink;
    clearGfxColor(&ink);
    ink.c[3] = gfxColorComp1;
    const Colour shown = rgb_of(space, ink);
    return std::min(0.3 * shown.value[0] + 0.59 * shown.value[1] + 0.11 * shown.value[2], 0.5);
}

}  // namespace

void begin_group(Canvas& canvas, GfxState* state, const GroupStart& start)
{
    flush_text(canvas);
    Content& content = canvas.content;
    const PaintState outside = content.saved.empty() ? PaintState{} : content.saved.back().paint;
    const Clip inside = clips_above(content.clip, outside.clip);
    OpenGroup open;
    open.is_mask = start.for_soft_mask;
    if (start.for_soft_mask)
    {
        open.blending_space.reset(start.blending_space != nullptr ? start.blending_space->copy() : nullptr);
        canvas.spaces.begin_mask(open.blending_space.get());
        // The mask is of no use outside the clip that it begins in: that can only get narrower.
        open.painted = canvas.painter->begin_mask(clip_bounds(outside.clip));
    }
    else
    {
        const GGO_BoxFloat bounds = bounds_of(start.box, user_to_content(canvas, state));
        canvas.painter->begin_group({start.isolated, start.knockout, bounds, outside});
    }
    content.groups.push_back(std::move(open));
    content.clip = inside;
    content.mask = nullptr;
}

void paint_as_one(Canvas& canvas, GfxState* state, size_t pieces, const std::function<void(const PaintState&)>& paint)
{
    constexpr size_t kFew = 64;
    const PaintState outside = fill_state(canvas, state);
    const bool covers = outside.alpha == 1 && outside.mask == nullptr && outside.blend == Blend::normal;
    if (covers && (outside.clip == nullptr || pieces <= kFew))
    {
        paint(outside);
        return;
    }
    canvas.painter->begin_group({true, false, {1, 1, -1, -1}, outside});
    paint(PaintState{});
    canvas.painter->end_group();
}

void end_group(SoftMasks& masks, Canvas& canvas)
{
    flush_text(canvas);
    std::vector<OpenGroup>& groups = canvas.content.groups;
    if (groups.empty())
        return;
    OpenGroup open = std::move(groups.back());
    groups.pop_back();
    if (!open.is_mask)
    {
        canvas.painter->end_group();
        return;
    }
    canvas.spaces.end_mask();
    masks.pictures = open.painted ? canvas.painter->end_mask() : MaskPictures{};
    masks.pictures_space = std::move(open.blending_space);
}

void set_soft_mask(SoftMasks& masks, Canvas& canvas, bool alpha, Function* transfer, const GfxColor* backdrop)
{
    MaskRule rule;
    rule.luminosity = !alpha;
    if (backdrop != nullptr && masks.pictures_space != nullptr)
    {
        const Colour colour = rgb_of(*masks.pictures_space, *backdrop);
        std::copy_n(colour.value, 3, rule.backdrop);
    }
    if (masks.pictures_space != nullptr)
        rule.black = black_of(*masks.pictures_space, canvas.spaces);
    if (transfer != nullptr)
    {
        rule.transfer = [transfer](double value)
        {
            double out[funcMaxOutputs] = {value};
            transfer->transform(&value, out);
            return out[0];
        };
    }
    canvas.content.mask = make_mask(masks.pictures, rule);
    masks.pictures = {};
    masks.pictures_space = nullptr;
}

void set_stencil_mask(SoftMasks& masks, Canvas& canvas, GfxState* state, const Image& stencil)
{
    const GGO_Matrix to_content = user_to_content(canvas, state);
    masks.set_aside = canvas.content.mask;
    if (paintable(stencil, to_content) && canvas.painter->begin_mask(clip_bounds(canvas.content.clip)))
    {
        canvas.painter->stencil(stencil, pixels_to(stencil, to_content), gray(1), PaintState{});
        canvas.content.mask = make_mask(canvas.painter->end_mask(), MaskRule{});
    }
}

void restore_mask(SoftMasks& masks, Canvas& canvas)
{
    canvas.content.mask = std::exchange(masks.set_aside, nullptr);
}

}  // namespace orvlog::pdf_client
