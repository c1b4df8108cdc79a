// Prints as JSON what a log says, as plain facts: counts, sizes and hashes. The reader in tests/reader-python prints
// the same; the two are held against each other.
#include "reader/records/records.h"
#include "reader/tickets/ticket-bytes.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"
#include "tests/reader/facts-hash.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace orvlog::reader;
using Json = nlohmann::json;

struct Page
{
    Json size = Json::array({nullptr, nullptr});
    std::map<std::string, uint64_t> paints;
};

struct Image
{
    uint32_t id = 0;
    Json size = Json::array({nullptr, nullptr});
    std::unique_ptr<Hash> direct;
    Hash read;
    Hash attributes;
};

struct Glyphs
{
    uint64_t count = 0;
    Hash payload;
};

constexpr std::string_view kPaints[] = {"ORV_object_paint", "ORV_object_paint_and_stroke", "ORV_resource_paint"};

bool is_one_of(std::string_view name, std::span<const std::string_view> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_call(std::string_view name)
{
    return name.starts_with("ORV_") && name.find('.') == name.npos && !name.ends_with("Properties");
}

class Facts
{
public:
    explicit Facts(std::filesystem::path folder) : folder_(std::move(folder)) {}

    // Null if the file isn't a log.
    Json of_log(const std::filesystem::path& name);

private:
    void watch(ElementReader& reader);
    void start(const Element& element);
    void walk(const Element& element);
    void end(const Element& element);
    void records(const Element& element);
    void face(const Element& call);
    void paint(const Element& call);
    void image(const Element& pointer);
    void read(const Element& callback);
    void read_side_file(const Element& callback, std::string_view name, std::string_view length, Hash& hash);
    void kept_image(const std::string& name);
    void path(const Element& pointer);
    void glyph(const Element& pointer);
    void ticket(const Element& text);
    const std::string& side_file(std::string_view name);
    const Element* innermost_image_callback() const;
    Json facts() const;

    std::filesystem::path folder_;
    Arena arena_;
    RecordReader reader_{arena_};
    std::vector<const Element*> above_;
    Json root_ = Json::object();
    std::map<std::string, uint64_t> elements_;
    std::map<std::string, uint64_t> left_open_;
    Hash tags_;
    uint64_t comments_ = 0;
    uint64_t warnings_ = 0;
    std::vector<Page> pages_;
    std::map<std::string, size_t> page_of_;
    std::vector<Image> images_;
    std::map<std::string, size_t> image_of_;
    std::map<std::string, std::string> side_files_;
    std::map<std::string, uint64_t> side_offsets_;
    std::map<std::string, Glyphs> glyphs_;
    Json paths_ = Json::array();
    Json tickets_ = Json::array();
};

void Facts::watch(ElementReader& reader)
{
    reader.on_comment = [this](const Comment& comment)
    {
        ++comments_;
        warnings_ += comment.warning ? 1 : 0;
    };
}

Json Facts::of_log(const std::filesystem::path& name)
{
    std::ifstream file(name, std::ios::binary);
    ElementReader reader(file);
    watch(reader);
    const Element* element = reader.next();
    if (!reader.events().is_log())
        return {};
    start(reader.root());
    for (const Attribute& attribute : reader.root().attributes)
        root_[std::string(attribute.name)] = attribute.value;
    above_.push_back(&reader.root());
    for (; element; element = reader.next())
    {
        walk(*element);
        reader_.start_call();
        arena_.clear();
    }
    above_.pop_back();
    tags_.add(">ORV\n");
    if (reader.events().is_cut())
        ++left_open_["ORV"];
    Json all = facts();
    all["coded"] = reader.events().is_coded();
    return all;
}

void Facts::start(const Element& element)
{
    const std::string name(element.name);
    ++elements_[name];
    tags_.add("<" + name + "\n");
    for (const Attribute& attribute : element.attributes)
        tags_.add(std::string(attribute.name) + "=" + std::string(attribute.value) + "\n");
}

void Facts::walk(const Element& element)
{
    if (element.name == "GXC_ColorTickets")
        return ticket(element);
    start(element);
    records(element);
    above_.push_back(&element);
    for (const Element& child : Children(element))
        walk(child);
    above_.pop_back();
    end(element);
}

void Facts::end(const Element& element)
{
    if (element.name == "BufferUInt8")
        tags_.add(element.bytes);
    else if (element.name == "BufferFloat")
        for (float number : to_floats(element.rows))
            tags_.add_numbers({number});
    tags_.add(">" + std::string(element.name) + "\n");
    if (element.implied_end)
        ++left_open_[std::string(element.name)];
    if (element.name == "GOP_ImageKeepFn" && element.has("async_img_log_file_name"))
        kept_image(to_text(element.value("async_img_log_file_name")));
}

void Facts::records(const Element& element)
{
    if (element.name == "ORV_face_start")
        face(element);
    else if (is_one_of(element.name, kPaints))
        paint(element);
    else if (element.name == "GOP_OperandImagePointer")
        image(element);
    else if (element.name == "GOP_ImageReadFn")
        read(element);
    else if (element.name == "GPA_PathPointer")
        path(element);
    else if (element.name == "GFI_GlyphDescPointer")
        glyph(element);
}

void Facts::face(const Element& call)
{
    page_of_[std::string(call.value("drawing_context"))] = pages_.size();
    Page& page = pages_.emplace_back();
    if (const ORV_FaceProperties* properties = reader_.face_properties(call.child("ORV_FaceProperties")))
        page.size = {properties->fp_WidthInPixels, properties->fp_HeightInPixels};
}

void Facts::paint(const Element& call)
{
    const auto page = page_of_.find(std::string(call.value("drawing_context")));
    if (page != page_of_.end())
        ++pages_[page->second].paints[std::string(call.name)];
}

const Element* Facts::innermost_image_callback() const
{
    constexpr std::string_view kCallbacks[] = {"GOP_ImagePrepareFn", "GOP_ImageFinishFn"};
    const auto found = std::find_if(above_.rbegin(), above_.rend(),
                                    [&](const Element* element) { return is_one_of(element->name, kCallbacks); });
    return found == above_.rend() ? nullptr : *found;
}

void Facts::image(const Element& pointer)
{
    const std::string id(pointer.value("Id"));
    if (const Element* callback = innermost_image_callback())
    {
        const auto before = image_of_.find(std::string(callback->value("Id")));
        if (callback->name == "GOP_ImagePrepareFn" && before != image_of_.end())
        {
            const size_t number = before->second;
            image_of_[id] = number;
        }
        return;
    }
    image_of_[id] = images_.size();
    Image& image = images_.emplace_back();
    image.id = read_uint(pointer, "Id");
    const Element* record = pointer.child("GOP_OperandImage");
    const GOP_OperandImagePointer* told = reader_.image(&pointer);
    if (record && told && told->imp_Image)
        image.size = {told->imp_Image->im_ImageWidthPixels, told->imp_Image->im_ImageHeightPixels};
    if (pointer.has("imp_DirectImageFileName"))
    {
        image.direct = std::make_unique<Hash>();
        image.direct->add(side_file(pointer.value("imp_DirectImageFileName")));
    }
    else if (const Element* data = pointer.child("imp_DirectImageData"))
    {
        image.direct = std::make_unique<Hash>();
        if (const Element* bytes = data->child("BufferUInt8"))
            image.direct->add(bytes->bytes);
    }
}

void Facts::read(const Element& callback)
{
    const auto found = image_of_.find(std::string(callback.value("Id")));
    if (found == image_of_.end())
        return;
    Image& image = images_[found->second];
    read_side_file(callback, "ImageFileName", "img_returned", image.read);
    read_side_file(callback, "AttrFileName", "attr_returned", image.attributes);
    for (const Element& child : Children(callback))
    {
        const Element* bytes = child.child("BufferUInt8");
        if (bytes && (child.name == "img_buf" || child.name == "attr_buf"))
            (child.name == "img_buf" ? image.read : image.attributes).add(bytes->bytes);
    }
}

void Facts::read_side_file(const Element& callback, std::string_view name, std::string_view length, Hash& hash)
{
    if (!callback.has(name) || !read_bool(callback, "return"))
        return;
    const std::string_view content = side_file(callback.value(name));
    uint64_t& offset = side_offsets_[std::string(callback.value(name))];
    const auto size = static_cast<uint64_t>(std::max(read_int(callback, length), 0));
    hash.add(content.substr(std::min<uint64_t>(offset, content.size()), size));
    offset += size;
}

const std::string& Facts::side_file(std::string_view name)
{
    const auto [found, is_new] = side_files_.try_emplace(std::string(name));
    if (is_new)
    {
        std::ifstream file(folder_ / to_text(name), std::ios::binary);
        found->second.assign(std::istreambuf_iterator<char>(file), {});
    }
    return found->second;
}

void Facts::kept_image(const std::string& name)
{
    std::ifstream file(folder_ / name, std::ios::binary);
    ElementReader reader(file, LogForm::fragment);
    watch(reader);
    while (const Element* element = reader.next())
        walk(*element);
}

void Facts::path(const Element& pointer)
{
    const GPA_PathPointer* told = reader_.path(&pointer);
    if (!told || !told->lpp_Path)
        return;
    Hash hash;
    add_path(hash, *told);
    paths_.push_back({{"edges", told->lpp_Path->pa_NumEdges}, {"sha256", hash.sum()}});
}

void Facts::glyph(const Element& pointer)
{
    const GFI_GlyphDescPointer* told = reader_.glyph(&pointer);
    const GFI_GlyphDesc* glyph = told ? told->gdp_GlyphDesc : nullptr;
    if (!glyph)
        return;
    constexpr std::array<const char*, 5> kNames = {"GFI_GlyphDescFBE", "GFI_GlyphDescBitmap", "GFI_GlyphDescPath",
                                                   "GFI_GlyphDescTrueType", "GFI_GlyphDescRLE"};
    Glyphs& glyphs = glyphs_[kNames.at(glyph->gd_Type)];
    ++glyphs.count;
    add_glyph(glyphs.payload, pointer, *told);
}

void Facts::ticket(const Element& text)
{
    Hash hash;
    hash.add(text.rows);
    const TicketReading reading = read_ticket_text(text.rows);
    Json profiles = Json::array();
    for (const TicketDefinition& definition : reading.definitions)
    {
        if (definition.profile_size > 0)
        {
            Hash profile;
            profile.add(reading.profile(definition));
            profiles.push_back(profile.sum());
        }
    }
    tickets_.push_back({{"id", read_uint(*above_.back(), "id")}, {"sha256", hash.sum()}, {"profiles", profiles}});
    if (text.implied_end)
        ++left_open_[std::string(text.name)];
}

Json Facts::facts() const
{
    Json all = {{"root", root_},          {"elements", elements_},   {"tags", tags_.sum()},
                {"comments", comments_},  {"warnings", warnings_},   {"paths", paths_},
                {"tickets", tickets_},    {"left_open", left_open_}, {"calls", Json::object()},
                {"pages", Json::array()}, {"images", Json::array()}, {"glyphs", Json::object()}};
    for (const auto& [name, count] : elements_)
        if (is_call(name))
            all["calls"][name] = count;
    for (const Page& page : pages_)
        all["pages"].push_back({{"size", page.size}, {"paints", page.paints}});
    for (const Image& image : images_)
    {
        all["images"].push_back({{"id", image.id},
                                 {"size", image.size},
                                 {"direct", image.direct ? image.direct->facts() : Json()},
                                 {"read", image.read.facts()},
                                 {"attributes", image.attributes.facts()}});
    }
    for (const auto& [name, glyphs] : glyphs_)
    {
        all["glyphs"][name] = glyphs.payload.facts();
        all["glyphs"][name]["count"] = glyphs.count;
    }
    return all;
}

int print_facts(const std::filesystem::path& name)
{
    const Json facts = Facts(name.parent_path()).of_log(name);
    if (facts.is_null())
    {
        std::cerr << "log-facts: " << name.string() << " is no log\n";
        return 1;
    }
    std::cout << facts.dump(1, ' ', true) << '\n';
    return 0;
}

}  // namespace

int main(int count, char** arguments)
try
{
    if (count != 2)
    {
        std::cerr << "usage: log-facts LOG\n";
        return 2;
    }
    return print_facts(arguments[1]);
}
catch (const std::exception& error)
{
    std::cerr << "log-facts: " << error.what() << '\n';
    return 1;
}
