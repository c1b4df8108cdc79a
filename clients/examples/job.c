/* A job from start to end: a resource, two pages of which the renderer refuses one, and a group. usage: job LOG */

#include <orvlog-host.h>

/* The renderer: takes everything but the second page. */

static uint32_t paint_resource(const ORV_DrawingInterface* table, uint32_t resource_id, uint32_t hints,
                               uint32_t group_type, const GGO_Matrix* retransform, const GOP_Operator* op,
                               GOP_OperandPointer* operand2, const GSH_ShapeList* group_clip, uint32_t tiling_flags,
                               double x_interval, double y_interval, const GBC_Color* separation_mask,
                               const GBC_Color* separation_color, uint32_t pixel_placement_orientation)
{
    (void)table, (void)hints, (void)group_type, (void)retransform, (void)op, (void)operand2, (void)group_clip;
    (void)tiling_flags, (void)x_interval, (void)y_interval, (void)separation_mask, (void)separation_color;
    (void)pixel_placement_orientation;
    return resource_id == 41; /* the number that this renderer gave, whatever the client's is */
}

static uint32_t finish_drawing(const ORV_DrawingInterface* table)
{
    (void)table;
    return 1;
}

static void open_drawing(ORV_DrawingInterface* drawing_out)
{
    memset(drawing_out, 0, sizeof *drawing_out);
    drawing_out->resource_paint.fn = paint_resource;
    drawing_out->drawing_finish.fn = finish_drawing;
}

static uint32_t start_document(void* err, const ORV_Interface* table, void** document_out, uint32_t document_id,
                               const GFI_FontEngineTable* font_engine_functions, void* document_extra)
{
    (void)err, (void)table, (void)document_id, (void)font_engine_functions, (void)document_extra;
    *document_out = NULL;
    return 1;
}

static uint32_t finish_document(const ORV_Interface* table, void* document)
{
    (void)table, (void)document;
    return 1;
}

static uint32_t start_face(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                           const GFI_FontEngineTable* font_engine_functions, uint32_t face_seq_number,
                           const ORV_FaceProperties* face_properties, void* colour_ticket, uint32_t orientation,
                           uint32_t pixel_placement)
{
    (void)err, (void)table, (void)document, (void)font_engine_functions, (void)face_properties, (void)colour_ticket;
    (void)orientation, (void)pixel_placement;
    open_drawing(drawing_out);
    return face_seq_number != 2;
}

static uint32_t start_resource(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                               const ORV_DrawingInterface* parent_drawing,
                               const GFI_FontEngineTable* font_engine_functions,
                               const ORV_ResourceProperties* resource_properties, void* colour_ticket,
                               uint32_t* resource_id_out)
{
    (void)err, (void)table, (void)document, (void)parent_drawing, (void)font_engine_functions;
    (void)resource_properties, (void)colour_ticket;
    open_drawing(drawing_out);
    *resource_id_out = 41;
    return 1;
}

/* The client: gives the pages that were drawn. */

static int draw_everything(const ORV_Interface* orv)
{
    static const ORV_FaceProperties face = {0, {{72, 0, 0, 72, 0, 0}}, 612, 792, {0, 0, 8, 11}, {0, 0, 8, 11}, {8, 11}};
    static const ORV_ResourceProperties stamp = {0, 1, 0, 0, 0, {0, 0, 1, 1}};
    ORV_DrawingInterface drawing;
    void* document = NULL;
    uint32_t resource = 0;
    int drawn = 0;
    if (orv->document_start.fn(NULL, orv, &document, 1, NULL, NULL) == 0)
        return 0;
    if (orv->resource_start.fn(NULL, orv, document, &drawing, NULL, NULL, &stamp, NULL, &resource) != 0)
        drawing.drawing_finish.fn(&drawing);
    for (uint32_t page = 1; page <= 2; ++page)
    {
        if (orv->face_start.fn(NULL, orv, document, &drawing, NULL, page, &face, NULL, 0, GPA_PLACEMENT_PS) == 0)
            continue; /* refused: there is no drawing, and nothing to finish */
        if (drawing.resource_paint.fn(&drawing, resource, 0, ORV_GROUP_SIMPLE, NULL, NULL, NULL, NULL, 0, 0, 0, NULL,
                                      NULL, 0) != 0)
            ++drawn;
        drawing.drawing_finish.fn(&drawing);
    }
    orv->document_finish.fn(orv, document);
    return drawn;
}

int main(int argc, char** argv)
{
    ORV_Interface renderer = {{NULL, 0},    {start_document, NULL}, {finish_document, NULL},
                              {NULL, NULL}, {start_face, NULL},     {start_resource, NULL},
                              {NULL, NULL}};
    ORV_Interface table;
    uint32_t why = ORVLOG_OPEN_DONE;
    const ORVLOG_OpenOptions options = {.interface_out = &table,
                                        .interface_in = &renderer,
                                        .log_path = argc > 1 ? argv[1] : "job.xml",
                                        .why_out = &why};
    ORVLOG_Host* host = orvlog_open(&options);
    const int drawn = draw_everything(&table); /* on the renderer's own table if there is no log */
    if (host == NULL)
        fprintf(stderr, "no log: reason %u\n", (unsigned)why);
    else if (orvlog_close(host) != 0)
        fprintf(stderr, "the log isn't whole\n");
    return drawn == 1 ? 0 : 1;
}
