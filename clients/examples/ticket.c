/* A page with a colour ticket of a colour manager of one's own, whose tickets hold an ICC profile.
 * usage: ticket LOG PROFILE.icc */

#include <orvlog-host.h>

/* A ticket as this colour manager has it. The library sees its address alone. */
typedef struct Ticket
{
    uint32_t key;
    uint32_t references;
    uint8_t profile[65536];
    uint32_t profile_bytes;
    GCM_Csd definition;
    const GCM_Csd* list[1];
} Ticket;

static uint32_t retain(void* ticket)
{
    ++((Ticket*)ticket)->references;
    return 1;
}

static uint32_t release(void* ticket)
{
    --((Ticket*)ticket)->references;
    return 1;
}

/* The kind of the space and the number of its channels; the other words are not looked at. */
static uint32_t query(void* ticket, void* ticket_space, void* ticket_render)
{
    uint32_t space[5] = {GCM_CST_ADDITIVE, 0, 0, ((Ticket*)ticket)->definition.csd_NumBaseChans, 0};
    memcpy(ticket_space, space, sizeof space);
    memset(ticket_render, 0, 16);
    return 1;
}

/* The definitions of the ticket's spaces. The first is looked at, its number of channels. */
static uint32_t list_of(void* ticket, const GCM_Csd* const** list, uintptr_t zero1, uintptr_t zero2)
{
    (void)zero1, (void)zero2;
    *list = ((Ticket*)ticket)->list;
    return 1;
}

static uint32_t key_of(void* ticket, uint32_t* key)
{
    *key = ((Ticket*)ticket)->key;
    return 1;
}

/* Numbers are written with their lowest byte first. */
static uint32_t put(GIO_Stream* stream, uint32_t number, uint32_t bytes)
{
    const uint8_t little[4] = {(uint8_t)number, (uint8_t)(number >> 8), (uint8_t)(number >> 16),
                               (uint8_t)(number >> 24)};
    return stream->ops->gio_Write(little, bytes, 1, stream->instance) == 1;
}

static uint32_t serialise(void* ticket, GIO_Stream* stream, uintptr_t one, uintptr_t zero)
{
    const Ticket* t = (const Ticket*)ticket;
    (void)one, (void)zero;
    uint32_t done = 1;
    for (int flag = 0; flag < 8; ++flag)
        done &= put(stream, 0, 1);
    done &= put(stream, 3, 4); /* GCM_QUAL_HIGH */
    done &= put(stream, 2, 4); /* GCM_PERF_MEDIUM */

    done &= put(stream, 0, 4); /* the first definition's marker */
    done &= put(stream, GCM_CSDTYPE_PROFILE_BUFFER, 4);
    done &= put(stream, t->definition.csd_NumBaseChans, 1);
    done &= put(stream, 0, 1); /* named channels */
    done &= put(stream, 0, 1); /* no second profile */
    done &= put(stream, 0, 1); /* no alternate definition */
    done &= put(stream, GCM_RI_PERCEPTUAL, 4);
    done &= put(stream, t->profile_bytes, 4);
    done &= stream->ops->gio_Write(t->profile, 1, t->profile_bytes, stream->instance) == t->profile_bytes;
    done &= put(stream, 0, 4);           /* no extensions */
    done &= put(stream, 0xFFFFFFFFU, 4); /* no more definitions */

    done &= put(stream, 6, 4);  /* the section of the output space */
    done &= put(stream, 10, 4); /* its bytes behind this number */
    done &= put(stream, 8, 4);  /* bits of a channel */
    done &= put(stream, 0, 1);  /* no alpha */
    done &= put(stream, 0, 1);  /* not premultiplied */
    done &= put(stream, 0, 4);  /* the first definition */
    done &= put(stream, 0, 4);  /* no more sections */
    return done;
}

static uint32_t read_profile(Ticket* ticket, const char* path)
{
    FILE* file = fopen(path, "rb");
    if (file == NULL)
        return 0;
    ticket->profile_bytes = (uint32_t)fread(ticket->profile, 1, sizeof ticket->profile, file);
    const int is_too_long = fgetc(file) != EOF;
    fclose(file);
    return !is_too_long && ticket->profile_bytes > 128;
}

static void draw_page(const ORV_Interface* orv, void* ticket)
{
    const ORV_FaceProperties sheet = {0, {{100, 0, 0, 100, 0, 0}}, 900, 1100, {0, 0, 9, 11}, {0, 0, 9, 11}, {9, 11}};
    ORV_DrawingInterface page;
    void* document = NULL;
    orv->document_start.fn(NULL, orv, &document, 1, NULL, NULL);
    orv->face_start.fn(NULL, orv, document, &page, NULL, 1, &sheet, ticket, 0, GPA_PLACEMENT_PS);
    page.drawing_finish.fn(&page);
    orv->document_finish.fn(orv, document);
}

int main(int argc, char** argv)
{
    static Ticket rgb = {.key = 1, .definition = {.csd_Type = GCM_CSDTYPE_PROFILE_BUFFER, .csd_NumBaseChans = 3}};
    rgb.list[0] = &rgb.definition;
    if (argc < 3 || !read_profile(&rgb, argv[2]))
        return 2;
    rgb.definition.csd_Defn.ProfileBufferSize = rgb.profile_bytes;

    ORVLOG_TicketFunctions functions;
    memset(&functions, 0, sizeof functions);
    functions.retain = retain;
    functions.release = release;
    functions.query = query;
    functions.csd_list = list_of;
    functions.key = key_of;
    ORVLOG_TicketSerialFunctions serial_functions;
    memset(&serial_functions, 0, sizeof serial_functions);
    serial_functions.serialise = serialise;

    ORV_Interface table;
    const ORVLOG_OpenOptions options = {.interface_out = &table,
                                        .log_path = argv[1],
                                        .ticket_functions = &functions,
                                        .ticket_serial_functions = &serial_functions};
    ORVLOG_Host* host = orvlog_open(&options);
    if (host == NULL)
        return 1;
    draw_page(&table, &rgb);
    return orvlog_close(host) == 0 && rgb.references == 0 ? 0 : 1;
}
