#include "renderers/cairo/image-reader.h"

#include "renderers/cairo/matrix.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace cairo_renderer
{
namespace
{

constexpr uint64_t max_row_bytes = uint64_t{1} << 30;
constexpr uint64_t max_surface_pixels = uint64_t{1} << 26;
constexpr uint32_t max_surface_side = 30000;
constexpr uint32_t max_image_side = uint32_t{1} << 28;
constexpr uint64_t buffer_bytes = uint64_t{1} << 16;

// The shape of the data of one image.
struct Layout
{
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t channels = 0;  // stored in a pixel, alpha included
    uint32_t bits = 0;
    bool planar = false;
    bool indexed = false;
    bool alpha = false;
    bool premultiplied = false;
    bool big_endian = false;
    double constant_alpha = 1.0;
    uint64_t row_bytes = 0;
    uint64_t rows = 0;
};

uint32_t depth_bits(uint32_t code)
{
    return code <= GNC_BMP_DEPTH_32_FL ? 1U << code : 0U;
}

uint32_t colour_channels(const GOP_OperandImagePointer& record, ColourSpaces& spaces,
                         std::shared_ptr<const ColourSpace>& space)
{
    const GOP_OperandImage& image = *record.imp_Image;
    uint32_t known = 0;
    if (GOP_COLOR_INFO_SPACE(image.im_Operand.go_ColorInfo) == GOP_OCS_RENDER)
        known = std::max<uint32_t>(image.im_NumNonalphaChans, 1U);
    if (GOP_COLOR_INFO_SPACE(image.im_Operand.go_ColorInfo) == GOP_OCS_OTHER && record.imp_Csd.cp_Csd != nullptr)
        known =
            static_cast<uint32_t>(record.imp_Csd.cp_Csd->csd_NumBaseChans) + record.imp_Csd.cp_Csd->csd_NumNamedChans;
    space = spaces.find(image.im_Operand, &record.imp_Csd, known);
    return known != 0 ? known : space->channels();
}

// False for data that cannot be taken apart.
bool make_layout(const GOP_OperandImagePointer& record, uint32_t colour_count, Layout& layout)
{
    const GOP_OperandImage& image = *record.imp_Image;
    layout.width = image.im_ImageWidthPixels;
    layout.height = image.im_ImageHeightPixels;
    layout.indexed = (image.im_Flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0;
    layout.alpha = (image.im_Flags & GOP_OP_FLAGS_HAS_ALPHA) != 0;
    layout.premultiplied = (image.im_Flags & GOP_OP_FLAGS_IS_PREMULTIPLIED) != 0;
    layout.big_endian = (image.im_Flags & GOP_OP_FLAGS_ENDIAN_BIG) != 0;
    if ((image.im_Flags & GOP_OP_FLAGS_HAS_CONSTANT_ALPHA) != 0)
        layout.constant_alpha = image.im_Alpha > 0.0F ? std::min(static_cast<double>(image.im_Alpha), 1.0) : 0.0;
    layout.bits = depth_bits(image.im_Operand.go_Count);
    layout.planar = image.im_ImageEncoding == GOP_ENCODING_PLANAR && !layout.indexed;
    layout.channels = colour_count + (layout.alpha ? 1U : 0U);
    const uint64_t stored = layout.indexed || layout.planar ? 1 : layout.channels;
    layout.row_bytes = (layout.width * stored * layout.bits + 7) / 8;
    layout.rows = layout.planar ? static_cast<uint64_t>(layout.height) * layout.channels : layout.height;
    if (layout.indexed && (record.imp_IndexColorTable == nullptr || layout.bits > 16))
        return false;
    return image.im_ImageEncoding <= GOP_ENCODING_PLANAR && layout.bits != 0 && layout.width != 0 &&
           layout.height != 0 && layout.width <= max_image_side && layout.height <= max_image_side &&
           layout.row_bytes <= max_row_bytes;
}

// One packed value; `index` counts values from `bytes` on.
double sample(const uint8_t* bytes, uint64_t index, uint32_t bits, bool big_endian)
{
    if (bits == 8)
        return bytes[index] / 255.0;
    if (bits == 16)
    {
        const uint8_t* pair = bytes + index * 2;
        const unsigned value = big_endian ? pair[0] * 256U + pair[1] : pair[1] * 256U + pair[0];
        return value / 65535.0;
    }
    if (bits == 32)
    {
        float value = 0.0F;
        std::memcpy(&value, bytes + index * 4, sizeof value);
        return value > 0.0F ? std::min(static_cast<double>(value), 1.0) : 0.0;
    }
    const uint64_t bit = index * bits;
    const unsigned mask = (1U << bits) - 1U;
    return static_cast<double>((bytes[bit / 8] >> (8 - bits - bit % 8)) & mask) / mask;
}

uint32_t index_sample(const uint8_t* bytes, uint64_t index, uint32_t bits, bool big_endian)
{
    const double full = static_cast<double>((uint64_t{1} << bits) - 1);
    return static_cast<uint32_t>(std::lround(sample(bytes, index, bits, big_endian) * full));
}

struct Pixel
{
    double red = 0.0;  // premultiplied
    double green = 0.0;
    double blue = 0.0;
    double alpha = 0.0;
};

// Turns stored values into pixels of the surface, row by row.
class Decoder
{
public:
    Decoder(const GOP_OperandImagePointer& record, const Layout& layout, const ColourSpace& space, BrushUse use)
        : record_(record), layout_(layout), space_(space), use_(use), values_(layout.channels),
          last_(layout.channels, -1.0F)
    {
    }

    // `rows` holds the bytes of one row of pixels: one stored row, or one of each channel.
    void decode(const uint8_t* rows, std::vector<Pixel>& pixels);

private:
    void gather(const uint8_t* rows, uint32_t column);
    Pixel convert() const;

    const GOP_OperandImagePointer& record_;
    const Layout& layout_;
    const ColourSpace& space_;
    BrushUse use_;
    std::vector<float> values_;
    std::vector<float> last_;
    Pixel last_pixel_;
};

void Decoder::gather(const uint8_t* rows, uint32_t column)
{
    const uint32_t count = layout_.channels;
    if (layout_.indexed)
    {
        const uint64_t entry = index_sample(rows, column, layout_.bits, layout_.big_endian);
        const uint32_t bits = depth_bits(record_.imp_Image->im_IndexColorDepth);
        for (uint32_t i = 0; i < count; ++i)
            values_[i] = bits == 0 ? 0.0F
                                   : static_cast<float>(sample(record_.imp_IndexColorTable, entry * count + i, bits,
                                                               layout_.big_endian));
        return;
    }
    for (uint32_t i = 0; i < count; ++i)
    {
        const uint8_t* from = layout_.planar ? rows + i * layout_.row_bytes : rows;
        const uint64_t index = layout_.planar ? column : static_cast<uint64_t>(column) * count + i;
        values_[i] = static_cast<float>(sample(from, index, layout_.bits, layout_.big_endian));
    }
}

Pixel Decoder::convert() const
{
    double alpha = layout_.alpha ? static_cast<double>(values_[0]) : 1.0;
    std::array<float, 64> colours{};
    const uint32_t first = layout_.alpha ? 1U : 0U;
    const uint32_t count = std::min<uint32_t>(layout_.channels - first, colours.size());
    for (uint32_t i = 0; i < count; ++i)
    {
        colours[i] = values_[first + i];
        if (layout_.premultiplied && layout_.alpha && alpha > 0.0)
            colours[i] = static_cast<float>(std::min(1.0, colours[i] / alpha));
    }
    const Rgb colour = space_.convert(colours.data());
    alpha *= layout_.constant_alpha;
    if (use_ == BrushUse::mask)
        return {0.0, 0.0, 0.0, luminance(colour) * alpha};
    return {colour.red * alpha, colour.green * alpha, colour.blue * alpha, alpha};
}

void Decoder::decode(const uint8_t* rows, std::vector<Pixel>& pixels)
{
    for (uint32_t column = 0; column < layout_.width; ++column)
    {
        gather(rows, column);
        if (values_ != last_)
        {
            last_pixel_ = convert();
            last_ = values_;
        }
        pixels[column] = last_pixel_;
    }
}

// Collects pixel rows on the surface; `coarse` by `coarse` of them become one.
class Canvas
{
public:
    Canvas(const Layout& layout, BrushUse use);

    cairo_surface_t* surface() const
    {
        return surface_.get();
    }
    SurfacePtr take()
    {
        cairo_surface_mark_dirty(surface_.get());
        return surface_;
    }
    void add_row(const std::vector<Pixel>& pixels);
    void finish();

private:
    void store(uint32_t row);

    const Layout& layout_;
    BrushUse use_;
    uint32_t coarse_ = 1;
    uint32_t rows_in_sum_ = 0;
    uint32_t row_ = 0;
    std::vector<Pixel> sums_;
    SurfacePtr surface_;
};

Canvas::Canvas(const Layout& layout, BrushUse use) : layout_(layout), use_(use)
{
    const auto side = [&](uint32_t length) { return (length + coarse_ - 1) / coarse_; };
    while (side(layout.width) > max_surface_side || side(layout.height) > max_surface_side ||
           static_cast<uint64_t>(side(layout.width)) * side(layout.height) > max_surface_pixels)
        ++coarse_;
    surface_ = own_surface(cairo_image_surface_create(use == BrushUse::mask ? CAIRO_FORMAT_A8 : CAIRO_FORMAT_ARGB32,
                                                      static_cast<int>(side(layout.width)),
                                                      static_cast<int>(side(layout.height))));
    sums_.resize(side(layout.width));
    cairo_surface_flush(surface_.get());
}

void Canvas::add_row(const std::vector<Pixel>& pixels)
{
    for (uint32_t column = 0; column < layout_.width; ++column)
    {
        Pixel& sum = sums_[column / coarse_];
        sum.red += pixels[column].red;
        sum.green += pixels[column].green;
        sum.blue += pixels[column].blue;
        sum.alpha += pixels[column].alpha;
    }
    if (++rows_in_sum_ == coarse_)
        store(row_++);
}

void Canvas::finish()
{
    if (rows_in_sum_ != 0)
        store(row_++);
}

uint32_t to_byte(double value)
{
    return static_cast<uint32_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

void Canvas::store(uint32_t row)
{
    uint8_t* data = cairo_image_surface_get_data(surface_.get());
    if (data == nullptr)
        return;
    uint8_t* line = data + static_cast<std::ptrdiff_t>(row) * cairo_image_surface_get_stride(surface_.get());
    for (uint32_t column = 0; column < sums_.size(); ++column)
    {
        const uint32_t wide = std::min(coarse_, layout_.width - column * coarse_);
        const double share = 1.0 / (static_cast<double>(wide) * rows_in_sum_);
        const Pixel& sum = sums_[column];
        if (use_ == BrushUse::mask)
        {
            line[column] = static_cast<uint8_t>(to_byte(sum.alpha * share));
            continue;
        }
        const uint32_t word = to_byte(sum.alpha * share) << 24 | to_byte(sum.red * share) << 16 |
                              to_byte(sum.green * share) << 8 | to_byte(sum.blue * share);
        std::memcpy(line + column * size_t{4}, &word, sizeof word);
    }
    std::fill(sums_.begin(), sums_.end(), Pixel{});
    rows_in_sum_ = 0;
}

// Delivers stored rows, from memory or from the callbacks.
class RowSource
{
public:
    RowSource(GOP_OperandImagePointer* record, const Layout& layout) : record_(record), layout_(layout)
    {
        const uint64_t rows = std::clamp<uint64_t>(buffer_bytes / layout.row_bytes, 1, layout.rows);
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

// The pixels of a row that came in part; those that didn't come stay clear.
void add_rest(const RowSource& source, const Layout& layout, Decoder& decoder, Canvas& canvas)
{
    uint64_t bytes = 0;
    const uint8_t* rest = source.rest(bytes);
    const uint64_t bits = uint64_t{layout.indexed ? 1 : layout.channels} * layout.bits;
    const uint64_t whole = bytes * 8 / bits;
    if (layout.planar || whole == 0 || bytes >= layout.row_bytes)
        return;
    std::vector<uint8_t> row(layout.row_bytes);
    std::memcpy(row.data(), rest, bytes);
    std::vector<Pixel> pixels(layout.width);
    decoder.decode(row.data(), pixels);
    std::fill(pixels.begin() + static_cast<std::ptrdiff_t>(std::min<uint64_t>(whole, layout.width)), pixels.end(),
              Pixel{});
    canvas.add_row(pixels);
}

// Reads all rows; false if some did not come.
bool read_rows(GOP_OperandImagePointer* record, const Layout& layout, const ColourSpace& space, BrushUse use,
               Canvas& canvas)
{
    RowSource source(record, layout);
    Decoder decoder(*record, layout, space, use);
    std::vector<Pixel> pixels(layout.width);
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
                add_rest(source, layout, decoder, canvas);
                return false;
            }
            if (layout.planar)
                planes.insert(planes.end(), line, line + layout.row_bytes);
        }
        decoder.decode(layout.planar ? planes.data() : line, pixels);
        canvas.add_row(pixels);
    }
    return true;
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
                   Image& image)
{
    std::shared_ptr<const ColourSpace> space;
    Layout layout;
    const uint32_t channels = colour_channels(*record, spaces, space);
    if (record->imp_Image->im_ImageEncoding > GOP_ENCODING_PLANAR)
        return complaints.say_once("compressed images are left out");
    if (!make_layout(*record, channels, layout) || channels == 0 || channels < space->channels())
        return complaints.say_once("images of unknown form are left out");
    if (record->imp_DirectImage == nullptr && record->imp_ImageReadFn == nullptr)
        return complaints.say_once("images without data are left out");
    Canvas canvas(layout, use);
    if (cairo_surface_status(canvas.surface()) != CAIRO_STATUS_SUCCESS)
        return complaints.say_once("images too large for the memory are left out");
    if (!read_rows(record, layout, *space, use, canvas))
        complaints.say_once("images that end early are painted as far as they came");
    canvas.finish();
    place_image(*record, image);
    image.surface = canvas.take();
}

}  // namespace

void pull_image(GOP_OperandImagePointer* record, BrushUse use, uint32_t object_type, ColourSpaces& spaces,
                Complaints& complaints, Image& image)
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
    read_prepared(prepared, use, spaces, complaints, image);
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

}  // namespace cairo_renderer
