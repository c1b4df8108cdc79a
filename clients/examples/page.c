/* A page with a path, an image and a colour ticket. It's C11 and C++20 alike. usage: page LOG */

#include <orvlog-host.h>

static void draw_triangle(const ORV_DrawingInterface* page)
{
    static const ORVLOG_STRAIGHT_EDGE(2)
        sides = {{{GPA_EDGE_STRAIGHT, GPA_SUBPATH_END_CLOSED, 2}, 0, {{3, 0}, {0, 4}}}};
    static const GPA_Path path = {1, GPA_HINT_ONLY_STRAIGHTS, {1, 1, 4, 5}, {{1, 1}}};
    static const GPA_PathPointer edges = {&path, GPA_PLACEMENT_PS, 0, 0, {{&sides.record.se_Edge, 0}}};
    static const GSH_FilledPathShape filled = {{GSH_SHAPE_FILL, 0, {{1, 0, 0, 1, 0, 0}}}, GPA_WINDING_NON_ZERO};
    static const GSH_ShapePointer shape = {&filled.fps_Shape, {&edges}};
    static const ORVLOG_FLAT_OPERAND(3) red = {
        {{GOP_OPERAND_FLAT, GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_OTHER), 0, 0, GCM_CSF_RGB}, 3, 32, 0, 0, {1, 0, 0}}};
    GOP_OperandPointer colour = {.op_Operand = &red.record.fl_Operand, .op_UniqueId = 1};
    page->object_paint.fn(page, GCM_OBJ_GRAPHICS, 0, NULL, &shape, GPA_PLACEMENT_PS, NULL, &colour, NULL, NULL);
}

static void draw_image(const ORV_DrawingInterface* page)
{
    static const uint8_t rows[2][6] = {{255, 0, 0, 0, 255, 0}, {0, 0, 255, 255, 255, 255}};
    static const GOP_OperandImage image = {
        .im_Operand = {GOP_OPERAND_IMAGE, GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_OTHER), GNC_BMP_DEPTH_8, 0, GCM_CSF_RGB},
        .im_NumNonalphaChans = 3,
        .im_Flags = GOP_OP_FLAGS_HAS_COLOR_DATA,
        .im_ImageWidthPixels = 2,
        .im_ImageHeightPixels = 2,
        .im_Transform = {{1, 0, 0, 1, 5, 5}}};
    GOP_OperandImagePointer op1 = {.imp_Image = &image, .op_UniqueId = 2, .imp_DirectImage = rows[0], .imp_RowStep = 6};
    GOP_OperandPointer* head = (GOP_OperandPointer*)&op1;
    page->object_paint.fn(page, GCM_OBJ_IMAGE, 0, NULL, NULL, GPA_PLACEMENT_PS, NULL, head, NULL, NULL);
}

int main(int argc, char** argv)
{
    const ORV_FaceProperties sheet = {0, {{100, 0, 0, 100, 0, 0}}, 900, 1100, {0, 0, 9, 11}, {0, 0, 9, 11}, {9, 11}};
    ORVLOG_ProfileTicket rgb = {.key = 1, .channels = 3};
    ORV_Interface table;
    ORV_DrawingInterface page;
    void* document = NULL;
    const ORVLOG_OpenOptions options = {.interface_out = &table,
                                        .log_path = argc > 1 ? argv[1] : "page.xml",
                                        .ticket_functions = orvlog_profile_ticket_functions(),
                                        .ticket_serial_functions = orvlog_profile_ticket_serial_functions()};
    ORVLOG_Host* host = orvlog_open(&options);
    if (host == NULL) /* a client with a renderer draws on all the same */
        return 1;
    table.document_start.fn(NULL, &table, &document, 1, NULL, NULL);
    table.face_start.fn(NULL, &table, document, &page, NULL, 1, &sheet, &rgb, 0, GPA_PLACEMENT_PS);
    draw_triangle(&page);
    draw_image(&page);
    page.drawing_finish.fn(&page);
    table.document_finish.fn(&table, document);
    return orvlog_close(host) == 0 ? 0 : 1;
}
