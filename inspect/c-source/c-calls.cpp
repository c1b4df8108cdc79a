#include "inspect/c-source/c-call.h"
#include "inspect/c-source/c-text.h"
#include "orvlog/names/orvlog-names.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>

namespace orvlog::inspect
{

namespace
{

using reader::Element;

std::string number(const Element& element, const char* name)
{
    return c_uint(reader::read_uint(element, name));
}

std::string boolean(const Element& element, const char* name)
{
    return c_uint(reader::read_bool(element, name));
}

std::string named(const Element& element, const char* name, const ORVLOG_EnumTable& names)
{
    return c_enum(names, reader::read_enum(element, name));
}

std::string flags(const Element& element, const char* name, const ORVLOG_FlagTable& names)
{
    return c_flags(names, reader::read_flags(element, name));
}

std::string decimal(const Element& element, const char* name)
{
    return c_double(reader::read_double(element, name));
}

// A stream that takes what a ticket's serialiser writes.
class Bytes
{
public:
    Bytes()
    {
        ops_.gio_Write = [](const void* data, uint64_t size, uint64_t count, void* self) -> uint64_t
        {
            const auto* from = static_cast<const uint8_t*>(data);
            auto& taken = static_cast<Bytes*>(self)->bytes;
            taken.insert(taken.end(), from, from + size * count);
            return count;
        };
        ops_.gio_Seek = [](void*, int32_t, int32_t) -> int32_t { return 0; };
    }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;

    GIO_Stream* stream()
    {
        return &stream_;
    }

    std::vector<uint8_t> bytes;

private:
    GIO_StreamOps ops_{};
    GIO_Stream stream_{this, 0, &ops_};
};

}  // namespace

std::string CProgram::engine(const Element& element, Call& made, uint32_t* id)
{
    *id = 0;
    if (reader::read_bool(element, "font_engine_functions") == 0)
        return "NULL";
    const bool is_named = element.has("fp_EngineIdGet");
    const std::string name = is_named ? c_string(reader::to_text(element.value("fp_EngineIdGet"))) : "";
    std::string table = records_.define_own("const GFI_FontEngineTable", "engine",
                                            is_named ? "NAMED_ENGINE(" + name + ")" : std::string("ENGINE"));
    const uint32_t place = steps_.bring_engine(reader::read_uint(element, "GfpId"));
    *id = reader::read_uint(element, "GfpId") + 1;
    made.fields += ", .engine = " + std::to_string(place);
    return table;
}

// One that a memory context came with, which its call doesn't tell.
std::string CProgram::silent_engine(uint32_t context, Drawing& drawing, Call& made)
{
    const auto known = kind_.script.memory_engines.find(context);
    if (known == kind_.script.memory_engines.end())
        return "NULL";
    drawing.engines.push_back(known->second + 1);
    made.fields += ", .engine = " + std::to_string(steps_.bring_engine(known->second));
    return records_.define_own("const GFI_FontEngineTable", "engine", "ENGINE");
}

std::string CProgram::ticket(const Element& element, Call&)
{
    void* ticket = tickets_.ticket(element);
    if (ticket == nullptr)
        return "NULL";
    has_tickets_ = true;
    const auto known = ticket_names_.find(ticket);
    if (known != ticket_names_.end())
        return known->second;
    uint32_t space[5] = {};
    uint32_t render[4] = {};
    const GCM_Csd* const* list = nullptr;
    Bytes text;
    replay::ReplayTickets::functions()->query(ticket, space, render);
    replay::ReplayTickets::functions()->csd_list(ticket, &list, 0, 0);
    replay::ReplayTickets::serial_functions()->serialise(ticket, text.stream(), 1, 0);
    const std::string data =
        text.bytes.empty() ? "no_bytes" : records_.bytes(CDataKind::profiles, text.bytes, "ticket");
    const std::string name =
        records_.define("Ticket", "ticket",
                        CFields()
                            .add("key", c_uint(space[4]))
                            .add("kind", c_uint(space[0]))
                            .add("channels", c_uint(space[3]))
                            .add("bytes", data)
                            .add("size", std::to_string(text.bytes.size()))
                            .add("first", "{.csd_Type = " + c_enum(ORVLOG_CSD_TYPE, list[0]->csd_Type) +
                                              ", .csd_NumBaseChans = " + c_uint(list[0]->csd_NumBaseChans) + "}")
                            .text());
    return ticket_names_[ticket] = name;
}

std::string CProgram::document(const Element& element) const
{
    const auto known = documents_.find(reader::read_uint(element, "document_context"));
    const bool there = element.has("document_context") && known != documents_.end();
    return there ? "&documents[" + std::to_string(known->second) + "]" : "NULL";
}

// Where its number stands, which the logger may have given.
std::string CProgram::resource(uint32_t id) const
{
    const auto known = resources_.find(id);
    return known != resources_.end() ? "&resources[" + std::to_string(known->second) + "]"
                                     : "&(const uint32_t){" + c_uint(id) + "}";
}

std::string CProgram::parent(const Element& element) const
{
    const auto known = drawings_.find(reader::read_uint(element, "parent_drawing"));
    const bool there = element.has("parent_drawing") && known != drawings_.end() && known->second.open;
    return there ? "&drawings[" + std::to_string(known->second.place) + "]" : "NULL";
}

std::vector<uint8_t> CProgram::direct_bytes(const Element& element)
{
    const Element* data = element.child("imp_DirectImageData");
    const Element* buffer = data != nullptr ? data->child("BufferUInt8") : nullptr;
    if (buffer != nullptr)
        return {buffer->bytes.begin(), buffer->bytes.end()};
    if (!element.has("imp_DirectImageFileName"))
        return {};
    note_prefix(element.value("imp_DirectImageFileName"));
    return side_file(reader::to_text(element.value("imp_DirectImageFileName")), 0, UINT64_MAX);
}

std::string CProgram::image(const Element& element, const GOP_OperandImagePointer* record, const char* base, Call& made)
{
    std::string name = steps_.image_record(element, record, base);
    const bool direct = reader::read_bool(element, "imp_DirectImage") != 0;
    const std::vector<uint8_t> bytes = direct ? direct_bytes(element) : std::vector<uint8_t>();
    if (!bytes.empty())
        made.loads += "    LOAD_DIRECT(" + name.substr(1) + ".imp_DirectImage, " + std::to_string(bytes.size()) +
                      ", IMAGES, " + c_uint64(options_.put(CDataKind::images, bytes)) + "),\n";
    return name;
}

std::string CProgram::operand(const Element& element, const char* member, size_t slot, Call& made)
{
    const Element* holder = element.member(member);
    const Element* told = holder != nullptr ? holder->first : nullptr;
    reader::RecordReader& records = made.memory->records;
    if (told == nullptr || told->name != "GOP_OperandImagePointer")
        return records_.operand(member, records.operand_member(element, member));
    const auto* record = records.image(told);
    if (record == nullptr)
        return "NULL";
    const uint32_t place = steps_.bring_image(*told, record);
    if (place != 0)
        made.fields += ", .images[" + std::to_string(slot) + "] = " + std::to_string(place);
    return image(*told, record, member, made);
}

bool CProgram::document_start(const Element& element, Call& made)
{
    uint32_t engine_id = 0;
    const std::string table = engine(element, made, &engine_id);
    const uint32_t context = reader::read_uint(element, "document_context");
    const auto place = documents_.try_emplace(context, document_places_);
    document_places_ += place.second ? 1 : 0;
    document_engines_[context] = engine_id;
    made.asked = CFields()
                     .add("document", "&documents[" + std::to_string(place.first->second) + "]")
                     .add("id", number(element, "document_id"))
                     .add("engine", table)
                     .list();
    return true;
}

bool CProgram::document_finish(const Element& element, Call& made)
{
    const uint32_t context = reader::read_uint(element, "document_context");
    made.asked = CFields().add("document", document(element)).list();
    if (const uint32_t id = document_engines_[context]; id != 0)
        dying_engines_.push_back(id - 1);
    documents_.erase(context);
    document_engines_.erase(context);
    return true;
}

bool CProgram::resource_destroy(const Element& element, Call& made)
{
    const uint32_t id = reader::read_uint(element, "resource_id");
    made.asked = CFields()
                     .add("document", document(element))
                     .add("parent", parent(element))
                     .add("resource", resource(id))
                     .list();
    resources_.erase(id);
    return true;
}

bool CProgram::drawing_start(const Element& element, Call& made)
{
    const std::string doc = document(element);
    const std::string outer = parent(element);
    const uint32_t number_of = reader::read_uint(element, "drawing_context");
    const auto [known, added] = drawings_.try_emplace(number_of);
    Drawing& drawing = known->second;
    if (added)
        drawing.place = drawing_places_++;
    drawing.open = true;
    end_groups(drawing, 0);
    drawing.engines.clear();
    const std::string place = "&drawings[" + std::to_string(drawing.place) + "]";
    if (kind_.script.without_resource_paint.contains(number_of))
        made.fields += ", .without_resource_paint = 1";
    CFields fields;
    fields.add("document", doc).add("drawing", place);
    if (element.name == "ORV_memory_context_start")
    {
        made.asked = fields.add("engine", silent_engine(number_of, drawing, made)).list();
        return true;
    }
    uint32_t engine_id = 0;
    const std::string table = engine(element, made, &engine_id);
    drawing.engines.push_back(engine_id);
    const std::string colours = ticket(element, made);
    reader::RecordReader& records = made.memory->records;
    if (element.name == "ORV_face_start")
    {
        const std::string face = records_.face(records.face_properties(element.child("ORV_FaceProperties")));
        made.asked = fields.add("engine", table)
                         .add("number", number(element, "face_seq_number"))
                         .add("properties", face)
                         .add("ticket", colours)
                         .add("orientation", named(element, "pixel_placement_orientation", ORVLOG_ORIENTATION))
                         .add("placement", named(element, "pixel_placement", ORVLOG_PLACEMENT))
                         .list();
        return true;
    }
    const uint32_t id = reader::read_uint(element, "resource_id");
    const auto resource = resources_.try_emplace(id, resource_places_);
    resource_places_ += resource.second ? 1 : 0;
    const std::string properties =
        records_.resource(records.resource_properties(element.child("ORV_ResourceProperties")));
    made.fields += ", .resource = " + c_uint(id);
    if (kind_.script.refused_resources.contains(id))
        made.fields += ", .refused = 1";
    made.asked = fields.add("parent", outer)
                     .add("engine", table)
                     .add("properties", properties)
                     .add("ticket", colours)
                     .add("resource", "&resources[" + std::to_string(resource.first->second) + "]")
                     .list();
    return true;
}

void CProgram::group_start(const Element& element, Call& made, CFields& fields)
{
    reader::RecordReader& records = made.memory->records;
    uint32_t engine_id = 0;
    const std::string table = engine(element, made, &engine_id);
    Drawing& drawing = drawings_[reader::read_uint(element, "drawing_context")];
    drawing.engines.push_back(engine_id);
    drawing.scopes.push_back(made.number);
    const std::string colours = ticket(element, made);
    const std::string retransform = records_.matrix("retransform", records.matrix_attribute(element, "retransform"));
    const std::string op = records_.op("op", records.op_member(element, "op"));
    const std::string operand2 = operand(element, "operand2", 0, made);
    const std::string clip = records_.clip("group_clip", records.clip_member(element, "group_clip"));
    const std::string mask = records_.color("mask", records.color_member(element, "separation_mask"));
    const std::string color = records_.color("color", records.color_member(element, "separation_color"));
    const std::string box = records_.box("bounding_box", records.box_attribute(element, "bounding_box_hint"));
    fields.add("unique_id", number(element, "group_unique_id"))
        .add("engine", table)
        .add("hints", flags(element, "hints", ORVLOG_GROUP_HINTS))
        .add("type", named(element, "group_type", ORVLOG_GROUP_TYPE))
        .add("knockout", boolean(element, "is_knockout"))
        .add("replayable", boolean(element, "is_replayable"))
        .add("ticket", colours)
        .add("orientation", named(element, "pixel_placement_orientation", ORVLOG_ORIENTATION))
        .add("has_placement", boolean(element, "has_pixel_placement"))
        .add("placement", named(element, "pixel_placement", ORVLOG_PLACEMENT))
        .add("retransform", retransform)
        .add("op", op)
        .add("operand2", operand2)
        .add("clip", clip)
        .add("tiling", flags(element, "tiling_flags", ORVLOG_TILING_FLAGS))
        .add("x_interval", decimal(element, "x_repetition_interval"))
        .add("y_interval", decimal(element, "y_repetition_interval"))
        .add("mask", mask)
        .add("color", color)
        .add("box", box);
}

void CProgram::end_groups(Drawing& drawing, size_t left)
{
    for (; drawing.scopes.size() > left; drawing.scopes.pop_back())
        dying_scopes_.push_back(drawing.scopes.back());
}

void CProgram::group_finish(const Element& element, Drawing& drawing, Call& made)
{
    const bool again = reader::read_bool(element, "replay_group") != 0;
    made.fields += again ? ", .again = 1" : "";
    if (!again && !drawing.scopes.empty())
        end_groups(drawing, drawing.scopes.size() - 1);
    if (again || drawing.engines.size() < 2)
        return;
    if (drawing.engines.back() != 0)
        dying_engines_.push_back(drawing.engines.back() - 1);
    drawing.engines.pop_back();
}

void CProgram::paint(const Element& element, Call& made, CFields& fields)
{
    reader::RecordReader& records = made.memory->records;
    const std::string op = records_.op("op", records.op_member(element, "op"));
    const std::string path = records_.shape("paint_path", records.shape_member(element, "paint_path"));
    const std::string clip = records_.clip("clip", records.clip_member(element, "clip"));
    const std::string operand1 = operand(element, "operand1", 0, made);
    const std::string operand2 = operand(element, "operand2", 1, made);
    const std::string operand3 = operand(element, "operand3", 2, made);
    fields.add("object_type", number(element, "object_type_and_flag"))
        .add("hints", flags(element, "object_hints", ORVLOG_OBJECT_HINTS))
        .add("op", op)
        .add("path", path)
        .add("placement", named(element, "path_pixel_placement", ORVLOG_PLACEMENT))
        .add("clip", clip)
        .add("operand1", operand1)
        .add("operand2", operand2)
        .add("operand3", operand3);
}

void CProgram::paint_and_stroke(const Element& element, Call& made, CFields& fields)
{
    reader::RecordReader& records = made.memory->records;
    const std::string fill_op = records_.op("fill_op", records.op_member(element, "fill_op"));
    const std::string stroke_op = records_.op("stroke_op", records.op_member(element, "stroke_op"));
    const std::string path = records_.shape("paint_path", records.shape_member(element, "paint_path"));
    const std::string stroke = records_.stroke("stroking", records.stroke_member(element, "stroking_params"));
    const std::string transform =
        records_.matrix("stroking_transform", records.matrix_attribute(element, "stroking_transform"));
    const std::string clip = records_.clip("clip", records.clip_member(element, "clip"));
    fields.add("fill_type", number(element, "fill_object_type"))
        .add("stroke_type", number(element, "stroke_object_type"))
        .add("hints", flags(element, "object_hints", ORVLOG_OBJECT_HINTS))
        .add("fill_op", fill_op)
        .add("stroke_op", stroke_op)
        .add("path", path)
        .add("stroking", stroke)
        .add("transform", transform)
        .add("placement", named(element, "path_pixel_placement", ORVLOG_PLACEMENT))
        .add("clip", clip)
        .add("flags", flags(element, "paint_flags", ORVLOG_PAINT_FLAGS));
    size_t slot = 0;
    for (const char* name :
         {"fill_operand1", "fill_operand2", "fill_operand3", "stroke_operand1", "stroke_operand2", "stroke_operand3"})
        fields.add(name, operand(element, name, slot++, made));
}

void CProgram::resource_paint(const Element& element, Call& made, CFields& fields)
{
    reader::RecordReader& records = made.memory->records;
    const std::string retransform = records_.matrix("retransform", records.matrix_attribute(element, "retransform"));
    const std::string op = records_.op("op", records.op_member(element, "op"));
    const std::string operand2 = operand(element, "operand2", 0, made);
    const std::string clip = records_.clip("group_clip", records.clip_member(element, "group_clip"));
    const std::string mask = records_.color("mask", records.color_member(element, "separation_mask"));
    const std::string color = records_.color("color", records.color_member(element, "separation_color"));
    fields.add("resource", resource(reader::read_uint(element, "resource_id")))
        .add("hints", flags(element, "hints", ORVLOG_GROUP_HINTS))
        .add("type", named(element, "group_type", ORVLOG_GROUP_TYPE))
        .add("retransform", retransform)
        .add("op", op)
        .add("operand2", operand2)
        .add("clip", clip)
        .add("tiling", number(element, "tiling_flags"))
        .add("x_interval", decimal(element, "x_repetition_interval"))
        .add("y_interval", decimal(element, "y_repetition_interval"))
        .add("mask", mask)
        .add("color", color)
        .add("orientation", named(element, "pixel_placement_orientation", ORVLOG_ORIENTATION));
}

bool CProgram::drawing_call(const Element& element, Call& made)
{
    const auto known = drawings_.find(reader::read_uint(element, "drawing_context"));
    if (known == drawings_.end() || !known->second.open)
        return false;
    Drawing& drawing = known->second;
    CFields fields;
    fields.add("drawing", "&drawings[" + std::to_string(drawing.place) + "]");
    if (element.name == "ORV_object_paint")
        paint(element, made, fields);
    else if (element.name == "ORV_object_paint_and_stroke")
        paint_and_stroke(element, made, fields);
    else if (element.name == "ORV_group_start")
        group_start(element, made, fields);
    else if (element.name == "ORV_group_finish")
        group_finish(element, drawing, made);
    else if (element.name == "ORV_resource_paint")
        resource_paint(element, made, fields);
    else if (element.name == "ORV_drawing_finish" || element.name == "ORV_drawing_discard")
    {
        drawing.open = false;
        for (const uint32_t engine : drawing.engines)
            if (engine != 0)
                dying_engines_.push_back(engine - 1);
        drawing.engines.clear();
        end_groups(drawing, 0);
    }
    else
        return false;
    made.asked = fields.list();
    return true;
}

bool CProgram::arguments(const Element& element, Call& made)
{
    bool can = true;
    if (element.name == "ORV_document_start")
        can = document_start(element, made);
    else if (element.name == "ORV_document_finish")
        can = document_finish(element, made);
    else if (element.name == "ORV_resource_destroy")
        can = resource_destroy(element, made);
    else if (element.name == "ORV_face_start" || element.name == "ORV_resource_start" ||
             element.name == "ORV_memory_context_start")
        can = drawing_start(element, made);
    else
        can = drawing_call(element, made);
    if (can)
    {
        walk(element, false, made);
        comments_before(element.end_byte, false, made);
        // The mask of a group can be asked for until the group ends.
        if (element.name == "ORV_group_start")
            steps_.hold_images(made.number);
    }
    return can;
}

}  // namespace orvlog::inspect
