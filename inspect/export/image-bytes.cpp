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
    if (element.name == "GOP_ImageReadFn" && element.has("ImageFileName"))
        read_beside(element, image);
    if (image == nullptr)
        return;
    const auto number = static_cast<size_t>(image - images_.data());
    if (element.name == "GOP_ImagePrepareFn")
        prepared_ = number;
    if (element.name == "GOP_ImageReadFn")
    {
        read_ = number;
        read(element, *image);
    }
    else if (element.name != "GOP_ImageKeepFn")
        image->closed = image->closed || image->bytes > 0;
    if (element.has("async_img_log_file_name") && !in_kept_)
        read_kept(orvlog::reader::to_text(element.value("async_img_log_file_name")), number);
}

void ImageBytes::read(const Element& element, Image& image)
{
    if (image.closed)
        return;
    const bool good = orvlog::reader::read_bool(element, "return") != 0;
    image.closed = good && orvlog::reader::read_int(element, "img_returned") == 0;
    image.skipped = image.skipped || !good || orvlog::reader::read_uint(element, "skip_pixels") != 0;
}

// What the reads of an image left in its file stands there one behind the other, counted or not.
void ImageBytes::read_beside(const Element& element, Image* image)
{
    const int32_t returned = orvlog::reader::read_int(element, "img_returned");
    if (returned <= 0)
        return;
    BesideFiles::Take take;
    if (image != nullptr && !image->closed)
        take = [image](std::span<const uint8_t> bytes)
        {
            image->digest.add(bytes);
            image->bytes += bytes.size();
        };
    const bool there =
        files_.next(orvlog::reader::to_text(element.value("ImageFileName")), static_cast<uint64_t>(returned), take);
    if (take && !there)
        image->skipped = true;
}

// The callbacks of an image that was kept, as far as its job has left them.
void ImageBytes::read_kept(std::string_view name, size_t image)
{
    const std::unique_ptr<std::istream> log = files_.kept_log(name);
    if (log == nullptr)
        return;
    in_kept_ = true;
    orvlog::reader::ElementReader callbacks(*log, orvlog::reader::LogForm::fragment);
    callbacks.on_damage = [this, image](const orvlog::reader::Damage&) { images_[image].skipped = true; };
    while (const Element* element = callbacks.next())
    {
        open(*element, false);
        for (const Element& child : orvlog::reader::Children(*element))
        {
            open(child, false);
            if (const Element* buffer = child.child("BufferUInt8"); buffer != nullptr)
                add(buffer->bytes);
        }
    }
    in_kept_ = false;
    prepared_.reset();
    read_.reset();
}

void ImageBytes::direct(const Element& element, Image& image)
{
    const auto take = [&image](std::span<const uint8_t> bytes)
    {
        image.digest.add(bytes);
        image.bytes += bytes.size();
    };
    image.skipped = !files_.all(orvlog::reader::to_text(element.value("imp_DirectImageFileName")), take);
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
            if (element.has("imp_DirectImageFileName"))
                direct(element, images_.back());
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
