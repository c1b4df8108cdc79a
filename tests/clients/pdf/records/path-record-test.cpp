// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/path-record.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::pdf_client;

Segment line(double x, double y)
{
    return {false, {}, {}, {x, y}};
}

TEST(PathRecord, HoldsARunOfEachKindAsAnEdge)
{
    const Path path{{{{1, 2}, {line(3, 2), line(3, 5), {true, {3, 6}, {2, 7}, {1, 7}}}, true}}};
    const PathRecord record(path);
    const GPA_PathPointer* pointer = record.get();
    ASSERT_EQ(pointer->lpp_Path->pa_NumEdges, 2U);
    EXPECT_EQ(pointer->lpp_Path->pa_PathHints, 0x10);  // one subpath
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MinX, 1);
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MinY, 2);
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MaxX, 3);
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MaxY, 7);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[0].gpf_X, 1);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[0].gpf_Y, 2);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[1].gpf_X, 3);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[1].gpf_Y, 5);

    const GPA_Edge* straight = pointer->lpp_EdgePointer[0].ep_Pointer;
    EXPECT_EQ(straight->ed_EdgeType, 0);
    EXPECT_EQ(straight->ed_EdgeFlag, 1);  // goes on
    ASSERT_EQ(straight->ed_SegmentCount, 2);
    const GGO_Vector* vectors = reinterpret_cast<const GPA_StraightEdge*>(straight)->se_Segment;
    EXPECT_EQ(vectors[0].gvf_X, 2);
    EXPECT_EQ(vectors[0].gvf_Y, 0);
    EXPECT_EQ(vectors[1].gvf_X, 0);
    EXPECT_EQ(vectors[1].gvf_Y, 3);

    const GPA_Edge* curved = pointer->lpp_EdgePointer[1].ep_Pointer;
    EXPECT_EQ(curved->ed_EdgeType, 1);
    EXPECT_EQ(curved->ed_EdgeFlag, 0);  // ends closed
    ASSERT_EQ(curved->ed_SegmentCount, 1);
    // All three vectors are measured from the start of the segment, (3, 5).
    const GPA_BezierSegment& bezier = reinterpret_cast<const GPA_BezierEdge*>(curved)->be_BezierSegment[0];
    EXPECT_EQ(bezier.bs_StartTangent.gvf_X, 0);
    EXPECT_EQ(bezier.bs_StartTangent.gvf_Y, 1);
    EXPECT_EQ(bezier.bs_EndTangent.gvf_X, -1);
    EXPECT_EQ(bezier.bs_EndTangent.gvf_Y, 2);
    EXPECT_EQ(bezier.bs_EndPoint.gvf_X, -2);
    EXPECT_EQ(bezier.bs_EndPoint.gvf_Y, 2);
}

TEST(PathRecord, KnowsARectangle)
{
    const PathRecord record(rectangle({0, 0, 4, 3}));
    EXPECT_EQ(record.get()->lpp_Path->pa_PathHints, 0x39);
    ASSERT_EQ(record.get()->lpp_Path->pa_NumEdges, 1U);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_SegmentCount, 3);
    const Path slanted{{{{0, 0}, {line(4, 1), line(4, 3), line(0, 3)}, true}}};
    EXPECT_EQ(PathRecord(slanted).get()->lpp_Path->pa_PathHints, 0x38);
}

TEST(PathRecord, EndsOpenSubpathsOpen)
{
    const Path path{{{{0, 0}, {line(1, 0)}, false}, {{5, 5}, {}, false}}};
    const PathRecord record(path);
    ASSERT_EQ(record.get()->lpp_Path->pa_NumEdges, 2U);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_EdgeFlag, 2);
    EXPECT_EQ(record.get()->lpp_EdgePointer[1].ep_Pointer->ed_EdgeFlag, 2);
    EXPECT_EQ(record.get()->lpp_EdgePointer[1].ep_Pointer->ed_SegmentCount, 0);
}

TEST(PathRecord, CutsRunsThatAreTooLongForAnEdge)
{
    Subpath subpath;
    for (int i = 1; i <= 65536; ++i)
        subpath.segments.push_back(line(i, 0));
    const PathRecord record(Path{{subpath}});
    ASSERT_EQ(record.get()->lpp_Path->pa_NumEdges, 2U);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_SegmentCount, 65535);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_EdgeFlag, 1);
    EXPECT_EQ(record.get()->lpp_EdgePointer[1].ep_Pointer->ed_SegmentCount, 1);
    EXPECT_EQ(record.get()->lpp_Path->pa_EdgeStart[1].gpf_X, 65535);
}

TEST(PathRecord, OfNothingHasNoEdges)
{
    const PathRecord record(Path{});
    EXPECT_EQ(record.get()->lpp_Path->pa_NumEdges, 0U);
    EXPECT_EQ(record.get()->lpp_Path->pa_EnclosingBox.gbf_MinX, 1);
    EXPECT_EQ(record.get()->lpp_Path->pa_EnclosingBox.gbf_MaxX, -1);
}

}  // namespace
