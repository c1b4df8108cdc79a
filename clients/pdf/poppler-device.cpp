// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler-device.h"

#include "clients/pdf/true-type.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <map>
#include <set>

#include <Error.h>
#include <ErrorCodes.h>
#include <Function.h>
#include <Gfx.h>
#include <GfxFont.h>
#include <GfxState.h>
#include <GlobalParams.h>
#include <OutputDev.h>
#include <PDFDoc.h>
#include <Page.h>
#include <SplashOutputDev.h>
#include <Stream.h>
#include <fofi/FoFiTrueType.h>
#include <goo/gmem.h>
#include <splash/Splash.h>
#include <splash/SplashFont.h>
#include <splash/SplashFontFile.h>
#include <splash/SplashPath.h>

namespace pdf_client
{

namespace
{

constexpr double points_per_inch = 72.0;
constexpr size_t greatest_pattern_depth = 6;
// Glyph outlines are taken from the font at this size, in pixels for each em.
constexpr double outline_size = 2048.0;

GGO_Matrix matrix_of(const double* m)
{
    return {{m[0], m[1], m[2], m[3], m[4], m[5]}};
}

//---- Paths

Path path_of(const GfxPath& source)
{
    Path path;
    for (int i = 0; i < source.getNumSubpaths(); i++)
    {
        const GfxSubpath& from = *source.getSubpath(i);
        const int count = from.getNumPoints();
        if (count == 0)
        {
            continue;
        }
        const auto point = [&](int n) { return GGO_Point{from.getX(n), from.getY(n)}; };
        Subpath subpath;
        subpath.start = point(0);
        int n = 1;
        while (n < count)
        {
            if (from.getCurve(n) && n + 2 < count)
            {
                subpath.segments.push_back({true, point(n), point(n + 1), point(n + 2)});
                n += 3;
            }
            else
            {
                subpath.segments.push_back({false, {}, {}, point(n)});
                n++;
            }
        }
        subpath.closed = from.isClosed();
        path.subpaths.push_back(std::move(subpath));
    }
    return path;
}

// The closing line of a closed subpath goes without saying.
void drop_closing_lines(Path& path)
{
    for (Subpath& subpath : path.subpaths)
    {
        if (!subpath.closed || subpath.segments.size() < 2 || subpath.segments.back().curve)
        {
            continue;
        }
        const GGO_Point end = subpath.segments.back().end;
        if (end.gpf_X == subpath.start.gpf_X && end.gpf_Y == subpath.start.gpf_Y)
        {
            subpath.segments.pop_back();
        }
    }
}

bool all_finite(const Path& path)
{
    const auto good = [](GGO_Point p) { return std::abs(p.gpf_X) < 1e12 && std::abs(p.gpf_Y) < 1e12; };
    for (const Subpath& subpath : path.subpaths)
    {
        if (!good(subpath.start))
        {
            return false;
        }
        for (const Segment& segment : subpath.segments)
        {
            if (!good(segment.end) || (segment.curve && (!good(segment.control1) || !good(segment.control2))))
            {
                return false;
            }
        }
    }
    return true;
}

// The points of a font's outline, already in the wanted units.
Path path_of(SplashPath& source)
{
    Path path;
    const int count = source.getLength();
    double x = 0;
    double y = 0;
    unsigned char flags = 0;
    int i = 0;
    while (i < count)
    {
        source.getPoint(i, &x, &y, &flags);
        if ((flags & splashPathFirst) != 0 || path.subpaths.empty())
        {
            path.subpaths.push_back({{x, y}, {}, true});
            i++;
            continue;
        }
        std::vector<Segment>& segments = path.subpaths.back().segments;
        if ((flags & splashPathCurve) != 0 && i + 2 < count)
        {
            Segment segment{true, {x, y}, {}, {}};
            source.getPoint(i + 1, &x, &y, &flags);
            segment.control2 = {x, y};
            source.getPoint(i + 2, &x, &y, &flags);
            segment.end = {x, y};
            segments.push_back(segment);
            i += 3;
        }
        else
        {
            segments.push_back({false, {}, {}, {x, y}});
            i++;
        }
    }
    drop_closing_lines(path);
    return path;
}

//---- Colours

float channel(GfxColorComp value)
{
    return static_cast<float>(std::clamp(colToDbl(value), 0.0, 1.0));
}

Colour gray(float value)
{
    Colour colour;
    colour.value[0] = value;
    return colour;
}

Colour rgb_of(const GfxColorSpace& space, const GfxColor& value)
{
    GfxRGB rgb;
    space.getRGB(&value, &rgb);
    Colour colour;
    colour.space.channels = 3;
    colour.value[0] = channel(rgb.r);
    colour.value[1] = channel(rgb.g);
    colour.value[2] = channel(rgb.b);
    return colour;
}

Colour cmyk_of(const GfxColorSpace& space, const GfxColor& value)
{
    GfxCMYK cmyk;
    space.getCMYK(&value, &cmyk);
    Colour colour;
    colour.space.channels = 4;
    colour.value[0] = channel(cmyk.c);
    colour.value[1] = channel(cmyk.m);
    colour.value[2] = channel(cmyk.y);
    colour.value[3] = channel(cmyk.k);
    return colour;
}

Colour gray_of(const GfxColorSpace& space, const GfxColor& value)
{
    GfxGray level;
    space.getGray(&value, &level);
    return gray(channel(level));
}

constexpr size_t greatest_profile = 16U << 20;

// The bytes of a profile of so many channels; empty if that isn't what the stream holds.
std::vector<uint8_t> read_profile(const Object& object, int channels)
{
    std::vector<uint8_t> bytes;
    if (!object.isStream())
    {
        return bytes;
    }
    Stream* stream = object.getStream();
    stream->reset();
    unsigned char piece[4096];
    int got = 0;
    while (bytes.size() < greatest_profile && (got = stream->doGetChars(sizeof piece, piece)) > 0)
    {
        bytes.insert(bytes.end(), piece, piece + got);
    }
    stream->close();
    const char* signature = channels == 1 ? "GRAY" : channels == 3 ? "RGB " : "CMYK";
    const bool sound = bytes.size() > 128 && bytes.size() < greatest_profile &&
                       std::memcmp(&bytes[36], "acsp", 4) == 0 && std::memcmp(&bytes[16], signature, 4) == 0;
    return sound ? bytes : std::vector<uint8_t>();
}

// The definitions of colour spaces, each made once.
class SpaceStore
{
public:
    explicit SpaceStore(PDFDoc* document) : document_(document) {}

    // The space of a colour whose channels are passed as they stand.
    ColourSpace space_of(GfxColorSpace& space)
    {
        ColourSpace result;
        result.channels = static_cast<uint16_t>(space.getNComps());
        switch (space.getMode())
        {
        case csICCBased:
            result.definition = profile_of(static_cast<GfxICCBasedColorSpace&>(space));
            break;
        case csCalGray:
            result.definition = kept(calibrated(static_cast<GfxCalGrayColorSpace&>(space)));
            break;
        case csCalRGB:
            result.definition = kept(calibrated(static_cast<GfxCalRGBColorSpace&>(space)));
            break;
        default:
            break;
        }
        return result;
    }

private:
    std::shared_ptr<const SpaceDefinition> profile_of(GfxICCBasedColorSpace& space)
    {
        const Ref reference = space.getRef();
        if (reference == Ref::INVALID())
        {
            return nullptr;
        }
        const auto known = profiles_.find(reference.num);
        if (known != profiles_.end())
        {
            return known->second;
        }
        std::shared_ptr<SpaceDefinition> definition;
        std::vector<uint8_t> bytes = read_profile(document_->getXRef()->fetch(reference), space.getNComps());
        if (!bytes.empty())
        {
            definition = std::make_shared<SpaceDefinition>();
            definition->profile = std::move(bytes);
        }
        profiles_[reference.num] = definition;
        return definition;
    }

    static SpaceDefinition calibrated(GfxCalGrayColorSpace& space)
    {
        SpaceDefinition definition;
        definition.kind = SpaceDefinition::Kind::calibrated_gray;
        set_points(space, definition);
        definition.gamma[0] = space.getGamma();
        return definition;
    }

    static SpaceDefinition calibrated(GfxCalRGBColorSpace& space)
    {
        SpaceDefinition definition;
        definition.kind = SpaceDefinition::Kind::calibrated_rgb;
        set_points(space, definition);
        definition.gamma[0] = space.getGammaR();
        definition.gamma[1] = space.getGammaG();
        definition.gamma[2] = space.getGammaB();
        std::copy_n(space.getMatrix(), 9, definition.matrix);
        return definition;
    }

    template <typename Space> static void set_points(Space& space, SpaceDefinition& definition)
    {
        const double white[3] = {space.getWhiteX(), space.getWhiteY(), space.getWhiteZ()};
        const double black[3] = {space.getBlackX(), space.getBlackY(), space.getBlackZ()};
        std::copy_n(white, 3, definition.white);
        std::copy_n(black, 3, definition.black);
    }

    std::shared_ptr<const SpaceDefinition> kept(const SpaceDefinition& definition)
    {
        for (const std::shared_ptr<const SpaceDefinition>& known : calibrated_)
        {
            if (*known == definition)
            {
                return known;
            }
        }
        calibrated_.push_back(std::make_shared<const SpaceDefinition>(definition));
        return calibrated_.back();
    }

    PDFDoc* document_;
    std::map<int, std::shared_ptr<const SpaceDefinition>> profiles_;
    std::vector<std::shared_ptr<const SpaceDefinition>> calibrated_;
};

Colour in_alternate(const GfxColorSpace& space, GfxColorSpace* alternate, const GfxColor& value)
{
    switch (alternate != nullptr ? alternate->getNComps() : 0)
    {
    case 1:
        return gray_of(space, value);
    case 4:
        return cmyk_of(space, value);
    default:
        return rgb_of(space, value);
    }
}

bool passes_as_channels(GfxColorSpaceMode mode)
{
    return mode == csDeviceGray || mode == csCalGray || mode == csDeviceRGB || mode == csCalRGB ||
           mode == csDeviceCMYK || mode == csICCBased;
}

// A flat colour carries its definition with each paint; a profile above this size stands in the page's colour
// ticket alone.
constexpr size_t greatest_flat_profile = 64U << 10;

// The colour, in the base space, that an index stands for.
GfxColor entry_of(GfxIndexedColorSpace& indexed, const GfxColor& value)
{
    GfxColor entry;
    clearGfxColor(&entry);
    const int channels = std::min(indexed.getBase()->getNComps(), gfxColorMaxComps);
    const int index = std::clamp(static_cast<int>(std::lround(colToDbl(value.c[0]))), 0, indexed.getIndexHigh());
    double low[gfxColorMaxComps];
    double range[gfxColorMaxComps];
    indexed.getBase()->getDefaultRanges(low, range, indexed.getIndexHigh());
    for (int i = 0; i < channels; i++)
    {
        entry.c[i] = dblToCol(low[i] + indexed.getLookup()[index * channels + i] / 255.0 * range[i]);
    }
    return entry;
}

Colour colour_of(GfxColorSpace* space, const GfxColor& value, SpaceStore& spaces)
{
    const GfxColorSpaceMode mode = space != nullptr ? space->getMode() : csPattern;
    if (passes_as_channels(mode))
    {
        Colour colour;
        colour.space = spaces.space_of(*space);
        if (colour.space.definition != nullptr && colour.space.definition->profile.size() > greatest_flat_profile)
        {
            colour.space.definition = nullptr;
        }
        if (colour.space.channels != 1 && colour.space.channels != 3 && colour.space.channels != 4)
        {
            return rgb_of(*space, value);
        }
        for (int i = 0; i < colour.space.channels; i++)
        {
            colour.value[i] = channel(value.c[i]);
        }
        return colour;
    }
    switch (mode)
    {
    case csLab:
        return rgb_of(*space, value);
    case csIndexed:
    {
        GfxIndexedColorSpace* indexed = static_cast<GfxIndexedColorSpace*>(space);
        return colour_of(indexed->getBase(), entry_of(*indexed, value), spaces);
    }
    case csSeparation:
        return in_alternate(*space, static_cast<GfxSeparationColorSpace*>(space)->getAlt(), value);
    case csDeviceN:
        return in_alternate(*space, static_cast<GfxDeviceNColorSpace*>(space)->getAlt(), value);
    default:
        return gray(0);
    }
}

//---- Images

// Keeps a stream alive that belongs to somebody else.
class StreamHold
{
public:
    explicit StreamHold(Stream* stream)
    {
        // The temporary must not give up a reference that it never took, so it isn't destroyed.
        Object* borrowed = new (storage_) Object(stream);
        object_ = borrowed->copy();
    }

    Stream* stream() const
    {
        return object_.getStream();
    }

private:
    alignas(Object) std::byte storage_[sizeof(Object)];
    Object object_;
};

// The samples as the document has them, row by row; inverted for masks whose zeros paint.
class RawRows : public ImageRows
{
public:
    RawRows(Stream* stream, bool inverted) : hold_(stream), inverted_(inverted) {}

    ~RawRows() override
    {
        close();
    }

    bool restart() override
    {
        close();
        hold_.stream()->reset();
        open_ = true;
        return true;
    }

    bool read_row(uint8_t* row, size_t size) override
    {
        const int got = hold_.stream()->doGetChars(static_cast<int>(size), row);
        if (got <= 0)
        {
            return false;
        }
        std::memset(row + got, 0, size - static_cast<size_t>(got));
        if (inverted_)
        {
            std::transform(row, row + size, row, [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
        }
        return true;
    }

private:
    void close()
    {
        if (open_)
        {
            hold_.stream()->close();
            open_ = false;
        }
    }

    StreamHold hold_;
    bool inverted_;
    bool open_ = false;
};

// Rows that are in memory.
class HeldRows : public ImageRows
{
public:
    HeldRows(std::vector<uint8_t> rows, size_t row_bytes) : rows_(std::move(rows)), row_bytes_(row_bytes) {}

    bool restart() override
    {
        position_ = 0;
        return true;
    }

    bool read_row(uint8_t* row, size_t size) override
    {
        if (position_ + row_bytes_ > rows_.size())
        {
            return false;
        }
        std::copy_n(&rows_[position_], std::min(size, row_bytes_), row);
        position_ += row_bytes_;
        return true;
    }

private:
    std::vector<uint8_t> rows_;
    size_t row_bytes_;
    size_t position_ = 0;
};

// Rows whose samples have to be worked out: decode arrays, colour spaces without a form of their own in the
// drawing interface, colours that count as transparent.
class MappedRows : public ImageRows
{
public:
    MappedRows(Stream* stream, uint32_t width, GfxImageColorMap* map, uint16_t channels, const int* mask_colours)
        : hold_(stream), map_(map->copy()), width_(width), channels_(channels)
    {
        if (mask_colours != nullptr)
        {
            mask_colours_.assign(mask_colours, mask_colours + 2 * map->getNumPixelComps());
        }
    }

    bool restart() override
    {
        pixels_ = std::make_unique<ImageStream>(hold_.stream(), static_cast<int>(width_), map_->getNumPixelComps(),
                                                map_->getBits());
        pixels_->reset();
        return true;
    }

    bool read_row(uint8_t* row, size_t) override
    {
        unsigned char* line = pixels_ != nullptr ? pixels_->getLine() : nullptr;
        if (line == nullptr)
        {
            return false;
        }
        // The colour map may write over its input.
        const std::vector<unsigned char> samples(line, line + static_cast<size_t>(width_) *
                                                                  static_cast<size_t>(map_->getNumPixelComps()));
        if (mask_colours_.empty())
        {
            convert(line, row);
            return true;
        }
        converted_.resize(static_cast<size_t>(width_) * channels_);
        convert(line, converted_.data());
        for (uint32_t x = 0; x < width_; x++)
        {
            *row++ = masked(&samples[static_cast<size_t>(x) * static_cast<size_t>(map_->getNumPixelComps())]) ? 0 : 255;
            row = std::copy_n(&converted_[static_cast<size_t>(x) * channels_], channels_, row);
        }
        return true;
    }

private:
    void convert(unsigned char* samples, uint8_t* row)
    {
        const int width = static_cast<int>(width_);
        switch (channels_)
        {
        case 1:
            map_->getGrayLine(samples, row, width);
            break;
        case 4:
            map_->getCMYKLine(samples, row, width);
            break;
        default:
            map_->getRGBLine(samples, row, width);
            break;
        }
    }

    bool masked(const unsigned char* pixel) const
    {
        for (size_t i = 0; 2 * i < mask_colours_.size(); i++)
        {
            if (pixel[i] < mask_colours_[2 * i] || pixel[i] > mask_colours_[2 * i + 1])
            {
                return false;
            }
        }
        return true;
    }

    StreamHold hold_;
    std::unique_ptr<GfxImageColorMap> map_;
    uint32_t width_;
    uint16_t channels_;
    std::vector<int> mask_colours_;
    std::vector<uint8_t> converted_;
    std::unique_ptr<ImageStream> pixels_;
};

bool decodes_plainly(GfxImageColorMap& map, double high)
{
    for (int i = 0; i < map.getNumPixelComps(); i++)
    {
        if (std::abs(map.getDecodeLow(i)) > 1e-6 || std::abs(map.getDecodeHigh(i) - high) > 1e-6)
        {
            return false;
        }
    }
    return true;
}

bool is_known_depth(int bits)
{
    return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
}

bool is_plain_space(GfxColorSpace* space)
{
    const int channels = space->getNComps();
    return passes_as_channels(space->getMode()) && (channels == 1 || channels == 3 || channels == 4);
}

std::vector<uint8_t> index_table_of(GfxIndexedColorSpace& indexed, int bits)
{
    const size_t channels = static_cast<size_t>(indexed.getBase()->getNComps());
    std::vector<uint8_t> table((size_t{1} << bits) * channels, 0);
    const size_t known = static_cast<size_t>(indexed.getIndexHigh() + 1) * channels;
    std::copy_n(indexed.getLookup(), std::min(known, table.size()), table.begin());
    return table;
}

// An image with all that the colour map says, its samples untouched wherever the records can say them.
Image image_of(Stream* stream, int width, int height, GfxImageColorMap* map, const int* mask_colours,
               SpaceStore& spaces)
{
    Image image;
    image.width = static_cast<uint32_t>(std::max(width, 0));
    image.height = static_cast<uint32_t>(std::max(height, 0));
    GfxColorSpace* space = map->getColorSpace();
    const int bits = map->getBits();
    const bool indexed = space->getMode() == csIndexed;
    if (mask_colours == nullptr && is_known_depth(bits))
    {
        if (is_plain_space(space) && decodes_plainly(*map, 1.0))
        {
            image.bits = static_cast<uint8_t>(bits);
            image.space = spaces.space_of(*space);
            image.rows = std::make_shared<RawRows>(stream, false);
            return image;
        }
        if (indexed && bits <= 8 && is_plain_space(static_cast<GfxIndexedColorSpace*>(space)->getBase()) &&
            decodes_plainly(*map, (1 << bits) - 1))
        {
            GfxIndexedColorSpace* table = static_cast<GfxIndexedColorSpace*>(space);
            image.bits = static_cast<uint8_t>(bits);
            image.space = spaces.space_of(*table->getBase());
            image.index_table = index_table_of(*table, bits);
            image.rows = std::make_shared<RawRows>(stream, false);
            return image;
        }
    }
    // The lines of a colour map are in device colours.
    image.space.channels = static_cast<uint16_t>(is_plain_space(space) ? space->getNComps() : 3);
    image.alpha_first = mask_colours != nullptr;
    image.rows = std::make_shared<MappedRows>(stream, image.width, map, image.space.channels, mask_colours);
    return image;
}

Image stencil_of(Stream* stream, int width, int height, bool inverted)
{
    Image image;
    image.width = static_cast<uint32_t>(std::max(width, 0));
    image.height = static_cast<uint32_t>(std::max(height, 0));
    image.bits = 1;
    image.rows = std::make_shared<RawRows>(stream, !inverted);
    return image;
}

// Image rows begin at the top of the unit square.
GGO_Matrix pixels_to(const Image& image, const GGO_Matrix& unit_square_to_content)
{
    const GGO_Matrix to_square = {{1.0 / image.width, 0, 0, -1.0 / image.height, 0, 1}};
    return multiply(to_square, unit_square_to_content);
}

//---- Shadings

constexpr size_t greatest_stop_count = 257;

double colour_distance(const Colour& one, const Colour& other)
{
    double distance = 0;
    for (int i = 0; i < 4; i++)
    {
        distance = std::max(distance, std::abs(static_cast<double>(one.value[i]) - other.value[i]));
    }
    return distance;
}

Colour halfway(const Colour& one, const Colour& other)
{
    Colour middle = one;
    for (int i = 0; i < 4; i++)
    {
        middle.value[i] = (one.value[i] + other.value[i]) / 2;
    }
    return middle;
}

// Stops so close that straight lines between them stay within a fraction of a step of 8 bits.
class StopFinder
{
public:
    StopFinder(GfxUnivariateShading& shading, SpaceStore& spaces) : shading_(shading), spaces_(spaces) {}

    std::vector<GradientStop> find()
    {
        constexpr int pieces = 8;
        stops_.push_back(stop_at(0));
        for (int i = 0; i < pieces; i++)
        {
            refine(stops_.back(), stop_at((i + 1.0) / pieces), 6);
        }
        return merged();
    }

private:
    GradientStop stop_at(double position)
    {
        GfxColor value;
        clearGfxColor(&value);
        const double t0 = shading_.getDomain0();
        shading_.getColor(t0 + position * (shading_.getDomain1() - t0), &value);
        return {position, colour_of(shading_.getColorSpace(), value, spaces_)};
    }

    void refine(const GradientStop& from, const GradientStop& to, int depth)
    {
        const double middle = (from.position + to.position) / 2;
        const GradientStop between = stop_at(middle);
        const bool straight = colour_distance(between.colour, halfway(from.colour, to.colour)) < 0.002;
        if (depth == 0 || straight || stops_.size() >= greatest_stop_count)
        {
            stops_.push_back(to);
            return;
        }
        refine(from, between, depth - 1);
        refine(between, to, depth - 1);
    }

    // Leaves out stops that lie on the line between their neighbours.
    std::vector<GradientStop> merged() const
    {
        std::vector<GradientStop> result = {stops_.front()};
        for (size_t i = 1; i + 1 < stops_.size(); i++)
        {
            const GradientStop& last = result.back();
            const GradientStop& next = stops_[i + 1];
            const double share = (stops_[i].position - last.position) / (next.position - last.position);
            Colour expected = last.colour;
            for (int c = 0; c < 4; c++)
            {
                expected.value[c] +=
                    static_cast<float>(share * (static_cast<double>(next.colour.value[c]) - last.colour.value[c]));
            }
            if (colour_distance(expected, stops_[i].colour) > 0.0005)
            {
                result.push_back(stops_[i]);
            }
        }
        result.push_back(stops_.back());
        return result;
    }

    GfxUnivariateShading& shading_;
    SpaceStore& spaces_;
    std::vector<GradientStop> stops_;
};

//---- Fonts

// The TrueType data behind a font's codes; nothing for fonts of other kinds.
class TrueTypeData
{
public:
    TrueTypeData(GfxFont& font, XRef* references)
    {
        const GfxFontType type = font.getType();
        Ref embedded;
        if ((type != fontTrueType && type != fontCIDType2) || !font.getEmbeddedFontID(&embedded))
        {
            return;
        }
        const std::optional<std::vector<unsigned char>> bytes = font.readEmbFontFile(references);
        if (!bytes || bytes->size() > INT_MAX)
        {
            return;
        }
        if (type == fontTrueType)
        {
            const std::unique_ptr<FoFiTrueType> file =
                FoFiTrueType::make(bytes->data(), static_cast<int>(bytes->size()));
            int* map = file != nullptr ? static_cast<Gfx8BitFont&>(font).getCodeToGIDMap(file.get()) : nullptr;
            if (map != nullptr)
            {
                codes_.assign(map, map + 256);
                gfree(map);
            }
        }
        else
        {
            GfxCIDFont& cid_font = static_cast<GfxCIDFont&>(font);
            const int* map = cid_font.getCIDToGID();
            const unsigned int count = cid_font.getCIDToGIDLen();
            identity_ = map == nullptr;
            codes_.assign(map, map + (map != nullptr ? count : 0));
        }
        glyphs_ = TrueTypeGlyphs(*bytes);
    }

    std::vector<uint8_t> entry(CharCode code) const
    {
        if (identity_)
        {
            return glyphs_.entry(code);
        }
        return code < codes_.size() && codes_[code] > 0 ? glyphs_.entry(static_cast<uint32_t>(codes_[code]))
                                                        : std::vector<uint8_t>();
    }

private:
    TrueTypeGlyphs glyphs_;
    std::vector<int> codes_;
    bool identity_ = false;
};

class FontEntry
{
public:
    FontEntry(SplashFontFile* file, int32_t id, TrueTypeData true_type) : id_(id), true_type_(std::move(true_type))
    {
        SplashCoord size[4] = {outline_size, 0, 0, outline_size};
        const SplashCoord text[4] = {1, 0, 0, 1};
        font_.reset(file->makeFont(size, text));
    }

    int32_t id() const
    {
        return id_;
    }

    std::shared_ptr<const Glyph> glyph(CharCode code)
    {
        std::shared_ptr<const Glyph>& entry = glyphs_[code];
        if (entry == nullptr)
        {
            auto glyph = std::make_shared<Glyph>();
            glyph->code = code;
            const std::unique_ptr<SplashPath> outline(font_ != nullptr ? font_->getGlyphPath(static_cast<int>(code))
                                                                       : nullptr);
            if (outline != nullptr)
            {
                glyph->outline = path_of(*outline);
            }
            glyph->true_type = true_type_.entry(code);
            entry = std::move(glyph);
        }
        return entry;
    }

private:
    int32_t id_;
    TrueTypeData true_type_;
    std::unique_ptr<SplashFont> font_;
    std::map<CharCode, std::shared_ptr<const Glyph>> glyphs_;
};

// The glyphs of a Type 3 font that are simple enough to be glyphs; null for those that aren't.
struct Type3Font
{
    int32_t id = 0;
    std::map<CharCode, std::shared_ptr<const Glyph>> glyphs;
};

using Complain = std::function<void(const std::string&)>;

Blend blend_of(GfxBlendMode mode)
{
    static constexpr Blend blends[] = {Blend::normal,     Blend::multiply,   Blend::screen,      Blend::overlay,
                                       Blend::darken,     Blend::lighten,    Blend::color_dodge, Blend::color_burn,
                                       Blend::hard_light, Blend::soft_light, Blend::difference,  Blend::exclusion,
                                       Blend::hue,        Blend::saturation, Blend::color,       Blend::luminosity};
    return mode >= 0 && static_cast<size_t>(mode) < std::size(blends) ? blends[mode] : Blend::normal;
}

}  // namespace

//---- The device

// Draws nothing itself; its base class is there for its font engine.
class PaintingDevice : public SplashOutputDev
{
public:
    PaintingDevice(PDFDoc* document, Complain complain)
        : SplashOutputDev(splashModeRGB8, 4, false, white_), document_(document), spaces_(document),
          complain_(std::move(complain))
    {
        startDoc(document);
    }

    ~PaintingDevice() override
    {
        // Before the base class takes the font engine down.
        fonts_.clear();
    }

    void set_painter(Painter* painter)
    {
        painter_ = painter;
        clip_ = nullptr;
        mask_ = nullptr;
        saved_.clear();
        groups_.clear();
        to_content_ = scaling(1 / points_per_inch, 1 / points_per_inch);
        run_ = {};
        text_clip_ = {};
    }

    // Ends what a damaged page leaves open.
    void finish_page()
    {
        flush_capture();
        flush_text();
        while (!groups_.empty())
        {
            endTransparencyGroup(nullptr);
        }
    }

    bool useShadedFills(int type) override
    {
        return type >= 1 && type <= 5;
    }

    void startPage(int page, GfxState*, XRef* references) override
    {
        SplashOutputDev::startPage(page, nullptr, references);
        font_is_stale_ = true;
    }

    void endPage() override {}

    //---- State

    void saveState(GfxState* state) override
    {
        saved_.push_back({{clip_, state->getFillOpacity(), blend_of(state->getBlendMode()), mask_}, matrix(state)});
    }

    void restoreState(GfxState*) override
    {
        if (!saved_.empty())
        {
            clip_ = saved_.back().paint.clip;
            mask_ = saved_.back().paint.mask;
            saved_.pop_back();
        }
        font_is_stale_ = true;
    }

    void updateAll(GfxState*) override
    {
        font_is_stale_ = true;
    }
    void updateFont(GfxState* state) override
    {
        flush_text();
        SplashOutputDev::updateFont(state);
        font_is_stale_ = true;
    }
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

    //---- Paths

    void stroke(GfxState* state) override
    {
        if (state->getStrokeColorSpace()->isNonMarking())
        {
            return;
        }
        Path path = path_of(*state->getPath());
        drop_closing_lines(path);
        stroke_path(state, path, matrix(state));
    }

    void fill(GfxState* state) override
    {
        fill_path(state, Winding::non_zero);
    }

    void eoFill(GfxState* state) override
    {
        fill_path(state, Winding::odd_even);
    }

    void clip(GfxState* state) override
    {
        clip_path(state, Winding::non_zero);
    }

    void eoClip(GfxState* state) override
    {
        clip_path(state, Winding::odd_even);
    }

    void clipToStrokePath(GfxState* state) override
    {
        flush_capture();
        Path path = path_of(*state->getPath());
        drop_closing_lines(path);
        const GGO_Matrix to_content = matrix(state);
        if (all_finite(path) && finite(to_content))
        {
            clip_ = painter_->narrow(clip_, path, to_content, style_of(state, 1));
        }
    }

    //---- Patterns and shadings

    bool tilingPatternFill(GfxState* state, Gfx* gfx, Catalog*, GfxTilingPattern* pattern, const double* mat, int, int,
                           int, int, double x_step, double y_step) override
    {
        flush_capture();
        paint_pattern(state, gfx, *pattern, mat, std::abs(x_step), std::abs(y_step));
        return true;
    }

    bool axialShadedFill(GfxState* state, GfxAxialShading* shading, double, double) override
    {
        flush_capture();
        AxialGradient gradient;
        gradient.transform = matrix(state);
        shading->getCoords(&gradient.start.gpf_X, &gradient.start.gpf_Y, &gradient.end.gpf_X, &gradient.end.gpf_Y);
        gradient.extend_start = shading->getExtend0();
        gradient.extend_end = shading->getExtend1();
        gradient.stops = StopFinder(*shading, spaces_).find();
        painter_->gradient(gradient, fill_state(state));
        return true;
    }

    bool axialShadedSupportExtend(GfxState*, GfxAxialShading*) override
    {
        return true;
    }

    bool radialShadedFill(GfxState* state, GfxRadialShading* shading, double, double) override
    {
        flush_capture();
        RadialGradient gradient;
        gradient.transform = matrix(state);
        shading->getCoords(&gradient.centre1.gpf_X, &gradient.centre1.gpf_Y, &gradient.radius1, &gradient.centre2.gpf_X,
                           &gradient.centre2.gpf_Y, &gradient.radius2);
        gradient.extend_start = shading->getExtend0();
        gradient.extend_end = shading->getExtend1();
        gradient.stops = StopFinder(*shading, spaces_).find();
        if (gradient.extend_start != gradient.extend_end)
        {
            extend_circles(state, gradient);
        }
        painter_->gradient(gradient, fill_state(state));
        return true;
    }

    bool radialShadedSupportExtend(GfxState*, GfxRadialShading*) override
    {
        return true;
    }

    bool functionShadedFill(GfxState* state, GfxFunctionShading* shading) override
    {
        flush_capture();
        const GGO_Matrix to_content = multiply(matrix_of(shading->getMatrix()), matrix(state));
        if (!finite(to_content))
        {
            return true;
        }
        in_a_group(state, [&](const PaintState& paint) { paint_cells(*shading, to_content, paint); });
        return true;
    }

    bool gouraudTriangleShadedFill(GfxState* state, GfxGouraudTriangleShading* shading) override
    {
        constexpr int greatest_count = 20000;
        if (shading->isParameterized() || shading->getNTriangles() > greatest_count)
        {
            return false;
        }
        flush_capture();
        in_a_group(state, [&](const PaintState& paint) { paint_triangles(*shading, matrix(state), paint); });
        return true;
    }

    //---- Text

    void beginTextObject(GfxState*) override
    {
        text_clip_ = {};
    }

    void endTextObject(GfxState*) override
    {
        flush_text();
        if (!text_clip_.empty())
        {
            clip_ = painter_->narrow(clip_, text_clip_, Winding::non_zero);
            text_clip_ = {};
        }
    }

    void beginStringOp(GfxState*) override
    {
        flush_text();
    }

    void endStringOp(GfxState*) override
    {
        flush_text();
    }

    void drawChar(GfxState* state, double x, double y, double dx, double dy, double origin_x, double origin_y,
                  CharCode code, int byte_count, const Unicode*, int) override
    {
        flush_capture();
        const int render = state->getRender();
        if (render == 3 || !refresh_font(state))
        {
            return;
        }
        const std::shared_ptr<const Glyph> glyph = font_->glyph(code);
        const GGO_Matrix em_to_user = multiply(em_to_user_, translation(x - origin_x, y - origin_y));
        const GGO_Matrix em_to_content = multiply(em_to_user, matrix(state));
        if (!finite(em_to_content) || determinant(em_to_content) == 0)
        {
            return;
        }
        const bool fills = (render & 1) == 0 && !state->getFillColorSpace()->isNonMarking() &&
                           state->getFillColorSpace()->getMode() != csPattern;
        const bool strokes = ((render & 3) == 1 || (render & 3) == 2) && !state->getStrokeColorSpace()->isNonMarking();
        if (fills)
        {
            add_to_run(state, {glyph, font_->id(), em_to_content, transform(matrix(state), GGO_Vector{dx, dy}), code,
                               byte_count});
        }
        if (strokes)
        {
            flush_text();
            stroke_path(state, glyph->outline.transformed(em_to_user), matrix(state));
        }
        if ((render & 4) != 0)
        {
            text_clip_.append(glyph->outline.transformed(em_to_content));
        }
    }

    bool beginType3Char(GfxState* state, double, double, double dx, double dy, CharCode code, const Unicode*,
                        int) override
    {
        flush_capture();
        const GGO_Matrix place = matrix(state);
        const std::shared_ptr<GfxFont>& source = state->getFont();
        if (source == nullptr || !finite(place) || determinant(place) == 0 || state->getRender() == 3)
        {
            return false;
        }
        std::shared_ptr<Type3Font>& type3 = type3_fonts_[{source->getID()->num, source->getID()->gen}];
        if (type3 == nullptr)
        {
            type3 = std::make_shared<Type3Font>();
            type3->id = -static_cast<int32_t>(type3_fonts_.size());
        }
        const GGO_Vector advance = transform(saved_.empty() ? place : saved_.back().matrix, GGO_Vector{dx, dy});
        const auto known = type3->glyphs.find(code);
        if (known != type3->glyphs.end())
        {
            if (known->second == nullptr)
            {
                flush_text();
                return false;
            }
            add_type3_glyph(state, known->second, type3->id, place, advance, code);
            return true;
        }
        capture_ = std::make_unique<Type3Capture>();
        capture_->glyph = std::make_shared<Glyph>();
        capture_->glyph->code = code;
        capture_->font = type3;
        capture_->glyph_to_content = place;
        capture_->advance = advance;
        capture_->code = code;
        return false;
    }

    void endType3Char(GfxState* state) override
    {
        if (capture_ == nullptr)
        {
            return;
        }
        const std::unique_ptr<Type3Capture> capture = std::move(capture_);
        if (!capture->uncoloured)
        {
            give_up(*capture);
            return;
        }
        capture->font->glyphs[capture->code] = capture->glyph;
        add_type3_glyph(state, capture->glyph, capture->font->id, capture->glyph_to_content, capture->advance,
                        capture->code);
    }

    void type3D0(GfxState*, double, double) override
    {
        flush_capture();
    }

    void type3D1(GfxState*, double, double, double, double, double, double) override
    {
        if (capture_ != nullptr)
        {
            capture_->uncoloured = true;
        }
    }

    //---- Images

    void drawImageMask(GfxState* state, Object*, Stream* stream, int width, int height, bool invert, bool interpolate,
                       bool inline_image) override
    {
        Image stencil = stencil_of(stream, width, height, invert);
        stencil.interpolate = interpolate;
        stencil.restartable = !inline_image;
        const GGO_Matrix to_content = matrix(state);
        if (!paintable(stencil, to_content))
        {
            return;
        }
        const GGO_Matrix place = pixels_to(stencil, to_content);
        if (!capture_stencil(stencil, place, fill_colour(state), fill_state(state)))
        {
            painter_->stencil(stencil, place, fill_colour(state), fill_state(state));
        }
    }

    void setSoftMaskFromImageMask(GfxState* state, Object*, Stream* stream, int width, int height, bool invert,
                                  bool inline_image, double*) override
    {
        flush_capture();
        Image stencil = stencil_of(stream, width, height, invert);
        stencil.restartable = !inline_image;
        const GGO_Matrix to_content = matrix(state);
        mask_of_stencil_ = mask_;
        if (paintable(stencil, to_content) && painter_->begin_mask())
        {
            painter_->stencil(stencil, pixels_to(stencil, to_content), gray(1), PaintState{});
            mask_ = make_mask(painter_->end_mask(), MaskRule{});
        }
    }

    void unsetSoftMaskFromImageMask(GfxState*, double*) override
    {
        mask_ = mask_of_stencil_;
        mask_of_stencil_ = nullptr;
    }

    void drawImage(GfxState* state, Object*, Stream* stream, int width, int height, GfxImageColorMap* map,
                   bool interpolate, const int* mask_colours, bool inline_image) override
    {
        flush_capture();
        Image image = image_of(stream, width, height, map, mask_colours, spaces_);
        image.interpolate = interpolate;
        image.restartable = !inline_image;
        const GGO_Matrix to_content = matrix(state);
        if (paintable(image, to_content))
        {
            painter_->image(image, pixels_to(image, to_content), fill_state(state));
        }
    }

    void drawMaskedImage(GfxState* state, Object*, Stream* stream, int width, int height, GfxImageColorMap* map,
                         bool interpolate, Stream* mask_stream, int mask_width, int mask_height, bool mask_invert,
                         bool mask_interpolate) override
    {
        flush_capture();
        Image image = image_of(stream, width, height, map, nullptr, spaces_);
        image.interpolate = interpolate;
        Image mask = stencil_of(mask_stream, mask_width, mask_height, mask_invert);
        mask.interpolate = mask_interpolate;
        paint_masked(state, image, mask);
    }

    void drawSoftMaskedImage(GfxState* state, Object*, Stream* stream, int width, int height, GfxImageColorMap* map,
                             bool interpolate, Stream* mask_stream, int mask_width, int mask_height,
                             GfxImageColorMap* mask_map, bool mask_interpolate) override
    {
        flush_capture();
        Image image = image_of(stream, width, height, map, nullptr, spaces_);
        image.interpolate = interpolate;
        Image mask = image_of(mask_stream, mask_width, mask_height, mask_map, nullptr, spaces_);
        mask.interpolate = mask_interpolate;
        if (mask_map->getMatteColor() != nullptr)
        {
            complain_("the matte colour of a soft mask is left out");
        }
        paint_masked(state, image, mask);
    }

    //---- Groups and soft masks

    void beginTransparencyGroup(GfxState* state, const double* bbox, GfxColorSpace* blending_space, bool isolated,
                                bool knockout, bool for_soft_mask) override
    {
        flush_capture();
        flush_text();
        const PaintState outside = saved_.empty() ? PaintState{} : saved_.back().paint;
        const Clip inside = clips_above(clip_, outside.clip);
        OpenGroup open;
        open.is_mask = for_soft_mask;
        if (for_soft_mask)
        {
            open.blending_space.reset(blending_space != nullptr ? blending_space->copy() : nullptr);
            open.painted = painter_->begin_mask();
        }
        else
        {
            open.painted = true;
            painter_->begin_group({isolated, knockout, bounds_of(bbox, matrix(state)), outside});
        }
        groups_.push_back(std::move(open));
        clip_ = inside;
        mask_ = nullptr;
    }

    void endTransparencyGroup(GfxState*) override
    {
        flush_text();
        if (groups_.empty())
        {
            return;
        }
        OpenGroup open = std::move(groups_.back());
        groups_.pop_back();
        if (!open.is_mask)
        {
            painter_->end_group();
            return;
        }
        pictures_ = open.painted ? painter_->end_mask() : MaskPictures{};
        pictures_space_ = std::move(open.blending_space);
    }

    void paintTransparencyGroup(GfxState*, const double*) override {}

    void setSoftMask(GfxState*, const double*, bool alpha, Function* transfer, GfxColor* backdrop) override
    {
        MaskRule rule;
        rule.luminosity = !alpha;
        if (backdrop != nullptr && pictures_space_ != nullptr)
        {
            const Colour colour = rgb_of(*pictures_space_, *backdrop);
            std::copy_n(colour.value, 3, rule.backdrop);
        }
        if (transfer != nullptr)
        {
            rule.transfer = [transfer](double value)
            {
                double out[funcMaxOutputs] = {value};
                transfer->transform(&value, out);
                return out[0];
            };
        }
        mask_ = make_mask(pictures_, rule);
        pictures_ = {};
        pictures_space_ = nullptr;
    }

    void clearSoftMask(GfxState*) override
    {
        mask_ = nullptr;
    }

private:
    struct SavedState
    {
        PaintState paint;
        GGO_Matrix matrix;
    };

    // A glyph of a Type 3 font while its content stream is read. What it paints is held back until it is known
    // whether it is a glyph that the drawing interface can say: fills only, or one stencil.
    struct Type3Capture
    {
        std::shared_ptr<Glyph> glyph;
        std::shared_ptr<Type3Font> font;
        GGO_Matrix glyph_to_content{};
        GGO_Vector advance{};
        CharCode code = 0;
        bool uncoloured = false;
        bool has_fill = false;
        std::vector<std::function<void()>> held_back;
    };

    struct OpenGroup
    {
        bool is_mask = false;
        bool painted = false;
        std::unique_ptr<GfxColorSpace> blending_space;
    };

    GGO_Matrix matrix(GfxState* state) const
    {
        return multiply(matrix_of(state->getCTM()), to_content_);
    }

    PaintState state_with(GfxState* state, double alpha) const
    {
        return {clip_, std::clamp(alpha, 0.0, 1.0), blend_of(state->getBlendMode()), mask_};
    }

    PaintState fill_state(GfxState* state) const
    {
        return state_with(state, state->getFillOpacity());
    }

    Colour fill_colour(GfxState* state)
    {
        return colour_of(state->getFillColorSpace(), *state->getFillColor(), spaces_);
    }

    static GGO_BoxFloat bounds_of(const double* box, const GGO_Matrix& to_content)
    {
        return rectangle({box[0], box[1], box[2], box[3]}).transformed(to_content).bounds();
    }

    bool paintable(const Image& image, const GGO_Matrix& to_content) const
    {
        return image.width > 0 && image.height > 0 && finite(to_content) && determinant(to_content) != 0;
    }

    static StrokeStyle style_of(GfxState* state, double scale)
    {
        StrokeStyle style;
        style.width = state->getLineWidth() * scale;
        style.cap = static_cast<uint8_t>(std::clamp(state->getLineCap(), 0, 2));
        style.join = static_cast<uint8_t>(std::clamp(state->getLineJoin(), 0, 2));
        style.adjust = state->getStrokeAdjust();
        style.miter_limit = state->getMiterLimit();
        double start = 0;
        style.dashes = state->getLineDash(&start);
        for (double& dash : style.dashes)
        {
            dash = std::max(dash, 0.0) * scale;
        }
        style.dash_start = start * scale;
        return style;
    }

    void stroke_path(GfxState* state, const Path& path, const GGO_Matrix& to_content)
    {
        flush_capture();
        if (path.empty() || !all_finite(path) || !finite(to_content))
        {
            return;
        }
        const Colour colour = colour_of(state->getStrokeColorSpace(), *state->getStrokeColor(), spaces_);
        const PaintState paint = state_with(state, state->getStrokeOpacity());
        if (keeps_circles(to_content))
        {
            painter_->stroke(path.transformed(to_content), identity(), style_of(state, mean_scale(to_content)), colour,
                             paint);
            return;
        }
        painter_->stroke(path, to_content, style_of(state, 1), colour, paint);
    }

    void fill_path(GfxState* state, Winding winding)
    {
        if (state->getFillColorSpace()->isNonMarking())
        {
            return;
        }
        Path path = path_of(*state->getPath()).transformed(matrix(state));
        drop_closing_lines(path);
        if (path.empty() || !all_finite(path))
        {
            return;
        }
        if (!capture_fill(path, winding, fill_colour(state), fill_state(state)))
        {
            painter_->fill(path, winding, fill_colour(state), fill_state(state));
        }
    }

    void clip_path(GfxState* state, Winding winding)
    {
        flush_text();
        flush_capture();
        Path path = path_of(*state->getPath()).transformed(matrix(state));
        drop_closing_lines(path);
        if (all_finite(path))
        {
            clip_ = painter_->narrow(clip_, path, winding);
        }
    }

    void paint_masked(GfxState* state, const Image& image, const Image& mask)
    {
        const GGO_Matrix to_content = matrix(state);
        if (paintable(image, to_content) && paintable(mask, to_content))
        {
            painter_->masked_image(image, pixels_to(image, to_content), mask, pixels_to(mask, to_content),
                                   fill_state(state));
        }
    }

    //---- Shadings

    // How far beyond a circle a gradient has to go on, in steps from one circle to the other, until what it
    // paints covers the clip, or the radius is down to 0.
    static double extension(GfxState* state, GGO_Point centre, double radius, GGO_Vector step, double growth)
    {
        if (growth < 0)
        {
            return radius / -growth;
        }
        double x_min = 0;
        double y_min = 0;
        double x_max = 0;
        double y_max = 0;
        state->getUserClipBBox(&x_min, &y_min, &x_max, &y_max);
        const double reach = std::hypot(x_max - x_min, y_max - y_min) + radius +
                             std::hypot((x_min + x_max) / 2 - centre.gpf_X, (y_min + y_max) / 2 - centre.gpf_Y);
        const double length = std::hypot(step.gvf_X, step.gvf_Y);
        const double pace = growth > length ? std::max(growth - length, growth / 16) : std::max(growth, length);
        return pace > 0 && std::isfinite(reach) ? std::min(reach / pace, 1000.0) : 0;
    }

    // Takes the extended side into the circles themselves: a gradient with overlapping circles that goes on at
    // one end only.
    static void extend_circles(GfxState* state, RadialGradient& gradient)
    {
        const GGO_Point from = gradient.centre1;
        const GGO_Point to = gradient.centre2;
        const GGO_Vector step = {to.gpf_X - from.gpf_X, to.gpf_Y - from.gpf_Y};
        const double radius = gradient.radius1;
        const double growth = gradient.radius2 - radius;
        const double s_min = gradient.extend_start ? -extension(state, from, radius, step, -growth) : 0;
        const double s_max = gradient.extend_end ? 1 + extension(state, to, gradient.radius2, step, growth) : 1;
        gradient.centre1 = {from.gpf_X + s_min * step.gvf_X, from.gpf_Y + s_min * step.gvf_Y};
        gradient.centre2 = {from.gpf_X + s_max * step.gvf_X, from.gpf_Y + s_max * step.gvf_Y};
        gradient.radius1 = std::max(0.0, radius + s_min * growth);
        gradient.radius2 = std::max(0.0, radius + s_max * growth);
        gradient.extend_start = false;
        gradient.extend_end = false;
        const auto place = [&](double s) { return std::clamp((s - s_min) / (s_max - s_min), 0.0, 1.0); };
        std::vector<GradientStop> stops;
        if (place(0) > 0)
        {
            stops.push_back({0, gradient.stops.front().colour});
        }
        for (const GradientStop& stop : gradient.stops)
        {
            stops.push_back({place(stop.position), stop.colour});
        }
        if (place(1) < 1)
        {
            stops.push_back({1, gradient.stops.back().colour});
        }
        gradient.stops = std::move(stops);
    }

    // Many small paints that overlap count as one thing where they don't simply cover what lies below.
    template <typename Paint> void in_a_group(GfxState* state, Paint paint)
    {
        const PaintState outside = fill_state(state);
        if (outside.alpha == 1 && outside.mask == nullptr && outside.blend == Blend::normal)
        {
            paint(outside);
            return;
        }
        painter_->begin_group({true, false, {1, 1, -1, -1}, outside});
        paint(PaintState{});
        painter_->end_group();
    }

    // Steps so fine that no cell is wider than a few pixels. Each cell reaches under the next ones, so that no
    // seams show.
    void paint_cells(GfxFunctionShading& shading, const GGO_Matrix& to_content, const PaintState& paint)
    {
        constexpr double greatest_count = 96;
        double x0 = 0;
        double y0 = 0;
        double x1 = 0;
        double y1 = 0;
        shading.getDomain(&x0, &y0, &x1, &y1);
        const double pixels = painter_->pixels_per_unit();
        const auto count_along = [&](GGO_Vector side)
        {
            const GGO_Vector along = transform(to_content, side);
            const double length = std::hypot(along.gvf_X, along.gvf_Y) * pixels;
            return std::isfinite(length) ? std::clamp(std::ceil(length / 2), 1.0, greatest_count) : 1.0;
        };
        const double columns = count_along({x1 - x0, 0});
        const double rows = count_along({0, y1 - y0});
        const double wide = (x1 - x0) / columns;
        const double high = (y1 - y0) / rows;
        for (double row = 0; row < rows; row++)
        {
            for (double column = 0; column < columns; column++)
            {
                const double x = x0 + column * wide;
                const double y = y0 + row * high;
                GfxColor value;
                clearGfxColor(&value);
                shading.getColor(x + wide / 2, y + high / 2, &value);
                const Path cell = rectangle({x, y, std::min(x + 2 * wide, x1), std::min(y + 2 * high, y1)});
                painter_->fill(cell.transformed(to_content), Winding::non_zero,
                               colour_of(shading.getColorSpace(), value, spaces_), paint);
            }
        }
    }

    void paint_triangles(GfxGouraudTriangleShading& shading, const GGO_Matrix& to_content, const PaintState& paint)
    {
        for (int i = 0; i < shading.getNTriangles(); i++)
        {
            GGO_Point corner[3];
            GfxColor value[3];
            shading.getTriangle(i, &corner[0].gpf_X, &corner[0].gpf_Y, &value[0], &corner[1].gpf_X, &corner[1].gpf_Y,
                                &value[1], &corner[2].gpf_X, &corner[2].gpf_Y, &value[2]);
            Triangle triangle;
            for (int n = 0; n < 3; n++)
            {
                triangle.corner[n] = transform(to_content, corner[n]);
                triangle.colour[n] = colour_of(shading.getColorSpace(), value[n], spaces_);
            }
            painter_->gradient(triangle, paint);
        }
    }

    //---- Patterns

    std::string pattern_key(GfxState* state, const GfxTilingPattern& pattern, double scale)
    {
        std::string key = "pattern " + std::to_string(pattern.getPatternRefNum());
        if (pattern.getPatternRefNum() < 0)
        {
            key += " unnamed " + std::to_string(++unnamed_patterns_);
        }
        key += " at " + std::to_string(static_cast<int>(std::lround(std::log2(std::max(scale, 1e-6)) * 16)));
        if (pattern.getPaintType() == 2)
        {
            const Colour colour = fill_colour(state);
            for (int i = 0; i < colour.space.channels; i++)
            {
                key += " " + std::to_string(static_cast<int>(std::lround(colour.value[i] * 65535)));
            }
        }
        return key;
    }

    void paint_pattern(GfxState* state, Gfx* gfx, GfxTilingPattern& pattern, const double* mat, double x_step,
                       double y_step)
    {
        const GGO_Matrix to_content = multiply(matrix_of(mat), matrix(state));
        const GGO_Matrix retransform = multiply(scaling(points_per_inch, points_per_inch), to_content);
        const double* box = pattern.getBBox();
        if (!finite(to_content) || determinant(to_content) == 0 || x_step <= 0 || y_step <= 0)
        {
            return;
        }
        ResourceGeometry geometry;
        geometry.box = {box[0] / points_per_inch, box[1] / points_per_inch, box[2] / points_per_inch,
                        box[3] / points_per_inch};
        geometry.scale = mean_scale(retransform) * painter_->pixels_per_unit();
        geometry.tiled = true;
        const std::string key = pattern_key(state, pattern, geometry.scale);
        if (!painter_->has_resource(key) && !record_pattern(key, geometry, state, gfx, pattern))
        {
            return;
        }
        painter_->paint_resource(key, retransform, {true, x_step / points_per_inch, y_step / points_per_inch}, true,
                                 fill_state(state));
    }

    bool record_pattern(const std::string& key, const ResourceGeometry& geometry, GfxState* state, Gfx* gfx,
                        GfxTilingPattern& pattern)
    {
        if (pattern_depth_ >= greatest_pattern_depth || !painter_->begin_resource(key, geometry))
        {
            complain_("patterns are nested too deeply");
            return false;
        }
        pattern_depth_++;
        const std::vector<SavedState> saved = std::move(saved_);
        const PaintState outside = {clip_, 1, Blend::normal, mask_};
        const GGO_Matrix to_content = to_content_;
        std::vector<OpenGroup> groups = std::move(groups_);
        saved_.clear();
        groups_.clear();
        clip_ = nullptr;
        mask_ = nullptr;
        to_content_ = scaling(1 / points_per_inch, 1 / points_per_inch);
        run_cell(state, gfx, pattern);
        flush_text();
        saved_ = saved;
        groups_ = std::move(groups);
        clip_ = outside.clip;
        mask_ = outside.mask;
        to_content_ = to_content;
        pattern_depth_--;
        painter_->end_resource();
        font_is_stale_ = true;
        return true;
    }

    void run_cell(GfxState* state, Gfx* gfx, GfxTilingPattern& pattern)
    {
        const double* box = pattern.getBBox();
        const PDFRectangle rectangle(box[0], box[1], box[2], box[3]);
        Gfx cell(document_, this, pattern.getResDict(), &rectangle, nullptr, nullptr, nullptr, gfx);
        GfxState* inside = cell.getState();
        inside->setCTM(1, 0, 0, 1, 0, 0);
        if (pattern.getPaintType() == 2)
        {
            inside->setFillColorSpace(state->getFillColorSpace()->copy());
            inside->setFillColor(state->getFillColor());
            inside->setStrokeColorSpace(state->getFillColorSpace()->copy());
            inside->setStrokeColor(state->getFillColor());
        }
        cell.display(pattern.getContentStream());
    }

    //---- Type 3 glyphs

    // A glyph that turns out to be more than a shape is painted as any other content, now and ever after.
    void give_up(Type3Capture& capture)
    {
        flush_text();
        capture.font->glyphs[capture.code] = nullptr;
        for (const std::function<void()>& paint : capture.held_back)
        {
            paint();
        }
    }

    void flush_capture()
    {
        if (capture_ != nullptr)
        {
            const std::unique_ptr<Type3Capture> capture = std::move(capture_);
            give_up(*capture);
        }
    }

    // True if the fill was taken into the glyph that is being captured.
    bool capture_fill(const Path& path, Winding winding, const Colour& colour, const PaintState& state)
    {
        if (capture_ == nullptr)
        {
            return false;
        }
        Glyph& glyph = *capture_->glyph;
        const bool fits = capture_->uncoloured && glyph.bitmap_width == 0 &&
                          (!capture_->has_fill || (glyph.winding == winding && winding == Winding::non_zero));
        if (!fits)
        {
            flush_capture();
            return false;
        }
        capture_->has_fill = true;
        glyph.winding = winding;
        glyph.outline.append(path.transformed(inverse(capture_->glyph_to_content)));
        capture_->held_back.push_back([this, path, winding, colour, state]
                                      { painter_->fill(path, winding, colour, state); });
        return true;
    }

    bool capture_stencil(const Image& stencil, const GGO_Matrix& pixels_to_content, const Colour& colour,
                         const PaintState& state)
    {
        if (capture_ == nullptr)
        {
            return false;
        }
        Glyph& glyph = *capture_->glyph;
        constexpr uint32_t greatest_side = 4096;
        if (!capture_->uncoloured || capture_->has_fill || glyph.bitmap_width > 0 || stencil.width > greatest_side ||
            stencil.height > greatest_side)
        {
            flush_capture();
            return false;
        }
        const size_t row = stencil.row_bytes();
        glyph.bitmap.resize(row * stencil.height);
        stencil.rows->restart();
        for (uint32_t y = 0; y < stencil.height && stencil.rows->read_row(&glyph.bitmap[y * row], row); y++)
        {
        }
        glyph.bitmap_width = stencil.width;
        glyph.bitmap_height = stencil.height;
        glyph.bitmap_to_em = multiply(pixels_to_content, inverse(capture_->glyph_to_content));
        Image held = stencil;
        held.rows = std::make_shared<HeldRows>(capture_->glyph->bitmap, row);
        capture_->held_back.push_back([this, held, pixels_to_content, colour, state]
                                      { painter_->stencil(held, pixels_to_content, colour, state); });
        return true;
    }

    void add_type3_glyph(GfxState* state, std::shared_ptr<const Glyph> glyph, int32_t font_id, const GGO_Matrix& place,
                         GGO_Vector advance, CharCode code)
    {
        const bool pattern = state->getFillColorSpace()->getMode() == csPattern;
        if (!pattern && !state->getFillColorSpace()->isNonMarking())
        {
            add_to_run(state, {std::move(glyph), font_id, place, advance, code, 1});
        }
    }

    //---- Text

    // The font of the state, with the matrix from its em to user space. False for a font without outlines.
    bool refresh_font(GfxState* state)
    {
        if (!font_is_stale_)
        {
            return font_ != nullptr;
        }
        font_is_stale_ = false;
        font_ = nullptr;
        const std::shared_ptr<GfxFont>& source = state->getFont();
        if (source == nullptr || source->getType() == fontType3)
        {
            return false;
        }
        // A matrix of the size of pixels keeps small fonts from counting as singular; a power of two takes
        // nothing from their precision.
        const double* text = state->getTextMat();
        const double size = std::abs(state->getFontSize()) * std::sqrt(std::abs(text[0] * text[3] - text[1] * text[2]));
        const double factor = size > 0 && std::isfinite(size) ? std::exp2(std::round(std::log2(64 / size))) : 1;
        SplashCoord scale[6] = {factor, 0, 0, factor, 0, 0};
        getSplash()->setMatrix(scale);
        SplashOutputDev::updateFont(state);
        doUpdateFont(state);
        SplashFont* current = getCurrentFont();
        if (current == nullptr)
        {
            complain_("a font can't be read; its text is left out");
            return false;
        }
        const SplashCoord* mat = current->getMatrix();
        // The font's own matrix leads to pixels whose rows run downwards.
        em_to_user_ = {{mat[0] / factor, -mat[1] / factor, mat[2] / factor, -mat[3] / factor, 0, 0}};
        std::shared_ptr<FontEntry>& entry = fonts_[{source->getID()->num, source->getID()->gen}];
        if (entry == nullptr)
        {
            entry = std::make_shared<FontEntry>(current->getFontFile(), static_cast<int32_t>(fonts_.size()),
                                                TrueTypeData(*source, document_->getXRef()));
        }
        font_ = entry;
        return true;
    }

    // A glyph on its way into a run; the advance is in the content space.
    struct NewGlyph
    {
        std::shared_ptr<const Glyph> glyph;
        int32_t font_id;
        GGO_Matrix em_to_content;
        GGO_Vector advance;
        CharCode code;
        int byte_count;
    };

    static bool same_linear_part(const GGO_Matrix& one, const GGO_Matrix& other)
    {
        return std::equal(one.m, one.m + 4, other.m);
    }

    void add_to_run(GfxState* state, NewGlyph added)
    {
        constexpr size_t greatest_run = 60000;
        if (!run_.glyphs.empty() &&
            (run_.font_id != added.font_id || !same_linear_part(run_linear_, added.em_to_content) ||
             run_.glyphs.size() >= greatest_run))
        {
            flush_text();
        }
        if (run_.glyphs.empty())
        {
            run_.em_to_content = added.em_to_content;
            run_linear_ = added.em_to_content;
            run_.font_id = added.font_id;
            run_.font_size = mean_scale(added.em_to_content) * points_per_inch;
            run_.vertical = state->getFont()->getWMode() != 0;
            run_colour_ = fill_colour(state);
            run_state_ = fill_state(state);
        }
        else
        {
            const GGO_Vector step = {added.em_to_content.m[4] - run_origin_.gpf_X,
                                     added.em_to_content.m[5] - run_origin_.gpf_Y};
            run_.glyphs.back().advance = transform(inverse(run_.em_to_content), step);
        }
        run_origin_ = {added.em_to_content.m[4], added.em_to_content.m[5]};
        PlacedGlyph placed;
        placed.glyph = std::move(added.glyph);
        placed.advance = transform(inverse(run_.em_to_content), added.advance);
        for (int i = std::min(added.byte_count, 4) - 1; i >= 0; i--)
        {
            placed.text.push_back(static_cast<uint8_t>(added.code >> (8 * i)));
        }
        run_.glyphs.push_back(std::move(placed));
    }

    void flush_text()
    {
        if (run_.glyphs.empty())
        {
            return;
        }
        const GlyphRun run = std::move(run_);
        run_ = {};
        painter_->text(run, run_colour_, run_state_);
    }

    static inline SplashColor white_ = {255, 255, 255, 0};

    PDFDoc* document_;
    SpaceStore spaces_;
    Complain complain_;
    Painter* painter_ = nullptr;
    GGO_Matrix to_content_{};
    Clip clip_;
    std::shared_ptr<const MaskImage> mask_;
    std::shared_ptr<const MaskImage> mask_of_stencil_;
    std::vector<SavedState> saved_;
    std::vector<OpenGroup> groups_;
    MaskPictures pictures_;
    std::unique_ptr<GfxColorSpace> pictures_space_;
    size_t pattern_depth_ = 0;
    uint64_t unnamed_patterns_ = 0;

    std::map<std::pair<int, int>, std::shared_ptr<FontEntry>> fonts_;
    std::map<std::pair<int, int>, std::shared_ptr<Type3Font>> type3_fonts_;
    std::unique_ptr<Type3Capture> capture_;
    std::shared_ptr<FontEntry> font_;
    bool font_is_stale_ = true;
    GGO_Matrix em_to_user_{};
    GlyphRun run_;
    GGO_Matrix run_linear_{};
    GGO_Point run_origin_{};
    Colour run_colour_;
    PaintState run_state_;
    Path text_clip_;
};

//---- The document

class PdfDocument::Implementation
{
public:
    Implementation(std::unique_ptr<PDFDoc> document, Complain complain)
        : document_(std::move(document)), device_(document_.get(), std::move(complain))
    {
    }

    PDFDoc& document()
    {
        return *document_;
    }

    PaintingDevice& device()
    {
        return device_;
    }

private:
    std::unique_ptr<PDFDoc> document_;
    PaintingDevice device_;
};

namespace
{

void swallow_message(ErrorCategory, Goffset, const char*) {}

const char* reason_of(int code)
{
    switch (code)
    {
    case errOpenFile:
        return "can't be opened";
    case errEncrypted:
        return "is protected by a password";
    default:
        return "is damaged or is no PDF file";
    }
}

// Looks through resources, and those of the forms and patterns in them, for a blend mode.
class BlendSearch
{
public:
    bool found_in(Dict* resources, int depth = 0)
    {
        constexpr int greatest_depth = 8;
        if (resources == nullptr || depth > greatest_depth)
        {
            return false;
        }
        return blends(resources->lookup("ExtGState")) || any_within(resources, "XObject", depth) ||
               any_within(resources, "Pattern", depth);
    }

private:
    static bool is_blend(const Object& mode)
    {
        return mode.isArray() || (mode.isName() && !mode.isName("Normal") && !mode.isName("Compatible"));
    }

    static bool blends(const Object& states)
    {
        for (int i = 0; states.isDict() && i < states.dictGetLength(); i++)
        {
            const Object state = states.dictGetVal(i);
            if (state.isDict() && is_blend(state.dictLookup("BM")))
            {
                return true;
            }
        }
        return false;
    }

    bool any_within(Dict* resources, const char* kind, int depth)
    {
        const Object entries = resources->lookup(kind);
        for (int i = 0; entries.isDict() && i < entries.dictGetLength(); i++)
        {
            const Object& reference = entries.dictGetValNF(i);
            if (reference.isRef() && !seen_.insert(reference.getRef().num).second)
            {
                continue;
            }
            const Object entry = entries.dictGetVal(i);
            if (!entry.isStream())
            {
                continue;
            }
            const Object inner = entry.streamGetDict()->lookup("Resources");
            if (inner.isDict() && found_in(inner.getDict(), depth + 1))
            {
                return true;
            }
        }
        return false;
    }

    std::set<int> seen_;
};

// Gathers the profiles that a page's resources name.
class ColourSearch
{
public:
    explicit ColourSearch(PageColours& colours) : colours_(colours) {}

    void look_through(Dict* resources, int depth = 0)
    {
        constexpr int greatest_depth = 4;
        if (resources == nullptr || depth > greatest_depth)
        {
            return;
        }
        const Object spaces = resources->lookup("ColorSpace");
        for (int i = 0; spaces.isDict() && i < spaces.dictGetLength(); i++)
        {
            const std::optional<size_t> found = take(spaces.dictGetVal(i));
            const std::string name = spaces.dictGetKey(i);
            if (depth == 0 && found)
            {
                note_default(name, *found);
            }
        }
        const Object forms = resources->lookup("XObject");
        for (int i = 0; forms.isDict() && i < forms.dictGetLength(); i++)
        {
            look_into(forms.dictGetValNF(i), forms.dictGetVal(i), depth);
        }
    }

private:
    static constexpr size_t greatest_count = 32;

    void look_into(const Object& reference, const Object& form, int depth)
    {
        if (!form.isStream() || (reference.isRef() && !seen_.insert(reference.getRef().num).second))
        {
            return;
        }
        take(form.streamGetDict()->lookup("ColorSpace"));
        const Object inner = form.streamGetDict()->lookup("Resources");
        if (inner.isDict())
        {
            look_through(inner.getDict(), depth + 1);
        }
    }

    void note_default(const std::string& name, size_t index)
    {
        if (name == "DefaultGray")
        {
            colours_.default_gray = index;
        }
        if (name == "DefaultRGB")
        {
            colours_.default_rgb = index;
        }
        if (name == "DefaultCMYK")
        {
            colours_.default_cmyk = index;
        }
    }

    std::optional<size_t> take(const Object& space)
    {
        if (!space.isArray() || space.arrayGetLength() < 2 || !space.arrayGet(0).isName("ICCBased"))
        {
            return std::nullopt;
        }
        const Object& reference = space.arrayGetNF(1);
        if (reference.isRef() && places_.count(reference.getRef().num) > 0)
        {
            return places_[reference.getRef().num];
        }
        const Object stream = space.arrayGet(1);
        const Object channels = stream.isStream() ? stream.streamGetDict()->lookup("N") : Object();
        if (!channels.isInt() || colours_.profiles.size() >= greatest_count)
        {
            return std::nullopt;
        }
        DocumentProfile profile = {static_cast<uint16_t>(channels.getInt()), read_profile(stream, channels.getInt())};
        if (profile.icc.empty())
        {
            return std::nullopt;
        }
        colours_.profiles.push_back(std::move(profile));
        if (reference.isRef())
        {
            places_[reference.getRef().num] = colours_.profiles.size() - 1;
        }
        return colours_.profiles.size() - 1;
    }

    PageColours& colours_;
    std::set<int> seen_;
    std::map<int, size_t> places_;
};

uint16_t channels_of_space(const Object& space)
{
    if (space.isArray() && space.arrayGetLength() >= 2 && space.arrayGet(0).isName("ICCBased"))
    {
        const Object stream = space.arrayGet(1);
        const Object channels = stream.isStream() ? stream.streamGetDict()->lookup("N") : Object();
        return channels.isInt() ? static_cast<uint16_t>(channels.getInt()) : uint16_t{0};
    }
    if (space.isName("DeviceGray"))
    {
        return 1;
    }
    if (space.isName("DeviceRGB"))
    {
        return 3;
    }
    return space.isName("DeviceCMYK") ? 4 : 0;
}

std::vector<uint8_t> output_intent_of(PDFDoc& document)
{
    const Object catalog = document.getXRef()->getCatalog();
    const Object intents = catalog.isDict() ? catalog.dictLookup("OutputIntents") : Object();
    for (int i = 0; intents.isArray() && i < intents.arrayGetLength(); i++)
    {
        const Object intent = intents.arrayGet(i);
        const Object profile = intent.isDict() ? intent.dictLookup("DestOutputProfile") : Object();
        const Object channels = profile.isStream() ? profile.streamGetDict()->lookup("N") : Object();
        if (channels.isInt())
        {
            return read_profile(profile, channels.getInt());
        }
    }
    return {};
}

struct Deadline
{
    std::chrono::steady_clock::time_point end;
    bool passed = false;
};

bool deadline_has_passed(void* data)
{
    Deadline* deadline = static_cast<Deadline*>(data);
    deadline->passed = deadline->passed || std::chrono::steady_clock::now() > deadline->end;
    return deadline->passed;
}

}  // namespace

std::unique_ptr<PdfDocument> PdfDocument::open(const std::string& file_name, Complain complain, std::string& error)
{
    if (globalParams == nullptr)
    {
        globalParams = std::make_unique<GlobalParams>();
    }
    setErrorCallback(swallow_message);
    auto document = std::make_unique<PDFDoc>(std::make_unique<GooString>(file_name));
    if (!document->isOk())
    {
        error = reason_of(document->getErrorCode());
        return nullptr;
    }
    if (document->getNumPages() < 1)
    {
        error = "has no pages";
        return nullptr;
    }
    return std::unique_ptr<PdfDocument>(
        new PdfDocument(std::make_unique<Implementation>(std::move(document), std::move(complain))));
}

PdfDocument::PdfDocument(std::unique_ptr<Implementation> implementation) : implementation_(std::move(implementation)) {}

PdfDocument::~PdfDocument() = default;

int PdfDocument::page_count() const
{
    return implementation_->document().getNumPages();
}

PageSize PdfDocument::page_size(int page) const
{
    PDFDoc& document = implementation_->document();
    PageSize size = {document.getPageMediaWidth(page), document.getPageMediaHeight(page)};
    const int turn = document.getPageRotate(page);
    if (turn == 90 || turn == 270)
    {
        std::swap(size.width, size.height);
    }
    return size;
}

PageColours PdfDocument::page_colours(int page)
{
    PageColours colours;
    PDFDoc& document = implementation_->document();
    Page* source = document.getPage(page);
    if (source == nullptr)
    {
        return colours;
    }
    ColourSearch(colours).look_through(source->getResourceDict());
    Dict* group = source->getGroup();
    colours.group_channels = group != nullptr ? channels_of_space(group->lookup("CS")) : uint16_t{0};
    colours.output_intent = output_intent_of(document);
    return colours;
}

bool PdfDocument::paint_page(int page, Painter& painter, double seconds)
{
    Deadline deadline;
    deadline.end = std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                                          std::chrono::duration<double>(seconds));
    PaintingDevice& device = implementation_->device();
    device.set_painter(&painter);
    // What blends, blends with what was painted before it and not with the paper.
    Page* source = implementation_->document().getPage(page);
    const bool blends = source != nullptr && BlendSearch().found_in(source->getResourceDict());
    if (blends)
    {
        painter.begin_group({true, false, {1, 1, -1, -1}, PaintState{}});
    }
    implementation_->document().displayPageSlice(&device, page, points_per_inch, points_per_inch, 0, true, false, false,
                                                 -1, -1, -1, -1, deadline_has_passed, &deadline);
    device.finish_page();
    if (blends)
    {
        painter.end_group();
    }
    device.set_painter(nullptr);
    return !deadline.passed;
}

}  // namespace pdf_client
