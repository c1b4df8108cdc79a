// A job of 100,000 paints in base mode with no renderer: half paths, half strings of eight glyphs. Shows the pace, and
// that the logger holds no more memory at the end than after the first paints.

#include "bench/bench-clock.h"
#include "bench/null-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "orvlog/interface/orvlog.h"
#include "tests/support/fake-identity.h"
#include "tests/support/scripted-font-engine.h"

#include <cstdio>
#include <cstdlib>

namespace
{

constexpr uint32_t kPaints = 100000;
constexpr uint32_t kGlyphs = 8;

struct Shapes
{
    GSH_FilledPathShape fill = {};
    GPA_StraightEdge edge = {};
    GPA_Path path = {};
    GPA_PathPointer path_pointer = {};
    GSH_Shape glyphs = {};
    GFI_FontSpecPointer font = {};
    GFI_StringDesc desc = {};
    GFI_StringDescPointer string = {};
    GSH_ShapePointer filled = {};
    GSH_ShapePointer text = {};

    Shapes()
    {
        fill.fps_Shape = {GSH_SHAPE_FILL, 0, {{1, 0, 0, 1, 0, 0}}};
        edge.se_Edge = {GPA_EDGE_STRAIGHT, GPA_SUBPATH_END_CLOSED, 1};
        edge.se_Segment[0] = {0.3, 1.7};
        path.pa_NumEdges = 1;
        path_pointer.lpp_Path = &path;
        path_pointer.lpp_EdgePointer[0].ep_Pointer = &edge.se_Edge;
        filled.sp_HeaderPtr = &fill.fps_Shape;
        filled.sp_U.filled_path = &path_pointer;
        glyphs = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 0, 0}}};
        string.gsp_StringDesc = &desc;
        text.sp_HeaderPtr = &glyphs;
        text.sp_U.glyph.font_spec_ptr = &font;
        text.sp_U.glyph.string_desc = &string;
    }
};

double paint(ORV_DrawingInterface* drawing, const GSH_ShapePointer* shape, uint32_t count)
{
    const GOP_Operator op = {};
    return orvlog::bench::quickest(1,
                                   [&]
                                   {
                                       for (uint32_t i = 0; i < count; ++i)
                                           drawing->object_paint.fn(drawing, 1, 0, &op, shape, 0, nullptr, nullptr,
                                                                    nullptr, nullptr);
                                   });
}

}  // namespace

int main()
{
    orvlog::bench::NullStream stream;
    orvlog::client_stream::MallocAllocator allocator;
    orvlog::test::FakeIdentity identity;
    orvlog::test::ScriptedFontEngine engine;
    engine.advances.assign(kGlyphs, {0.1, 0});
    ORV_Interface orv = {};
    if (ORVLOG_DLL_initialise(&orv, nullptr, allocator.allocator(), identity.get(), 0, stream.get(), nullptr, 0,
                              nullptr, nullptr, 0, nullptr, nullptr) == 0)
        return EXIT_FAILURE;
    void* session = orv.document_start.context;
    const ORVLOG_Params params = {};
    ORVLOG_DLL_set_parameters(session, &params);
    void* document = nullptr;
    orv.document_start.fn(nullptr, &orv, &document, 1, engine.get(), nullptr);
    ORV_DrawingInterface drawing = {};
    const ORV_FaceProperties face = {0, {{600, 0, 0, 600, 0, 0}}, 5100, 6600, {}, {}, {8.5, 11}};
    orv.face_start.fn(nullptr, &orv, document, &drawing, nullptr, 1, &face, nullptr, 0, 0);

    const Shapes shapes;
    paint(&drawing, &shapes.filled, 100);
    paint(&drawing, &shapes.text, 100);
    const uint64_t before = allocator.bytes_in_use();
    const double paths = paint(&drawing, &shapes.filled, kPaints / 2);
    const double texts = paint(&drawing, &shapes.text, kPaints / 2);
    const uint64_t after = allocator.bytes_in_use();
    engine.take_calls();

    std::printf("job of %u paints, %.1f MB of text\n", kPaints, static_cast<double>(stream.bytes()) / 1e6);
    std::printf("  paths logged a second   %10.0f\n", kPaints / 2 / paths);
    std::printf("  glyphs logged a second  %10.0f\n", kPaints / 2 * kGlyphs / texts);
    std::printf("  bytes held, 200 paints  %10llu\n", static_cast<unsigned long long>(before));
    std::printf("  bytes held, all paints  %10llu\n", static_cast<unsigned long long>(after));
    drawing.drawing_finish.fn(&drawing);
    orv.document_finish.fn(&orv, document);
    ORVLOG_DLL_shutdown(session);
    return before == after ? EXIT_SUCCESS : EXIT_FAILURE;
}
