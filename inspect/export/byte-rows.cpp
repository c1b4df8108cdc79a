#include "inspect/export/byte-rows.h"

#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::inspect
{

using orvlog::reader::Element;

namespace
{

int digit(char c)
{
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

}  // namespace

bool ByteRows::in_callback() const
{
    return std::ranges::any_of(names_, [](std::string_view name) { return name.ends_with("Fn"); });
}

void ByteRows::open(const Element& element, size_t depth)
{
    put_piece();
    wanted_ = false;
    names_.resize(std::min(names_.size(), depth));
    if (depth == 0)
    {
        images_.start_call();
        ticket_texts_.clear();
        images_before_ = job_.items[static_cast<size_t>(Table::images)];
    }
    const bool outside = !in_callback();
    names_.push_back(element.name);
    images_.open(element, outside);
    if (element.name == "GXC_ColorTickets" && outside)
        ticket_texts_.emplace_back();
    if (element.name == "BufferUInt8")
        start_buffer(element);
    count(element);
}

void ByteRows::count(const Element& element)
{
    if (element.name != "GOP_ImageReadFn" || !element.has("ImageFileName"))
        return;
    side_file_bytes_ += static_cast<uint64_t>(std::max(0, orvlog::reader::read_int(element, "img_returned")));
}

std::string_view ByteRows::kind() const
{
    const std::string_view holder = names_.size() > 1 ? names_[names_.size() - 2] : std::string_view();
    if (holder == "img_buf" || holder == "imp_DirectImageData")
        return "image";
    if (holder == "attr_buf")
        return "attribute";
    if (holder == "GCM_CsdPointer")
        return "profile";
    return holder.starts_with("GFI_") ? "glyph" : "table";
}

void ByteRows::start_buffer(const Element&)
{
    kind_ = kind();
    offset_ = 0;
    ++elements_;
    image_.reset();
    if (images_.owner())
        image_ = images_before_ + static_cast<int64_t>(*images_.owner()) + 1;
    wanted_ = job_.options.content && (kind_ != "glyph" || job_.options.texts);
}

void ByteRows::row(const Element& element, std::string_view row)
{
    if (element.name == "GXC_ColorTickets" && !ticket_texts_.empty())
    {
        ticket_texts_.back().add(row);
        ticket_texts_.back().add("\n");
    }
    if (element.name != "BufferUInt8")
        return;
    if (kind_ == "image")
        image_bytes_ += (row.size() + 1) / 3;
    row_.clear();
    for (size_t at = 0; at + 1 < row.size() && digit(row[at]) >= 0 && digit(row[at + 1]) >= 0; at += 3)
    {
        row_.push_back(static_cast<uint8_t>(digit(row[at]) << 4 | digit(row[at + 1])));
        if (wanted_)
            hex_.append(row.substr(at, 2));
    }
    images_.add(row_);
    if (hex_.size() >= 2 * kPiece)
        put_piece();
}

void ByteRows::put_piece()
{
    if (hex_.empty())
        return;
    const auto size = static_cast<int64_t>(hex_.size() / 2);
    job_.begin(Table::bytes);
    job_.rows.text(kind_).integer(image_).integer(elements_).integer(offset_).integer(size).text(hex_).end();
    offset_ += size;
    hex_.clear();
}

void ByteRows::finish()
{
    put_piece();
}

}  // namespace orvlog::inspect
