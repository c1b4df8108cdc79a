#include "clients/replay/player.h"

#include "clients/replay/image-log.h"
#include "reader/text/log-files.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace orvlog::replay
{

namespace
{

using reader::Children;
using reader::Element;
using reader::RecordReader;

// Records that hold no callbacks.
bool is_closed_record(const Element& element)
{
    return element.name == "GSH_ShapePointer" || element.name.starts_with("GOP_Operand") ||
           element.name.starts_with("GFI_");
}

// Ids rise, so that the paint behind one that is missing ends the replay as well.
bool ends_at(const Element& call, const reader::CallAddress& address)
{
    if (address.kind != reader::CallAddress::Kind::id)
        return reader::is_at(call, address);
    const bool is_paint = call.name == "ORV_object_paint" || call.name == "ORV_object_paint_and_stroke";
    return is_paint && reader::read_uint(call, "id") >= address.number;
}

}  // namespace

Player::Player(const ORV_Interface* table, ReplayTickets& tickets, const Options& options, CallStream& calls)
    : table_(table), tickets_(tickets), options_(options), calls_(calls)
{
    if (options.as_logged != nullptr)
        set_tasks();
}

void Player::complain(const std::string& line) const
{
    if (options_.complain)
        options_.complain(line);
}

bool Player::note(uint32_t result)
{
    ++outcome_.calls;
    outcome_.failed += result == 0 ? 1 : 0;
    return result != 0;
}

std::vector<uint8_t> Player::side_file(std::string_view name, uint64_t begin, uint64_t count)
{
    if (side_file_name_ != name)
    {
        side_file_name_ = name;
        reader::LogFile file = options_.files.open(side_file_name_, reader::LogFileKind::image_data);
        side_file_ = std::move(file.stream);
        if (side_file_ == nullptr)
            complain("the file " + side_file_name_ + " " + file.why);
    }
    outcome_.missing += side_file_ == nullptr ? 1 : 0;
    if (side_file_ == nullptr)
        return {};
    side_file_->clear();
    side_file_->seekg(0, std::ios::end);
    const auto size = static_cast<uint64_t>(side_file_->tellg());
    std::vector<uint8_t> bytes(begin < size ? std::min(count, size - begin) : 0);
    side_file_->seekg(static_cast<std::streamoff>(std::min(begin, size)));
    side_file_->read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<size_t>(side_file_->gcount()));
    if (bytes.size() < count && count != UINT64_MAX)
    {
        ++outcome_.missing;
        complain("the file " + side_file_name_ + " is too short");
    }
    return bytes;
}

void Player::on_image(GOP_OperandImagePointer* image, const Element& element)
{
    // What a prepare left comes without pixels.
    if (collecting_ || (options_.as_logged != nullptr && options_.as_logged->client.is_leaving()))
        return;
    const uint32_t id = reader::read_uint(element, "Id");
    ReplayImage* made = memory_->images.emplace_back(std::make_unique<ReplayImage>(image, element)).get();
    memory_->by_id[id] = made;
    if (options_.as_logged != nullptr)
        make_scripted(image, element);
    if (reader::read_bool(element, "imp_DirectImage") == 0)
        return;
    const Element* data = element.child("imp_DirectImageData");
    const Element* buffer = data != nullptr ? data->child("BufferUInt8") : nullptr;
    const uint64_t missing_before = outcome_.missing;
    std::vector<uint8_t> bytes;
    if (buffer != nullptr)
        bytes.assign(buffer->bytes.begin(), buffer->bytes.end());
    else if (element.has("imp_DirectImageFileName"))
        bytes = side_file(reader::to_text(element.value("imp_DirectImageFileName")), 0, UINT64_MAX);
    if (made->set_direct(std::move(bytes)))
        return;
    outcome_.missing = missing_before + 1;
    complain("image " + std::to_string(id) + " has fewer bytes than pixels");
}

void Player::begin_call(const Element& call)
{
    if (options_.as_logged != nullptr)
        return begin_call_as_logged(call);
    if (memory_ == nullptr || memory_.use_count() > 1)
        new_memory();
    CallMemory& memory = *memory_;
    memory.by_id.clear();
    memory.images.clear();
    memory.records.start_call();
    memory.arena.clear();
    fonts_.start_call(memory.records);
}

void Player::new_memory()
{
    memory_ = std::make_shared<CallMemory>();
    memory_->records.on_image = [this](GOP_OperandImagePointer* image, const Element& element)
    { on_image(image, element); };
    memory_->records.on_text = [this](const GSH_ShapePointer& shape, const Element& element)
    { on_text(shape, element); };
}

void Player::on_text(const GSH_ShapePointer& shape, const Element& element)
{
    const uint32_t font_id = reader::read_uint(element, "orvlog_font_spec_id");
    const uint32_t string_id = reader::read_uint(element, "orvlog_string_desc_id");
    if (options_.as_logged == nullptr)
        fonts_.add_string(shape.sp_U.glyph.string_desc, font_id, string_id);
    else
        options_.as_logged->renderer.note_text(font_id, string_id, shape.sp_U.glyph.font_spec_ptr,
                                               shape.sp_U.glyph.string_desc);
}

bool Player::has_kept(const CallMemory& memory) const
{
    if (options_.as_logged != nullptr)
        return options_.as_logged->renderer.has_kept(&memory);
    return std::ranges::any_of(memory.images, [](const auto& image) { return image->is_kept(); });
}

bool Player::has_refused(const CallMemory& memory) const
{
    return options_.as_logged == nullptr &&
           std::ranges::any_of(memory.images, [](const auto& image) { return image->is_refused(); });
}

void Player::hold(const std::shared_ptr<CallMemory>& memory)
{
    if (has_kept(*memory) && (kept_.empty() || kept_.back() != memory))
        kept_.push_back(memory);
    // The logger holds fewer images whose keep was refused.
    constexpr size_t kMostRefused = 64;
    if (has_refused(*memory) && !has_kept(*memory))
        refused_.push_back(memory);
    if (refused_.size() > kMostRefused)
        refused_.pop_front();
}

void Player::drop_released()
{
    std::erase_if(kept_, [this](const auto& memory) { return !has_kept(*memory); });
    std::erase_if(refused_, [this](const auto& memory) { return !has_refused(*memory); });
}

std::shared_ptr<void> Player::still_kept() const
{
    // As logged, nothing is done behind the log but where it can't be told.
    if (options_.as_logged != nullptr && !options_.as_logged->facts.merged)
        return nullptr;
    auto still = std::make_shared<std::vector<std::shared_ptr<CallMemory>>>(kept_);
    still->insert(still->end(), refused_.begin(), refused_.end());
    return still;
}

void Player::end_call()
{
    outcome_.unknown += memory_->records.unknown() - memory_->unknown_before;
    memory_->unknown_before = memory_->records.unknown();
    hold(memory_);
}

void Player::collect_image(const Element& callback)
{
    const auto known = memory_->by_id.find(reader::read_uint(callback, "Id"));
    if (known == memory_->by_id.end())
        return;
    ReplayImage* image = known->second;
    image->add(
        callback,
        [this](std::string_view name, uint64_t begin, uint64_t count) { return side_file(name, begin, count); },
        memory_->records);
    const Element* left = callback.name == "GOP_ImagePrepareFn" ? callback.child("GOP_OperandImagePointer") : nullptr;
    if (left != nullptr)
        memory_->by_id[reader::read_uint(*left, "Id")] = image;
    if (callback.has("async_img_log_file_name"))
        read_kept(callback, [this](const Element& made) { collect_image(made); });
}

// The callbacks of an image that has a log of its own.
void Player::read_kept(const Element& keep, const std::function<void(const Element&)>& on_callback)
{
    const std::string why = read_image_log(keep, options_.files, &outcome_.damage, on_callback);
    if (why.empty())
        return;
    ++outcome_.missing;
    complain(why);
}

// The callbacks of a call, in their order, to those who answer them.
void Player::collect(const Element& element)
{
    if (options_.as_logged != nullptr)
        return;
    collecting_ = true;
    for (const Element& child : Children(element))
        if (is_image_callback(child))
            collect_image(child);
        else if (is_font_callback(child))
            fonts_.add_callback(child);
        else if (!is_closed_record(child))
            collect(child);
    collecting_ = false;
}

void* Player::document(const Element& call)
{
    const auto known = documents_.find(reader::read_uint(call, "document_context"));
    return call.has("document_context") && known != documents_.end() ? known->second : nullptr;
}

const ORV_DrawingInterface* Player::parent(const Element& call)
{
    const auto known = drawings_.find(reader::read_uint(call, "parent_drawing"));
    const bool there = call.has("parent_drawing") && known != drawings_.end() && known->second.open;
    return there ? &known->second.table : nullptr;
}

void Player::start_document(const Element& call)
{
    void* handle = nullptr;
    // Behind its call the element may be gone.
    const uint32_t number = reader::read_uint(call, "document_context");
    document_engines_[number] = engine_number(call);
    note(table_->document_start.fn(nullptr, table_, &handle, reader::read_uint(call, "document_id"), engine(call),
                                   nullptr));
    documents_[number] = handle;
}

void Player::finish_document(const Element& call)
{
    const uint32_t number = reader::read_uint(call, "document_context");
    const bool known = call.has("document_context");
    note(table_->document_finish.fn(table_, document(call)));
    if (!known)
        return;
    forget_engine(document_engines_[number]);
    document_engines_.erase(number);
    documents_.erase(number);
}

void Player::scale(ORV_FaceProperties* face) const
{
    const double present = resolution(face->fp_FaceInchToPixels);
    if (!(options_.dpi > 0) || !(present > 0))
        return;
    const double factor = options_.dpi / present;
    for (double& value : face->fp_FaceInchToPixels.m)
        value *= factor;
    const auto scaled = [factor](uint32_t pixels)
    { return static_cast<uint32_t>(std::clamp(std::round(pixels * factor), 1.0, 4294967295.0)); };
    face->fp_WidthInPixels = scaled(face->fp_WidthInPixels);
    face->fp_HeightInPixels = scaled(face->fp_HeightInPixels);
}

// Null for one on which a call is being made: no job began another one in its place.
Player::Drawing* Player::begin_drawing(const Element& call)
{
    Drawing& drawing = drawings_[reader::read_uint(call, "drawing_context")];
    if (drawing.calls > 0)
    {
        cannot_be(call, "stands in a call on its drawing");
        return nullptr;
    }
    drawing = {};
    drawing.engine = engine_number(call);
    return &drawing;
}

void Player::start_face(const Element& call)
{
    ++outcome_.faces;
    Drawing* begun = begin_drawing(call);
    if (begun == nullptr)
        return;
    Drawing& drawing = *begun;
    drawing.skipped = outcome_.faces < options_.first_page || outcome_.faces > options_.last_page ||
                      (options_.wants_page && !options_.wants_page(outcome_.faces));
    if (drawing.skipped)
        return;
    if (options_.page_begins)
        options_.page_begins(outcome_.faces, reader::read_uint(call, "face_seq_number"));
    const ORV_FaceProperties* told = memory_->records.face_properties(call.child("ORV_FaceProperties"));
    ORV_FaceProperties face = told != nullptr ? *told : ORV_FaceProperties{};
    scale(&face);
    drawing.open = note(table_->face_start.fn(
        nullptr, table_, document(call), &drawing.table, engine(call), reader::read_uint(call, "face_seq_number"),
        told != nullptr ? &face : nullptr, tickets_.ticket(call),
        reader::read_enum(call, "pixel_placement_orientation"), reader::read_enum(call, "pixel_placement")));
    outcome_.pages += drawing.open ? 1 : 0;
    outcome_.pages_refused += drawing.open ? 0 : 1;
}

void Player::start_resource(const Element& call)
{
    Drawing* begun = begin_drawing(call);
    if (begun == nullptr)
        return;
    Drawing& drawing = *begun;
    const uint32_t number = reader::read_uint(call, "resource_id");
    uint32_t id = 0;
    drawing.open = note(table_->resource_start.fn(
        nullptr, table_, document(call), &drawing.table, parent(call), engine(call),
        memory_->records.resource_properties(call.child("ORV_ResourceProperties")), tickets_.ticket(call), &id));
    drawing.open |= options_.as_logged != nullptr;
    resources_[number] = id;
}

void Player::start_memory_context(const Element& call)
{
    Drawing* begun = begin_drawing(call);
    if (begun == nullptr)
        return;
    Drawing& drawing = *begun;
    // What it was begun with isn't told; as logged, there is nothing more to it.
    outcome_.not_played += options_.as_logged != nullptr ? 0 : 1;
    drawing.open = note(table_->memory_context_start.fn(nullptr, table_, document(call), &drawing.table, 0, 0, 0, 0, 0,
                                                        engine(call), nullptr, 0, 0, 0, 0, 0, 0));
}

void Player::destroy_resource(const Element& call)
{
    const auto known = resources_.find(reader::read_uint(call, "resource_id"));
    const uint32_t id = known != resources_.end() ? known->second : reader::read_uint(call, "resource_id");
    if (known != resources_.end())
        resources_.erase(known);
    note(table_->resource_destroy.fn(nullptr, table_, document(call), parent(call), id));
}

void Player::start_group(const Element& call, Drawing& drawing)
{
    RecordReader& records = memory_->records;
    uint32_t group = 0;
    const GGO_Matrix* retransform = records.matrix_attribute(call, "retransform");
    const GOP_Operator* op = records.op_member(call, "op");
    GOP_OperandPointer* operand2 = records.operand_member(call, "operand2");
    const GSH_ShapeList* clip = records.clip_member(call, "group_clip");
    collect(call);
    // Groups that are started from within it are inside.
    ++drawing.groups;
    begin_scope(call, drawing);
    note(drawing.table.group_start.fn(
        &drawing.table, reader::read_uint(call, "group_unique_id"), &group, engine(call),
        reader::read_flags(call, "hints"), reader::read_enum(call, "group_type"),
        reader::read_bool(call, "is_knockout"), reader::read_bool(call, "is_replayable"), tickets_.ticket(call),
        reader::read_enum(call, "pixel_placement_orientation"), reader::read_bool(call, "has_pixel_placement"),
        reader::read_enum(call, "pixel_placement"), retransform, op, operand2, clip,
        reader::read_flags(call, "tiling_flags"), reader::read_double(call, "x_repetition_interval"),
        reader::read_double(call, "y_repetition_interval"), records.color_member(call, "separation_mask"),
        records.color_member(call, "separation_color"), records.box_attribute(call, "bounding_box_hint")));
}

void Player::finish_group(const Element&, Drawing& drawing)
{
    uint32_t again = 0;
    note(drawing.table.group_finish.fn(&drawing.table, &again));
    if (again == 0 && drawing.groups > 0)
        --drawing.groups;
    end_scopes(drawing, drawing.groups);
}

void Player::paint(const Element& call, Drawing& drawing)
{
    RecordReader& records = memory_->records;
    const GOP_Operator* op = records.op_member(call, "op");
    const GSH_ShapePointer* path = records.shape_member(call, "paint_path");
    const GSH_ShapeList* clip = records.clip_member(call, "clip");
    GOP_OperandPointer* operand1 = records.operand_member(call, "operand1");
    GOP_OperandPointer* operand2 = records.operand_member(call, "operand2");
    GOP_OperandPointer* operand3 = records.operand_member(call, "operand3");
    collect(call);
    note(drawing.table.object_paint.fn(
        &drawing.table, static_cast<uint8_t>(reader::read_uint(call, "object_type_and_flag")),
        reader::read_flags(call, "object_hints"), op, path, reader::read_enum(call, "path_pixel_placement"), clip,
        operand1, operand2, operand3));
}

void Player::paint_and_stroke(const Element& call, Drawing& drawing)
{
    RecordReader& records = memory_->records;
    GGO_Point end{};
    const GOP_Operator* fill_op = records.op_member(call, "fill_op");
    const GOP_Operator* stroke_op = records.op_member(call, "stroke_op");
    const GSH_ShapePointer* path = records.shape_member(call, "paint_path");
    const GPA_PathStrokingParams* stroke = records.stroke_member(call, "stroking_params");
    const GSH_ShapeList* clip = records.clip_member(call, "clip");
    GOP_OperandPointer* fill[3] = {records.operand_member(call, "fill_operand1"),
                                   records.operand_member(call, "fill_operand2"),
                                   records.operand_member(call, "fill_operand3")};
    GOP_OperandPointer* line[3] = {records.operand_member(call, "stroke_operand1"),
                                   records.operand_member(call, "stroke_operand2"),
                                   records.operand_member(call, "stroke_operand3")};
    collect(call);
    note(drawing.table.object_paint_and_stroke.fn(
        &drawing.table, static_cast<uint8_t>(reader::read_uint(call, "fill_object_type")),
        static_cast<uint8_t>(reader::read_uint(call, "stroke_object_type")), reader::read_flags(call, "object_hints"),
        fill_op, stroke_op, path, stroke, records.matrix_attribute(call, "stroking_transform"),
        reader::read_enum(call, "path_pixel_placement"), clip, reader::read_flags(call, "paint_flags"), &end, fill[0],
        fill[1], fill[2], line[0], line[1], line[2]));
}

void Player::paint_resource(const Element& call, Drawing& drawing)
{
    RecordReader& records = memory_->records;
    const auto known = resources_.find(reader::read_uint(call, "resource_id"));
    const GGO_Matrix* retransform = records.matrix_attribute(call, "retransform");
    const GOP_Operator* op = records.op_member(call, "op");
    GOP_OperandPointer* operand2 = records.operand_member(call, "operand2");
    const GSH_ShapeList* clip = records.clip_member(call, "group_clip");
    collect(call);
    note(drawing.table.resource_paint.fn(
        &drawing.table, known != resources_.end() ? known->second : reader::read_uint(call, "resource_id"),
        reader::read_flags(call, "hints"), reader::read_enum(call, "group_type"), retransform, op, operand2, clip,
        reader::read_uint(call, "tiling_flags"), reader::read_double(call, "x_repetition_interval"),
        reader::read_double(call, "y_repetition_interval"), records.color_member(call, "separation_mask"),
        records.color_member(call, "separation_color"), reader::read_enum(call, "pixel_placement_orientation")));
}

void Player::end_drawing(Drawing& drawing, bool discard)
{
    if (discard)
        note(drawing.table.drawing_discard.fn(&drawing.table));
    else
        note(drawing.table.drawing_finish.fn(&drawing.table));
    drawing.open = false;
    drawing.groups = 0;
    end_scopes(drawing, 0);
    forget_engine(drawing.engine);
    drop_released();
}

void Player::drawing_call(const Element& call)
{
    const auto known = drawings_.find(reader::read_uint(call, "drawing_context"));
    if (known == drawings_.end() || !known->second.open)
    {
        outcome_.not_played += known != drawings_.end() && known->second.skipped ? 0 : 1;
        return;
    }
    Drawing& drawing = known->second;
    const bool ends = call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard";
    if (ends && drawing.calls > 0)
        return cannot_be(call, "stands in a call on its drawing");
    ++drawing.calls;
    if (call.name == "ORV_object_paint")
        paint(call, drawing);
    else if (call.name == "ORV_object_paint_and_stroke")
        paint_and_stroke(call, drawing);
    else if (call.name == "ORV_group_start")
        start_group(call, drawing);
    else if (call.name == "ORV_group_finish")
        finish_group(call, drawing);
    else if (call.name == "ORV_resource_paint")
        paint_resource(call, drawing);
    else if (ends)
        end_drawing(drawing, call.name == "ORV_drawing_discard");
    else
        ++outcome_.not_played;
    --drawing.calls;
    if (memory_ != nullptr)
        end_call();
}

bool Player::play(const Element& call)
{
    const bool last = options_.up_to && ends_at(call, *options_.up_to);
    if (reader::is_call_name(call.name))
        make(call);
    else if (options_.as_logged != nullptr && (is_image_callback(call) || is_font_callback(call)))
        options_.as_logged->renderer.perform(call);
    return !last;
}

void Player::make(const Element& call)
{
    begin_call(call);
    const bool unended = call.implied_end && options_.as_logged != nullptr;
    if (call.name == "ORV_document_start")
        start_document(call);
    else if (call.name == "ORV_document_finish")
        finish_document(call);
    else if (call.name == "ORV_face_start")
        start_face(call);
    else if (call.name == "ORV_resource_start")
        start_resource(call);
    else if (call.name == "ORV_memory_context_start")
        start_memory_context(call);
    else if (call.name == "ORV_resource_destroy")
        destroy_resource(call);
    else
        drawing_call(call);
    if (unended)
        options_.as_logged->renderer.run_rest();
    if (options_.as_logged != nullptr)
        options_.as_logged->script.end_call();
}

void Player::finish_all()
{
    for (auto& [number, drawing] : drawings_)
    {
        if (!drawing.open)
            continue;
        for (uint32_t again = 0; drawing.groups > 0; --drawing.groups)
            note(drawing.table.group_finish.fn(&drawing.table, &again));
        end_drawing(drawing, false);
    }
    for (const auto& [number, handle] : documents_)
        note(table_->document_finish.fn(table_, handle));
    documents_.clear();
}

}  // namespace orvlog::replay
