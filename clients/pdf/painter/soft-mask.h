// SPDX-License-Identifier: GPL-2.0-or-later
//
// Soft masks made from groups. The group is drawn twice by renderers of the client's own, on white and on black
// paper; from the two pictures follow its colours, its alpha, and the mask.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "orvlog/interface/orv-interface.h"
#include "renderers/cairo/cairo-renderer.h"

#include <functional>
#include <memory>
#include <string>

namespace orvlog::pdf_client
{

// The content of a mask's group, drawn on both papers.
struct MaskPictures
{
    cairo_renderer::PagePixels on_white;
    cairo_renderer::PagePixels on_black;
    GGO_Matrix content_to_pixels{};
};

// How pictures become a mask.
struct MaskRule
{
    bool luminosity = false;                 // else the alpha of the group is the mask
    double backdrop[3] = {0, 0, 0};          // RGB under the group, luminosity only
    double black = 0;                        // what is black in the group's space, luminosity only: it comes to 0
    std::function<double(double)> transfer;  // applied to each value; may be empty
};

// The mask, cut to the part that isn't 0. Never null; empty pictures give a mask that is 0 everywhere.
std::shared_ptr<const MaskImage> make_mask(const MaskPictures& pictures, const MaskRule& rule);

// The part of the mask that `box`, in content space, shows, and the pixels next to it; the mask itself if that would
// not be much smaller. The mask isn't null.
std::shared_ptr<const MaskImage> cut_to(std::shared_ptr<const MaskImage> mask, const GGO_BoxFloat& box);

// A renderer for mask pictures, on one paper.
class MaskStudio
{
public:
    MaskStudio(bool black_paper, const GFI_FontEngineTable* font_engine,
               std::function<void(const std::string&)> complaint_sink,
               std::function<void(const std::string&)> loss_sink);
    ~MaskStudio();
    MaskStudio(const MaskStudio&) = delete;
    MaskStudio& operator=(const MaskStudio&) = delete;

    const ORV_Interface* interface() const;
    void* document() const;
    // Opens a picture and paints its paper. False if the renderer refuses.
    bool open(const ORV_FaceProperties& face, ORV_DrawingInterface* drawing);
    // Ends the picture and gives its pixels, empty if it failed.
    cairo_renderer::PagePixels close(ORV_DrawingInterface* drawing);

private:
    bool black_paper_;
    cairo_renderer::PagePixels last_;
    std::unique_ptr<cairo_renderer::Renderer> renderer_;
    void* document_ = nullptr;
    uint32_t faces_ = 0;
};

}  // namespace orvlog::pdf_client
