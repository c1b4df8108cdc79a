#include "tools/extract/extract-images.h"

#include "orvlog/image/gop-image-geometry.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::tool
{

namespace
{

using orvlog::reader::Children;
using orvlog::reader::Element;

constexpr uint32_t kDeepest = 4096;

const Element* bytes_in(const Element& element, std::string_view holder)
{
    const Element* inside = element.child(holder);
    return inside != nullptr ? inside->child("BufferUInt8") : nullptr;
}

}  // namespace

void TakenImage::end_pass()
{
    if (present.size() > bytes.size())
        bytes.swap(present);
    present.clear();
}

void TakenImages::describe(const Element& element, TakenImage& image)
{
    image.record = records_->image(&element);
    image.color_table.clear();
    for (const uint32_t byte : orvlog::reader::to_uints(element.value("imp_IndexColorTable")))
        image.color_table.push_back(static_cast<uint8_t>(byte));
    ORVLOG_ImageSize size{};
    const bool known = image.record != nullptr && image.record->imp_Image != nullptr &&
                       ORVLOG_ImageGeometry(image.record, nullptr, &size) != 0;
    image.row_bytes = known ? size.row_bytes : 0;
    image.rows = known ? size.rows : 0;
}

void TakenImages::operand(const Element& element)
{
    // Images without a number get some that no callback has.
    const uint32_t told = orvlog::reader::read_uint(element, "Id");
    const uint32_t id = told != 0 ? told : UINT32_MAX - unnumbered_++;
    TakenImage& image = images_[id];
    image = {};
    image.operand = told;
    describe(element, image);
    if (std::ranges::find(order_, &image) == order_.end())
        order_.push_back(&image);
    if (const Element* buffer = bytes_in(element, "imp_DirectImageData"); buffer != nullptr)
        image.bytes.assign(buffer->bytes.begin(), buffer->bytes.end());
    else if (element.has("imp_DirectImageFileName"))
        image.bytes = side_file_(orvlog::reader::to_text(element.value("imp_DirectImageFileName")), 0, UINT64_MAX);
}

void TakenImages::read(const Element& element, TakenImage& image)
{
    const int64_t returned = orvlog::reader::read_int(element, "img_returned");
    std::vector<uint8_t> bytes;
    if (const Element* buffer = bytes_in(element, "img_buf"); buffer != nullptr)
        bytes.assign(buffer->bytes.begin(), buffer->bytes.end());
    else if (element.has("ImageFileName") && returned > 0)
    {
        const std::string name = orvlog::reader::to_text(element.value("ImageFileName"));
        uint64_t& end = file_ends_[name];
        bytes = side_file_(name, end, static_cast<uint64_t>(returned));
        end += static_cast<uint64_t>(returned);
    }
    const uint32_t width = image.record != nullptr && image.record->imp_Image != nullptr
                               ? image.record->imp_Image->im_ImageWidthPixels
                               : 0;
    const uint64_t skipped =
        width != 0 ? orvlog::reader::read_uint(element, "skip_pixels") / width * image.row_bytes : 0;
    if (skipped != 0 && skipped <= image.row_bytes * image.rows && image.present.size() + skipped <= (size_t{1} << 30))
        image.present.resize(image.present.size() + skipped);
    const int64_t step = orvlog::reader::read_int(element, "img_row_step");
    if (image.row_bytes == 0 || step <= static_cast<int64_t>(image.row_bytes))
    {
        image.present.insert(image.present.end(), bytes.begin(), bytes.end());
        return;
    }
    for (size_t at = 0; at < bytes.size(); at += static_cast<size_t>(step))
    {
        const size_t count = std::min<size_t>(image.row_bytes, bytes.size() - at);
        const auto row = bytes.begin() + static_cast<ptrdiff_t>(at);
        image.present.insert(image.present.end(), row, row + static_cast<ptrdiff_t>(count));
    }
}

void TakenImages::callback(const Element& element)
{
    const auto known = images_.find(orvlog::reader::read_uint(element, "Id"));
    if (known == images_.end())
        return;
    TakenImage& image = known->second;
    if (element.name == "GOP_ImagePrepareFn")
    {
        const Element* left = element.child("GOP_OperandImagePointer");
        if (left == nullptr)
            return;
        const uint32_t operand = image.operand;
        TakenImage& prepared = images_[orvlog::reader::read_uint(*left, "Id")];
        prepared.end_pass();
        prepared.operand = operand;
        describe(*left, prepared);
    }
    else if (element.name == "GOP_ImageReadFn")
        read(element, image);
    else if (element.name == "GOP_ImageFinishFn" || element.name == "GOP_ImageResetFn")
        image.end_pass();
    else if (element.has("async_img_log_file_name"))
    {
        const auto file = kept_log_(orvlog::reader::to_text(element.value("async_img_log_file_name")));
        if (file == nullptr)
            return;
        orvlog::reader::ElementReader own(*file, orvlog::reader::LogForm::fragment);
        while (const Element* one = own.next())
            if (!one->has("async_img_log_file_name"))
                callback(*one);
    }
}

void TakenImages::walk(const Element& element, uint32_t depth)
{
    for (const Element& child : Children(element))
        if (child.name == "GOP_OperandImagePointer")
            operand(child);
        else if (child.name.starts_with("GOP_Image") && child.name.ends_with("Fn"))
            callback(child);
        else if (depth < kDeepest && !child.name.starts_with("GFI_"))
            walk(child, depth + 1);
}

// An image is shown by the record that delivered most of its bytes.
const std::vector<const TakenImage*>& TakenImages::take(const Element& call)
{
    images_.clear();
    file_ends_.clear();
    order_.clear();
    unnumbered_ = 0;
    arena_.clear();
    records_ = std::make_unique<orvlog::reader::RecordReader>(arena_);
    walk(call, 0);
    for (auto& [id, image] : images_)
        image.end_pass();
    for (const TakenImage*& shown : order_)
    {
        for (const auto& [id, image] : images_)
            if (image.operand == shown->operand && image.operand != 0 && image.bytes.size() > shown->bytes.size())
                shown = &image;
    }
    return order_;
}

}  // namespace orvlog::tool
