/* A path of as many edges as are wanted, each a curve, stroked with dashes: records whose size is known at run time.
 * usage: edges LOG [COUNT] */

#include <orvlog-host.h>

/* Room for one record of that many bytes, of zeros. */
static void* room(size_t bytes)
{
    void* block = calloc(1, bytes);
    if (block == NULL)
        exit(1);
    return block;
}

/* A path of edges that begin at (0, 0), (1, 0), (2, 0) and so on, each a curve to the start of the next. */
static GPA_PathPointer* make_path(uint32_t edges)
{
    GPA_Path* path = (GPA_Path*)room(orvlog_path_size(edges));
    GPA_PathPointer* pointer = (GPA_PathPointer*)room(orvlog_path_pointer_size(edges));
    path->pa_NumEdges = edges;
    path->pa_PathHints = GPA_HINT_ONE_SUBPATH;
    path->pa_EnclosingBox.gbf_MaxX = edges;
    path->pa_EnclosingBox.gbf_MaxY = 1;
    pointer->lpp_Path = path;
    for (uint32_t i = 0; i < edges; ++i)
    {
        GPA_BezierEdge* edge = (GPA_BezierEdge*)room(orvlog_bezier_edge_size(1));
        edge->be_Edge.ed_EdgeType = GPA_EDGE_BEZIER;
        edge->be_Edge.ed_EdgeFlag = i + 1 < edges ? GPA_SUBPATH_CONTINUE : GPA_SUBPATH_END_OPEN;
        edge->be_Edge.ed_SegmentCount = 1;
        edge->be_BezierSegment[0].bs_StartTangent.gvf_Y = 1;
        edge->be_BezierSegment[0].bs_EndTangent.gvf_X = 1;
        edge->be_BezierSegment[0].bs_EndTangent.gvf_Y = 1;
        edge->be_BezierSegment[0].bs_EndPoint.gvf_X = 1;
        path->pa_EdgeStart[i].gpf_X = i;
        pointer->lpp_EdgePointer[i].ep_Pointer = &edge->be_Edge;
    }
    return pointer;
}

static void free_path(GPA_PathPointer* pointer)
{
    for (uint32_t i = 0; i < pointer->lpp_Path->pa_NumEdges; ++i)
        free((void*)pointer->lpp_EdgePointer[i].ep_Pointer);
    free((void*)pointer->lpp_Path);
    free(pointer);
}

static GSH_StrokedPathShape* make_shape(uint16_t dashes)
{
    GSH_StrokedPathShape* shape = (GSH_StrokedPathShape*)room(orvlog_stroked_path_shape_size(dashes));
    shape->sps_Shape.sh_ShapeType = GSH_SHAPE_STROKE;
    shape->sps_Shape.sh_Transform.m[0] = 1;
    shape->sps_Shape.sh_Transform.m[3] = 1;
    shape->sps_StrokingParams.psp_StrokeWidth = 0.125F;
    shape->sps_StrokingParams.psp_MiterLimit = 10;
    shape->sps_StrokingParams.psp_DashCount = dashes;
    for (uint16_t i = 0; i < dashes; ++i)
        shape->sps_StrokingParams.psp_DashLength[i] = 0.25F * (float)(i + 1);
    return shape;
}

static void draw_page(const ORV_Interface* orv, const GSH_ShapePointer* shape)
{
    static const ORVLOG_FLAT_OPERAND(1) black = {
        {{GOP_OPERAND_FLAT, GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_BLACK), 0, 0, GCM_CSF_GRAY}, 1, 32, 0, 0, {0}}};
    const ORV_FaceProperties sheet = {0, {{100, 0, 0, 100, 0, 0}}, 900, 1100, {0, 0, 9, 11}, {0, 0, 9, 11}, {9, 11}};
    GOP_OperandPointer colour = {.op_Operand = &black.record.fl_Operand};
    ORV_DrawingInterface page;
    void* document = NULL;
    orv->document_start.fn(NULL, orv, &document, 1, NULL, NULL);
    orv->face_start.fn(NULL, orv, document, &page, NULL, 1, &sheet, NULL, 0, GPA_PLACEMENT_PS);
    page.object_paint.fn(&page, GCM_OBJ_LINE, 0, NULL, shape, GPA_PLACEMENT_PS, NULL, &colour, NULL, NULL);
    page.drawing_finish.fn(&page);
    orv->document_finish.fn(orv, document);
}

int main(int argc, char** argv)
{
    ORV_Interface table;
    const ORVLOG_OpenOptions options = {.interface_out = &table, .log_path = argc > 1 ? argv[1] : "edges.xml"};
    ORVLOG_Host* host = orvlog_open(&options);
    if (host == NULL)
        return 1;
    GPA_PathPointer* path = make_path(argc > 2 ? (uint32_t)strtoul(argv[2], NULL, 10) : 3);
    GSH_StrokedPathShape* stroked = make_shape(3);
    GSH_ShapePointer shape = {.sp_HeaderPtr = &stroked->sps_Shape};
    shape.sp_U.stroked_path = path;
    draw_page(&table, &shape);
    free(stroked);
    free_path(path);
    return orvlog_close(host) == 0 ? 0 : 1;
}
