// SPDX-License-Identifier: GPL-2.0-or-later
//
// What poppler reads content onto. Each of its calls goes to the room of its subject: what it means is told there.

#pragma once

#include "clients/pdf/poppler/canvas.h"
#include "clients/pdf/poppler/fonts.h"
#include "clients/pdf/poppler/groups.h"
#include "clients/pdf/poppler/images.h"
#include "clients/pdf/poppler/patterns.h"
#include "clients/pdf/poppler/type3-glyphs.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <SplashOutputDev.h>

namespace orvlog::pdf_client
{

// Draws nothing itself; its base class is there for its font engine.
class PaintingDevice : public SplashOutputDev
{
public:
    PaintingDevice(PDFDoc* document, std::function<void(const std::string&)> complain);

    // Paints what comes with this painter, from a page's first state on; null after the page.
    void set_painter(Painter* painter);
    // Ends what a damaged page leaves open.
    void finish_page();

    void startPage(int page, GfxState* state, XRef* references) override;
    void endPage() override {}

    // State
    void saveState(GfxState* state) override;
    void restoreState(GfxState* state) override;
    void updateAll(GfxState* state) override;
    void updateFont(GfxState* state) override;
    // The state is asked for these when something is painted.
    void updateCTM(GfxState*, double, double, double, double, double, double) override {}
    void updateLineDash(GfxState*) override {}
    void updateFlatness(GfxState*) override {}
    void updateLineJoin(GfxState*) override {}
    void updateLineCap(GfxState*) override {}
    void updateMiterLimit(GfxState*) override {}
    void updateLineWidth(GfxState*) override {}
    void updateStrokeAdjust(GfxState*) override {}
    void updateFillColorSpace(GfxState*) override {}
    void updateStrokeColorSpace(GfxState*) override {}
    void updateFillColor(GfxState*) override {}
    void updateStrokeColor(GfxState*) override {}
    void updateBlendMode(GfxState*) override {}
    void updateFillOpacity(GfxState*) override {}
    void updateStrokeOpacity(GfxState*) override {}
    void updatePatternOpacity(GfxState*) override {}
    void clearPatternOpacity(GfxState*) override {}
    void updateFillOverprint(GfxState*) override {}
    void updateStrokeOverprint(GfxState*) override {}
    void updateOverprintMode(GfxState*) override {}
    void updateTransfer(GfxState*) override {}

    // Paths
    void stroke(GfxState* state) override;
    void fill(GfxState* state) override;
    void eoFill(GfxState* state) override;
    void clip(GfxState* state) override;
    void eoClip(GfxState* state) override;
    void clipToStrokePath(GfxState* state) override;

    // Patterns and shadings
    bool useShadedFills(int type) override;
    bool tilingPatternFill(GfxState* state, Gfx* gfx, Catalog* catalog, GfxTilingPattern* pattern, const double* mat,
                           int x0, int y0, int x1, int y1, double x_step, double y_step) override;
    bool axialShadedFill(GfxState* state, GfxAxialShading* shading, double low, double high) override;
    bool axialShadedSupportExtend(GfxState* state, GfxAxialShading* shading) override;
    bool radialShadedFill(GfxState* state, GfxRadialShading* shading, double low, double high) override;
    bool radialShadedSupportExtend(GfxState* state, GfxRadialShading* shading) override;
    bool functionShadedFill(GfxState* state, GfxFunctionShading* shading) override;
    bool gouraudTriangleShadedFill(GfxState* state, GfxGouraudTriangleShading* shading) override;
    bool patchMeshShadedFill(GfxState* state, GfxPatchMeshShading* shading) override;

    // Text
    void beginTextObject(GfxState* state) override;
    void endTextObject(GfxState* state) override;
    void beginStringOp(GfxState* state) override;
    void endStringOp(GfxState* state) override;
    void drawChar(GfxState* state, double x, double y, double dx, double dy, double origin_x, double origin_y,
                  CharCode code, int byte_count, const Unicode* unicode, int unicode_count) override;
    bool beginType3Char(GfxState* state, double x, double y, double dx, double dy, CharCode code,
                        const Unicode* unicode, int unicode_count) override;
    void endType3Char(GfxState* state) override;
    void type3D0(GfxState* state, double wx, double wy) override;
    void type3D1(GfxState* state, double wx, double wy, double llx, double lly, double urx, double ury) override;

    // Images
    void drawImageMask(GfxState* state, Object* reference, Stream* stream, int width, int height, bool invert,
                       bool interpolate, bool inline_image) override;
    void setSoftMaskFromImageMask(GfxState* state, Object* reference, Stream* stream, int width, int height,
                                  bool invert, bool inline_image, double* base_matrix) override;
    void unsetSoftMaskFromImageMask(GfxState* state, double* base_matrix) override;
    void drawImage(GfxState* state, Object* reference, Stream* stream, int width, int height, GfxImageColorMap* map,
                   bool interpolate, const int* mask_colours, bool inline_image) override;
    void drawMaskedImage(GfxState* state, Object* reference, Stream* stream, int width, int height,
                         GfxImageColorMap* map, bool interpolate, Stream* mask_stream, int mask_width, int mask_height,
                         bool mask_invert, bool mask_interpolate) override;
    void drawSoftMaskedImage(GfxState* state, Object* reference, Stream* stream, int width, int height,
                             GfxImageColorMap* map, bool interpolate, Stream* mask_stream, int mask_width,
                             int mask_height, GfxImageColorMap* mask_map, bool mask_interpolate) override;

    // Groups and soft masks
    void beginTransparencyGroup(GfxState* state, const double* bbox, GfxColorSpace* blending_space, bool isolated,
                                bool knockout, bool for_soft_mask) override;
    void endTransparencyGroup(GfxState* state) override;
    void paintTransparencyGroup(GfxState*, const double*) override {}
    void setSoftMask(GfxState* state, const double* bbox, bool alpha, Function* transfer, GfxColor* backdrop) override;
    void clearSoftMask(GfxState* state) override;

private:
    void flush_capture();
    void paint_masked(GfxState* state, const Object* reference, Image image, Image mask);
    bool refresh_font(GfxState* state);
    StoredImage stored(const Object* reference, bool is_mask = false) const;

    PDFDoc* document_;
    std::function<void(const std::string&)> complain_;
    Canvas canvas_;
    SoftMasks masks_;
    Patterns patterns_;
    Type3Glyphs type3_;
    Fonts fonts_;
    std::shared_ptr<DecodedImages> decoded_ = std::make_shared<DecodedImages>();
    std::optional<Path> text_clip_;  // none: no text has clipped
};

}  // namespace orvlog::pdf_client
