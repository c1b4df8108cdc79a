// SPDX-License-Identifier: GPL-2.0-or-later
//
// Turns what is on a page into calls of the drawing interface. One painter drives one job: begin_document,
// then pages one after the other, end_document. Calls that the renderer refuses are counted, never fatal.

#pragma once

#include "clients/pdf/call-digest.h"
#include "clients/pdf/content/graphics.h"
#include "clients/pdf/painter/call-counts.h"
#include "clients/pdf/painter/layer.h"
#include "clients/pdf/painter/soft-mask.h"
#include "clients/pdf/records/clip.h"
#include "clients/pdf/text/font-engine.h"
#include "orvlog/interface/orv-interface.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::pdf_client
{

// A page as the painter opens it.
struct PageGeometry
{
    uint32_t number = 1;
    uint32_t width = 0;   // pixels
    uint32_t height = 0;  // pixels
    double inches_wide = 0;
    double inches_high = 0;
    double pixels_per_inch = 0;
    void* colour_ticket = nullptr;
};

struct Tiling
{
    bool tiled = false;
    double x_step = 0;
    double y_step = 0;
};

class ImageOperand;

class Painter
{
public:
    // `complain` takes what the renderer of soft masks has to say, `lose` what can't be passed on or painted at all;
    // without it that is a complaint, too.
    Painter(const ORV_Interface* table, std::function<void(const std::string&)> complain,
            std::function<void(const std::string&)> lose = {});
    ~Painter();
    Painter(const Painter&) = delete;
    Painter& operator=(const Painter&) = delete;

    // From here on `digest` is told of all that is asked for. It outlives the painting; null ends it.
    void tell(CallDigest* digest);

    bool begin_document(uint32_t document_id);
    void end_document();
    bool begin_page(const PageGeometry& page);
    // Groups, masks and resources that are still open are ended too.
    void end_page();

    Clip narrow(const Clip& clip, const Path& path, Winding winding);
    Clip narrow(const Clip& clip, const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style);

    void fill(const Path& path, Winding winding, const Colour& colour, const PaintState& state);
    // The path is in the space that `to_content` maps to the content space.
    void stroke(const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style, const Colour& colour,
                const PaintState& state);
    void gradient(const AxialGradient& gradient, const PaintState& state);
    void gradient(const RadialGradient& gradient, const PaintState& state);
    void gradient(const Triangle& triangle, const PaintState& state);
    // All that the clip lets through.
    void flood(const Colour& colour, const PaintState& state);
    void image(const Image& image, const GGO_Matrix& pixels_to_content, const PaintState& state);
    // The mask has its own size and stands over the same place.
    void masked_image(const Image& image, const GGO_Matrix& pixels_to_content, const Image& mask,
                      const GGO_Matrix& mask_pixels_to_content, const PaintState& state);
    // Paints the colour where the stencil's samples are 1.
    void stencil(const Image& stencil, const GGO_Matrix& pixels_to_content, const Colour& colour,
                 const PaintState& state);
    void text(const GlyphRun& run, const Colour& colour, const PaintState& state);

    void begin_group(const Group& group);
    void end_group();

    // What is painted until end_mask goes into the pictures of a mask, of which no more than `seen`, a box in
    // content space, will be looked at; a box whose size is no number means all. False if that can't be had.
    bool begin_mask(const GGO_BoxFloat& seen);
    MaskPictures end_mask();

    // What is painted until end_resource goes into a resource under this key. False if it can't be had.
    bool begin_resource(const std::string& key, const ResourceGeometry& geometry);
    void end_resource();
    bool has_resource(const std::string& key) const;
    void paint_resource(const std::string& key, const GGO_Matrix& retransform, const Tiling& tiling, bool isolated,
                        const PaintState& state);

    // Pixels for each inch of the content space of what is open; 0 if nothing is.
    double pixels_per_unit() const;
    const CallCounts& counts() const;

private:
    template <typename... Parts> void digest(Call call, const Parts&... parts);
    template <typename Make> void for_each_drawing(Call call, Make make);
    void count(const Server& server, Call call, uint32_t result);
    void paint(uint8_t object_type, const GSH_ShapePointer* shape, const GOP_Operator& op, const Clip& clip,
               GOP_OperandPointer* operand1, GOP_OperandPointer* operand2);
    void paint_operand(uint8_t object_type, const GSH_ShapePointer* shape, GOP_OperandPointer* operand,
                       const PaintState& state);
    // Null, with a complaint, for an image that is too large.
    std::shared_ptr<ImageOperand> image_operand(const Image& image, const GGO_Matrix& pixels_to_content, double alpha);
    void note_end_point(const Drawing& drawing, GGO_Point end, GGO_Point expected, double inches_per_unit);
    uint32_t clip_hint(const Clip& clip);
    uint32_t next_id();
    void close_layer();
    void finish_drawings();
    void discard_drawings(Layer& layer);

    Server main_;
    FontEngine font_engine_;
    std::function<void(const std::string&)> complain_;
    std::function<void(const std::string&)> lose_;
    std::unique_ptr<MaskStudio> studios_[2];
    Server studio_servers_[2];
    std::vector<Layer> layers_;
    uint32_t last_id_ = 0;
    CallCounts counts_;
    CallDigest* digest_ = nullptr;
};

template <typename Make> void Painter::for_each_drawing(Call call, Make make)
{
    if (layers_.empty())
        return;
    for (Drawing& drawing : layers_.back().drawings)
        count(*drawing.server, call, make(drawing));
}

template <typename... Parts> void Painter::digest(Call call, const Parts&... parts)
{
    if (digest_ != nullptr)
    {
        digest_->add(static_cast<uint64_t>(call));
        (digest_->add(parts), ...);
    }
}

}  // namespace orvlog::pdf_client
