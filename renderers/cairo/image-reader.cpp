#include "renderers/cairo/image-reader.h"

#include "renderers/cairo/image-canvas.h"
#include "renderers/cairo/image-decoder.h"
#include "renderers/cairo/image-layout.h"
#include "renderers/cairo/image-palette.h"
#include "renderers/cairo/matrix.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr uint64_t kBufferBytes = uint64_t{1} << 16;

// Delivers stored rows, from memory or from the callbacks.
class RowSource
{
public:
    RowSource(GOP_OperandImagePointer* record, const Layout& layout) : record_(record), layout_(layout)
    {
        const uint64_t rows = std::clamp<uint64_t>(kBufferBytes / layout.row_bytes, 1, layout.rows);
        if (record->imp_DirectImage == nullptr)
            buffer_.resize(rows * layout.row_bytes);
    }

    // The next stored row, or null when there are no more. It stays until the next call.
    const uint8_t* next();
    // What came of a row that isn't whole, once there is no next one: so many bytes of it.
    const uint8_t* rest(uint64_t& bytes) const
    {
        bytes = filled_ - taken_;
        return buffer_.data() + taken_;
    }

private:
    bool fill();

    GOP_OperandImagePointer* record_;
    const Layout& layout_;
    std::vector<uint8_t> buffer_;
    uint64_t filled_ = 0;
    uint64_t taken_ = 0;
    uint64_t row_ = 0;
};

const uint8_t* RowSource::next()
{
    if (row_ == layout_.rows)
        return nullptr;
    const uint64_t row = row_++;
    if (record_->imp_DirectImage != nullptr)
    {
        const uint64_t step = record_->imp_RowStep != 0 ? record_->imp_RowStep : layout_.row_bytes;
        return record_->imp_DirectImage + row * step;
    }
    while (filled_ - taken_ < layout_.row_bytes)
        if (!fill())
            return nullptr;
    const uint8_t* line = buffer_.data() + taken_;
    taken_ += layout_.row_bytes;
    return line;
}

// What is left of a row that came in part moves to the front.
bool RowSource::fill()
{
    std::memmove(buffer_.data(), buffer_.data() + taken_, filled_ - taken_);
    filled_ -= taken_;
    taken_ = 0;
    const uint64_t room = buffer_.size() - filled_;
    int32_t returned = 0;
    int32_t attributes = 0;
    if (record_->imp_ImageReadFn(record_, record_->imp_Context, 0, buffer_.data() + filled_,
                                 static_cast<uint32_t>(room), static_cast<int32_t>(layout_.row_bytes), &returned,
                                 nullptr, 0, 0, &attributes) == 0)
        return false;
    if (returned <= 0 || static_cast<uint64_t>(returned) > room)
        return false;
    filled_ += static_cast<uint64_t>(returned);
    return true;
}

// The pixels of a row that came in part; those that didn't come stay clear. `layout` is that of the part that is held,
// which begins `offset` bytes from the beginning of the row.
void add_rest(const RowSource& source, const Layout& layout, uint64_t offset, Decoder& decoder, Canvas& canvas)
{
    uint64_t bytes = 0;
    const uint8_t* rest = source.rest(bytes);
    const uint64_t bits = uint64_t{layout.indexed ? 1 : layout.channels} * layout.bits;
    bytes = std::min(bytes - std::min(bytes, offset), layout.row_bytes);
    const uint64_t whole = bytes * 8 / bits;
    if (layout.planar || whole == 0)
        return;
    std::vector<uint8_t> row(layout.row_bytes);
    std::memcpy(row.data(), rest + offset, bytes);
    std::vector<Pixel> pixels(layout.width);
    decoder.decode(row.data(), pixels);
    std::fill(pixels.begin() + static_cast<std::ptrdiff_t>(std::min<uint64_t>(whole, layout.width)), pixels.end(),
              Pixel{});
    canvas.add_row(pixels);
}

// What is made of an image: `part` of it, which `layout` is the layout of.
struct Held
{
    const Part& part;
    const Layout& layout;
    uint64_t offset;  // bytes from the beginning of a row

    bool has_row(uint32_t row) const
    {
        return row - part.top < part.height;
    }
};

// Reads all rows and adds those that are held; false if some did not come.
bool add_rows(RowSource& source, const Layout& layout, const Held& held, Decoder& decoder, Palette* palette,
              Canvas& canvas)
{
    std::vector<Pixel> pixels(palette == nullptr ? held.part.width : 0);
    std::vector<uint8_t> planes;
    for (uint32_t row = 0; row < layout.height; ++row)
    {
        planes.clear();
        const uint8_t* line = nullptr;
        for (uint32_t plane = 0; plane < (layout.planar ? layout.channels : 1U); ++plane)
        {
            line = source.next();
            if (line == nullptr)
            {
                if (held.has_row(row))
                    add_rest(source, held.layout, held.offset, decoder, canvas);
                return false;
            }
            if (layout.planar && palette == nullptr)
                planes.insert(planes.end(), line, line + layout.row_bytes);
        }
        if (!held.has_row(row))
            continue;
        line += held.offset;
        if (palette != nullptr)
        {
            palette->learn(line);
            canvas.add_row(line, *palette);
            continue;
        }
        decoder.decode(layout.planar ? planes.data() : line, pixels);
        canvas.add_row(pixels);
    }
    return true;
}

// Reads the whole image; false if some rows did not come.
bool read_rows(GOP_OperandImagePointer* record, const Layout& layout, const Held& held, const ColourSpace& space,
               BrushUse use, Canvas& canvas)
{
    RowSource source(record, layout);
    Decoder decoder(*record, held.layout, space, use);
    std::optional<Palette> palette;
    if (Palette::suits(layout))
        palette.emplace(decoder, held.layout);
    const bool all = add_rows(source, layout, held, decoder, palette ? &*palette : nullptr, canvas);
    canvas.finish();
    return all;
}

void place_image(const GOP_OperandImagePointer& record, Image& image)
{
    const GOP_OperandImage& head = *record.imp_Image;
    cairo_matrix_t matrix = matrix_of(head.im_Transform);
    const double width = head.im_ImageWidthPixels;
    const double height = head.im_ImageHeightPixels;
    const bool unit = (head.im_Flags & GOP_OP_FLAGS_TRANSFORM_FROM_UNIT_SQUARE) != 0;
    if (unit)
    {
        cairo_matrix_t shrink;
        cairo_matrix_init_scale(&shrink, 1.0 / width, 1.0 / height);
        matrix = multiply(shrink, matrix);
    }
    image.pixels_to_content = matrix;
    image.width = width;
    image.height = height;
    image.smooth = (head.im_Flags & GOP_OP_FLAGS_SMOOTH) != 0;
    image.tiled = head.im_Operand.go_OpType == GOP_OPERAND_IMAGE_TILE;
    image.tiles = {width, height, false, false};
    if (!image.tiled || record.imp_TilingParameters == nullptr)
        return;
    const GOP_TilingParameters& tiling = *record.imp_TilingParameters;
    const auto step = [](double interval, double whole, double scale)
    {
        const double length = std::fabs(interval) * scale;
        return std::isfinite(length) && length > 0.0 ? length : whole;
    };
    image.tiles = {step(tiling.it_XRepetitionInterval, width, unit ? width : 1.0),
                   step(tiling.it_YRepetitionInterval, height, unit ? height : 1.0), tiling.it_XFlip != 0,
                   tiling.it_YFlip != 0};
}

// The image after its prepare call.
void read_prepared(GOP_OperandImagePointer* record, BrushUse use, ColourSpaces& spaces, Complaints& complaints,
                   const Window* window, Image& image)
{
    std::shared_ptr<const ColourSpace> space;
    Layout layout;
    const uint32_t channels = colour_channels(*record, spaces, space);
    if (record->imp_Image->im_ImageEncoding > GOP_ENCODING_PLANAR)
        return complaints.lose_once("compressed images are left out");
    if (!make_layout(*record, channels, layout) || channels == 0 || channels < space->channels())
        return complaints.say_once("images of unknown form are left out");
    if (record->imp_DirectImage == nullptr && record->imp_ImageReadFn == nullptr)
        return complaints.say_once("images without data are left out");
    place_image(*record, image);
    const uint32_t coarse = coarseness(layout);
    const Part part = part_seen(layout, image, coarse, window);
    uint64_t offset = 0;
    const Layout part_layout = layout_of(part, layout, offset);
    Canvas canvas(part_layout, coarse, use);
    if (cairo_surface_status(canvas.surface()) != CAIRO_STATUS_SUCCESS)
        return complaints.lose_once("images too large for the memory are left out");
    if (!read_rows(record, layout, {part, part_layout, offset}, *space, use, canvas))
        complaints.say_once("images that end early are painted as far as they came");
    image.left = part.left;
    image.top = part.top;
    image.coarse = coarse;
    image.surface = canvas.take();
}

}  // namespace

void pull_image(GOP_OperandImagePointer* record, BrushUse use, uint32_t object_type, ColourSpaces& spaces,
                Complaints& complaints, const Window* window, Image& image)
{
    const bool direct = record->imp_DirectImage != nullptr;
    GOP_OperandImagePointer* prepared = record;
    if (!direct && record->imp_ImagePrepareFn != nullptr)
    {
        const bool compressed = record->imp_Image->im_ImageEncoding > GOP_ENCODING_PLANAR;
        if (record->imp_ImagePrepareFn(&prepared, object_type, compressed ? 1U : 0U, 0, 0.0F, 0.0F, 0.0F, 0.0F, 0,
                                       record->imp_Image->im_Operand.go_Count, 0) == 0)
            return complaints.say_once("images that cannot be prepared are left out");
    }
    if (prepared == nullptr || prepared->imp_Image == nullptr)
        return complaints.say_once("images without a record are left out");
    read_prepared(prepared, use, spaces, complaints, window, image);
    if (!direct && prepared->imp_ImageFinishFn != nullptr)
        prepared->imp_ImageFinishFn(prepared, prepared->imp_Context);
}

bool keep_image(GOP_OperandImagePointer* record)
{
    const bool may = (record->imp_Image->im_Flags & GOP_OP_FLAGS_ASYNCH_ACCESS) != 0;
    if (!may || record->imp_DirectImage != nullptr || record->imp_ImageKeepFn == nullptr ||
        record->imp_ImageReleaseFn == nullptr)
        return false;
    return record->imp_ImageKeepFn(record) != 0;
}

void release_image(GOP_OperandImagePointer* record)
{
    if (record->imp_ImageReleaseFn != nullptr)
        record->imp_ImageReleaseFn(record);
}

}  // namespace orvlog::cairo_renderer
