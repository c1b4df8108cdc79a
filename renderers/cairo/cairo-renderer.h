// A renderer that implements the ORV drawing interface on Cairo.
//
// Make one with its options, hand interface() to whoever draws (or to the logger), and destroy it when the
// last document is finished. Each finished face is a page, which goes to the sink, to a PNG file, or both.
// What the calls mean to this renderer (units, spaces, operators, masks) is told in docs/data-model.md.
//
// What Cairo cannot do is said once for each kind of thing and painted as near as can be. No call throws,
// and no record, null or damaged, ends the process. One renderer is driven by one thread at a time.

#pragma once

#include "orvlog/interface/orv-interface.h"
#include "renderers/cairo/watch.h"

#include <cairo.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::cairo_renderer
{

// A page, about to be drawn or just finished.
constexpr uint32_t kGreatestPageSide = 32000;  // pixels; larger pages cannot be opened

struct Page
{
    // 1 for the first face that was opened, then counting up; Options::page_number may give another.
    uint32_t number = 0;
    uint32_t face_seq_number = 0;        // the client's own number of the face
    uint32_t width = 0;                  // pixels
    uint32_t height = 0;                 // pixels
    cairo_surface_t* surface = nullptr;  // null while the surface is still to be made; the renderer's
    // The rows that the surface holds: all of them, or a band of a page that is drawn in bands.
    uint32_t first_row = 0;
    uint32_t rows = 0;
};

// Takes a finished page, or one band after the other of a page that is drawn in bands, from its first row to its
// last. The surface is flushed and lives until the sink returns, unless the sink takes a
// reference of its own. An image surface is CAIRO_FORMAT_RGB24, all paper white to begin with.
using PageSink = std::function<void(const Page& page)>;

// Makes the surface that a page is drawn on and gives its reference away; null fails the face. The page is
// drawn in its pixels, y down, from (0, 0) to (width, height): a surface of other units brings a device
// scale. One surface may serve several pages, with a new reference each time: each page ends with
// cairo_show_page. Without a factory each page gets an image surface of its own.
using SurfaceFactory = std::function<cairo_surface_t*(const Page& page)>;

// The form in which glyphs are asked for.
enum class GlyphForm
{
    path,    // outlines, else a bitmap if that is what the font engine has
    bitmap,  // bitmaps, else an outline
    in_turn  // each glyph is first asked for in one of the other four forms, in turn, then painted as a path
};

// Pixels of a surface that takes 64 MB.
constexpr uint64_t kUsualPixelsAtOnce = uint64_t{1} << 24;

constexpr uint64_t kUsualKeptImageBytes = uint64_t{1} << 26;

struct Options
{
    PageSink page_sink;      // may be empty
    std::string png_prefix;  // when not empty: files PREFIX-001.png and onwards, one for each page
    // Gives the number of a page that is about to be opened; may be empty. Files of equal numbers replace each other.
    std::function<uint32_t(const Page& page)> page_number;
    SurfaceFactory surface_factory;  // may be empty
    // Pages of more pixels are drawn in bands of at most so many (of one row at least): their calls are kept until
    // the page ends, then painted once for each band. Pages from a surface factory never are.
    uint64_t pixels_at_once = kUsualPixelsAtOnce;
    // Of images in kept calls so many bytes of pixels are in memory, and the rest in a file in the temporary folder.
    uint64_t kept_image_bytes = kUsualKeptImageBytes;
    bool keep_images = false;  // keep each image that allows it, and pull it when the drawing ends
    GlyphForm glyph_form = GlyphForm::path;
    // Is told of each step of the drawing; of a page in bands only the bands that meet its box are then drawn, if there
    // is neither a sink nor a file for the page. What is drawn is the same with and without.
    std::optional<Watch> watch;
    std::function<void(const std::string& line)> complaint_sink;  // empty: standard error
    // Takes the lines that tell of what isn't on the pages, for want of memory, beyond a limit, or because Cairo has no
    // way to paint it, though the call was sound; the complaints are then what is painted otherwise than asked for, and
    // what calls that make no sense asked for. Empty: these lines are complaints like all others.
    std::function<void(const std::string& line)> loss_sink;
};

class Renderer
{
public:
    explicit Renderer(Options options);
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    // The table, valid as long as the renderer.
    const ORV_Interface* interface() const;

    // Faces finished so far, discarded ones not counted.
    uint32_t pages_finished() const;

    // Everything said so far, each kind once, in the order in which it was met. Empty: all that was asked
    // for could be painted.
    const std::vector<std::string>& complaints() const;

    // False when a PNG file could not be written, a surface ran into an error, or the temporary folder was too full for
    // the images of kept calls. The page's ORV_drawing_finish has then given 0.
    bool all_pages_written() const;

    class Implementation;

private:
    std::unique_ptr<Implementation> implementation_;
};

// The pixels of an image surface, row after row, each 0x00RRGGBB.
struct PagePixels
{
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint32_t> pixels;

    bool operator==(const PagePixels&) const = default;
};

// A copy of the pixels of the page, or of its band; empty if the surface is no image surface.
PagePixels read_pixels(const Page& page);

// The same for a page whose earlier bands are in `pages` already: the band is put below them.
void collect_pixels(const Page& page, std::vector<PagePixels>& pages);

// Keeps the pixels of each page that its sink is given.
class PageCollector
{
public:
    PageSink sink();
    const std::vector<PagePixels>& pages() const;

private:
    std::shared_ptr<std::vector<PagePixels>> pages_ = std::make_shared<std::vector<PagePixels>>();
};

// How far two pages differ. Pages of different sizes, or with no pixels, differ by 255 everywhere.
struct PixelDifference
{
    double mean = 0.0;              // mean absolute difference per channel, of 255
    uint32_t largest = 0;           // largest difference of a channel, of 255
    uint64_t pixels_different = 0;  // pixels that are not the same
};

PixelDifference compare_pixels(const PagePixels& one, const PagePixels& other);

// The pixels of a PNG file on white paper; empty if it cannot be read.
PagePixels read_png(const std::string& file_name);

}  // namespace orvlog::cairo_renderer
