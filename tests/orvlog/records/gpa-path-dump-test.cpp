#include "orvlog/records/gpa-path-dump.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::Guarded;
using orvlog::test::Parts;
using orvlog::test::RecordLog;

constexpr uint32_t kGap = 0xAAAAAAAA;

GPA_Edge edge_head(uint8_t type, uint8_t flag, uint16_t count)
{
    return {type, flag, count};
}

// A path record with so many start points.
Parts path_parts(uint32_t edges, uint16_t hints, GGO_BoxFloat box)
{
    GPA_Path path = {};
    path.pa_NumEdges = edges;
    path.pa_PathHints = hints;
    path.pa_EnclosingBox = box;
    Parts parts;
    parts.add_head(path, offsetof(GPA_Path, pa_EdgeStart));
    return parts;
}

Parts pointer_parts(const GPA_Path* path, uint32_t enable, uint32_t placement, uint32_t owned)
{
    GPA_PathPointer pointer = {};
    pointer.lpp_Path = path;
    pointer.lpp_EnablePixelPlacement = enable;
    pointer.lpp_PixelPlacement = placement;
    pointer.lpp_PathOwned = owned;
    Parts parts;
    parts.add_head(pointer, offsetof(GPA_PathPointer, lpp_EdgePointer));
    return parts;
}

TEST(GpaPathDump, WorkedExample)
{
    RecordLog log;
    Guarded<GPA_Edge> edge(Parts().add(edge_head(1, 2, 1)).add(kGap).add(GPA_BezierSegment{{1, 0}, {0, 1}, {10, 10}}));
    Guarded<GPA_Path> path(path_parts(1, 0x10, {0, 0, 10, 10}).add(GGO_Point{0, 0}));
    Guarded<GPA_PathPointer> pointer(pointer_parts(path.get(), 0, 0, 1).add(GPA_EdgePointer{edge.get(), 1}));
    dump_GPA_PathPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take(), R"(<GPA_PathPointer lpp_EnablePixelPlacement="FALSE" lpp_PathOwned="TRUE">
  <GPA_Path pa_NumEdges="1" pa_PathHints="[0x10] GPA_HINT_ONE_SUBPATH " pa_EnclosingBox="0 0 10 10 ">
    <GPA_Path.pa_EdgeStart>
      <GGO_Point gpf_X="0" gpf_Y="0"/>
    </GPA_Path.pa_EdgeStart>
  </GPA_Path>
  <GPA_PathPointer.lpp_EdgePointer>
    <GPA_EdgePointer ep_Owned="TRUE">
      <GPA_EdgePointer.ep_Pointer>
        <GPA_BezierEdge>
          <GPA_Edge ed_EdgeType="GPA_EDGE_BEZIER" ed_EdgeFlag="[0x2] GPA_SUBPATH_END_OPEN " ed_SegmentCount="1"/>
          <GPA_BezierEdge.be_BezierSegment>
            <GPA_BezierSegment bs_StartTangent="1 0 " bs_EndTangent="0 1 " bs_EndPoint="10 10 ">
            </GPA_BezierSegment>
          </GPA_BezierEdge.be_BezierSegment>
        </GPA_BezierEdge>
      </GPA_EdgePointer.ep_Pointer>
    </GPA_EdgePointer>
  </GPA_PathPointer.lpp_EdgePointer>
</GPA_PathPointer>
)");
}

TEST(GpaPathDump, EachAttributeAndTagIsFlushedOnItsOwn)
{
    RecordLog log;
    const GPA_BezierSegment segment = {{1, 0}, {0, 1}, {10, 10}};
    dump_GPA_BezierSegment(log.writer(), &segment);
    const std::string text = log.stream.text();
    ASSERT_EQ(text, "<GPA_BezierSegment bs_StartTangent=\"1 0 \" bs_EndTangent=\"0 1 \" bs_EndPoint=\"10 10 \">\n"
                    "</GPA_BezierSegment>\n");
    std::vector<std::string> pieces;
    uint64_t before = 0;
    for (uint64_t mark : log.stream.flush_marks())
    {
        pieces.push_back(text.substr(before, mark - before));
        before = mark;
    }
    const std::vector<std::string> expected = {"<GPA_BezierSegment",
                                               " bs_StartTangent=\"1 0 \"",
                                               " bs_EndTangent=\"0 1 \"",
                                               " bs_EndPoint=\"10 10 \"",
                                               ">\n",
                                               "</GPA_BezierSegment>\n"};
    EXPECT_EQ(pieces, expected);
    EXPECT_EQ(log.stream.flushes(), 6U);
}

TEST(GpaPathDump, StraightEdge)
{
    RecordLog log(1);
    Guarded<GPA_StraightEdge> edge(
        Parts().add(edge_head(0, 0, 2)).add(kGap).add(GGO_Vector{1.5, -2}).add(GGO_Vector{0.1, 3}));
    dump_GPA_StraightEdge(log.writer(), edge.get());
    EXPECT_EQ(log.take(), R"(  <GPA_StraightEdge>
    <GPA_Edge ed_EdgeType="GPA_EDGE_STRAIGHT" ed_EdgeFlag="[0] GPA_SUBPATH_END_CLOSED " ed_SegmentCount="2"/>
    <GPA_StraightEdge.se_Segment>
      <GGO_Vector gvf_X="1.5" gvf_Y="-2"/>
      <GGO_Vector gvf_X="0.10000000000000001" gvf_Y="3"/>
    </GPA_StraightEdge.se_Segment>
  </GPA_StraightEdge>
)");
}

TEST(GpaPathDump, QuadBezierEdge)
{
    RecordLog log;
    Guarded<GPA_QuadBezierEdge> edge(
        Parts().add(edge_head(2, 1, 1)).add(kGap).add(GPA_QuadBezierSegment{{1, 2}, {3, 4}}));
    dump_GPA_QuadBezierEdge(log.writer(), edge.get());
    EXPECT_EQ(log.take(), R"(<GPA_QuadBezierEdge>
  <GPA_Edge ed_EdgeType="GPA_EDGE_QUAD_BEZIER" ed_EdgeFlag="[0x1] GPA_SUBPATH_CONTINUE " ed_SegmentCount="1"/>
  <GPA_QuadBezierEdge.qb_QuadBezierSegment>
    <GPA_QuadBezierSegment qs_ControlPoint="1 2 " qs_EndPoint="3 4 ">
    </GPA_QuadBezierSegment>
  </GPA_QuadBezierEdge.qb_QuadBezierSegment>
</GPA_QuadBezierEdge>
)");
}

TEST(GpaPathDump, StaircaseEdgeWritesXAheadOfY)
{
    RecordLog log;
    Guarded<GPA_StaircaseEdge> edge(Parts()
                                        .add(edge_head(3, 2, 4))
                                        .add(uint32_t{7})
                                        .add(GPA_StaircaseSegment{255, -1})
                                        .add(GPA_StaircaseSegment{0, 127})
                                        .add(GPA_StaircaseSegment{1, -128})
                                        .add(GPA_StaircaseSegment{2, 0}));
    dump_GPA_StaircaseEdge(log.writer(), edge.get());
    EXPECT_EQ(log.take(), R"(<GPA_StaircaseEdge sc_YPositive="TRUE">
  <GPA_Edge ed_EdgeType="GPA_EDGE_STAIRCASE" ed_EdgeFlag="[0x2] GPA_SUBPATH_END_OPEN " ed_SegmentCount="4"/>
  <GPA_StaircaseEdge.sc_Field>
    <GPA_StaircaseSegment ss_XOffset="-1" ss_YOffset="255">
    </GPA_StaircaseSegment>
    <GPA_StaircaseSegment ss_XOffset="127" ss_YOffset="0">
    </GPA_StaircaseSegment>
    <GPA_StaircaseSegment ss_XOffset="-128" ss_YOffset="1">
    </GPA_StaircaseSegment>
    <GPA_StaircaseSegment ss_XOffset="0" ss_YOffset="2">
    </GPA_StaircaseSegment>
  </GPA_StaircaseEdge.sc_Field>
</GPA_StaircaseEdge>
)");
    edge.edit()->sc_YPositive = 0;
    dump_GPA_StaircaseEdge(log.writer(), edge.get());
    EXPECT_EQ(log.take_value("sc_YPositive"), "FALSE");
}

TEST(GpaPathDump, EllipticalEdge)
{
    RecordLog log;
    Guarded<GPA_EllipticalEdge> edge(
        Parts().add(edge_head(4, 0, 1)).add(kGap).add(GPA_EllipticalSegment{5, -2.5, 0.125, {10, 0}}));
    dump_GPA_EllipticalEdge(log.writer(), edge.get());
    EXPECT_EQ(log.take(), R"(<GPA_EllipticalEdge>
  <GPA_Edge ed_EdgeType="GPA_EDGE_ELLIPTICAL" ed_EdgeFlag="[0] GPA_SUBPATH_END_CLOSED " ed_SegmentCount="1"/>
  <GPA_EllipticalEdge.ee_EllipticalSegment>
    <GPA_EllipticalSegment es_XRadius="5" es_YRadius="-2.5" es_AngleToXAxis="0.125" es_EndPoint="10 0 ">
    </GPA_EllipticalSegment>
  </GPA_EllipticalEdge.ee_EllipticalSegment>
</GPA_EllipticalEdge>
)");
}

// Doubles that no short decimal holds come back from the log bit for bit; stroke parameters have nine digits.
TEST(GpaPathDump, ValuesArePrintedAsStored)
{
    RecordLog log;
    const GPA_EllipticalSegment arc = {1.0 / 3, 1e-300, -0.0, {1e100, -123456789.123456789}};
    dump_GPA_EllipticalSegment(log.writer(), &arc);
    EXPECT_EQ(log.take(), "<GPA_EllipticalSegment es_XRadius=\"0.33333333333333331\" es_YRadius=\"1e-300\" "
                          "es_AngleToXAxis=\"-0\" es_EndPoint=\"1e+100 -123456789.12345679 \">\n"
                          "</GPA_EllipticalSegment>\n");
    GPA_PathStrokingParams params = {};
    params.psp_StrokeWidth = 1.0F / 3;
    params.psp_MiterLimit = 1e-30F;
    params.psp_DashStart = 16777216.0F;
    dump_GPA_PathStrokingParams(log.writer(), &params);
    const std::string text = log.take();
    EXPECT_EQ(attribute_of(text, "psp_StrokeWidth"), "0.333333343");
    EXPECT_EQ(attribute_of(text, "psp_MiterLimit"), "1e-30");
    EXPECT_EQ(attribute_of(text, "psp_DashStart"), "16777216");
}

TEST(GpaPathDump, EdgeWithoutSegmentsHasAnEmptyMember)
{
    RecordLog log;
    Guarded<GPA_BezierEdge> edge(Parts().add(edge_head(1, 0, 0)).add(kGap));
    dump_GPA_BezierEdge(log.writer(), edge.get());
    EXPECT_EQ(log.take(), R"(<GPA_BezierEdge>
  <GPA_Edge ed_EdgeType="GPA_EDGE_BEZIER" ed_EdgeFlag="[0] GPA_SUBPATH_END_CLOSED " ed_SegmentCount="0"/>
  <GPA_BezierEdge.be_BezierSegment>
  </GPA_BezierEdge.be_BezierSegment>
</GPA_BezierEdge>
)");
}

TEST(GpaPathDump, EdgeHead)
{
    RecordLog log;
    Guarded<GPA_Edge> edge(edge_head(5, 0x81, 65535));
    dump_GPA_Edge(log.writer(), edge.get());
    EXPECT_EQ(log.take(), "<GPA_Edge ed_EdgeType=\"UNKNOWN_VALUE(5)\" ed_EdgeFlag=\"[0x81] "
                          "GPA_SUPPRESS_STROKING_FLAG GPA_SUBPATH_CONTINUE \" ed_SegmentCount=\"65535\"/>\n");
    edge.edit()->ed_EdgeType = 255;
    edge.edit()->ed_EdgeFlag = 0x80;
    dump_GPA_Edge(log.writer(), edge.get());
    const std::string text = log.take();
    EXPECT_EQ(attribute_of(text, "ed_EdgeType"), "UNKNOWN_VALUE(255)");
    EXPECT_EQ(attribute_of(text, "ed_EdgeFlag"), "[0x80] GPA_SUPPRESS_STROKING_FLAG GPA_SUBPATH_END_CLOSED ");
}

TEST(GpaPathDump, SubpathBeyondTheNamesShowsItsNumber)
{
    RecordLog log;
    GPA_Edge edge = edge_head(0, 3, 0);
    dump_GPA_Edge(log.writer(), &edge);
    EXPECT_EQ(log.take_value("ed_EdgeFlag"), "[0x3] UNKNOWN_VALUE(3) ");
    edge.ed_EdgeFlag = 0xFF;
    dump_GPA_Edge(log.writer(), &edge);
    EXPECT_EQ(log.take_value("ed_EdgeFlag"), "[0xff] GPA_SUPPRESS_STROKING_FLAG UNKNOWN_VALUE(127) ");
}

TEST(GpaPathDump, EdgePointerChoosesByTheFirstByte)
{
    RecordLog log;
    const std::array<std::string, 5> elements = {"GPA_StraightEdge", "GPA_BezierEdge", "GPA_QuadBezierEdge",
                                                 "GPA_StaircaseEdge", "GPA_EllipticalEdge"};
    for (uint8_t type = 0; type < 5; ++type)
    {
        Guarded<GPA_Edge> edge(Parts().add(edge_head(type, 0, 0)).add(uint32_t{0}));
        const GPA_EdgePointer pointer = {edge.get(), 0};
        dump_GPA_EdgePointer(log.writer(), &pointer);
        const std::string text = log.take();
        EXPECT_EQ(
            text.rfind("<GPA_EdgePointer ep_Owned=\"FALSE\">\n  <GPA_EdgePointer.ep_Pointer>\n    <" + elements[type],
                       0),
            0U)
            << text;
    }
}

TEST(GpaPathDump, UnknownOrMissingEdgeLeavesTheMemberEmpty)
{
    RecordLog log;
    Guarded<GPA_Edge> edge(edge_head(5, 0, 9));
    for (const GPA_Edge* any : {edge.get(), static_cast<const GPA_Edge*>(nullptr)})
    {
        const GPA_EdgePointer pointer = {any, 2};
        dump_GPA_EdgePointer(log.writer(), &pointer);
        EXPECT_EQ(log.take(), R"(<GPA_EdgePointer ep_Owned="TRUE">
  <GPA_EdgePointer.ep_Pointer>
  </GPA_EdgePointer.ep_Pointer>
</GPA_EdgePointer>
)");
    }
}

TEST(GpaPathDump, PathHints)
{
    RecordLog log;
    const std::array<std::pair<uint16_t, std::string>, 11> cases = {{
        {uint16_t{0}, "[0] GPA_HINT_NONE "},
        {uint16_t{0x1}, "[0x1] GPA_HINT_IS_RECTANGLE "},
        {uint16_t{0x2}, "[0x2] GPA_HINT_STROKED "},
        {uint16_t{0x4}, "[0x4] GPA_HINT_NO_OVERLAP "},
        {uint16_t{0x8}, "[0x8] GPA_HINT_BOX_IS_MINIMAL "},
        {uint16_t{0x10}, "[0x10] GPA_HINT_ONE_SUBPATH "},
        {uint16_t{0x20}, "[0x20] GPA_HINT_ONLY_STRAIGHTS "},
        {uint16_t{0x40}, "[0x40] GPA_HINT_ONLY_STAIRCASES "},
        {uint16_t{0x80}, "[0x80] GPA_HINT_INPUT_INT_ONLY "},
        {uint16_t{0x100}, "[0x100] "},
        {uint16_t{0xFFFF}, "[0xffff] GPA_HINT_IS_RECTANGLE GPA_HINT_STROKED GPA_HINT_NO_OVERLAP "
                           "GPA_HINT_BOX_IS_MINIMAL GPA_HINT_ONE_SUBPATH GPA_HINT_ONLY_STRAIGHTS "
                           "GPA_HINT_ONLY_STAIRCASES GPA_HINT_INPUT_INT_ONLY "},
    }};
    for (const auto& [hints, expected] : cases)
    {
        Guarded<GPA_Path> path(path_parts(0, hints, {1, 1, -1, -1}));
        dump_GPA_Path(log.writer(), path.get());
        EXPECT_EQ(log.take_value("pa_PathHints"), expected);
    }
}

TEST(GpaPathDump, EmptyPathHasItsTwoEmptyMembers)
{
    RecordLog log;
    Guarded<GPA_Path> path(path_parts(0, 0, {1, 1, -1, -1}));
    Guarded<GPA_PathPointer> pointer(pointer_parts(path.get(), 0, 3, 0));
    dump_GPA_PathPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take(), R"(<GPA_PathPointer lpp_EnablePixelPlacement="FALSE" lpp_PathOwned="FALSE">
  <GPA_Path pa_NumEdges="0" pa_PathHints="[0] GPA_HINT_NONE " pa_EnclosingBox="1 1 -1 -1 ">
    <GPA_Path.pa_EdgeStart>
    </GPA_Path.pa_EdgeStart>
  </GPA_Path>
  <GPA_PathPointer.lpp_EdgePointer>
  </GPA_PathPointer.lpp_EdgePointer>
</GPA_PathPointer>
)");
}

TEST(GpaPathDump, PlacementIsWrittenWhenEnabled)
{
    RecordLog log;
    Guarded<GPA_Path> path(path_parts(0, 0, {0, 0, 0, 0}));
    const std::array<std::string, 10> names = {"GPA_PLACEMENT_GDI",
                                               "GPA_PLACEMENT_PS",
                                               "GPA_PLACEMENT_PCL",
                                               "GPA_PLACEMENT_GDI_MQP",
                                               "GPA_PLACEMENT_PATH_PCL_IMAGE_GDI",
                                               "GPA_PLACEMENT_PATH_PS_IMAGE_GDI",
                                               "GPA_PLACEMENT_PATH_GDI_IMAGE_PS",
                                               "GPA_PLACEMENT_AREA_INTERSECT",
                                               "GPA_PLACEMENT_CENTER_INTERSECT",
                                               "UNKNOWN_VALUE(9)"};
    for (uint32_t placement = 0; placement < names.size(); ++placement)
    {
        Guarded<GPA_PathPointer> pointer(pointer_parts(path.get(), 0x80000000, placement, 0));
        dump_GPA_PathPointer(log.writer(), pointer.get());
        EXPECT_TRUE(log.take().starts_with("<GPA_PathPointer lpp_EnablePixelPlacement=\"TRUE\" lpp_PixelPlacement=\"" +
                                           names[placement] + "\" l"));
        Guarded<GPA_PathPointer> disabled(pointer_parts(path.get(), 0, placement, 0));
        dump_GPA_PathPointer(log.writer(), disabled.get());
        EXPECT_EQ(log.take_value("lpp_PixelPlacement"), "(absent)");
    }
    Guarded<GPA_PathPointer> pointer(pointer_parts(path.get(), 1, 0xFFFFFFFF, 0));
    dump_GPA_PathPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take_value("lpp_PixelPlacement"), "UNKNOWN_VALUE(-1)");
}

TEST(GpaPathDump, PathPointerWithoutAPathIsWarnedOf)
{
    RecordLog log;
    Guarded<GPA_PathPointer> pointer(pointer_parts(nullptr, 0, 0, 1));
    dump_GPA_PathPointer(log.writer(), pointer.get());
    EXPECT_EQ(log.take(), R"(<GPA_PathPointer lpp_EnablePixelPlacement="FALSE" lpp_PathOwned="TRUE">
  <GPA_PathPointer.lpp_EdgePointer>
  </GPA_PathPointer.lpp_EdgePointer>

<!--
ORVLOG: WARNING: GPA_PathPointer without a path.
-->
</GPA_PathPointer>
)");
}

TEST(GpaPathDump, PathOfAShapeHasAFrame)
{
    RecordLog log(1);
    Guarded<GPA_Path> path(path_parts(0, 0, {1, 1, -1, -1}));
    Guarded<GPA_PathPointer> pointer(pointer_parts(path.get(), 1, 1, 0));
    dump_shape_path_member(log.writer(), "sp_U.stroked_path", pointer.get());
    EXPECT_EQ(log.take(), R"(  <GSH_ShapePointer.sp_U.stroked_path>
    <GPA_PathPointer lpp_EnablePixelPlacement="TRUE" lpp_PixelPlacement="GPA_PLACEMENT_PS" lpp_PathOwned="FALSE">
      <GPA_Path pa_NumEdges="0" pa_PathHints="[0] GPA_HINT_NONE " pa_EnclosingBox="1 1 -1 -1 ">
        <GPA_Path.pa_EdgeStart>
        </GPA_Path.pa_EdgeStart>
      </GPA_Path>
      <GPA_PathPointer.lpp_EdgePointer>
      </GPA_PathPointer.lpp_EdgePointer>
    </GPA_PathPointer>
  </GSH_ShapePointer.sp_U.stroked_path>
)");
}

TEST(GpaPathDump, SeveralEdgesStandInTwoLists)
{
    RecordLog log(23);
    Guarded<GPA_Edge> first(Parts().add(edge_head(0, 1, 1)).add(kGap).add(GGO_Vector{1, 2}));
    Guarded<GPA_Edge> second(Parts().add(edge_head(0, 0, 1)).add(kGap).add(GGO_Vector{3, 4}));
    Guarded<GPA_Path> path(path_parts(2, 0, {0, 0, 1, 1}).add(GGO_Point{5, 6}).add(GGO_Point{7, 8}));
    Guarded<GPA_PathPointer> pointer(
        pointer_parts(path.get(), 0, 0, 0).add(GPA_EdgePointer{first.get(), 0}).add(GPA_EdgePointer{second.get(), 0}));
    dump_GPA_PathPointer(log.writer(), pointer.get());
    const std::string text = log.take();
    const size_t starts = text.find("\n                                                  <GGO_Point gpf_X=\"5\" "
                                    "gpf_Y=\"6\"/>\n                                                  <GGO_Point "
                                    "gpf_X=\"7\" gpf_Y=\"8\"/>\n");
    const size_t edge1 = text.find("\n                                                  <GGO_Vector gvf_X=\"1\"");
    const size_t edge2 = text.find("\n                                                  <GGO_Vector gvf_X=\"3\"");
    EXPECT_LT(starts, edge1);
    EXPECT_LT(edge1, edge2);
    EXPECT_NE(edge2, std::string::npos);
}

GPA_PathStrokingParams params_with(uint16_t flags)
{
    GPA_PathStrokingParams params = {};
    params.psp_Flags = flags;
    return params;
}

TEST(GpaPathDump, StrokingParams)
{
    RecordLog log;
    GPA_PathStrokingParams head = params_with(0x9321);
    head.psp_DashCount = 2;
    head.psp_DashCaps = 3;
    head.psp_StrokeWidth = 0.1F;
    head.psp_MiterLimit = 10;
    head.psp_DashStart = -1.5F;
    Guarded<GPA_PathStrokingParams> params(
        Parts().add_head(head, offsetof(GPA_PathStrokingParams, psp_DashLength)).add(3.5F).add(0.7F));
    dump_GPA_PathStrokingParams(log.writer(), params.get());
    EXPECT_EQ(log.take(), R"(<GPA_PathStrokingParams psp_Flags.S="GPA_CAP_ROUND" psp_Flags.E="GPA_CAP_PROJECT" )"
                          R"(psp_Flags.J="GPA_JOIN_MITER_CLIPPED" psp_Flags.A="GPA_ADJUST_PS" psp_Flags.Z="TRUE" )"
                          R"(psp_DashCount="2" psp_DashCaps="GPA_CAP_TRIANGLE" psp_StrokeWidth="0.100000001" )"
                          R"(psp_MiterLimit="10" psp_DashStart="-1.5">
  <psp_DashLength>
    <BufferFloat len="2">
3.5 0.699999988 
    </BufferFloat>
  </psp_DashLength>
</GPA_PathStrokingParams>
)");
}

TEST(GpaPathDump, StrokingParamsWithoutDashesHaveAnEmptyBuffer)
{
    RecordLog log;
    Guarded<GPA_PathStrokingParams> params(
        Parts().add_head(params_with(0), offsetof(GPA_PathStrokingParams, psp_DashLength)));
    dump_GPA_PathStrokingParams(log.writer(), params.get());
    EXPECT_EQ(log.take(),
              R"(<GPA_PathStrokingParams psp_Flags.S="GPA_CAP_BUTT" psp_Flags.E="GPA_CAP_BUTT" )"
              R"(psp_Flags.J="GPA_JOIN_MITER" psp_Flags.A="GPA_ADJUST_NONE" psp_Flags.Z="FALSE" )"
              R"(psp_DashCount="0" psp_DashCaps="GPA_CAP_BUTT" psp_StrokeWidth="0" psp_MiterLimit="0" psp_DashStart="0">
  <psp_DashLength>
    <BufferFloat len="0">

    </BufferFloat>
  </psp_DashLength>
</GPA_PathStrokingParams>
)");
}

TEST(GpaPathDump, DashesStandInRowsOf25)
{
    RecordLog log;
    GPA_PathStrokingParams head = {};
    head.psp_DashCount = 26;
    Parts parts;
    parts.add_head(head, offsetof(GPA_PathStrokingParams, psp_DashLength));
    for (int i = 0; i < 26; ++i)
        parts.add(static_cast<float>(i));
    Guarded<GPA_PathStrokingParams> params(parts);
    dump_GPA_PathStrokingParams(log.writer(), params.get());
    EXPECT_NE(log.take().find("  <psp_DashLength>\n    <BufferFloat len=\"26\">\n"
                              "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 \n"
                              "25 \n    </BufferFloat>\n  </psp_DashLength>\n"),
              std::string::npos);
}

TEST(GpaPathDump, StrokingFlagFields)
{
    const std::array<std::string, 16> caps = {
        "GPA_CAP_BUTT",      "GPA_CAP_ROUND",     "GPA_CAP_PROJECT",   "GPA_CAP_TRIANGLE",
        "UNKNOWN_VALUE(4)",  "UNKNOWN_VALUE(5)",  "UNKNOWN_VALUE(6)",  "UNKNOWN_VALUE(7)",
        "UNKNOWN_VALUE(8)",  "UNKNOWN_VALUE(9)",  "UNKNOWN_VALUE(10)", "UNKNOWN_VALUE(11)",
        "UNKNOWN_VALUE(12)", "UNKNOWN_VALUE(13)", "UNKNOWN_VALUE(14)", "UNKNOWN_VALUE(15)"};
    const std::array<std::string, 16> joins = {"GPA_JOIN_MITER",
                                               "GPA_JOIN_ROUND",
                                               "GPA_JOIN_BEVEL",
                                               "GPA_JOIN_MITER_CLIPPED",
                                               "GPA_JOIN_TRIANGLE",
                                               "GPA_JOIN_NONE",
                                               "GPA_JOIN_MITER_DUAL_CLIPPED",
                                               "UNKNOWN_VALUE(7)",
                                               "UNKNOWN_VALUE(8)",
                                               "UNKNOWN_VALUE(9)",
                                               "UNKNOWN_VALUE(10)",
                                               "UNKNOWN_VALUE(11)",
                                               "UNKNOWN_VALUE(12)",
                                               "UNKNOWN_VALUE(13)",
                                               "UNKNOWN_VALUE(14)",
                                               "UNKNOWN_VALUE(15)"};
    const std::array<std::string, 8> adjusts = {"GPA_ADJUST_NONE",  "GPA_ADJUST_PS",    "UNKNOWN_VALUE(2)",
                                                "UNKNOWN_VALUE(3)", "UNKNOWN_VALUE(4)", "UNKNOWN_VALUE(5)",
                                                "UNKNOWN_VALUE(6)", "UNKNOWN_VALUE(7)"};
    RecordLog log;
    for (uint32_t value = 0; value < 16; ++value)
    {
        // Other fields hold what the one under test does not.
        const auto flags = static_cast<uint16_t>(value | (15 - value) << 4 | value << 8 | (value & 7) << 12);
        const GPA_PathStrokingParams params = params_with(flags);
        dump_GPA_PathStrokingParams(log.writer(), &params);
        const std::string text = log.take();
        EXPECT_EQ(attribute_of(text, "psp_Flags.S"), caps[value]);
        EXPECT_EQ(attribute_of(text, "psp_Flags.E"), caps[15 - value]);
        EXPECT_EQ(attribute_of(text, "psp_Flags.J"), joins[value]);
        EXPECT_EQ(attribute_of(text, "psp_Flags.A"), adjusts[value & 7]);
        EXPECT_EQ(attribute_of(text, "psp_Flags.Z"), "FALSE");
    }
    GPA_PathStrokingParams params = params_with(0x8000);
    params.psp_DashCaps = 4;
    dump_GPA_PathStrokingParams(log.writer(), &params);
    const std::string text = log.take();
    EXPECT_EQ(attribute_of(text, "psp_Flags.Z"), "TRUE");
    EXPECT_EQ(attribute_of(text, "psp_Flags.A"), "GPA_ADJUST_NONE");
    EXPECT_EQ(attribute_of(text, "psp_DashCaps"), "UNKNOWN_VALUE(4)");
    params.psp_DashCaps = 255;
    dump_GPA_PathStrokingParams(log.writer(), &params);
    EXPECT_EQ(log.take_value("psp_DashCaps"), "UNKNOWN_VALUE(255)");
}

TEST(GpaPathDump, NullWritesNothing)
{
    RecordLog log;
    dump_GPA_BezierSegment(log.writer(), nullptr);
    dump_GPA_QuadBezierSegment(log.writer(), nullptr);
    dump_GPA_StaircaseSegment(log.writer(), nullptr);
    dump_GPA_EllipticalSegment(log.writer(), nullptr);
    dump_GPA_Edge(log.writer(), nullptr);
    dump_GPA_StraightEdge(log.writer(), nullptr);
    dump_GPA_BezierEdge(log.writer(), nullptr);
    dump_GPA_QuadBezierEdge(log.writer(), nullptr);
    dump_GPA_StaircaseEdge(log.writer(), nullptr);
    dump_GPA_EllipticalEdge(log.writer(), nullptr);
    dump_GPA_EdgePointer(log.writer(), nullptr);
    dump_GPA_Path(log.writer(), nullptr);
    dump_GPA_PathPointer(log.writer(), nullptr);
    dump_GPA_PathStrokingParams(log.writer(), nullptr);
    dump_shape_path_member(log.writer(), "sp_U.filled_path", nullptr);
    EXPECT_EQ(log.take(), "");
}

TEST(GpaPathDump, QueuedWarningComesBetweenTwoChildren)
{
    RecordLog log;
    Guarded<GPA_Path> path(path_parts(1, 0, {0, 0, 0, 0}).add(GGO_Point{1, 2}));
    log.writer()->element_open = 1;
    orvlog_writer_defer_warning(log.writer(), ORVLOG_WARNING_FORMAT, "early");
    dump_GPA_Path(log.writer(), path.get());
    EXPECT_EQ(log.take(), R"(<GPA_Path pa_NumEdges="1" pa_PathHints="[0] GPA_HINT_NONE " pa_EnclosingBox="0 0 0 0 ">
  <GPA_Path.pa_EdgeStart>
    <GGO_Point gpf_X="1" gpf_Y="2"/>

<!--
ORVLOG: WARNING: early
-->
  </GPA_Path.pa_EdgeStart>
</GPA_Path>
)");
}

}  // namespace
