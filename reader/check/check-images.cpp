#include "reader/check/check-images.h"

#include "orvlog/image/gop-image-geometry.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

constexpr size_t kMostImages = 1 << 16;

std::string image_name(uint32_t id)
{
    return "image " + std::to_string(id);
}

std::string shorter(uint64_t found, uint64_t due)
{
    return " has " + std::to_string(found) + " bytes, due were " + std::to_string(due);
}

uint64_t size_of(std::istream& file)
{
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    return size > 0 ? static_cast<uint64_t>(size) : 0;
}

}  // namespace

void CheckImages::measure(const Element& image, Image& to)
{
    Arena arena;
    RecordReader records(arena);
    const GOP_OperandImagePointer* record = records.image(&image);
    ORVLOG_ImageSize size{};
    if (record == nullptr || record->imp_Image == nullptr)
        return;
    to.width = record->imp_Image->im_ImageWidthPixels;
    if (ORVLOG_ImageGeometry(record, nullptr, &size) == 0)
        return;
    to.rows = size.rows;
    to.row_bytes = size.row_bytes;
}

void CheckImages::start_call()
{
    images_.clear();
    files_.clear();
}

void CheckImages::direct(const Element& image, const Image& size)
{
    const uint64_t due = size.rows * size.row_bytes;
    const uint32_t id = read_uint(image, "Id");
    const Element* data = image.child("imp_DirectImageData");
    const Element* buffer = data != nullptr ? data->child("BufferUInt8") : nullptr;
    if (data != nullptr)
    {
        const uint64_t found = buffer != nullptr ? buffer->data_size : 0;
        if (found < due)
            report_(image.place, image_name(id) + shorter(found, due));
    }
    else if (image.has("imp_DirectImageFileName"))
    {
        FileUse& use = files_[to_text(image.value("imp_DirectImageFileName"))];
        use = {image.place, std::max(use.bytes, due)};
    }
}

void CheckImages::operand(const Element& image)
{
    const uint32_t id = read_uint(image, "Id");
    if (id == 0)
        unnumbered_ = true;
    else if (id % 10 != 0 || id <= last_operand_ || (id != last_operand_ + 10 && !unnumbered_))
        report_(image.place, "an image has the Id " + std::to_string(id) + " where " +
                                 std::to_string(last_operand_ + 10) + " was due");
    Image size;
    measure(image, size);
    if (id != 0)
    {
        last_operand_ = id / 10 * uint64_t{10};
        unnumbered_ = false;
        if (images_.size() < kMostImages)
            images_[id] = size;
    }
    if (read_bool(image, "imp_DirectImage") != 0)
        direct(image, size);
}

void CheckImages::callback(const Element& callback)
{
    const uint32_t id = read_uint(callback, "Id");
    const auto known = images_.find(id);
    if (known == images_.end() && id / 10 * uint64_t{10} > last_operand_)
    {
        report_(callback.place, image_name(id) + " is not known");
        return;
    }
    if (images_.size() >= kMostImages)
        return;
    Image& image = images_[id];
    if (callback.name == "GOP_ImagePrepareFn")
    {
        const Element* left = callback.child("GOP_OperandImagePointer");
        if (left == nullptr)
            return;
        Image prepared = image;
        prepared.delivered = prepared.pixels = 0;
        prepared.ended = prepared.read = false;
        measure(*left, prepared);
        images_[read_uint(*left, "Id")] = prepared;
    }
    else if (callback.name == "GOP_ImageReadFn")
        read(callback, image);
    else if (callback.name == "GOP_ImageFinishFn")
        finish(callback, image);
    else if (callback.name == "GOP_ImageResetFn")
        image.delivered = image.pixels = 0;
    else if (callback.has("async_img_log_file_name") && options_.open_file && !in_kept_log_)
        follow(callback);
}

void CheckImages::read(const Element& callback, Image& image)
{
    const Element* holder = callback.child("img_buf");
    const Element* buffer = holder != nullptr ? holder->child("BufferUInt8") : nullptr;
    const int64_t told = read_int(callback, "img_returned");
    const uint64_t returned = told > 0 ? static_cast<uint64_t>(told) : 0;
    const bool good = read_bool(callback, "return") != 0;
    const bool beside = callback.has("ImageFileName");
    const uint64_t found = beside ? returned : buffer != nullptr ? buffer->data_size : 0;
    if (beside && good)
    {
        FileUse& use = files_[to_text(callback.value("ImageFileName"))];
        use = {callback.place, use.bytes + returned};
    }
    const int64_t asked = read_int(callback, "img_row_step");
    const uint64_t step = asked > 0 ? static_cast<uint64_t>(asked) : 0;
    const uint64_t bytes = holder == nullptr && !beside ? returned : found;
    image.read = true;
    image.delivered += bytes;
    image.pixels += image.row_bytes > 0 && step > image.row_bytes ? (bytes + step - 1) / step * image.row_bytes : bytes;
    image.pixels += image.width > 0 ? read_uint(callback, "skip_pixels") / image.width * image.row_bytes : 0;
    image.ended = image.ended || !good || returned == 0;
}

// A renderer may stop early; an image that ends early is short, which its client may do.
void CheckImages::finish(const Element& callback, Image& image)
{
    const uint64_t due = image.rows * image.row_bytes;
    if (image.read && image.ended && image.pixels < due)
        note_(callback.place, image_name(read_uint(callback, "Id")) + shorter(image.pixels, due));
    image.delivered = image.pixels = 0;
    image.ended = image.read = false;
}

// The log that a kept image has of its own.
void CheckImages::follow(const Element& callback)
{
    const std::string name = to_text(callback.value("async_img_log_file_name"));
    const LogFile file = options_.open_file(name, LogFileKind::image_log);
    if (file.stream == nullptr)
    {
        report_(callback.place, "the log " + name + " of a kept image " + file.why);
        return;
    }
    ElementReader own(*file.stream, LogForm::fragment, Data::skip);
    const Place place = callback.place;
    const Report report = report_;
    const Report note = note_;
    const auto within = [&](const Report& outer) -> Report
    {
        return [&](Place inside, const std::string& text)
        { outer(place, name + ", line " + std::to_string(inside.line) + ": " + text); };
    };
    report_ = within(report);
    note_ = within(note);
    own.on_damage = [this](const Damage& damage) { report_(damage.place, damage.text); };
    in_kept_log_ = true;
    while (const Element* element = own.next())
        this->callback(*element);
    in_kept_log_ = false;
    report_ = report;
    note_ = note;
}

void CheckImages::finish_call()
{
    for (const auto& [name, use] : files_)
    {
        if (!options_.open_file)
            break;
        const LogFile file = options_.open_file(name, LogFileKind::image_data);
        if (file.stream == nullptr)
            report_(use.place, "the file " + name + " " + file.why);
        else if (const uint64_t size = size_of(*file.stream); size < use.bytes)
            report_(use.place, "the file " + name + shorter(size, use.bytes));
    }
    files_.clear();
}

}  // namespace orvlog::reader
