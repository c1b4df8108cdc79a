// The files that a log names, in a log of which calls are left out.

#include "inspect/reduce/trimmed-inserts.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

using reader::Event;
using reader::LogFileKind;

uint64_t size_of(std::istream& file)
{
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    file.clear();
    return size > 0 ? static_cast<uint64_t>(size) : 0;
}

// The number in "PREFIX-img-10.bin".
uint64_t number_in(const std::string& name)
{
    const size_t dash = name.find_last_of('-');
    return dash == std::string::npos ? 0 : reader::to_uint(name.substr(dash + 1, name.find_last_of('.') - dash - 1));
}

}  // namespace

void TrimmedText::miss(const std::string& line)
{
    ++missing_;
    if (options_.complain)
        options_.complain(line);
}

void TrimmedText::edit_files(const Event& event, TagEdit& tag, std::string_view text)
{
    if (!options_.open_file)
        return;
    if (event.name == "GOP_OperandImagePointer" && find_attribute(event, "imp_DirectImageFileName") != nullptr)
        edit_direct(event, tag, text);
    else if (event.name == "GOP_ImageReadFn" && !event.self_closed)
        edit_read(event, tag, text);
    else if (event.name == "GOP_ImageKeepFn" && !event.self_closed && kept_image_ == nullptr)
        begin_keep(event, tag);
}

// Gives the file its new name, if it has one.
bool TrimmedText::take(const Event& event, const char* attribute_name, const char* kind, TagEdit& tag)
{
    const std::string name = reader::to_text(attribute(event, attribute_name));
    auto known = renamed_.find(name);
    if (known == renamed_.end())
    {
        const Renumber::Image image = numbers_.image(static_cast<uint32_t>(reader::to_uint(attribute(event, "Id"))));
        const uint64_t before = number_in(name);
        const bool near = image.now != 0 && before >= image.before && before < uint64_t{image.before} + 10;
        const uint64_t due = near ? image.now + (before - image.before) : image.now;
        known = renamed_.emplace(name, options_.take_file(name, kind, due)).first;
        missing_ += known->second.empty() ? 1 : 0;
    }
    if (!known->second.empty())
        tag.set(attribute_name, known->second);
    return !known->second.empty();
}

// Null if the file can't be read.
std::unique_ptr<TrimmedText::Insert> TrimmedText::bytes_of(const std::string& name, std::string_view indent,
                                                           uint64_t begin, uint64_t count)
{
    reader::LogFile file = options_.open_file(name, LogFileKind::image_data);
    if (file.stream == nullptr)
    {
        miss("the file " + name + " " + file.why);
        return nullptr;
    }
    const uint64_t size = size_of(*file.stream);
    const uint64_t there = begin < size ? std::min(count, size - begin) : 0;
    if (count != UINT64_MAX && there < count)
        miss("the file " + name + " is too short");
    file.stream->seekg(static_cast<std::streamoff>(std::min(begin, size)));
    return std::make_unique<BytesInsert>(std::move(file.stream), there, std::string(indent));
}

void TrimmedText::edit_direct(const Event& event, TagEdit& tag, std::string_view text)
{
    if (options_.take_file)
    {
        take(event, "imp_DirectImageFileName", "dir", tag);
        return;
    }
    const std::string indent(indent_of(text) + 2, ' ');
    std::unique_ptr<Insert> bytes =
        bytes_of(reader::to_text(attribute(event, "imp_DirectImageFileName")), indent + "  ", 0, UINT64_MAX);
    if (bytes == nullptr)
        return;
    tag.remove("imp_DirectImageFileName");
    inserts_.push_back(std::make_unique<TextInsert>(indent + "<imp_DirectImageData>\n"));
    inserts_.push_back(std::move(bytes));
    inserts_.push_back(std::make_unique<TextInsert>(indent + "</imp_DirectImageData>\n"));
}

void TrimmedText::edit_read(const Event& event, TagEdit& tag, std::string_view text)
{
    struct Data
    {
        const char* file;
        const char* returned;
        const char* element;
        const char* kind;
    };
    for (const Data& data : {Data{"ImageFileName", "img_returned", "img_buf", "img"},
                             Data{"AttrFileName", "attr_returned", "attr_buf", "attr"}})
    {
        if (find_attribute(event, data.file) == nullptr)
            continue;
        if (options_.take_file)
        {
            take(event, data.file, data.kind, tag);
            continue;
        }
        const std::string name = reader::to_text(attribute(event, data.file));
        const int64_t told = reader::to_int(attribute(event, data.returned));
        const uint64_t count = told > 0 ? static_cast<uint64_t>(told) : 0;
        const std::string indent(indent_of(text) + 2, ' ');
        std::unique_ptr<Insert> bytes = bytes_of(name, indent + "  ", offsets_[name], count);
        offsets_[name] += count;
        if (bytes == nullptr)
            continue;
        tag.remove(data.file);
        inserts_.push_back(std::make_unique<TextInsert>(indent + "<" + data.element + ">\n"));
        inserts_.push_back(std::move(bytes));
        inserts_.push_back(std::make_unique<TextInsert>(indent + "</" + data.element + ">\n"));
    }
}

// The log of the image comes behind this element, as if it had been merged.
void TrimmedText::begin_keep(const Event& event, TagEdit& tag)
{
    if (find_attribute(event, "async_img_log_file_name") == nullptr)
        return;
    const std::string name = reader::to_text(attribute(event, "async_img_log_file_name"));
    // The logger keeps no image from within a kept one. Such logs could lead back to themselves.
    if (in_fragment_)
        return miss("the log " + name + " of a kept image is not read: it is named by that of another one");
    reader::LogFile file = options_.open_file(name, LogFileKind::image_log);
    if (file.stream == nullptr)
    {
        miss("the log " + name + " of a kept image " + file.why);
        return;
    }
    tag.remove("async_img_log_file_name", true);
    kept_image_ = std::make_unique<reader::LogFile>(std::move(file));
    kept_image_depth_ = in_callback_.size();
}

}  // namespace orvlog::inspect
