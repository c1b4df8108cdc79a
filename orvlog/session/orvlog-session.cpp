#include "orvlog/session/orvlog-session.h"

#include "holv-core/gio/gio-file.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstring>

namespace
{

constexpr uint32_t kDrawingKindLoggedToo = 4;

template <typename Record> void unlink_live(Record** link, const Record* record)
{
    while (*link != nullptr && *link != record)
        link = &(*link)->next_live;
    if (*link != nullptr)
        *link = record->next_live;
}

template <typename Record> Record* find_live(Record* list, const void* record)
{
    while (list != nullptr && list != record)
        list = list->next_live;
    return list;
}

constexpr ORVLOG_Session on_standard_output()
{
    ORVLOG_Session session = {};
    session.writer = orvlog_writer_without_warnings(&gio_standard_output);
    return session;
}

}  // namespace

ORVLOG_Session* orvlog_standalone_session(void)
{
    // It has its stream from the start, so that several threads may ask for it at once.
    static constinit ORVLOG_Session session = on_standard_output();
    gio_setup_standard_streams();
    return &session;
}

void orvlog_free_session(ORVLOG_Session* session)
{
    orvlog_image_slots_end(&session->image_slots, session->allocator, session);
}

void orvlog_session_clear_scratch(ORVLOG_Session* session)
{
    GMM_Allocator* allocator = session->side_allocator;
    while (session->object_scratch != nullptr)
    {
        font_id_pair* pair = session->object_scratch;
        session->object_scratch = pair->next;
        allocator->gmm_Free(allocator, pair);
    }
    session->pairs_by_font = nullptr;
    session->pairs_by_string = nullptr;
    session->pairs_by_both = nullptr;
}

bool orvlog_drawing_is_logged(const ORVLOG_DrawingContext* drawing)
{
    return drawing->kind == ORVLOG_DRAWING_FACE || drawing->kind == ORVLOG_DRAWING_RESOURCE ||
           drawing->kind == kDrawingKindLoggedToo;
}

bool orvlog_session_is_base(const ORVLOG_Session* session)
{
    return session->logging_mode == ORVLOG_MODE_BASE;
}

void orvlog_choose_mode(ORVLOG_Session* session, uint32_t mode)
{
    session->logging_mode = mode;
    session->image.image_logging_mode = mode;
}

ORVLOG_DocumentContext* orvlog_open_document(ORVLOG_Session* session)
{
    GMM_Allocator* allocator = session->allocator;
    auto* document = gmm_alloc_record<ORVLOG_DocumentContext>(allocator);
    if (document == nullptr)
        return nullptr;
    *document = {session, nullptr, session->next_document_context++, session->live_documents};
    session->live_documents = document;
    return document;
}

void orvlog_close_document(ORVLOG_DocumentContext* document)
{
    ORVLOG_Session* session = document->session;
    unlink_live(&session->live_documents, document);
    session->allocator->gmm_Free(session->allocator, document);
}

ORVLOG_DrawingContext* orvlog_open_drawing(ORVLOG_Session* session, void* error_context)
{
    GMM_Allocator* allocator = session->side_allocator;
    auto* drawing = gmm_alloc_record<ORVLOG_DrawingContext>(allocator);
    if (drawing == nullptr)
        return nullptr;
    std::memset(drawing, 0, sizeof *drawing);
    drawing->session = session;
    drawing->drawing_context = session->next_drawing_context++;
    drawing->error_context = error_context;
    drawing->saved_font_wrapper = session->current_font_wrapper;
    drawing->next_live = session->live_drawings;
    session->live_drawings = drawing;
    return drawing;
}

void orvlog_close_drawing(ORVLOG_DrawingContext* drawing)
{
    ORVLOG_Session* session = drawing->session;
    unlink_live(&session->live_drawings, drawing);
    session->side_allocator->gmm_Free(session->side_allocator, drawing);
}

ORVLOG_DocumentContext* orvlog_find_document(const ORVLOG_Session* session, const void* document)
{
    return find_live(session->live_documents, document);
}

ORVLOG_DrawingContext* orvlog_find_drawing(const ORVLOG_Session* session, const ORV_DrawingInterface* drawing)
{
    return drawing != nullptr ? find_live(session->live_drawings, drawing->object_paint.context) : nullptr;
}

bool orvlog_resource_map_add(ORVLOG_Session* session, uint32_t resource_id, uint32_t renderer_resource_id)
{
    GMM_Allocator* allocator = session->side_allocator;
    auto* entry = gmm_alloc_record<ORVLOG_ResourceMapEntry>(allocator);
    if (entry == nullptr)
        return false;
    *entry = {session->resource_map, resource_id, renderer_resource_id};
    session->resource_map = entry;
    return true;
}

const ORVLOG_ResourceMapEntry* orvlog_resource_map_find(const ORVLOG_Session* session, uint32_t resource_id)
{
    const ORVLOG_ResourceMapEntry* entry = session->resource_map;
    while (entry != nullptr && entry->resource_id != resource_id)
        entry = entry->next;
    return entry;
}

void orvlog_resource_map_remove(ORVLOG_Session* session, uint32_t resource_id)
{
    ORVLOG_ResourceMapEntry** link = &session->resource_map;
    while (*link != nullptr && (*link)->resource_id != resource_id)
        link = &(*link)->next;
    ORVLOG_ResourceMapEntry* entry = *link;
    if (entry == nullptr)
        return;
    *link = entry->next;
    session->side_allocator->gmm_Free(session->side_allocator, entry);
}

void orvlog_resource_map_clear(ORVLOG_Session* session)
{
    while (session->resource_map != nullptr)
        orvlog_resource_map_remove(session, session->resource_map->resource_id);
}
