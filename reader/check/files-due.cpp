#include "reader/check/files-due.h"

#include "orvlog/image/gop-image-geometry.h"
#include "reader/records/records.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <fstream>
#include <map>

namespace orvlog::reader
{

namespace
{

uint64_t size_of(std::istream& file)
{
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    return size > 0 ? static_cast<uint64_t>(size) : 0;
}

uint64_t bytes_of(const Element& image)
{
    Arena arena;
    RecordReader records(arena);
    const GOP_OperandImagePointer* record = records.image(&image);
    ORVLOG_ImageSize size{};
    if (record == nullptr || record->imp_Image == nullptr || ORVLOG_ImageGeometry(record, nullptr, &size) == 0)
        return 0;
    return uint64_t{size.rows} * size.row_bytes;
}

class Search
{
public:
    explicit Search(std::filesystem::path folder) : folder_(std::move(folder)) {}

    void call(const Element& call)
    {
        due_.clear();
        look_into(call);
        for (const auto& [name, bytes] : due_)
            hold(name, bytes);
    }

    void note(const std::string& line)
    {
        if (found_.count++ < FilesLacking::kMostLines)
            found_.lines.push_back(line);
    }

    const FilesLacking& found() const
    {
        return found_;
    }

private:
    void look_into(const Element& element)
    {
        for (const Element& child : Children(element))
        {
            look_at(child);
            look_into(child);
        }
    }

    void look_at(const Element& element)
    {
        if (element.name == "GOP_OperandImagePointer" && element.has("imp_DirectImageFileName"))
        {
            uint64_t& due = due_[to_text(element.value("imp_DirectImageFileName"))];
            due = std::max(due, bytes_of(element));
        }
        else if (element.name == "GOP_ImageReadFn" && read_bool(element, "return") != 0)
        {
            read(element, "ImageFileName", "img_returned");
            read(element, "AttrFileName", "attr_returned");
        }
        else if (element.name == "GOP_ImageKeepFn" && element.has("async_img_log_file_name"))
            follow(to_text(element.value("async_img_log_file_name")), read_bool(element, "return") != 0);
    }

    void read(const Element& callback, const char* file, const char* returned)
    {
        if (callback.has(file))
            due_[to_text(callback.value(file))] += static_cast<uint64_t>(std::max(read_int(callback, returned), 0));
    }

    // A log that a kept image has of its own names no further ones.
    void follow(const std::string& name, bool granted)
    {
        if (in_image_log_)
            return;
        std::ifstream file(folder_ / name, std::ios::binary);
        if (!file)
        {
            note(name + ": the log of a kept image is missing");
            return;
        }
        in_image_log_ = true;
        ElementReader own(file, LogForm::fragment, Data::skip);
        bool whole = true, released = !granted;
        own.on_damage = [&whole](const Damage&) { whole = false; };
        while (const Element* element = own.next())
        {
            look_at(*element);
            released = !granted || element->name == "GOP_ImageReleaseFn";
        }
        in_image_log_ = false;
        if (!whole || !released)
            note(name + ": the log of a kept image is cut short");
    }

    void hold(const std::string& name, uint64_t due)
    {
        std::ifstream file(folder_ / name, std::ios::binary);
        if (!file)
        {
            note(name + ": is missing");
            return;
        }
        const uint64_t size = size_of(file);
        if (size < due)
            note(name + ": has " + std::to_string(size) + " bytes, due were " + std::to_string(due));
    }

    std::filesystem::path folder_;
    FilesLacking found_;
    std::map<std::string, uint64_t> due_;  // of the call
    bool in_image_log_ = false;
};

}  // namespace

FilesLacking find_lacking_files(std::istream& log, const std::filesystem::path& folder)
{
    Search search(folder);
    ElementReader elements(log, LogForm::log, Data::skip);
    elements.on_comment = [&search](const Comment& comment)
    {
        if (comment.warning && comment.text.find("Could not open new image file") != std::string::npos)
            search.note("the file of an image could not be made");
    };
    while (const Element* call = elements.next())
        search.call(*call);
    return search.found();
}

}  // namespace orvlog::reader
