#include "inspect/c-source/c-prelude.h"

namespace orvlog::inspect
{

const char* const kCFonts = R"c(
const GFI_FontSpecPointer stray_font = {NULL};
const GFI_StringDescPointer stray_string = {NULL, NULL, NULL};
static GFI_GlyphDescPointer given;

void give_matrix(GGO_Matrix* to, uint32_t* flags, const GGO_Matrix* matrix, uint32_t value)
{
    if (to != NULL && matrix != NULL)
        *to = *matrix;
    if (flags != NULL)
        *flags = value;
}

uint32_t string_start(void* context, const GFI_FontSpecPointer* font, const GGO_Matrix* to_pixels, uint32_t flags, uint32_t scaled, const GFI_StringDescPointer* string, int32_t* font_id, GGO_Matrix* glyph_to_pixels, uint32_t* glyph_flags)
{
    const StringStart* step = answer(STRING_START_STEP);
    (void)context, (void)font, (void)to_pixels, (void)flags, (void)scaled, (void)string;
    if (step == NULL)
        return 0;
    *font_id = step->font_id;
    give_matrix(glyph_to_pixels, glyph_flags, step->glyph_to_pixels, step->glyph_flags);
    return step->result;
}

uint32_t glyph_index_get(void* context, uint32_t* returned, uint32_t* index, uint16_t* variant, GGO_Vector* advance, GGO_BoxFloat* box)
{
    const GlyphIndex* step = answer(GLYPH_INDEX_STEP);
    (void)context;
    *returned = 0;
    if (step == NULL)
        return 0;
    *returned = step->returned;
    *index = step->index;
    *variant = step->variant;
    if (advance != NULL && step->advance != NULL)
        *advance = *step->advance;
    if (box != NULL && step->box != NULL)
        *box = *step->box;
    return step->result;
}

uint32_t give_glyph(const Glyph* step, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
{
    if (step == NULL)
        return 0;
    *changed = step->changed;
    if (step->changed)
        give_matrix(matrix, flags, step->to_pixels, step->flags);
    if (step->glyph != NULL)
        given = *step->glyph;
    *glyph = step->glyph != NULL ? &given : NULL;
    return step->result;
}

uint32_t glyph_get_fixed(void* context, uint32_t type, uint32_t* returned, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
{
    const Glyph* step = answer(GLYPH_FIXED_STEP);
    (void)context, (void)type;
    *returned = step != NULL ? step->returned : 0;
    return give_glyph(step, changed, matrix, flags, glyph);
}

uint32_t glyph_get(void* context, uint32_t type, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
{
    (void)context, (void)type;
    return give_glyph(answer(GLYPH_STEP), changed, matrix, flags, glyph);
}

const char* engine_name(void* context)
{
    return context;
}

#define NAMED_ENGINE(name) {string_start, glyph_index_get, glyph_get_fixed, glyph_get, engine_name, NULL, (void*)name}
#define ENGINE {string_start, glyph_index_get, glyph_get_fixed, glyph_get, NULL, NULL, NULL}
)c";

const char* const kCImages = R"c(
uint32_t image_prepare(GOP_OperandImagePointer** operand, uint32_t object_type, uint32_t decompress, uint32_t rescale, float max_width, float min_width, float max_height, float min_height, uint32_t render_space, uint32_t depth, uint32_t attributes)
{
    const Prepare* step = answer(PREPARE_STEP);
    (void)object_type, (void)decompress, (void)rescale, (void)max_width, (void)min_width, (void)max_height;
    (void)min_height, (void)render_space, (void)depth, (void)attributes;
    if (step == NULL)
        return 0;
    if (step->left != NULL && step->replaced)
        *operand = step->left;
    else if (step->left != NULL)
    {
        const uint8_t* direct = (*operand)->imp_DirectImage;
        **operand = *step->left;
        if (direct != NULL && step->left->imp_DirectImage != NULL)
            (*operand)->imp_DirectImage = direct;
    }
    return step->result;
}

uint32_t image_read(GOP_OperandImagePointer* operand, void* context, uint32_t skip, uint8_t* image, uint32_t size, int32_t row_step, int32_t* returned, uint8_t* attributes, uint32_t attr_size, int32_t attr_row_step, int32_t* attr_returned)
{
    const Read* step = answer(READ_STEP);
    (void)operand, (void)context, (void)skip, (void)row_step, (void)attr_row_step;
    if (step == NULL)
        return 0;
    load(image, step->bytes < size ? step->bytes : size, IMAGES, step->from + (uint64_t)present->repeated * step->bytes);
    *returned = step->returned;
    if (attributes != NULL)
    {
        load(attributes, step->attr_bytes < attr_size ? step->attr_bytes : attr_size, IMAGES, step->attr_from);
        *attr_returned = step->attr_returned;
    }
    if (present->asked == NULL)
        present->repeated = present->repeated + 1 < step->times ? present->repeated + 1 : 0;
    return step->result;
}

uint32_t plain_answer(int kind)
{
    const Plain* step = answer(kind);
    return step != NULL ? step->result : 0;
}

uint32_t image_finish(GOP_OperandImagePointer* operand, void* context)
{
    (void)operand, (void)context;
    return plain_answer(FINISH_STEP);
}

uint32_t image_reset(GOP_OperandImagePointer* operand, void* context)
{
    (void)operand, (void)context;
    return plain_answer(RESET_STEP);
}

uint32_t image_keep(GOP_OperandImagePointer* operand)
{
    (void)operand;
    return plain_answer(KEEP_STEP);
}

void* image_release(GOP_OperandImagePointer* operand)
{
    (void)operand;
    plain_answer(RELEASE_STEP);
    return NULL;
}
)c";

const char* const kCTickets = R"c(
/* The client's colour manager. */

typedef struct Ticket
{
    uint32_t key, kind, channels;
    const uint8_t* bytes;
    size_t size;
    GCM_Csd first;
    const GCM_Csd* list[2];
} Ticket;

uint32_t ticket_nothing(void* ticket)
{
    (void)ticket;
    return 1;
}

uint32_t ticket_query(void* ticket, void* space, void* render)
{
    const Ticket* told = ticket;
    const uint32_t numbers[5] = {told->kind, 8, 0, told->channels, told->key};
    const uint32_t keys[4] = {told->key, 0, 0, 0};
    memcpy(space, numbers, sizeof numbers);
    memcpy(render, keys, sizeof keys);
    return 1;
}

uint32_t ticket_csd_list(void* ticket, const GCM_Csd* const** list, uintptr_t zero1, uintptr_t zero2)
{
    Ticket* told = ticket;
    (void)zero1, (void)zero2;
    told->list[0] = &told->first;
    *list = told->list;
    return 1;
}

uint32_t ticket_key(void* ticket, uint32_t* key)
{
    *key = ((const Ticket*)ticket)->key;
    return *key != 0;
}

uint32_t ticket_serialise(void* ticket, GIO_Stream* stream, uintptr_t one, uintptr_t zero)
{
    const Ticket* told = ticket;
    (void)one, (void)zero;
    if (stream->ops->gio_Write(told->bytes, 1, told->size, stream->instance) != told->size)
        return 0;
    return stream->ops->gio_Seek(stream->instance, (int32_t)told->size, GIO_SEEK_SET) == 0;
}

static const ORVLOG_TicketFunctions ticket_functions = {.retain = ticket_nothing, .release = ticket_nothing, .query = ticket_query, .csd_list = ticket_csd_list, .key = ticket_key};
static const ORVLOG_TicketSerialFunctions ticket_serial_functions = {.serialise = ticket_serialise};
)c";

const char* const kCStreams = R"c(
/* A stream over bytes, for profiles that come by one. */

typedef struct Bytes { const uint8_t* bytes; size_t size, place; } Bytes;

uint64_t bytes_read(void* to, uint64_t item_size, uint64_t count, void* self)
{
    Bytes* from = self;
    const uint64_t left = (from->size - from->place) / (item_size != 0 ? item_size : 1);
    count = count < left ? count : left;
    memcpy(to, from->bytes + from->place, (size_t)(count * item_size));
    from->place += (size_t)(count * item_size);
    return count;
}

int32_t bytes_seek(void* self, int32_t offset, int32_t origin)
{
    Bytes* from = self;
    if (origin != GIO_SEEK_SET || offset < 0 || (size_t)offset > from->size)
        return -1;
    from->place = (size_t)offset;
    return 0;
}

const GIO_StreamOps byte_operations = {.gio_Read = bytes_read, .gio_Seek = bytes_seek};
)c";

}  // namespace orvlog::inspect
