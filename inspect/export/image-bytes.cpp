#include "inspect/export/image-bytes.h"

#include "reader/tree/values.h"

namespace orvlog::inspect
{

using orvlog::reader::Element;

void ImageBytes::start_call()
{
    images_.clear();
    by_id_.clear();
    prepared_.reset();
    read_.reset();
    owner_.reset();
    counts_ = false;
}

ImageBytes::Image* ImageBytes::image_of(const Element& callback)
{
    const auto known = by_id_.find(orvlog::reader::read_uint(callback, "Id"));
    return known != by_id_.end() ? &images_[known->second] : nullptr;
}

void ImageBytes::callback(const Element& element)
{
    prepared_.reset();
    read_.reset();
    Image* image = image_of(element);
    if (image == nullptr)
        return;
    const auto number = static_cast<size_t>(image - images_.data());
    if (element.name == "GOP_ImagePrepareFn")
        prepared_ = number;
    if (element.name != "GOP_ImageReadFn")
    {
        image->closed = image->closed || image->bytes > 0;
        return;
    }
    read_ = number;
    if (image->closed)
        return;
    const bool good = orvlog::reader::read_bool(element, "return") != 0;
    const int32_t returned = orvlog::reader::read_int(element, "img_returned");
    image->closed = good && returned == 0;
    image->skipped = image->skipped || !good || orvlog::reader::read_uint(element, "skip_pixels") != 0 ||
                     element.has("ImageFileName");
}

void ImageBytes::open(const Element& element, bool outside)
{
    if (element.name == "BufferUInt8")
        return;
    owner_.reset();
    counts_ = false;
    if (element.name == "GOP_OperandImagePointer")
    {
        const uint32_t id = orvlog::reader::read_uint(element, "Id");
        if (outside)
        {
            by_id_.insert_or_assign(id, images_.size());
            images_.emplace_back();
        }
        else if (prepared_)
            by_id_.insert_or_assign(id, *prepared_);
    }
    else if (element.name.starts_with("GOP_Image") && element.name.ends_with("Fn"))
        callback(element);
    else if (element.name == "img_buf")
    {
        owner_ = read_;
        counts_ = owner_ && !images_[*owner_].closed;
    }
    else if (element.name == "attr_buf")
        owner_ = read_;
    else if (element.name == "imp_DirectImageData" && outside && !images_.empty())
    {
        owner_ = images_.size() - 1;
        counts_ = true;
    }
}

void ImageBytes::add(std::span<const uint8_t> bytes)
{
    if (!counts_)
        return;
    images_[*owner_].digest.add(bytes);
    images_[*owner_].bytes += bytes.size();
}

ImageData ImageBytes::take(size_t number)
{
    if (number >= images_.size())
        return {};
    Image& image = images_[number];
    ImageData data{image.bytes, {}};
    if (image.bytes > 0 && !image.skipped)
        data.hash = image.digest.take();
    return data;
}

}  // namespace orvlog::inspect
