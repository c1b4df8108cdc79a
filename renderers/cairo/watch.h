// Looking at the pixels of a page while it is drawn: which paint changed them, and why another one didn't.
//
// A watch is told of each step of the drawing, in the order in which the steps reach the pixels: what stands in a
// resource or in repeated content comes each time that it is painted, of a page in bands once for each band. Steps are
// told once they are done; a watch that wants to know what was there before keeps a copy.

#pragma once

#include <cairo.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace orvlog::cairo_renderer
{

// Whole pixels from (x0, y0) up to, but without, (x1, y1).
struct PixelBox
{
    int x0 = 0;
    int y0 = 0;
    int x1 = 0;
    int y1 = 0;

    bool empty() const
    {
        return x0 >= x1 || y0 >= y1;
    }
    bool operator==(const PixelBox&) const = default;
};

PixelBox meet(const PixelBox& one, const PixelBox& other);

// Why a paint left a pixel as it was.
enum class Unchanged : uint8_t
{
    not_covered,    // its shape doesn't reach the pixel
    clipped,        // its clips shut the pixel out
    group_clipped,  // those of a group around it do, or the box of a resource
    hidden,         // it stands in a group of which nothing is painted
    nothing,        // there is nothing to paint with, as an image without data
    transparent,    // what it paints with is transparent there
    masked,         // its mask lets nothing through
    same_colour,    // the colour is the one that was there
    by_operator,    // the operator leaves what was there
    faint           // it covers too little of the pixel, or is too faint, to change it
};

struct WhyUnchanged
{
    Unchanged reason = Unchanged::not_covered;
    uint64_t group = 0;  // the call of the group that clips or hides
};

struct WatchStep
{
    enum class Kind : uint8_t
    {
        page_begins,   // the surface of a page, or of one band of it, is there and white
        painted,       // a paint
        group_begins,  // what follows is painted on `target`: a layer of the group's own, or what lies below
        group_ends,    // `target` has taken in the group's layer, if it has one
        cell_begins,   // what follows is painted on `target`, which is then repeated
        cell_ends      // `target` has taken in the repeated cell
    };

    Kind kind = Kind::painted;
    uint64_t call = 0;      // the number of the call that paints, or begins, or ends
    uint64_t group = 0;     // group_ends, cell_ends: of the call that began it
    bool layer = false;     // group_begins, group_ends: it has a layer of its own
    bool backdrop = false;  // group_begins: the layer begins with what lies below
    // An image surface, whose device offset tells where on the page it lies; null on other surfaces.
    cairo_surface_t* target = nullptr;
    PixelBox area;                // painted, group_ends, cell_ends: no pixel outside has changed
    std::vector<PixelBox> cells;  // cell_begins: the pixels of the cell that the watched pixels are made from
    int cell_x = 0;               // cell_begins: the one in which the middle of the first watched pixel lies
    int cell_y = 0;
    // cell_begins: from pixels of the page, or of the cell around it, to those of the cell without its repetition, and
    // how far from the middle of a pixel, so mapped, the pixels lie that it is made from.
    cairo_matrix_t to_cell{};
    double reach = 0;
    // painted, group_ends, cell_ends: why the pixel (x, y) of `target`, which covers it, is what it was before. Good
    // while the watch is told.
    std::function<WhyUnchanged(int x, int y)> why;
    // painted, group_begins, group_ends: how much the clips of the call and of all groups around it let through, as a
    // surface of CAIRO_FORMAT_A8 of the size of `box`, which the caller destroys. Good while the watch is told.
    std::function<cairo_surface_t*(const PixelBox& box)> clips;

    // A group or a cell does.
    bool begins() const
    {
        return kind == Kind::group_begins || kind == Kind::cell_begins;
    }
};

struct Watch
{
    PixelBox box;                    // the pixels of the page that are watched
    std::function<uint64_t()> call;  // the number of the call that is made at present, above 0
    std::function<void(const WatchStep&)> step;
};

}  // namespace orvlog::cairo_renderer
