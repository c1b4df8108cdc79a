// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/painting-device.h"

#include "clients/pdf/poppler/glyph-runs.h"
#include "clients/pdf/poppler/matte.h"
#include "clients/pdf/poppler/meshes.h"
#include "clients/pdf/poppler/path-painting.h"
#include "clients/pdf/poppler/shadings.h"
#include "clients/pdf/watched-rows.h"

#include <cmath>
#include <utility>

#include <GfxFont.h>
#include <PDFDoc.h>
#include <splash/Splash.h>
#include <splash/SplashFont.h>

namespace orvlog::pdf_client
{

namespace
{

SplashColor white = {255, 255, 255, 0};

// What an image is called in what is said of it.
std::string name_of_image(const Object* reference)
{
    if (reference == nullptr || !reference->isRef())
        return "an image within the content";
    return "image " + std::to_string(reference->getRefNum()) + " " + std::to_string(reference->getRefGen()) + " R";
}

}  // namespace

PaintingDevice::PaintingDevice(PDFDoc* document, std::function<void(const std::string&)> complain)
    : SplashOutputDev(splashModeRGB8, 4, false, white), document_(document),
      complain_(std::move(complain)), canvas_{nullptr, SpaceStore(document), {}, {}}
{
    startDoc(document);
}

void PaintingDevice::set_painter(Painter* painter)
{
    canvas_.painter = painter;
    canvas_.content = {};
    canvas_.spaces.forget_masks();
    canvas_.text = {};
    type3_.open.clear();
    text_clip_.reset();
}

void PaintingDevice::finish_page()
{
    flush_capture();
    flush_text(canvas_);
    while (!canvas_.content.groups.empty())
        end_group(masks_, canvas_);
}

void PaintingDevice::startPage(int page, GfxState*, XRef* references)
{
    SplashOutputDev::startPage(page, nullptr, references);
    fonts_.stale = true;
}

void PaintingDevice::flush_capture()
{
    pdf_client::flush_capture(type3_, canvas_);
}

//---- State

void PaintingDevice::saveState(GfxState* state)
{
    save_state(canvas_, state);
}

void PaintingDevice::restoreState(GfxState*)
{
    restore_state(canvas_);
    fonts_.stale = true;
}

void PaintingDevice::updateAll(GfxState*)
{
    fonts_.stale = true;
}

void PaintingDevice::updateFont(GfxState* state)
{
    flush_text(canvas_);
    SplashOutputDev::updateFont(state);
    fonts_.stale = true;
}

//---- Paths

void PaintingDevice::stroke(GfxState* state)
{
    stroke_path(type3_, canvas_, state);
}

void PaintingDevice::fill(GfxState* state)
{
    fill_path(type3_, canvas_, state, Winding::non_zero);
}

void PaintingDevice::eoFill(GfxState* state)
{
    fill_path(type3_, canvas_, state, Winding::odd_even);
}

void PaintingDevice::clip(GfxState* state)
{
    clip_to_path(type3_, canvas_, state, Winding::non_zero);
}

void PaintingDevice::eoClip(GfxState* state)
{
    clip_to_path(type3_, canvas_, state, Winding::odd_even);
}

void PaintingDevice::clipToStrokePath(GfxState* state)
{
    clip_to_stroke(type3_, canvas_, state);
}

//---- Patterns and shadings

bool PaintingDevice::useShadedFills(int type)
{
    return type >= 1 && type <= 7;
}

bool PaintingDevice::tilingPatternFill(GfxState* state, Gfx* gfx, Catalog*, GfxTilingPattern* pattern,
                                       const double* mat, int, int, int, int, double x_step, double y_step)
{
    flush_capture();
    const auto draw_cell = [&]
    {
        std::vector<std::optional<Colour>> outside = std::exchange(type3_.open, {});
        read_cell(document_, this, state, gfx, *pattern);
        type3_.open = std::move(outside);
        fonts_.stale = true;
    };
    paint_pattern(patterns_, canvas_, state, {*pattern, mat, std::abs(x_step), std::abs(y_step)}, draw_cell, complain_);
    return true;
}

bool PaintingDevice::axialShadedFill(GfxState* state, GfxAxialShading* shading, double, double)
{
    flush_capture();
    paint_axial(canvas_, state, *shading);
    return true;
}

bool PaintingDevice::axialShadedSupportExtend(GfxState*, GfxAxialShading*)
{
    return true;
}

bool PaintingDevice::radialShadedFill(GfxState* state, GfxRadialShading* shading, double, double)
{
    flush_capture();
    paint_radial(canvas_, state, *shading);
    return true;
}

bool PaintingDevice::radialShadedSupportExtend(GfxState*, GfxRadialShading*)
{
    return true;
}

bool PaintingDevice::functionShadedFill(GfxState* state, GfxFunctionShading* shading)
{
    flush_capture();
    paint_function(canvas_, state, *shading);
    return true;
}

bool PaintingDevice::gouraudTriangleShadedFill(GfxState* state, GfxGouraudTriangleShading* shading)
{
    flush_capture();
    paint_mesh(canvas_, state, *shading);
    return true;
}

bool PaintingDevice::patchMeshShadedFill(GfxState* state, GfxPatchMeshShading* shading)
{
    flush_capture();
    paint_mesh(canvas_, state, *shading);
    return true;
}

//---- Text

void PaintingDevice::beginTextObject(GfxState*)
{
    text_clip_.reset();
}

void PaintingDevice::endTextObject(GfxState*)
{
    flush_text(canvas_);
    // Blanks clip too: nothing is left then.
    if (text_clip_)
    {
        canvas_.content.clip = canvas_.painter->narrow(canvas_.content.clip, *text_clip_, Winding::non_zero);
        text_clip_.reset();
    }
}

void PaintingDevice::beginStringOp(GfxState*)
{
    flush_text(canvas_);
}

void PaintingDevice::endStringOp(GfxState*)
{
    flush_text(canvas_);
}

void PaintingDevice::drawChar(GfxState* state, double x, double y, double dx, double dy, double origin_x,
                              double origin_y, CharCode code, int byte_count, const Unicode*, int)
{
    flush_capture();
    const int render = state->getRender();
    if (render == 3 || !refresh_font(state))
        return;
    const std::shared_ptr<const Glyph> glyph = fonts_.current->glyph(code);
    const GGO_Matrix to_content = user_to_content(canvas_, state);
    const GGO_Matrix em_to_user = multiply(fonts_.em_to_user, translation(x - origin_x, y - origin_y));
    const GGO_Matrix em_to_content = multiply(em_to_user, to_content);
    if (!finite(em_to_content) || determinant(em_to_content) == 0)
        return;
    const bool fills = (render & 1) == 0 && !state->getFillColorSpace()->isNonMarking() &&
                       state->getFillColorSpace()->getMode() != csPattern;
    const bool strokes = ((render & 3) == 1 || (render & 3) == 2) && !state->getStrokeColorSpace()->isNonMarking();
    if (fills)
    {
        const GGO_Vector advance = transform(to_content, GGO_Vector{dx, dy});
        add_to_run(canvas_, state, {glyph, fonts_.current->id(), em_to_content, advance, code, byte_count});
    }
    if (strokes)
    {
        flush_text(canvas_);
        stroke_outlines(type3_, canvas_, state, glyph->outline.transformed(em_to_user));
    }
    if ((render & 4) != 0)
    {
        if (!text_clip_)
            text_clip_.emplace();
        text_clip_->append(glyph->outline.transformed(em_to_content));
    }
}

// Makes the font of the state current. False for a font without outlines.
bool PaintingDevice::refresh_font(GfxState* state)
{
    if (!fonts_.stale)
        return fonts_.current != nullptr;
    fonts_.stale = false;
    fonts_.current = nullptr;
    const std::shared_ptr<GfxFont>& source = state->getFont();
    if (source == nullptr || source->getType() == fontType3)
        return false;
    const double pixels = pixels_of_font(state);
    SplashCoord scale[6] = {pixels, 0, 0, pixels, 0, 0};
    getSplash()->setMatrix(scale);
    SplashOutputDev::updateFont(state);
    doUpdateFont(state);
    SplashFont* made = getCurrentFont();
    if (made == nullptr)
    {
        complain_("a font can't be read; its text is left out");
        return false;
    }
    choose_font(fonts_, *source, *made, pixels, document_->getXRef());
    return true;
}

bool PaintingDevice::beginType3Char(GfxState* state, double, double, double dx, double dy, CharCode code,
                                    const Unicode*, int)
{
    return begin_type3_glyph(type3_, canvas_, state, {dx, dy}, code);
}

void PaintingDevice::endType3Char(GfxState* state)
{
    end_type3_glyph(type3_, canvas_, state);
}

void PaintingDevice::type3D0(GfxState*, double, double)
{
    flush_capture();
}

void PaintingDevice::type3D1(GfxState* state, double, double, double, double, double, double)
{
    note_uncoloured(type3_, canvas_, state);
}

//---- Images

// Only objects of the document are met again.
StoredImage PaintingDevice::stored(const Object* reference, bool is_mask) const
{
    if (reference == nullptr || !reference->isRef())
        return {decoded_, std::nullopt};
    return {decoded_, ImageKey{reference->getRefNum(), reference->getRefGen(), is_mask}};
}

void PaintingDevice::drawImageMask(GfxState* state, Object* reference, Stream* stream, int width, int height,
                                   bool invert, bool interpolate, bool inline_image)
{
    Image stencil = stencil_of(stream, width, height, invert, stored(reference));
    stencil.interpolate = interpolate;
    stencil.restartable = !inline_image;
    watch(stencil, name_of_image(reference), complain_);
    const GGO_Matrix to_content = user_to_content(canvas_, state);
    if (!paintable(stencil, to_content))
        return;
    const GGO_Matrix place = pixels_to(stencil, to_content);
    const Colour* of_glyph = colour_of_glyph(type3_);
    const Colour colour = of_glyph != nullptr ? *of_glyph : fill_colour(canvas_, state);
    const PaintState paint = fill_state(canvas_, state);
    if (!capture_stencil(type3_, canvas_, stencil, place, colour, paint))
        canvas_.painter->stencil(stencil, place, colour, paint);
}

void PaintingDevice::setSoftMaskFromImageMask(GfxState* state, Object* reference, Stream* stream, int width, int height,
                                              bool invert, bool inline_image, double*)
{
    flush_capture();
    Image stencil = stencil_of(stream, width, height, invert, stored(reference));
    stencil.restartable = !inline_image;
    watch(stencil, name_of_image(reference), complain_);
    set_stencil_mask(masks_, canvas_, state, stencil);
}

void PaintingDevice::unsetSoftMaskFromImageMask(GfxState*, double*)
{
    restore_mask(masks_, canvas_);
}

void PaintingDevice::drawImage(GfxState* state, Object* reference, Stream* stream, int width, int height,
                               GfxImageColorMap* map, bool interpolate, const int* mask_colours, bool inline_image)
{
    flush_capture();
    Image image = image_of(stream, width, height, map, mask_colours, canvas_.spaces, stored(reference));
    image.interpolate = interpolate;
    image.restartable = !inline_image;
    watch(image, name_of_image(reference), complain_);
    const GGO_Matrix to_content = user_to_content(canvas_, state);
    if (paintable(image, to_content))
        canvas_.painter->image(image, pixels_to(image, to_content), fill_state(canvas_, state));
}

void PaintingDevice::drawMaskedImage(GfxState* state, Object* reference, Stream* stream, int width, int height,
                                     GfxImageColorMap* map, bool interpolate, Stream* mask_stream, int mask_width,
                                     int mask_height, bool mask_invert, bool mask_interpolate)
{
    flush_capture();
    Image image = image_of(stream, width, height, map, nullptr, canvas_.spaces, stored(reference));
    image.interpolate = interpolate;
    Image mask = stencil_of(mask_stream, mask_width, mask_height, mask_invert, stored(reference, true));
    mask.interpolate = mask_interpolate;
    paint_masked(state, reference, image, mask);
}

void PaintingDevice::drawSoftMaskedImage(GfxState* state, Object* reference, Stream* stream, int width, int height,
                                         GfxImageColorMap* map, bool interpolate, Stream* mask_stream, int mask_width,
                                         int mask_height, GfxImageColorMap* mask_map, bool mask_interpolate)
{
    flush_capture();
    Image image = image_of(stream, width, height, map, nullptr, canvas_.spaces, stored(reference));
    image.interpolate = interpolate;
    Image mask =
        image_of(mask_stream, mask_width, mask_height, mask_map, nullptr, canvas_.spaces, stored(reference, true));
    mask.interpolate = mask_interpolate;
    const Matte matte = matte_of(*mask_stream, *map->getColorSpace());
    if (matte.is_asked_for && (!matte.colour || !take_out_matte(image, mask, *matte.colour, *map->getColorSpace())))
        complain_("the matte colour of a soft mask is left out");
    paint_masked(state, reference, image, mask);
}

void PaintingDevice::paint_masked(GfxState* state, const Object* reference, Image image, Image mask)
{
    watch(image, name_of_image(reference), complain_);
    watch(mask, "the mask of " + name_of_image(reference), complain_);
    const GGO_Matrix to_content = user_to_content(canvas_, state);
    if (paintable(image, to_content) && paintable(mask, to_content))
    {
        canvas_.painter->masked_image(image, pixels_to(image, to_content), mask, pixels_to(mask, to_content),
                                      fill_state(canvas_, state));
    }
}

//---- Groups and soft masks

void PaintingDevice::beginTransparencyGroup(GfxState* state, const double* bbox, GfxColorSpace* blending_space,
                                            bool isolated, bool knockout, bool for_soft_mask)
{
    flush_capture();
    begin_group(canvas_, state, {bbox, blending_space, isolated, knockout, for_soft_mask});
}

void PaintingDevice::endTransparencyGroup(GfxState*)
{
    end_group(masks_, canvas_);
}

void PaintingDevice::setSoftMask(GfxState*, const double*, bool alpha, Function* transfer, GfxColor* backdrop)
{
    set_soft_mask(masks_, canvas_, alpha, transfer, backdrop);
}

void PaintingDevice::clearSoftMask(GfxState*)
{
    canvas_.content.mask = nullptr;
}

}  // namespace orvlog::pdf_client
