// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/images.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

#include <Object.h>
#include <Stream.h>

namespace orvlog::pdf_client
{

namespace
{

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

// True for a stream that decodes all its data at once and has none left once it has been closed.
bool is_spent_by_closing(Stream* stream)
{
    for (; stream != nullptr; stream = stream->getNextStream())
        if (stream->getKind() == strJPX)
            return true;
    return false;
}

// A document's stream, which is read from its beginning as often as is asked for.
class Source
{
public:
    // `size` bytes are wanted in all.
    Source(Stream* stream, uint64_t size, const StoredImage& stored)
        : hold_(stream), size_(static_cast<size_t>(size)), stored_(stored), stays_open_(is_spent_by_closing(stream)),
          gathers_(stored.key && stored.images->is_painted_again(*stored.key, size_))
    {
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    ~Source()
    {
        close();
    }

    void restart()
    {
        at_ = 0;
        gathered_ = {};
        decoded_ = stored_.key ? stored_.images->find(*stored_.key, size_) : nullptr;
        if (decoded_ == nullptr)
        {
            close();
            hold_.stream()->reset();
            open_ = true;
        }
    }

    // Gives how many bytes came.
    size_t read(uint8_t* bytes, size_t size)
    {
        if (decoded_ != nullptr)
            return read_decoded(bytes, size);
        const int got = open_ ? hold_.stream()->doGetChars(static_cast<int>(size), bytes) : 0;
        const auto came = static_cast<size_t>(std::max(got, 0));
        at_ += came;
        if (gathers_ && open_)
            gather(bytes, came, came < size || at_ >= size_);
        return came;
    }

private:
    size_t read_decoded(uint8_t* bytes, size_t size)
    {
        const size_t came = std::min(size, decoded_->size() - at_);
        std::copy_n(decoded_->data() + at_, came, bytes);
        at_ += came;
        if (at_ == decoded_->size())
            decoded_ = nullptr;
        return came;
    }

    // What there is no memory for is decoded again.
    void gather(const uint8_t* bytes, size_t count, bool is_all)
    {
        try
        {
            gathered_.reserve(std::min(size_, DecodedImages::kMostBytes));
            gathered_.insert(gathered_.end(), bytes, bytes + count);
            if (is_all)
            {
                stored_.images->keep(*stored_.key, size_, std::exchange(gathered_, {}));
                gathers_ = false;
            }
        }
        catch (const std::bad_alloc&)
        {
            gathered_ = {};
            gathers_ = false;
        }
    }

    void close()
    {
        if (open_ && !stays_open_)
            hold_.stream()->close();
        open_ = false;
    }

    StreamHold hold_;
    size_t size_;
    StoredImage stored_;
    bool stays_open_;
    bool gathers_;
    bool open_ = false;
    size_t at_ = 0;
    DecodedImages::Bytes gathered_;                        // of a reading that is under way
    std::shared_ptr<const DecodedImages::Bytes> decoded_;  // while it is read
};

// The samples as the document has them, row by row; inverted for masks whose zeros paint.
class RawRows : public ImageRows
{
public:
    RawRows(Stream* stream, uint64_t size, bool inverted, const StoredImage& stored)
        : source_(stream, size, stored), inverted_(inverted)
    {
    }

    bool restart() override
    {
        source_.restart();
        return true;
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        const size_t came = source_.read(row, size);
        if (inverted_)
            std::transform(row, row + came, row, [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
        return came;
    }

private:
    Source source_;
    bool inverted_;
};

// Rows whose samples have to be worked out: decode arrays, colour spaces without a form of their own in the
// drawing interface, colours that count as transparent.
class MappedRows : public ImageRows
{
public:
    MappedRows(Stream* stream, const Image& image, GfxImageColorMap* map, const int* mask_colours,
               const StoredImage& stored)
        : source_(stream, packed_bytes(image.width, map) * image.height, stored), map_(map->copy()),
          width_(image.width), channels_(image.space.channels),
          components_(static_cast<size_t>(map->getNumPixelComps())), bits_(static_cast<size_t>(map->getBits()))
    {
        if (mask_colours != nullptr)
            mask_colours_.assign(mask_colours, mask_colours + 2 * components_);
    }

    bool restart() override
    {
        samples_.resize(width_ * components_);
        packed_.resize(packed_bytes(width_, map_.get()));
        converted_.resize(static_cast<size_t>(width_) * channels_);
        source_.restart();
        return true;
    }

    // Of a row that isn't whole the pixels that are.
    size_t read_row(uint8_t* row, size_t) override
    {
        const size_t came = source_.read(packed_.data(), packed_.size());
        const size_t pixels = std::min<size_t>(width_, came * 8 / (components_ * bits_));
        std::fill(packed_.begin() + static_cast<std::ptrdiff_t>(came), packed_.end(), uint8_t{0});
        unpack();
        // The colour map may write over its input.
        std::vector<unsigned char> line = samples_;
        convert(line.data(), converted_.data());
        if (mask_colours_.empty())
        {
            std::copy_n(converted_.data(), pixels * channels_, row);
            return pixels * channels_;
        }
        for (size_t x = 0; x < pixels; ++x)
        {
            *row++ = masked(&samples_[x * components_]) ? 0 : 255;
            row = std::copy_n(&converted_[x * channels_], channels_, row);
        }
        return pixels * (channels_ + size_t{1});
    }

private:
    static size_t packed_bytes(uint32_t width, GfxImageColorMap* map)
    {
        const size_t bits = static_cast<size_t>(map->getNumPixelComps()) * static_cast<size_t>(map->getBits());
        return (width * bits + 7) / 8;
    }

    // A byte for each sample; of those of 16 bits the high one, which is what the colour map takes.
    void unpack()
    {
        const unsigned mask = (1U << std::min<size_t>(bits_, 16)) - 1;
        for (size_t i = 0; i < samples_.size(); ++i)
        {
            const size_t bit = i * bits_;
            unsigned window = 0;
            for (size_t byte = bit / 8; byte < bit / 8 + 3; ++byte)
                window = window << 8 | (byte < packed_.size() ? packed_[byte] : 0U);
            const unsigned value = window >> (24 - bit % 8 - bits_) & mask;
            samples_[i] = static_cast<unsigned char>(bits_ == 16 ? value >> 8 : value);
        }
    }

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
        for (size_t i = 0; 2 * i < mask_colours_.size(); ++i)
            if (pixel[i] < mask_colours_[2 * i] || pixel[i] > mask_colours_[2 * i + 1])
                return false;
        return true;
    }

    Source source_;
    std::unique_ptr<GfxImageColorMap> map_;
    uint32_t width_;
    uint16_t channels_;
    size_t components_;
    size_t bits_;
    std::vector<uint8_t> packed_;         // a row as the document has it
    std::vector<unsigned char> samples_;  // a byte for each
    std::vector<int> mask_colours_;
    std::vector<uint8_t> converted_;
};

bool decodes_plainly(GfxImageColorMap& map, double high)
{
    for (int i = 0; i < map.getNumPixelComps(); ++i)
        if (std::abs(map.getDecodeLow(i)) > 1e-6 || std::abs(map.getDecodeHigh(i) - high) > 1e-6)
            return false;
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

// The image is complete but for its rows.
std::shared_ptr<ImageRows> raw_rows(Stream* stream, const Image& image, bool inverted, const StoredImage& stored)
{
    const uint64_t size = uint64_t{image.row_bytes()} * image.height;
    return std::make_shared<RawRows>(stream, size, inverted, stored);
}

}  // namespace

Image image_of(Stream* stream, int width, int height, GfxImageColorMap* map, const int* mask_colours,
               SpaceStore& spaces, const StoredImage& stored)
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
            image.rows = raw_rows(stream, image, false, stored);
            return image;
        }
        if (indexed && bits <= 8 && is_plain_space(static_cast<GfxIndexedColorSpace*>(space)->getBase()) &&
            decodes_plainly(*map, (1 << bits) - 1))
        {
            GfxIndexedColorSpace* table = static_cast<GfxIndexedColorSpace*>(space);
            image.bits = static_cast<uint8_t>(bits);
            image.space = spaces.space_of(*table->getBase());
            image.index_table = index_table_of(*table, bits);
            image.rows = raw_rows(stream, image, false, stored);
            return image;
        }
    }
    // The lines of a colour map are in device colours.
    image.space.channels = static_cast<uint16_t>(is_plain_space(space) ? space->getNComps() : 3);
    image.alpha_first = mask_colours != nullptr;
    image.rows = std::make_shared<MappedRows>(stream, image, map, mask_colours, stored);
    return image;
}

Image stencil_of(Stream* stream, int width, int height, bool inverted, const StoredImage& stored)
{
    Image image;
    image.width = static_cast<uint32_t>(std::max(width, 0));
    image.height = static_cast<uint32_t>(std::max(height, 0));
    image.bits = 1;
    image.rows = raw_rows(stream, image, !inverted, stored);
    return image;
}

GGO_Matrix pixels_to(const Image& image, const GGO_Matrix& unit_square_to_content)
{
    const GGO_Matrix to_square = {{1.0 / image.width, 0, 0, -1.0 / image.height, 0, 1}};
    return multiply(to_square, unit_square_to_content);
}

bool paintable(const Image& image, const GGO_Matrix& unit_square_to_content)
{
    return image.width > 0 && image.height > 0 && finite(unit_square_to_content) &&
           determinant(unit_square_to_content) != 0;
}

}  // namespace orvlog::pdf_client
