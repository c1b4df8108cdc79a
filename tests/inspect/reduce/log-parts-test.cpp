// Parts of calls that a log can do without.

#include "inspect/reduce/log-parts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace orvlog::inspect;

constexpr const char* kPath = R"X(<ORV LoggingMode="transparent">
  <ORV_object_paint id="0" drawing_context="0">
    <ORV_object_paint.clip>
      <GSH_ShapeList sl_UniqueId="1">
      </GSH_ShapeList>
      <GSH_ShapeList sl_UniqueId="2">
      </GSH_ShapeList>
    </ORV_object_paint.clip>
    <GPA_PathPointer>
      <GPA_Path pa_NumEdges="2">
        <GPA_Path.pa_EdgeStart>
          <GGO_Point gpf_X="1" gpf_Y="1"/>
          <GGO_Point gpf_X="2" gpf_Y="2"/>
        </GPA_Path.pa_EdgeStart>
      </GPA_Path>
      <GPA_PathPointer.lpp_EdgePointer>
        <GPA_EdgePointer>
          <GPA_Edge ed_SegmentCount="2"/>
          <GPA_StraightEdge.se_Segment>
            <GGO_Vector gvf_X="3" gvf_Y="0"/>
            <GGO_Vector gvf_X="4" gvf_Y="0"/>
          </GPA_StraightEdge.se_Segment>
        </GPA_EdgePointer>
        <GPA_EdgePointer>
          <GPA_Edge ed_SegmentCount="0"/>
        </GPA_EdgePointer>
      </GPA_PathPointer.lpp_EdgePointer>
    </GPA_PathPointer>
    <imp_DirectImageData>
      <BufferUInt8 len="3">
00 ff 
0a 
      </BufferUInt8>
    </imp_DirectImageData>
  </ORV_object_paint>
</ORV>
)X";

std::string without(const std::vector<Part>& parts, size_t one)
{
    std::vector<bool> out(parts.size());
    out[one] = true;
    return without_parts(kPath, parts, out);
}

TEST(LogParts, LeavesOutOneClipOrAll)
{
    const std::vector<Part> parts = find_clips(kPath);
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(without(parts, 0).find("clip"), std::string::npos);
    EXPECT_EQ(without(parts, 1).find("sl_UniqueId=\"1\""), std::string::npos);
    EXPECT_NE(without(parts, 1).find("sl_UniqueId=\"2\""), std::string::npos);
}

TEST(LogParts, LeavesOutAnEdgeWithItsPointAndCountsTheOthers)
{
    const std::vector<Part> parts = find_edges(kPath);
    ASSERT_EQ(parts.size(), 2U);
    const std::string less = without(parts, 0);
    EXPECT_NE(less.find("pa_NumEdges=\"1\""), std::string::npos);
    EXPECT_EQ(less.find("gpf_X=\"1\""), std::string::npos);
    EXPECT_EQ(less.find("GGO_Vector"), std::string::npos);
    EXPECT_NE(less.find("gpf_X=\"2\""), std::string::npos);
    EXPECT_NE(without_parts(kPath, parts, {true, true}).find("pa_NumEdges=\"0\""), std::string::npos);
}

TEST(LogParts, LeavesOutASegmentAndCountsTheOthers)
{
    const std::vector<Part> parts = find_segments(kPath);
    ASSERT_EQ(parts.size(), 2U);
    const std::string less = without(parts, 1);
    EXPECT_NE(less.find("ed_SegmentCount=\"1\""), std::string::npos);
    EXPECT_NE(less.find("gvf_X=\"3\""), std::string::npos);
    EXPECT_EQ(less.find("gvf_X=\"4\""), std::string::npos);
}

TEST(LogParts, BlanksRowsOfImages)
{
    const std::vector<Part> parts = find_image_areas(kPath);
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_NE(without(parts, 0).find("\n00 00 \n0a \n"), std::string::npos);
    EXPECT_NE(without(parts, 1).find("\n00 ff \n00 \n"), std::string::npos);
}

}  // namespace
