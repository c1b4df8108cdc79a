// The job of the benchmarks: pages of strokes of one segment, as a map has them, 4 KB of text each, with no renderer.

#pragma once

#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "orvlog/interface/orvlog.h"

namespace orvlog::bench
{

struct Stroke
{
    GPA_StraightEdge edge = {{GPA_EDGE_STRAIGHT, GPA_SUBPATH_END_OPEN, 1}, 0, {{16, 0}}};
    GPA_Path path = {1,
                     GPA_HINT_BOX_IS_MINIMAL | GPA_HINT_ONE_SUBPATH | GPA_HINT_ONLY_STRAIGHTS,
                     {1928, 1912, 1944, 1912},
                     {{1928, 1912}}};
    GPA_PathStrokingParams params = {0x222, 0, GPA_CAP_ROUND, 16, 10, 0, {0}};
    GPA_PathPointer path_pointer = {};
    GSH_StrokedPathShape shape = {};
    GSH_ShapePointer shape_pointer = {};
    GOP_Operator op = {};
    GOP_OperandFlatPointer flat = {};
    struct
    {
        GOP_OperandFlat operand;
        float more_channels[2];
    } colour = {};

    Stroke()
    {
        path_pointer.lpp_Path = &path;
        path_pointer.lpp_EdgePointer[0] = {&edge.se_Edge, 0};
        shape.sps_Shape = {GSH_SHAPE_STROKE, 0, {{0.00053863000000000023, 0, 0, 0.00046906000000000009, 0.98, 1.18}}};
        shape.sps_StrokingParams = params;
        shape_pointer.sp_HeaderPtr = &shape.sps_Shape;
        shape_pointer.sp_U.stroked_path = &path_pointer;
        op.op_Operator = 3;
        colour.operand.fl_Operand = {GOP_OPERAND_FLAT, GOP_OCS_INPUT, 0, GOP_OPD_HINT_IS_OPAQUE, 0};
        colour.operand.fl_Color.num_chans = 3;
        colour.operand.fl_Color.bit_depth = 32;
        flat.flp_Pointer.op_Operand = &colour.operand.fl_Operand;
    }
};

struct StrokeJob
{
    ORV_Interface orv = {};
    ORV_DrawingInterface face = {};
    void* document = nullptr;
    client_stream::MallocAllocator allocator;
    client_stream::RandomIdentity identity;
    Stroke stroke;

    bool begin(GIO_Stream* stream)
    {
        return ORVLOG_DLL_initialise(&orv, nullptr, allocator.allocator(), identity.source(), 0, stream, nullptr, 0,
                                     nullptr, nullptr, 0, nullptr, nullptr) != 0 &&
               orv.document_start.fn(nullptr, &orv, &document, 1, nullptr, nullptr) != 0;
    }
    bool begin_page(uint32_t number)
    {
        static const ORV_FaceProperties letter = {
            0, {{600, 0, 0, 600, 0, 0}}, 5100, 6600, {0, 0, 8.5, 11}, {0, 0, 8.5, 11}, {8.5, 11}};
        return orv.face_start.fn(nullptr, &orv, document, &face, nullptr, number, &letter, nullptr, 0, 0) != 0;
    }
    void end_page()
    {
        face.drawing_finish.fn(&face);
    }
    void draw(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            stroke.flat.flp_Pointer.op_UniqueId = static_cast<uint32_t>(i);
            face.object_paint_and_stroke.fn(&face, 4, 2, 0, nullptr, &stroke.op, &stroke.shape_pointer, &stroke.params,
                                            nullptr, 0, nullptr, ORV_PAINTFLAGS_STROKE, nullptr, nullptr, nullptr,
                                            nullptr, &stroke.flat.flp_Pointer, nullptr, nullptr);
        }
    }
    void end()
    {
        orv.document_finish.fn(&orv, document);
        ORVLOG_DLL_shutdown(orv.document_start.context);
    }
};

}  // namespace orvlog::bench
