// The session: everything that belongs to one log, from initialise to shutdown, and the records that hang from
// it. One thread at a time drives a session; sessions share the records of the standard streams and nothing else.

#pragma once

#include "orvlog/interface/orvlog-session-options.h"
#include "orvlog/log/orvlog-writer.h"
#include "orvlog/session/orvlog-image-slots.h"

#include <cstdint>

struct FontEngineWrapper;
struct ORVLOG_ColourFrame;
struct ORVLOG_DocumentContext;
struct ORVLOG_DrawingContext;
struct ORVLOG_GroupFrame;
struct ORVLOG_TicketEntry;

// What image records look at. The session holds these words in this order, and images read them through a
// pointer to the first.
struct ORVLOG_ImageParams
{
    uint32_t image_logging_mode;  // set together with logging_mode
    uint32_t image_dump_flag;     // non-zero asks for attribute data when images are read through
    uint32_t has_file_prefix;     // 1: image bytes go into files beside the log
    char file_prefix[1000];       // first part of their names; ends in zero
};

// Pairs the number of a resource that the client sees with the one that the renderer gave.
struct ORVLOG_ResourceMapEntry
{
    ORVLOG_ResourceMapEntry* next;
    uint32_t resource_id;
    uint32_t renderer_resource_id;
};

// One sighting of a font and a string in a paint.
struct font_id_pair
{
    font_id_pair* next;
    const GFI_FontSpecPointer* font_spec;
    uint32_t font_spec_id;
    const GFI_StringDescPointer* string_desc;
    uint32_t string_desc_id;

    font_id_pair* by_font[2];  // below this node in each of the trees that it stands in
    font_id_pair* by_string[2];
    font_id_pair* by_both[2];
};

struct ORVLOG_Session
{
    ORVLOG_IdentityObject* identity_object;
    GMM_Allocator* allocator;
    uint32_t next_font_wrapper_id;  // GfpId
    uint32_t next_resource_id;      // as the client sees it
    const ORVLOG_TicketFunctions* ticket_functions;
    const ORVLOG_TicketSerialFunctions* ticket_serial_functions;  // null: no ticket is logged
    const void* third_client_table;                               // stored, read by nothing
    const GFI_FontEngineTable* current_font_wrapper;              // the wrapped table in force, or null
    uint32_t glyph_fixed_format;                                  // non-zero: glyphs are captured in fixed formats
    uint32_t glyph_get_format;                                    // GFI_GDT_* asked for in a glyph capture
    GGO_Matrix object_transform;   // of the object being painted: path, group and drawing combined
    GGO_Matrix drawing_transform;  // the drawing's, or the identity for an object without a path
    void* document_handle;         // the document as the renderer knows it
    const ORV_Interface* second_interface;
    void* second_document_handle;
    ORV_DrawingInterface second_drawing_table;  // of the face now open
    uint32_t next_drawing_context;
    ORVLOG_ColourFrame* colour_frames;
    ORVLOG_TicketEntry* logged_tickets;
    GMM_Allocator* side_allocator;  // the same allocator; the one that record code uses
    uint32_t next_object_id;
    uint32_t object_type;  // fill object type of the paint in progress
    font_id_pair* object_scratch;
    uint32_t next_font_spec_id;
    uint32_t next_string_desc_id;
    uint32_t glyph_warned_index_get;
    uint32_t glyph_warned_fixed_fbe;
    uint32_t glyph_warned_fixed_bitmap;
    uint32_t glyph_warned_fixed_path;
    uint32_t glyph_warned_glyph_get;
    GGO_Point glyph_end_point;  // pen position behind a text object, in the coordinates of the drawing
    ORVLOG_ResourceMapEntry* resource_map;
    const ORVLOG_IdentitySource* identity_pointer;
    uint16_t group_depth;   // group frames of all drawings
    uint32_t logging_mode;  // ORVLOG_MODE_*
    uint32_t next_document_context;
    ORVLOG_ImageParams image;
    uint32_t image_sequence[2];  // side file number, image id; each replaced image raises both by 10
    ORVLOG_Writer writer;
    uint8_t session_id[16];
    uint32_t merge_pending;  // 1: shutdown merges the temporary log into merge_target_stream
    char merge_file_name[48];
    GIO_Stream* merge_source_stream;
    GIO_Stream* merge_target_stream;
    uint32_t merge_compress;
    uint32_t merge_mode;  // non-zero: an image was kept and has a log of its own

    font_id_pair* pairs_by_font;  // the nodes of object_scratch again, as trees
    font_id_pair* pairs_by_string;
    font_id_pair* pairs_by_both;
    ORVLOG_DrawingContext* second_drawing;   // the face that second_drawing_table stands for
    FontEngineWrapper* live_font_wrappers;   // all wrappers that have not been destroyed
    ORVLOG_DocumentContext* live_documents;  // all that have not been finished
    ORVLOG_DrawingContext* live_drawings;    // all that have not been finished or discarded
    ORVLOG_ColourFrame* unreleased_frames;   // popped frames whose ticket could not be released
    uint32_t name_unknown_families;          // non-zero: tickets without a family have an element with a name
    ORVLOG_ImageSlots image_slots;           // where the records of wrapped images stand
};

// What the client holds as its document.
struct ORVLOG_DocumentContext
{
    ORVLOG_Session* session;
    const GFI_FontEngineTable* font_wrapper;  // null if the document has no font engine
    uint32_t document_context;

    ORVLOG_DocumentContext* next_live;
};

// Values of ORVLOG_DrawingContext.kind.
enum : uint32_t
{
    ORVLOG_DRAWING_FACE = 1,
    ORVLOG_DRAWING_RESOURCE = 2,
    ORVLOG_DRAWING_MEMORY_CONTEXT = 3
};

// One for each open drawing.
struct ORVLOG_DrawingContext
{
    ORVLOG_Session* session;
    const GFI_FontEngineTable* font_wrapper;  // non-null when the drawing installed one of its own
    GGO_Matrix base_transform;
    uint32_t drawing_context;
    uint32_t kind;                        // 0: not yet set
    ORV_DrawingInterface renderer_table;  // filled by the renderer
    const GFI_FontEngineTable* saved_font_wrapper;
    ORVLOG_GroupFrame* group_frames;
    void* error_context;  // first argument of the start call: the client's GER_Error, or null

    ORVLOG_DrawingContext* next_live;
    uint32_t frameless_groups;  // open groups that got no memory for a frame, within no group that has one
};

// The session stands open to the client as the context word of each entry of its table.
static_assert(sizeof(ORVLOG_ImageParams) == 1012);

// A session for dumping records without a log: it writes to the standard output, in transparent mode, and has no
// allocator, so that its warnings are dropped.
ORVLOG_Session* orvlog_standalone_session(void);

// Frees a session that has ended; while images are kept its block stands, and goes with the last of them.
void orvlog_free_session(ORVLOG_Session* session);

// Gives back all nodes of object_scratch and empties it.
void orvlog_session_clear_scratch(ORVLOG_Session* session);

// The rule whether the calls of a drawing are logged: faces and resources are, memory contexts are not.
bool orvlog_drawing_is_logged(const ORVLOG_DrawingContext* drawing);

bool orvlog_session_is_base(const ORVLOG_Session* session);
// ORVLOG_MODE_*: for images and all else.
void orvlog_choose_mode(ORVLOG_Session* session, uint32_t mode);

// Opens a record and links it to the session; null without memory. Closing unlinks and frees it.
ORVLOG_DocumentContext* orvlog_open_document(ORVLOG_Session* session);
void orvlog_close_document(ORVLOG_DocumentContext* document);
ORVLOG_DrawingContext* orvlog_open_drawing(ORVLOG_Session* session, void* error_context);
void orvlog_close_drawing(ORVLOG_DrawingContext* drawing);

// What a client names, if it is open; null for what has ended, for another's and for null, which are not looked at.
ORVLOG_DocumentContext* orvlog_find_document(const ORVLOG_Session* session, const void* document);
ORVLOG_DrawingContext* orvlog_find_drawing(const ORVLOG_Session* session, const ORV_DrawingInterface* drawing);

// The resource map. Adding gives false without memory; finding and removing look for the client's number.
bool orvlog_resource_map_add(ORVLOG_Session* session, uint32_t resource_id, uint32_t renderer_resource_id);
const ORVLOG_ResourceMapEntry* orvlog_resource_map_find(const ORVLOG_Session* session, uint32_t resource_id);
void orvlog_resource_map_remove(ORVLOG_Session* session, uint32_t resource_id);
void orvlog_resource_map_clear(ORVLOG_Session* session);
