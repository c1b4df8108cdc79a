// Reads operands into brushes, and operators into what Cairo does with them.

#pragma once

#include "orvlog/interface/gop-image.h"
#include "orvlog/interface/gop-operand.h"
#include "renderers/cairo/colour.h"
#include "renderers/cairo/complaints.h"
#include "renderers/cairo/image-reader.h"
#include "renderers/cairo/image-store.h"
#include "renderers/cairo/scene.h"

#include <memory>
#include <vector>

namespace orvlog::cairo_renderer
{

// Images that are kept until the end of their drawing.
class KeptImages
{
public:
    // Takes the image if it can be kept.
    bool keep(GOP_OperandImagePointer* record, BrushUse use, uint32_t object_type, const std::shared_ptr<Image>& image);
    // Pulls every image, in the order in which they were kept, and releases it.
    void pull_all(ColourSpaces& spaces, Complaints& complaints, ImageStore& store);
    void release_all();

private:
    struct Kept
    {
        GOP_OperandImagePointer* record;
        BrushUse use;
        uint32_t object_type;
        std::shared_ptr<Image> image;
    };
    std::vector<Kept> kept_;
};

struct BrushContext
{
    ColourSpaces& spaces;
    Complaints& complaints;
    KeptImages* kept;  // null: pull all images at once
    uint32_t object_type;
    const Window* window = nullptr;  // of what is painted at once; null: all of an image is wanted
    ImageStore* store = nullptr;     // where images wait; null: they are painted at once
};

// Nothing for a null operand.
Brush read_brush(GOP_OperandPointer* operand, BrushUse use, const BrushContext& context);

// False when nothing is to be painted at all. Operand 2 is read if the operator asks for a mask.
bool read_operator(const GOP_Operator* op, GOP_OperandPointer* operand2, const BrushContext& context, Compose& compose);

}  // namespace orvlog::cairo_renderer
