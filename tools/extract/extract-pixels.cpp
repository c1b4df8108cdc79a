// Images as files that other programs show.

#include "orvlog/interface/gop-image.h"
#include "tools/extract/extract-images.h"
#include "tools/shared/png-writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace orvlog::tool
{

namespace
{

constexpr std::array<uint32_t, 6> kBits = {1, 2, 4, 8, 16, 32};

// How the samples of an image lie.
struct Layout
{
    uint32_t width = 0;
    uint64_t height = 0;    // rows that are there
    uint32_t bits = 0;      // of a sample
    uint32_t channels = 0;  // of the colour space
    bool alpha = false;     // in front of them
    bool planar = false;
    bool big_endian = false;
    bool indexed = false;
    uint32_t table_bits = 0;

    uint32_t samples() const
    {
        return channels + (alpha ? 1 : 0);
    }
    // Of a sample in what is written.
    uint32_t depth() const
    {
        return (indexed ? table_bits : bits) > 8 ? 16 : 8;
    }
};

uint32_t channels_of(const GOP_OperandImagePointer& record)
{
    const GOP_OperandImage& image = *record.imp_Image;
    switch (image.im_Operand.go_ColorInfo & 3)
    {
    case GOP_OCS_INPUT:
        return image.im_Operand.go_ColorSpaceFamily == GCM_CSF_GRAY   ? 1
               : image.im_Operand.go_ColorSpaceFamily == GCM_CSF_RGB  ? 3
               : image.im_Operand.go_ColorSpaceFamily == GCM_CSF_CMYK ? 4
                                                                      : 0;
    case GOP_OCS_RENDER:
        return image.im_NumNonalphaChans;
    default:
        return record.imp_Csd.cp_Csd != nullptr
                   ? uint32_t{record.imp_Csd.cp_Csd->csd_NumBaseChans} + record.imp_Csd.cp_Csd->csd_NumNamedChans
                   : 0;
    }
}

bool lay_out(const TakenImage& taken, Layout* layout)
{
    if (taken.record == nullptr || taken.record->imp_Image == nullptr || taken.row_bytes == 0)
        return false;
    const GOP_OperandImage& image = *taken.record->imp_Image;
    const uint32_t code = image.im_Operand.go_Count;
    layout->width = image.im_ImageWidthPixels;
    layout->channels = channels_of(*taken.record);
    layout->alpha = (image.im_Flags & GOP_OP_FLAGS_HAS_ALPHA) != 0;
    layout->planar = image.im_ImageEncoding == GOP_ENCODING_PLANAR;
    layout->big_endian = (image.im_Flags & GOP_OP_FLAGS_ENDIAN_BIG) != 0;
    layout->indexed = (image.im_Flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0;
    if (image.im_ImageEncoding > GOP_ENCODING_PLANAR || code >= kBits.size() || layout->channels == 0 ||
        layout->width == 0 || layout->width > INT32_MAX || layout->samples() > 64)
        return false;
    layout->bits = kBits[code];
    if (layout->indexed)
    {
        if (layout->planar || layout->bits > 16 || image.im_IndexColorDepth >= kBits.size())
            return false;
        layout->table_bits = kBits[image.im_IndexColorDepth];
    }
    // A row of which only a little is there may claim any width.
    if (taken.bytes.size() < taken.row_bytes && taken.row_bytes > (1U << 20))
        return false;
    const uint64_t rows = (taken.bytes.size() + taken.row_bytes - 1) / taken.row_bytes;
    const uint64_t of_pixels = layout->planar ? (rows + layout->samples() - 1) / layout->samples() : rows;
    layout->height = std::min<uint64_t>(of_pixels, image.im_ImageHeightPixels);
    return layout->height > 0;
}

// Sample number `index` behind `row`, as a fraction of 65535. What is behind `end` is 0.
uint32_t sample(const uint8_t* row, const uint8_t* end, uint64_t index, uint32_t bits, bool big_endian, bool scaled)
{
    const uint64_t bit = index * bits;
    const uint64_t left = static_cast<uint64_t>(end - row);
    if ((bit + bits + 7) / 8 > left)
        return 0;
    const uint8_t* at = row + bit / 8;
    if (bits <= 8)
    {
        const uint32_t most = (1U << bits) - 1;
        const uint32_t value = static_cast<uint32_t>(*at) >> (8 - bits - bit % 8) & most;
        return scaled ? value * 65535 / most : value;
    }
    if (bits == 16)
        return big_endian ? static_cast<uint32_t>(at[0]) << 8 | at[1] : static_cast<uint32_t>(at[1]) << 8 | at[0];
    float value = 0;
    std::memcpy(&value, at, sizeof value);
    return value > 0 ? static_cast<uint32_t>(std::lround(std::min(value, 1.0F) * 65535)) : 0;
}

// The samples of a row of pixels, each a fraction of 65535, alpha first.
class Rows
{
public:
    Rows(const TakenImage& taken, const Layout& layout) : taken_(taken), layout_(layout) {}

    void read(uint64_t y, std::vector<uint16_t>& samples) const
    {
        const uint32_t count = layout_.samples();
        samples.resize(size_t{layout_.width} * count);
        for (uint32_t c = 0; c < (layout_.planar ? count : 1); ++c)
        {
            const uint64_t number = layout_.planar ? y * count + c : y;
            const size_t begin = std::min<size_t>(number * taken_.row_bytes, taken_.bytes.size());
            const size_t end = std::min<size_t>(begin + taken_.row_bytes, taken_.bytes.size());
            read_part(taken_.bytes.data() + begin, taken_.bytes.data() + end, c, samples);
        }
    }

private:
    void read_part(const uint8_t* row, const uint8_t* end, uint32_t channel, std::vector<uint16_t>& samples) const
    {
        const uint32_t count = layout_.samples();
        for (uint32_t x = 0; x < layout_.width; ++x)
        {
            uint16_t* to = samples.data() + size_t{x} * count;
            if (layout_.indexed)
            {
                const uint64_t entry = sample(row, end, x, layout_.bits, layout_.big_endian, false);
                const uint8_t* table = taken_.color_table.data();
                for (uint32_t c = 0; c < count; ++c)
                    to[c] = static_cast<uint16_t>(sample(table, table + taken_.color_table.size(), entry * count + c,
                                                         layout_.table_bits, layout_.big_endian, true));
            }
            else if (layout_.planar)
                to[channel] = static_cast<uint16_t>(sample(row, end, x, layout_.bits, layout_.big_endian, true));
            else
            {
                for (uint32_t c = 0; c < count; ++c)
                    to[c] = static_cast<uint16_t>(
                        sample(row, end, uint64_t{x} * count + c, layout_.bits, layout_.big_endian, true));
            }
        }
    }

    const TakenImage& taken_;
    const Layout& layout_;
};

void put_sample(uint32_t value, uint32_t depth, std::vector<uint8_t>& to)
{
    if (depth == 16)
        to.push_back(static_cast<uint8_t>(value >> 8));
    to.push_back(static_cast<uint8_t>(depth == 16 ? value & 255 : (value + 128) / 257));
}

// From samples to the bytes of a PNG row: colours first, then alpha.
void convert(const std::vector<uint16_t>& samples, const Layout& layout, std::vector<uint8_t>& bytes)
{
    bytes.clear();
    const uint32_t count = layout.samples();
    for (size_t at = 0; at + count <= samples.size(); at += count)
    {
        const uint16_t* color = samples.data() + at + (layout.alpha ? 1 : 0);
        if (layout.channels == 4)
        {
            // Ink takes away light.
            for (int c = 0; c < 3; ++c)
                put_sample((65535U - color[c]) * (65535U - color[3]) / 65535U, layout.depth(), bytes);
        }
        else
        {
            for (uint32_t c = 0; c < layout.channels; ++c)
                put_sample(color[c], layout.depth(), bytes);
        }
        if (layout.alpha)
            put_sample(samples[at], layout.depth(), bytes);
    }
}

struct CloseFile
{
    void operator()(std::FILE* file) const
    {
        std::fclose(file);
    }
};

// Every so manieth pixel of a row.
void thin_out(std::vector<uint16_t>& samples, uint32_t count, uint32_t step)
{
    if (step == 1)
        return;
    size_t to = 0;
    for (size_t from = 0; from + count <= samples.size(); from += size_t{count} * step)
        for (size_t i = 0; i < count; ++i)
            samples[to++] = samples[from + i];
    samples.resize(to);
}

// Writes every `step`th row and column.
bool write_png(const TakenImage& taken, const Layout& layout, uint32_t step, const PngWriter::Sink& sink)
{
    PngForm form;
    form.width = (layout.width + step - 1) / step;
    form.height = static_cast<uint32_t>((layout.height + step - 1) / step);
    form.depth = layout.depth();
    form.gray = layout.channels == 1;
    form.alpha = layout.alpha;
    PngWriter png(form, sink);
    std::vector<uint16_t> samples;
    std::vector<uint8_t> bytes;
    const Rows rows(taken, layout);
    bool good = true;
    for (uint64_t y = 0; good && y < layout.height; y += step)
    {
        rows.read(y, samples);
        thin_out(samples, layout.samples(), step);
        convert(samples, layout, bytes);
        good = png.add_row(bytes.data());
    }
    return good && png.finish();
}

bool write_png_file(const std::string& path, const TakenImage& taken, const Layout& layout)
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "wb"));
    const auto sink = [&file](std::string_view bytes)
    { return std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size(); };
    return file != nullptr && write_png(taken, layout, 1, sink) && std::fflush(file.get()) == 0;
}

bool is_shown(const Layout& layout)
{
    return layout.channels == 1 || layout.channels == 3 || layout.channels == 4;
}

// All channels as they are, alpha last.
bool write_pam(const std::string& path, const TakenImage& taken, const Layout& layout)
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "wb"));
    if (file == nullptr)
        return false;
    std::fprintf(file.get(), "P7\nWIDTH %u\nHEIGHT %llu\nDEPTH %u\nMAXVAL %u\nENDHDR\n", layout.width,
                 static_cast<unsigned long long>(layout.height), layout.samples(),
                 layout.depth() == 16 ? 65535U : 255U);
    std::vector<uint16_t> samples;
    std::vector<uint8_t> bytes;
    const Rows rows(taken, layout);
    for (uint64_t y = 0; y < layout.height; ++y)
    {
        rows.read(y, samples);
        convert(samples, layout, bytes);
        if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
            return false;
    }
    return std::fflush(file.get()) == 0;
}

}  // namespace

std::string write_image(ExtractOutput& output, const std::string& stem, const TakenImage& image)
{
    if (image.bytes.empty())
        return {};
    Layout layout;
    if (!lay_out(image, &layout))
        return output.write(stem + ".bin", image.bytes) ? stem + ".bin" : std::string();
    const bool shown = is_shown(layout);
    const std::string name = stem + (shown ? ".png" : ".pam");
    const bool good =
        shown ? write_png_file(output.path(name), image, layout) : write_pam(output.path(name), image, layout);
    return good ? name : std::string();
}

std::string image_png(const TakenImage& image, uint32_t longest)
{
    Layout layout;
    if (image.bytes.empty() || !lay_out(image, &layout) || !is_shown(layout))
        return {};
    const uint64_t side = std::max<uint64_t>(layout.width, layout.height);
    const auto step = static_cast<uint32_t>((side + longest - 1) / longest);
    std::string png;
    const auto sink = [&png](std::string_view bytes)
    {
        png += bytes;
        return true;
    };
    const bool good = write_png(image, layout, step, sink);
    return good ? png : std::string();
}

}  // namespace orvlog::tool
