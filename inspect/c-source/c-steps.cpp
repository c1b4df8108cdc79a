#include "inspect/c-source/c-steps.h"

#include "inspect/c-source/c-text.h"
#include "orvlog/names/orvlog-names.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <utility>

namespace orvlog::inspect
{

namespace
{

using reader::Children;
using reader::Element;

// All that a record tells, but for its number and what only the operand of a call has.
void describe(const Element& element, std::string& text)
{
    text.append(element.name);
    for (const reader::Attribute& one : element.attributes)
        if (one.name != "Id" && one.name != "imp_DirectImageFileName")
            text.append(" ").append(one.name).append("=").append(one.value);
    text.append(element.rows);
    text.append(reinterpret_cast<const char*>(element.bytes.data()), element.bytes.size());
    for (const Element& child : Children(element))
        if (child.name != "imp_DirectImageData")
            describe(child, text);
    text += '/';
}

std::string described(const Element& element)
{
    std::string text;
    describe(element, text);
    return text;
}

std::string matrix_argument(const Element& callback, std::string_view name)
{
    if (!callback.has(name))
        return "NULL";
    return "&(const GGO_Matrix)" + CRecords::matrix_text(reader::read_matrix(callback, name));
}

std::string result_of(const Element& callback, const char* name)
{
    return c_uint(reader::read_bool(callback, name));
}

std::string line(const char* kind, const CFields& fields)
{
    return std::string("    ") + kind + "(" + fields.list() + "),\n";
}

std::string flags_number(const Element& callback, std::string_view name)
{
    return c_hex(reader::read_flags(callback, name));
}

}  // namespace

void CSteps::start_call(bool nested)
{
    if (nested)
        return;
    constexpr size_t kMostPlaces = 4096;
    std::erase_if(images_, [](const auto& one) { return one.second.scope == 0; });
    image_count_ = 0;
    for (const auto& [id, one] : images_)
        image_count_ = std::max(image_count_, one.number);
    if (images_.empty() || file_places_.size() > kMostPlaces)
        file_places_.clear();
}

void CSteps::hold_images(uint64_t scope)
{
    for (auto& [id, one] : images_)
        one.scope = one.scope == 0 ? scope : one.scope;
}

void CSteps::drop_images(uint64_t scope)
{
    std::erase_if(images_, [scope](const auto& one) { return one.second.scope == scope; });
}

uint32_t CSteps::bring_image(const Element& element, const GOP_OperandImagePointer* record)
{
    const uint32_t id = reader::read_uint(element, "Id");
    if (id == 0)
        return 0;
    const uint32_t number = ++image_count_;
    most_images_ = std::max(most_images_, image_count_);
    images_[id] = {number, record, described(element), reader::read_bool(element, "imp_DirectImage") != 0, 0};
    return number;
}

void CSteps::bring_text(uint32_t font_id, uint32_t string_id, std::string font, std::string string)
{
    texts_[{font_id, string_id}] = {std::move(font), std::move(string)};
}

uint32_t CSteps::bring_engine(uint32_t id)
{
    return engines_[id] = ++engine_count_;
}

std::string CSteps::lack()
{
    ++not_made_;
    return {};
}

std::optional<std::string> CSteps::engine(const Element& callback)
{
    const auto known = engines_.find(reader::read_uint(callback, "GfpId"));
    if (known == engines_.end())
        return std::nullopt;
    return c_uint(known->second);
}

CSteps::Image* CSteps::image(const Element& callback)
{
    const auto known = images_.find(reader::read_uint(callback, "Id"));
    return known != images_.end() ? &known->second : nullptr;
}

std::string CSteps::string_start(const Element& callback)
{
    const std::optional<std::string> asked = engine(callback);
    if (!asked)
        return lack();
    std::string font = "&stray_font";
    std::string string = "&stray_string";
    const auto known = texts_.find(
        {reader::read_uint(callback, "orvlog_font_spec_id"), reader::read_uint(callback, "orvlog_string_desc_id")});
    if (callback.has("orvlog_font_spec_id") && known == texts_.end())
        return lack();
    if (callback.has("orvlog_font_spec_id"))
        std::tie(font, string) = known->second;
    return line("STRING_START", CFields()
                                    .add("engine", *asked)
                                    .add("result", result_of(callback, "result"))
                                    .add("to_pixels", matrix_argument(callback, "stringdesc_to_face_pixel"))
                                    .add("flags", flags_number(callback, "stringdesc_transform_flags"))
                                    .add("scaled", result_of(callback, "scaled"))
                                    .add("font", font)
                                    .add("string", string)
                                    .add("font_id", c_int(reader::read_int(callback, "unique_font_id")))
                                    .add("glyph_to_pixels", matrix_argument(callback, "glyphdesc_to_face_pixel"))
                                    .add("glyph_flags", flags_number(callback, "glyphdesc_transform_flags")));
}

std::string CSteps::glyph_index(const Element& callback)
{
    const std::optional<std::string> asked = engine(callback);
    if (!asked)
        return lack();
    std::string advance = "NULL";
    if (const GGO_Vector told = reader::read_vector(callback, "advance_vector"); callback.has("advance_vector"))
        advance = "&(const GGO_Vector){" + c_double(told.gvf_X) + ", " + c_double(told.gvf_Y) + "}";
    std::string box = "NULL";
    if (callback.has("quick_bounding_box"))
        box = "&(const GGO_BoxFloat)" + CRecords::box_text(reader::read_box(callback, "quick_bounding_box"));
    return line("GLYPH_INDEX", CFields()
                                   .add("engine", *asked)
                                   .add("result", result_of(callback, "result"))
                                   .add("returned", result_of(callback, "glyph_returned"))
                                   .add("index", c_uint(reader::read_uint(callback, "glyph_index_out")))
                                   .add("variant", c_uint(reader::read_uint(callback, "glyph_sub_pixel_variant")))
                                   .add("advance", advance)
                                   .add("box", box));
}

std::string CSteps::glyph(const Element& callback, bool fixed, reader::RecordReader& reader)
{
    const std::optional<std::string> asked = engine(callback);
    if (!asked)
        return lack();
    const char* type = fixed ? "required_desc_type" : "requested_desc_type";
    const std::string glyph = records_.glyph(reader.glyph(callback.child("GFI_GlyphDescPointer")));
    return line(fixed ? "GLYPH_FIXED" : "GLYPH",
                CFields()
                    .add("engine", *asked)
                    .add("result", result_of(callback, "result"))
                    .add("type", c_enum(ORVLOG_GLYPH_TYPE, reader::read_enum(callback, type)))
                    .add("returned", result_of(callback, "glyph_returned"))
                    .add("changed", result_of(callback, "glyphdesc_transform_changed"))
                    .add("to_pixels", matrix_argument(callback, "glyphdesc_to_face_pixel"))
                    .add("flags", flags_number(callback, "glyphdesc_transform_flags"))
                    .add("glyph", glyph));
}

std::string CSteps::image_record(const Element& told, const GOP_OperandImagePointer* record, const char* base)
{
    if (record == nullptr)
        return "NULL";
    GOP_OperandImagePointer made = *record;
    if (reader::read_bool(told, "imp_ImageResetFn") != 0)
        made.imp_ImageResetFn = [](GOP_OperandImagePointer*, void*) { return 0U; };
    const std::vector<uint32_t> table = reader::to_uints(told.value("imp_IndexColorTable"));
    const std::vector<uint8_t> colors(table.begin(), table.end());
    const bool direct = reader::read_bool(told, "imp_DirectImage") != 0;
    return records_.image(base, &made, direct ? "no_bytes" : "NULL", colors);
}

std::string CSteps::prepare(const Element& callback, bool by_logger, reader::RecordReader& reader)
{
    const Image* asked = image(callback);
    const Element* told = callback.child("GOP_OperandImagePointer");
    if (asked == nullptr || (asked->number == 0 && !by_logger) || told == nullptr)
        return lack();
    const bool replaced = reader::read_bool(callback, "operand_p_replaced") != 0;
    Image now = *asked;
    now.told = described(*told);
    std::string left = "NULL";
    if (replaced || now.told != asked->told)
    {
        left = image_record(*told, reader.image(told), "prepared");
        if (left == "NULL")
            return lack();
    }
    // The logger, which reads in base mode, keeps what it gets in place of the record to itself.
    const uint32_t number = asked->number;
    if (replaced)
        now.number = by_logger ? 0 : ++image_count_;
    most_images_ = std::max(most_images_, image_count_);
    images_[reader::read_uint(*told, "Id")] = now;
    const auto bound = [&callback](const char* name) { return c_float(reader::read_float(callback, name)); };
    return line("PREPARE",
                CFields()
                    .add("image", c_uint(number))
                    .add("now", c_uint(now.number))
                    .add("result", result_of(callback, "return"))
                    .add("replaced", c_uint(replaced ? 1 : 0))
                    .add("object_type", c_flags(ORVLOG_OBJECT_TYPE, reader::read_flags(callback, "object_type")))
                    .add("decompress", result_of(callback, "decompress"))
                    .add("rescale", c_uint(callback.has("max_width_rescale") ? 1 : 0))
                    .add("max_width", bound("max_width_rescale"))
                    .add("min_width", bound("min_width_rescale"))
                    .add("max_height", bound("max_height_rescale"))
                    .add("min_height", bound("min_height_rescale"))
                    .add("render_space", result_of(callback, "use_render_color_space"))
                    .add("depth", c_enum(ORVLOG_BIT_DEPTH, reader::read_enum(callback, "req_bit_depth")))
                    .add("attributes", result_of(callback, "need_attr"))
                    .add("left", left));
}

// `*known` says whether the log has them, or a file beside it.
std::vector<uint8_t> CSteps::bytes_of(const Element& read, std::string_view holder, std::string_view file,
                                      int32_t returned, bool* known)
{
    const Element* inside = read.child(holder);
    const Element* buffer = inside != nullptr ? inside->child("BufferUInt8") : nullptr;
    *known = inside != nullptr || read.has(file);
    if (buffer != nullptr)
        return {buffer->bytes.begin(), buffer->bytes.end()};
    if (!read.has(file) || returned <= 0)
        return {};
    uint64_t& place = file_places_[std::string(read.value(file))];
    const auto count = static_cast<uint64_t>(returned);
    std::vector<uint8_t> bytes = side_file_(reader::to_text(read.value(file)), place, count);
    place += count;
    bytes.resize(static_cast<size_t>(bytes.empty() ? 0 : count));
    return bytes;
}

std::string CSteps::read(const Element& callback)
{
    const Image* asked = image(callback);
    if (asked == nullptr)
        return lack();
    bool known = false;
    bool attr_known = false;
    const int32_t returned = reader::read_int(callback, "img_returned");
    const int32_t attr_returned = reader::read_int(callback, "attr_returned");
    const int32_t row_step = reader::read_int(callback, "img_row_step");
    const bool with_attributes = callback.has("attr_row_step");
    const std::vector<uint8_t> bytes = bytes_of(callback, "img_buf", "ImageFileName", returned, &known);
    const std::vector<uint8_t> attributes =
        with_attributes ? bytes_of(callback, "attr_buf", "AttrFileName", attr_returned, &attr_known)
                        : std::vector<uint8_t>();
    // As much as was delivered, which a client may overstate; what it got room for isn't told.
    const auto room = [](const std::vector<uint8_t>& got, bool told, int32_t claimed, int32_t step) {
        return told && claimed > 0 ? got.size() : static_cast<size_t>(std::max({claimed, step, 1}));
    };
    CFields fields;
    fields.add("image", c_uint(asked->number))
        .add("result", result_of(callback, "return"))
        .add("skip", c_uint(reader::read_uint(callback, "skip_pixels")))
        .add("row_step", c_int(row_step))
        .add("size", std::to_string(room(bytes, known, returned, row_step)))
        .add("returned", c_int(returned))
        .add("bytes", std::to_string(bytes.size()));
    const uint64_t from = bytes.empty() ? 0 : put_(CDataKind::images, bytes);
    if (with_attributes)
    {
        const int32_t step = reader::read_int(callback, "attr_row_step");
        fields.add("with_attributes", "1")
            .add("attr_row_step", c_int(step))
            .add("attr_size", std::to_string(room(attributes, attr_known, attr_returned, step)))
            .add("attr_returned", c_int(attr_returned))
            .add("attr_bytes", std::to_string(attributes.size()));
        if (!attributes.empty())
            fields.add("attr_from", c_uint64(put_(CDataKind::images, attributes)));
    }
    const bool goes_on = run_.times > 0 && run_.times < UINT32_MAX && run_.fields == fields.list() &&
                         run_.from + run_.times * run_.size == from && !bytes.empty() && !with_attributes;
    if (goes_on)
    {
        ++run_.times;
        return {};
    }
    std::string before = finish_run();
    run_ = {1, fields.list(), from, bytes.size()};
    return before;
}

std::string CSteps::finish_run()
{
    if (run_.times == 0)
        return {};
    const Run run = std::exchange(run_, {});
    std::string times = run.times > 1 ? ".times = " + std::to_string(run.times) + ", " : "";
    std::string from = run.from > 0 ? ", .from = " + c_uint64(run.from) : "";
    return "    READ(" + times + run.fields + from + "),\n";
}

std::string CSteps::finish(const Element& callback, reader::RecordReader& reader)
{
    const Image* asked = image(callback);
    if (asked == nullptr)
        return lack();
    const Element* told = callback.child("GOP_OperandImagePointer");
    const bool changed = told != nullptr && described(*told) != asked->told;
    return line("FINISH", CFields()
                              .add("image", c_uint(asked->number))
                              .add("result", result_of(callback, "return"))
                              .add("given", changed ? image_record(*told, reader.image(told), "finished") : "NULL"));
}

std::string CSteps::plain(const char* kind, const Element& callback, bool has_result)
{
    const Image* asked = image(callback);
    if (asked == nullptr)
        return lack();
    return line(
        kind,
        CFields().add("image", c_uint(asked->number)).add("result", has_result ? result_of(callback, "return") : "0"));
}

std::string CSteps::step(const Element& callback, bool by_logger, reader::RecordReader& reader)
{
    if (callback.name == "GOP_ImageReadFn")
        return read(callback);
    const std::string before = finish_run();
    if (callback.name == "GFI_StringStartFn")
        return before + string_start(callback);
    if (callback.name == "GFI_GlyphIndexGetFn")
        return before + glyph_index(callback);
    if (callback.name == "GFI_GlyphGetFixedFormatFn")
        return before + glyph(callback, true, reader);
    if (callback.name == "GFI_GlyphGetFn")
        return before + glyph(callback, false, reader);
    if (callback.name == "GOP_ImagePrepareFn")
        return before + prepare(callback, by_logger, reader);
    if (callback.name == "GOP_ImageFinishFn")
        return before + finish(callback, reader);
    if (callback.name == "GOP_ImageResetFn")
        return before + plain("RESET", callback, true);
    if (callback.name == "GOP_ImageKeepFn")
        return before + plain("KEEP", callback, true);
    if (callback.name == "GOP_ImageReleaseFn")
        return before + plain("RELEASE", callback, false);
    return before + lack();
}

}  // namespace orvlog::inspect
