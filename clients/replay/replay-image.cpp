#include "clients/replay/replay-image.h"

#include "orvlog/image/gop-image-geometry.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>

namespace orvlog::replay
{

namespace
{

using reader::Element;

constexpr size_t kMostPadding = size_t{1} << 28;

std::vector<uint8_t> bytes_of(const Element& read, std::string_view holder, std::string_view file,
                              const SideFile& side_file, size_t& place, int32_t returned)
{
    const Element* inside = read.child(holder);
    const Element* buffer = inside != nullptr ? inside->child("BufferUInt8") : nullptr;
    if (buffer != nullptr)
        return {buffer->bytes.begin(), buffer->bytes.end()};
    if (!read.has(file) || returned <= 0)
        return {};
    const size_t begin = place;
    place += static_cast<size_t>(returned);
    return side_file(reader::to_text(read.value(file)), begin, static_cast<uint64_t>(returned));
}

// The size of a row, and of all rows; nothing if it cannot be told.
std::optional<ORVLOG_ImageSize> size_of(const GOP_OperandImagePointer* record)
{
    ORVLOG_ImageSize size{};
    if (record->imp_Image == nullptr || ORVLOG_ImageGeometry(record, nullptr, &size) == 0)
        return std::nullopt;
    return size;
}

// Channels as a renderer may count them, which knows other color spaces than the log's.
uint64_t most_channels(const GOP_OperandImagePointer& record)
{
    const GOP_OperandImage& image = *record.imp_Image;
    const GCM_Csd* csd = record.imp_Csd.cp_Csd;
    const uint64_t alphas = (image.im_Flags & GOP_OP_FLAGS_HAS_ALPHA) != 0 ? 1 : 0;
    const uint32_t space = GOP_COLOR_INFO_SPACE(image.im_Operand.go_ColorInfo);
    if (space == GOP_OCS_RENDER && image.im_NumNonalphaChans > 0)
        return image.im_NumNonalphaChans + alphas;
    if (space == GOP_OCS_OTHER && csd != nullptr && csd->csd_NumBaseChans + csd->csd_NumNamedChans > 0)
        return uint64_t{csd->csd_NumBaseChans} + csd->csd_NumNamedChans + alphas;
    const uint32_t family = image.im_Operand.go_ColorSpaceFamily;
    return (family == GCM_CSF_GRAY ? 1U : family == GCM_CSF_RGB ? 3U : 4U) + alphas;
}

// The bytes that a renderer reads of an image in memory. Its rows may lie further apart than they are long, of which a
// log tells nothing but their bytes.
uint64_t reach_of(const GOP_OperandImagePointer& record)
{
    const GOP_OperandImage& image = *record.imp_Image;
    if (image.im_ImageEncoding > GOP_ENCODING_PLANAR)
        return 0;
    const uint64_t channels = most_channels(record);
    const uint32_t code = image.im_Operand.go_Count;
    const uint64_t bits = code <= GNC_BMP_DEPTH_32_FL ? uint64_t{1} << code : 32;
    const bool indexed = (image.im_Flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0;
    const bool planar = image.im_ImageEncoding == GOP_ENCODING_PLANAR && !indexed;
    const double rows = static_cast<double>(image.im_ImageHeightPixels) * (planar ? static_cast<double>(channels) : 1);
    const uint64_t row = (image.im_ImageWidthPixels * bits * (indexed || planar ? 1 : channels) + 7) / 8;
    const double reach = rows * static_cast<double>(std::max<uint64_t>(row, record.imp_RowStep));
    return reach < static_cast<double>(uint64_t{1} << 62) ? static_cast<uint64_t>(reach) : uint64_t{1} << 62;
}

}  // namespace

struct ReplayImage::Callbacks
{
    static ReplayImage* self(void* context)
    {
        return static_cast<ReplayImage*>(context);
    }

    static uint32_t prepare(GOP_OperandImagePointer** operand_p, uint32_t, uint32_t, uint32_t, float, float, float,
                            float, uint32_t, uint32_t, uint32_t)
    {
        ReplayImage* image = self((*operand_p)->imp_Context);
        image->start_pass(true);
        const ImagePass* pass = image->pass();
        if (pass == nullptr)
            return image->direct_.empty() ? 0 : 1;
        GOP_OperandImagePointer* left = image->left_by_prepare_[image->next_pass_ - 1];
        if (left != nullptr && pass->replaced)
            *operand_p = left;
        else if (left != nullptr)
        {
            GOP_OperandImagePointer* mine = *operand_p;
            left->imp_DirectImage = mine->imp_DirectImage;
            left->imp_IndexColorTable = mine->imp_IndexColorTable;
            *mine = *left;
        }
        return pass->prepare_result ? 1 : 0;
    }

    static uint32_t read(GOP_OperandImagePointer*, void* context, uint32_t skip_pixels, uint8_t* image_buffer,
                         uint32_t image_size, int32_t img_row_step, int32_t* img_returned, uint8_t* attr_buffer,
                         uint32_t attr_size, int32_t, int32_t* attr_returned)
    {
        ReplayImage* image = self(context);
        *img_returned = 0;
        if (attr_buffer != nullptr && attr_returned != nullptr)
            *attr_returned = 0;
        uint32_t result = 1;
        if (!image->answer_as_logged(skip_pixels, image_buffer, image_size, img_row_step, img_returned, attr_buffer,
                                     attr_size, attr_returned, &result))
            image->answer_from_pixels(skip_pixels, image_buffer, image_size, img_row_step, img_returned);
        return result;
    }

    static uint32_t finish(GOP_OperandImagePointer*, void* context)
    {
        const ImagePass* pass = self(context)->pass();
        return pass == nullptr || pass->finish_result ? 1 : 0;
    }

    static uint32_t reset(GOP_OperandImagePointer*, void* context)
    {
        self(context)->start_pass(false);
        return 1;
    }

    static uint32_t keep(GOP_OperandImagePointer* operand)
    {
        ReplayImage* image = self(operand->imp_Context);
        const std::vector<bool>& told = image->keep_results_;
        // Where it is asked more often than in the job, the last answer holds; where it never was, it agrees.
        const bool kept = told.empty() || told[std::min(image->next_keep_++, told.size() - 1)];
        image->kept_ |= kept;
        image->refused_ |= !kept;
        return kept ? 1 : 0;
    }

    static void* release(GOP_OperandImagePointer* operand)
    {
        self(operand->imp_Context)->kept_ = false;
        self(operand->imp_Context)->refused_ = false;
        return nullptr;
    }
};

ReplayImage::ReplayImage(GOP_OperandImagePointer* record, const Element& element) : record_(record)
{
    set_callbacks(record, element);
    const std::optional<ORVLOG_ImageSize> size = size_of(record);
    row_bytes_ = size ? size->row_bytes : 0;
}

void ReplayImage::set_callbacks(GOP_OperandImagePointer* record, const Element& element)
{
    record->imp_ImagePrepareFn = Callbacks::prepare;
    record->imp_ImageReadFn = Callbacks::read;
    record->imp_ImageFinishFn = Callbacks::finish;
    record->imp_ImageResetFn = reader::read_bool(element, "imp_ImageResetFn") != 0 ? Callbacks::reset : nullptr;
    record->imp_ImageKeepFn = element.has("imp_ImageKeepFn") ? Callbacks::keep : nullptr;
    record->imp_ImageReleaseFn = element.has("imp_ImageReleaseFn") ? Callbacks::release : nullptr;
    record->imp_Context = this;
}

bool ReplayImage::set_direct(std::vector<uint8_t> bytes)
{
    const std::optional<ORVLOG_ImageSize> size = size_of(record_);
    const uint64_t wanted = size ? uint64_t{size->rows} * size->row_bytes : bytes.size();
    const bool enough = wanted <= bytes.size();
    const uint64_t room = std::max(wanted, record_->imp_Image != nullptr ? reach_of(*record_) : 0);
    if (room > bytes.size() + kMostPadding)
        return false;
    direct_ = std::move(bytes);
    direct_.resize(std::max<size_t>({direct_.size(), room, 1}));
    record_->imp_DirectImage = direct_.data();
    return enough;
}

void ReplayImage::begin_pass(bool prepared)
{
    passes_.emplace_back().prepared = prepared;
    left_by_prepare_.push_back(nullptr);
}

void ReplayImage::add(const Element& callback, const SideFile& side_file, reader::RecordReader& records)
{
    const bool result = reader::read_bool(callback, "return") != 0;
    if (callback.name == "GOP_ImagePrepareFn")
    {
        begin_pass(true);
        ImagePass& pass = passes_.back();
        pass.prepare_result = result;
        pass.replaced = reader::read_bool(callback, "operand_p_replaced") != 0;
        const Element* left = callback.child("GOP_OperandImagePointer");
        GOP_OperandImagePointer* record = records.image(left);
        if (record != nullptr)
            set_callbacks(record, *left);
        left_by_prepare_.back() = record;
    }
    else if (callback.name == "GOP_ImageResetFn")
        begin_pass(false);
    else if (callback.name == "GOP_ImageKeepFn")
        keep_results_.push_back(result);
    else if (callback.name == "GOP_ImageFinishFn" && !passes_.empty())
        passes_.back().finish_result = result;
    if (callback.name != "GOP_ImageReadFn")
        return;
    if (passes_.empty())
        begin_pass(false);
    ImagePass& pass = passes_.back();
    ImagePass::Read read;
    read.result = result;
    read.with_attributes = callback.has("attr_returned");
    read.skip_pixels = reader::read_uint(callback, "skip_pixels");
    read.row_step = reader::read_int(callback, "img_row_step");
    read.returned = reader::read_int(callback, "img_returned");
    read.attr_row_step = reader::read_int(callback, "attr_row_step");
    read.attr_returned = reader::read_int(callback, "attr_returned");
    size_t& place = file_places_[std::string(callback.value("ImageFileName"))];
    read.bytes = bytes_of(callback, "img_buf", "ImageFileName", side_file, place, read.returned);
    size_t& attr_place = file_places_[std::string(callback.value("AttrFileName"))];
    read.attributes = bytes_of(callback, "attr_buf", "AttrFileName", side_file, attr_place, read.attr_returned);
    pass.bytes += read.bytes.size();
    pass.reads.push_back(std::move(read));
}

const ImagePass* ReplayImage::pass() const
{
    return next_pass_ > 0 && next_pass_ <= passes_.size() ? &passes_[next_pass_ - 1] : nullptr;
}

// The next pass that began in this way; the last one again if there are no more.
void ReplayImage::start_pass(bool by_prepare)
{
    size_t next = next_pass_;
    while (next < passes_.size() && passes_[next].prepared != by_prepare)
        ++next;
    by_pixels_ = next >= passes_.size();
    next_pass_ = by_pixels_ ? passes_.size() : next + 1;
    next_read_ = 0;
    next_byte_ = 0;
}

bool ReplayImage::answer_as_logged(uint32_t skip_pixels, uint8_t* buffer, uint32_t size, int32_t row_step,
                                   int32_t* returned, uint8_t* attributes, uint32_t attr_size, int32_t* attr_returned,
                                   uint32_t* result)
{
    const ImagePass* pass = this->pass();
    if (by_pixels_ || pass == nullptr || pass->reads.empty())
        return false;
    const ImagePass::Read* next = next_read_ < pass->reads.size() ? &pass->reads[next_read_] : nullptr;
    const bool same = next != nullptr && next->skip_pixels == skip_pixels && next->row_step == row_step &&
                      next->bytes.size() <= size && next->with_attributes == (attributes != nullptr) &&
                      next->attributes.size() <= (attributes != nullptr ? attr_size : 0);
    if (!same)
    {
        // From here on the rows that follow those already delivered.
        by_pixels_ = true;
        next_byte_ = 0;
        for (size_t i = 0; i < next_read_; ++i)
            next_byte_ += pixel_bytes(pass->reads[i]);
        return false;
    }
    const ImagePass::Read& read = *next;
    ++next_read_;
    if (read.bytes.empty() && read.returned > 0)
        fill_from_pixels(buffer, std::min(size, static_cast<uint32_t>(read.returned)), read);
    std::copy(read.bytes.begin(), read.bytes.end(), buffer);
    if (attributes != nullptr)
        std::copy(read.attributes.begin(), read.attributes.end(), attributes);
    *returned = read.returned;
    if (attributes != nullptr && attr_returned != nullptr)
        *attr_returned = read.attr_returned;
    *result = read.result ? 1 : 0;
    return true;
}

std::vector<uint8_t> ReplayImage::pixels() const
{
    if (!direct_.empty())
        return direct_;
    const auto best = std::ranges::max_element(passes_, {}, &ImagePass::bytes);
    std::vector<uint8_t> rows;
    if (best == passes_.end())
        return rows;
    rows.reserve(best->bytes);
    for (const ImagePass::Read& read : best->reads)
    {
        const auto step = static_cast<size_t>(std::max(read.row_step, 0));
        if (row_bytes_ == 0 || step <= row_bytes_)
        {
            rows.insert(rows.end(), read.bytes.begin(), read.bytes.end());
            continue;
        }
        for (size_t at = 0; at < read.bytes.size(); at += step)
        {
            const auto row = read.bytes.begin() + static_cast<ptrdiff_t>(at);
            rows.insert(rows.end(), row, row + static_cast<ptrdiff_t>(std::min(row_bytes_, read.bytes.size() - at)));
        }
    }
    return rows;
}

// A read whose bytes the log doesn't have: side files don't get what is read behind a finish.
void ReplayImage::fill_from_pixels(uint8_t* buffer, uint32_t size, const ImagePass::Read& read)
{
    const uint32_t width = record_->imp_Image != nullptr ? record_->imp_Image->im_ImageWidthPixels : 0;
    next_byte_ += width != 0 ? size_t{read.skip_pixels / width} * row_bytes_ : 0;
    int32_t filled = 0;
    std::memset(buffer, 0, size);
    answer_from_pixels(0, buffer, size, read.row_step, &filled);
}

// How far a read went on in the pixels.
size_t ReplayImage::pixel_bytes(const ImagePass::Read& read) const
{
    const size_t size = std::max(read.bytes.size(), static_cast<size_t>(std::max(read.returned, 0)));
    const auto step = static_cast<size_t>(std::max(read.row_step, 0));
    const uint32_t width = record_->imp_Image != nullptr ? record_->imp_Image->im_ImageWidthPixels : 0;
    const size_t skipped = width != 0 ? size_t{read.skip_pixels / width} * row_bytes_ : 0;
    return skipped + (row_bytes_ == 0 || step <= row_bytes_ ? size : (size + step - 1) / step * row_bytes_);
}

// As many rows as fit, each as far from the last as was asked for.
void ReplayImage::answer_from_pixels(uint32_t skip_pixels, uint8_t* buffer, uint32_t size, int32_t row_step,
                                     int32_t* returned)
{
    if (pixels_.empty())
        pixels_ = pixels();
    const uint32_t width = record_->imp_Image != nullptr ? record_->imp_Image->im_ImageWidthPixels : 0;
    const size_t row = row_bytes_ != 0 ? row_bytes_ : size;
    const size_t step = std::max<size_t>(row, row_step > 0 ? static_cast<size_t>(row_step) : 0);
    next_byte_ += width != 0 ? skip_pixels / width * row : 0;
    size_t to = 0;
    while (next_byte_ < pixels_.size() && to + row <= size && to + row <= INT32_MAX)
    {
        const size_t count = std::min(row, pixels_.size() - next_byte_);
        const size_t taken = count == row && row_bytes_ != 0 ? step : count;
        std::memcpy(buffer + to, pixels_.data() + next_byte_, count);
        std::memset(buffer + to + count, 0, std::min(taken, size - to) - count);
        next_byte_ += count;
        to += taken;
    }
    *returned = static_cast<int32_t>(std::min<size_t>(to, size));
}

}  // namespace orvlog::replay
