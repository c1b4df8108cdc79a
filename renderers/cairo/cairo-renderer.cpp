#include "renderers/cairo/cairo-renderer.h"

#include "renderers/cairo/drawing.h"
#include "renderers/cairo/matrix.h"
#include "renderers/cairo/png-file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <list>

namespace orvlog::cairo_renderer
{
namespace
{

struct Document
{
    const GFI_FontEngineTable* engine = nullptr;
};

}  // namespace

class Renderer::Implementation
{
public:
    explicit Implementation(Options options);
    ~Implementation();
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    // A drawing that a client has open; the context of its table.
    struct Open
    {
        Implementation* owner = nullptr;
        void* error_context = nullptr;
        bool is_page = false;
        uint32_t resource_id = 0;
        Page page;
        SurfacePtr surface;
        cairo_t* cr = nullptr;
        std::unique_ptr<Drawing> drawing;
    };

    bool start_face(void* err, void* document, ORV_DrawingInterface* out, const GFI_FontEngineTable* engine,
                    uint32_t number, const ORV_FaceProperties* properties);
    bool start_resource(void* err, void* document, ORV_DrawingInterface* out, const GFI_FontEngineTable* engine,
                        const ORV_ResourceProperties* properties, uint32_t* id_out);
    void* start_document(const GFI_FontEngineTable* engine);
    bool finish_document(void* document);
    bool finish(Open& open);
    bool discard(Open& open);

    Options options_;
    Complaints complaints_;
    ColourSpaces spaces_;
    ImageStore images_;
    Resources resources_;
    ORV_Interface table_{};
    std::list<Document> documents_;
    std::list<Open> open_;
    uint32_t pages_started_ = 0;
    uint32_t pages_finished_ = 0;
    uint32_t next_resource_ = 1;
    bool all_written_ = true;

private:
    Shared shared();
    const GFI_FontEngineTable* engine_for(const GFI_FontEngineTable* engine, void* document) const;
    Open& open(void* err, ORV_DrawingInterface& out);
    void close(Open& open);
    bool finish_page(Open& open);
    bool in_bands(const Page& page) const;
    bool is_unwatched(const Page& page, uint32_t first_row, const PngFile* png) const;
    void tell_page(const Page& page) const;
    bool give_page(Open& open, PngFile* png);
    bool draw_bands(Open& open, PngFile* png);
};

namespace
{

using Implementation = Renderer::Implementation;
using Open = Implementation::Open;

// No exception leaves a call.
template <typename Call> uint32_t guarded(Implementation* owner, Call&& call)
{
    if (owner == nullptr)
        return 0;
    try
    {
        return call() ? 1U : 0U;
    }
    catch (const std::exception& failure)
    {
        try
        {
            owner->complaints_.lose_once(std::string("a call was given up: ") + failure.what());
        }
        catch (const std::exception&)
        {
            return 0;
        }
        return 0;
    }
}

Open* open_of(void* context)
{
    return static_cast<Open*>(context);
}

Implementation* owner_of(const Open* open)
{
    return open == nullptr ? nullptr : open->owner;
}

Implementation* renderer_of(void* context)
{
    return static_cast<Implementation*>(context);
}

uint32_t document_start(void* /*err*/, const ORV_Interface* table, void** document_out, uint32_t /*document_id*/,
                        const GFI_FontEngineTable* engine, void* /*extra*/)
{
    Implementation* owner = table == nullptr ? nullptr : renderer_of(table->document_start.context);
    return guarded(owner,
                   [&]
                   {
                       if (document_out == nullptr)
                           return false;
                       *document_out = owner->start_document(engine);
                       return true;
                   });
}

uint32_t document_finish(const ORV_Interface* table, void* document)
{
    Implementation* owner = table == nullptr ? nullptr : renderer_of(table->document_finish.context);
    return guarded(owner, [&] { return owner->finish_document(document); });
}

uint32_t resource_destroy(void* /*err*/, const ORV_Interface* table, void* /*document*/,
                          const ORV_DrawingInterface* /*parent*/, uint32_t resource_id)
{
    Implementation* owner = table == nullptr ? nullptr : renderer_of(table->resource_destroy.context);
    return guarded(owner, [&] { return owner->resources_.erase(resource_id) != 0; });
}

uint32_t face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                    const GFI_FontEngineTable* engine, uint32_t number, const ORV_FaceProperties* properties,
                    void* /*ticket*/, uint32_t /*orientation*/, uint32_t /*placement*/)
{
    Implementation* owner = table == nullptr ? nullptr : renderer_of(table->face_start.context);
    return guarded(owner, [&] { return owner->start_face(err, document, drawing_out, engine, number, properties); });
}

uint32_t resource_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                        const ORV_DrawingInterface* /*parent*/, const GFI_FontEngineTable* engine,
                        const ORV_ResourceProperties* properties, void* /*ticket*/, uint32_t* resource_id_out)
{
    Implementation* owner = table == nullptr ? nullptr : renderer_of(table->resource_start.context);
    return guarded(owner, [&]
                   { return owner->start_resource(err, document, drawing_out, engine, properties, resource_id_out); });
}

uint32_t memory_context_start(void* /*err*/, const ORV_Interface* table, void* /*document*/,
                              ORV_DrawingInterface* /*drawing_out*/, uintptr_t /*word1*/, uintptr_t /*word2*/,
                              uintptr_t /*word3*/, uintptr_t /*word4*/, uintptr_t /*word5*/,
                              const GFI_FontEngineTable* /*engine*/, void* /*ticket*/, uintptr_t /*word8*/,
                              uintptr_t /*word9*/, uintptr_t /*word10*/, uintptr_t /*word11*/, uintptr_t /*word12*/,
                              uintptr_t /*word13*/)
{
    Implementation* owner = table == nullptr ? nullptr : renderer_of(table->memory_context_start.context);
    return guarded(owner,
                   [&]
                   {
                       owner->complaints_.say_once("memory contexts cannot be opened");
                       return false;
                   });
}

uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t object_type, uint32_t /*hints*/,
                      const GOP_Operator* op, const GSH_ShapePointer* path, uint32_t /*placement*/,
                      const GSH_ShapeList* clip, GOP_OperandPointer* operand1, GOP_OperandPointer* operand2,
                      GOP_OperandPointer* /*operand3*/)
{
    Open* open = table == nullptr ? nullptr : open_of(table->object_paint.context);
    return guarded(owner_of(open),
                   [&]
                   {
                       open->drawing->paint({object_type, op, path, clip, operand1, operand2});
                       return true;
                   });
}

uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t fill_type, uint8_t stroke_type,
                                 uint32_t /*hints*/, const GOP_Operator* fill_op, const GOP_Operator* stroke_op,
                                 const GSH_ShapePointer* path, const GPA_PathStrokingParams* params,
                                 const GGO_Matrix* transform, uint32_t /*placement*/, const GSH_ShapeList* clip,
                                 uint32_t flags, GGO_Point* end_point, GOP_OperandPointer* fill_operand1,
                                 GOP_OperandPointer* fill_operand2, GOP_OperandPointer* /*fill_operand3*/,
                                 GOP_OperandPointer* stroke_operand1, GOP_OperandPointer* stroke_operand2,
                                 GOP_OperandPointer* /*stroke_operand3*/)
{
    Open* open = table == nullptr ? nullptr : open_of(table->object_paint_and_stroke.context);
    return guarded(owner_of(open),
                   [&]
                   {
                       open->drawing->paint_and_stroke(
                           {{fill_type, fill_op, path, clip, fill_operand1, fill_operand2},
                            {stroke_type, stroke_op, path, clip, stroke_operand1, stroke_operand2},
                            params,
                            transform,
                            flags,
                            end_point});
                       return true;
                   });
}

uint32_t group_start(const ORV_DrawingInterface* table, uint32_t /*group_unique_id*/, uint32_t* group_out,
                     const GFI_FontEngineTable* engine, uint32_t /*hints*/, uint32_t group_type, uint32_t is_knockout,
                     uint32_t /*is_replayable*/, void* /*ticket*/, uint32_t /*orientation*/, uint32_t /*has_placement*/,
                     uint32_t /*placement*/, const GGO_Matrix* retransform, const GOP_Operator* op,
                     GOP_OperandPointer* operand2, const GSH_ShapeList* clip, uint32_t tiling_flags, double x_interval,
                     double y_interval, const GBC_Color* /*separation_mask*/, const GBC_Color* /*separation_color*/,
                     const GGO_BoxFloat* /*bounding_box_hint*/)
{
    Open* open = table == nullptr ? nullptr : open_of(table->group_start.context);
    if (group_out != nullptr)
        *group_out = 0;
    return guarded(owner_of(open),
                   [&]
                   {
                       open->drawing->start_group({group_type, is_knockout != 0, engine, retransform, op, operand2,
                                                   clip, tiling_flags, x_interval, y_interval});
                       return true;
                   });
}

uint32_t group_finish(const ORV_DrawingInterface* table, uint32_t* replay_out)
{
    Open* open = table == nullptr ? nullptr : open_of(table->group_finish.context);
    if (replay_out != nullptr)
        *replay_out = 0;
    return guarded(owner_of(open), [&] { return open->drawing->finish_group(); });
}

uint32_t resource_paint(const ORV_DrawingInterface* table, uint32_t resource_id, uint32_t /*hints*/,
                        uint32_t group_type, const GGO_Matrix* retransform, const GOP_Operator* op,
                        GOP_OperandPointer* operand2, const GSH_ShapeList* clip, uint32_t tiling_flags,
                        double x_interval, double y_interval, const GBC_Color* /*separation_mask*/,
                        const GBC_Color* /*separation_color*/, uint32_t /*orientation*/)
{
    Open* open = table == nullptr ? nullptr : open_of(table->resource_paint.context);
    return guarded(owner_of(open),
                   [&]
                   {
                       return open->drawing->paint_resource(resource_id,
                                                            {group_type, false, nullptr, retransform, op, operand2,
                                                             clip, tiling_flags, x_interval, y_interval});
                   });
}

void* drawing_error_context(const ORV_DrawingInterface* table)
{
    const Open* open = table == nullptr ? nullptr : open_of(table->drawing_error_context.context);
    return open == nullptr ? nullptr : open->error_context;
}

uint32_t drawing_finish(const ORV_DrawingInterface* table)
{
    Open* open = table == nullptr ? nullptr : open_of(table->drawing_finish.context);
    return guarded(owner_of(open), [&] { return open->owner->finish(*open); });
}

uint32_t drawing_discard(const ORV_DrawingInterface* table)
{
    Open* open = table == nullptr ? nullptr : open_of(table->drawing_discard.context);
    return guarded(owner_of(open), [&] { return open->owner->discard(*open); });
}

ORV_Interface table_for(Implementation* owner)
{
    ORV_Interface table{};
    table.document_start = {document_start, owner};
    table.document_finish = {document_finish, owner};
    table.resource_destroy = {resource_destroy, owner};
    table.face_start = {face_start, owner};
    table.resource_start = {resource_start, owner};
    table.memory_context_start = {memory_context_start, owner};
    return table;
}

ORV_DrawingInterface table_for(Open* open)
{
    ORV_DrawingInterface table{};
    table.object_paint = {object_paint, open};
    table.object_paint_and_stroke = {object_paint_and_stroke, open};
    table.group_start = {group_start, open};
    table.group_finish = {group_finish, open};
    table.resource_paint = {resource_paint, open};
    table.drawing_error_context = {drawing_error_context, open};
    table.drawing_finish = {drawing_finish, open};
    table.drawing_discard = {drawing_discard, open};
    return table;
}

cairo_surface_t* make_image_page(const Page& page)
{
    return cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(page.width), static_cast<int>(page.rows));
}

cairo_t* begin_page(cairo_surface_t* surface)
{
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 1.0, 1.0, 1.0);
    cairo_paint(cr);
    return cr;
}

}  // namespace

Renderer::Implementation::Implementation(Options options)
    : options_(std::move(options)), complaints_(options_.complaint_sink, options_.loss_sink), spaces_(complaints_),
      images_(options_.kept_image_bytes, complaints_), table_(table_for(this))
{
}

// Drawings that were never ended are dropped; what they keep is no longer there to be given back.
Renderer::Implementation::~Implementation()
{
    for (Open& open : open_)
        if (open.cr != nullptr)
            cairo_destroy(open.cr);
}

Shared Renderer::Implementation::shared()
{
    return {complaints_,
            spaces_,
            resources_,
            images_,
            options_.glyph_form,
            options_.keep_images,
            options_.watch ? &*options_.watch : nullptr};
}

void* Renderer::Implementation::start_document(const GFI_FontEngineTable* engine)
{
    documents_.push_back({engine});
    return &documents_.back();
}

bool Renderer::Implementation::finish_document(void* document)
{
    const auto same = [&](const Document& known) { return &known == document; };
    return documents_.remove_if(same) != 0;
}

const GFI_FontEngineTable* Renderer::Implementation::engine_for(const GFI_FontEngineTable* engine, void* document) const
{
    if (engine != nullptr)
        return engine;
    for (const Document& known : documents_)
        if (&known == document)
            return known.engine;
    return nullptr;
}

Open& Renderer::Implementation::open(void* err, ORV_DrawingInterface& out)
{
    Open& open = open_.emplace_back();
    open.owner = this;
    open.error_context = err;
    out = table_for(&open);
    return open;
}

void Renderer::Implementation::close(Open& open)
{
    if (open.cr != nullptr)
        cairo_destroy(open.cr);
    open_.remove_if([&](const Open& known) { return &known == &open; });
}

bool Renderer::Implementation::start_face(void* err, void* document, ORV_DrawingInterface* out,
                                          const GFI_FontEngineTable* engine, uint32_t number,
                                          const ORV_FaceProperties* properties)
{
    if (out == nullptr || properties == nullptr)
        return false;
    Page page{
        pages_started_ + 1,           number, properties->fp_WidthInPixels, properties->fp_HeightInPixels, nullptr, 0,
        properties->fp_HeightInPixels};
    if (page.width == 0 || page.height == 0 || page.width > kGreatestPageSide || page.height > kGreatestPageSide)
    {
        complaints_.say_once("pages without pixels, or with more than 32000 at a side, cannot be opened");
        return false;
    }
    if (in_bands(page))
        page.rows = static_cast<uint32_t>(std::max<uint64_t>(options_.pixels_at_once / page.width, 1));
    if (options_.page_number)
        page.number = options_.page_number(page);
    SurfacePtr surface = own_surface(options_.surface_factory ? options_.surface_factory(page) : make_image_page(page));
    if (surface == nullptr || cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
    {
        complaints_.lose_once("pages whose surface cannot be made are left out");
        return false;
    }
    ++pages_started_;
    page.surface = surface.get();
    Open& opened = open(err, *out);
    opened.is_page = true;
    opened.page = page;
    opened.surface = surface;
    opened.cr = begin_page(surface.get());
    cairo_t* cr = in_bands(page) ? nullptr : opened.cr;
    if (cr != nullptr)
        tell_page(page);
    opened.drawing = std::make_unique<Drawing>(shared(), cr, matrix_of(properties->fp_FaceInchToPixels),
                                               engine_for(engine, document));
    return true;
}

bool Renderer::Implementation::start_resource(void* err, void* document, ORV_DrawingInterface* out,
                                              const GFI_FontEngineTable* engine,
                                              const ORV_ResourceProperties* properties, uint32_t* id_out)
{
    if (out == nullptr || properties == nullptr || id_out == nullptr)
        return false;
    Open& opened = open(err, *out);
    opened.resource_id = next_resource_++;
    *id_out = opened.resource_id;
    Resource& resource = resources_[opened.resource_id];
    const GGO_BoxFloat& box = properties->rp_Enclosing_box;
    resource.knockout = properties->rp_IsKnockout != 0;
    resource.has_box = box.gbf_MinX < box.gbf_MaxX && box.gbf_MinY < box.gbf_MaxY;
    resource.box = {box.gbf_MinX, box.gbf_MinY, box.gbf_MaxX, box.gbf_MaxY};
    cairo_matrix_t scale = identity();
    if (properties->rp_MaxRescale > 0.0F && std::isfinite(properties->rp_MaxRescale))
        cairo_matrix_init_scale(&scale, properties->rp_MaxRescale, properties->rp_MaxRescale);
    opened.drawing = std::make_unique<Drawing>(shared(), nullptr, scale, engine_for(engine, document));
    return true;
}

bool Renderer::Implementation::in_bands(const Page& page) const
{
    return !options_.surface_factory && uint64_t{page.width} * page.height > options_.pixels_at_once;
}

// Whether nobody looks at the band that begins with `first_row`.
bool Renderer::Implementation::is_unwatched(const Page& page, uint32_t first_row, const PngFile* png) const
{
    if (!options_.watch || options_.page_sink || png != nullptr)
        return false;
    const PixelBox& box = options_.watch->box;
    return box.y1 <= static_cast<int64_t>(first_row) || box.y0 >= static_cast<int64_t>(first_row) + page.rows;
}

void Renderer::Implementation::tell_page(const Page& page) const
{
    if (!options_.watch)
        return;
    WatchStep step;
    step.kind = WatchStep::Kind::page_begins;
    step.call = options_.watch->call();
    const bool image = cairo_surface_get_type(page.surface) == CAIRO_SURFACE_TYPE_IMAGE;
    step.target = image ? page.surface : nullptr;
    step.area = {0, static_cast<int>(page.first_row), static_cast<int>(page.width),
                 static_cast<int>(page.first_row + page.rows)};
    options_.watch->step(step);
}

// Hands the page, or the band that the surface holds, to those who want it.
bool Renderer::Implementation::give_page(Open& open, PngFile* png)
{
    const cairo_status_t status = cairo_status(open.cr);
    if (status != CAIRO_STATUS_SUCCESS)
        complaints_.lose_once(std::string("Cairo gave up a page: ") + cairo_status_to_string(status));
    cairo_show_page(open.cr);
    cairo_surface_flush(open.surface.get());
    if (options_.page_sink)
        options_.page_sink(open.page);
    const bool image = cairo_surface_get_type(open.surface.get()) == CAIRO_SURFACE_TYPE_IMAGE;
    return (png == nullptr || (image && png->add_rows(open.surface.get()))) && status == CAIRO_STATUS_SUCCESS;
}

// One surface serves all bands but a shorter last one. A band lies on the page by its device offset, so that all is
// where it would be on the whole page.
bool Renderer::Implementation::draw_bands(Open& open, PngFile* png)
{
    bool good = true;
    Page& page = open.page;
    const uint32_t rows = page.rows;
    for (uint32_t row = 0; row < page.height; row += rows)
    {
        if (is_unwatched(page, row, png))
            continue;
        cairo_destroy(open.cr);
        page.first_row = row;
        if (page.rows > page.height - row)
        {
            page.rows = page.height - row;
            open.surface = nullptr;
            open.surface = own_surface(make_image_page(page));
            page.surface = open.surface.get();
        }
        cairo_surface_set_device_offset(page.surface, 0.0, -static_cast<double>(row));
        open.cr = begin_page(page.surface);
        tell_page(page);
        open.drawing->paint_on(open.cr);
        good = give_page(open, png) && good;
    }
    return good;
}

bool Renderer::Implementation::finish_page(Open& open)
{
    ++pages_finished_;
    std::unique_ptr<PngFile> png;
    char number[16];
    std::snprintf(number, sizeof number, "-%03u.png", open.page.number);
    const std::string name = options_.png_prefix + number;
    const bool wanted = !options_.png_prefix.empty();
    if (wanted)
        png = PngFile::create(name, open.page.width, open.page.height);
    bool good = in_bands(open.page) ? draw_bands(open, png.get()) : give_page(open, png.get());
    if (wanted && (png == nullptr || !png->close()))
    {
        complaints_.lose_once("the page image " + name + " could not be written");
        good = false;
    }
    good = good && !images_.has_lost();
    all_written_ = all_written_ && good;
    return good;
}

bool Renderer::Implementation::finish(Open& open)
{
    bool good = true;
    if (open.drawing != nullptr)
        open.drawing->finish();
    if (open.is_page)
        good = finish_page(open);
    else if (open.drawing != nullptr && resources_.count(open.resource_id) != 0)
        open.drawing->take_content(resources_[open.resource_id]);
    close(open);
    return good;
}

bool Renderer::Implementation::discard(Open& open)
{
    if (open.drawing != nullptr)
        open.drawing->discard();
    if (!open.is_page)
        resources_.erase(open.resource_id);
    close(open);
    return true;
}

Renderer::Renderer(Options options) : implementation_(std::make_unique<Implementation>(std::move(options))) {}

Renderer::~Renderer() = default;

const ORV_Interface* Renderer::interface() const
{
    return &implementation_->table_;
}

uint32_t Renderer::pages_finished() const
{
    return implementation_->pages_finished_;
}

const std::vector<std::string>& Renderer::complaints() const
{
    return implementation_->complaints_.said();
}

bool Renderer::all_pages_written() const
{
    return implementation_->all_written_;
}

}  // namespace orvlog::cairo_renderer
