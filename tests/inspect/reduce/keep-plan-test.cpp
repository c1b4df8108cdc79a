// Which calls stay.

#include "inspect/reduce/keep-plan.h"
#include "inspect/reduce/log-scan.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

namespace
{

using orvlog::inspect::CallTag;
using orvlog::inspect::KeepPlan;
using orvlog::inspect::LogScan;

// A document with a resource that paints another one, and two pages.
constexpr const char* kLog = R"X(<ORV LoggingMode="transparent">
  <ORV_document_start document_context="0" document_id="7" font_engine_functions="FALSE">
  </ORV_document_start>
  <ORV_resource_start document_context="0" drawing_context="0" font_engine_functions="FALSE" resource_id="0">
  </ORV_resource_start>
  <ORV_object_paint id="0" drawing_context="0">
  </ORV_object_paint>
  <ORV_drawing_finish drawing_context="0">
  </ORV_drawing_finish>
  <ORV_resource_start document_context="0" drawing_context="1" font_engine_functions="FALSE" resource_id="1">
  </ORV_resource_start>
  <ORV_resource_paint drawing_context="1" resource_id="0">
  </ORV_resource_paint>
  <ORV_drawing_finish drawing_context="1">
  </ORV_drawing_finish>
  <ORV_face_start document_context="0" drawing_context="2" font_engine_functions="FALSE" face_seq_number="1">
  </ORV_face_start>
  <ORV_group_start drawing_context="2">
  </ORV_group_start>
  <ORV_object_paint id="1" drawing_context="2">
  </ORV_object_paint>
  <ORV_group_finish drawing_context="2" replay_group="FALSE">
  </ORV_group_finish>
  <ORV_object_paint id="2" drawing_context="2">
  </ORV_object_paint>
  <ORV_drawing_finish drawing_context="2">
  </ORV_drawing_finish>
  <ORV_face_start document_context="0" drawing_context="3" font_engine_functions="FALSE" face_seq_number="2">
  </ORV_face_start>
  <ORV_resource_paint drawing_context="3" resource_id="1">
  </ORV_resource_paint>
  <ORV_drawing_finish drawing_context="3">
  </ORV_drawing_finish>
  <ORV_resource_destroy document_context="0" resource_id="1">
  </ORV_resource_destroy>
  <ORV_document_finish document_context="0">
  </ORV_document_finish>
</ORV>
)X";

std::set<uint64_t> kept(const KeepPlan::Wanted& wanted, bool whole)
{
    KeepPlan plan(wanted, whole);
    std::istringstream source(kLog);
    LogScan scan(source);
    for (orvlog::reader::Event event; scan.next(event);)
        plan.event(event, scan.text());
    plan.finish();
    std::set<uint64_t> calls;
    for (uint64_t i = 0; i < plan.calls(); ++i)
        if (plan.keeps(i))
            calls.insert(i);
    return calls;
}

using Set = std::set<uint64_t>;

TEST(KeepPlan, KeepsGroupsDrawingAndDocumentOfAPaint)
{
    EXPECT_EQ(kept([](const CallTag& call) { return call.id == 1; }, true), (Set{0, 7, 8, 9, 10, 12, 17}));
    EXPECT_EQ(kept([](const CallTag& call) { return call.id == 2; }, true), (Set{0, 7, 11, 12, 17}));
}

TEST(KeepPlan, KeepsWhatAPaintedResourceIsMadeOf)
{
    const auto second_page = [](const CallTag& call) { return call.page == 2; };
    EXPECT_EQ(kept(second_page, true), (Set{0, 1, 2, 3, 4, 5, 6, 13, 14, 15, 16, 17}));
    EXPECT_EQ(kept(second_page, false), (Set{0, 4, 6, 13, 14, 15, 16, 17}));
}

TEST(KeepPlan, TakesAStartForAllUpToItsEnd)
{
    const auto group = [](const CallTag& call) { return call.name == "ORV_group_start"; };
    EXPECT_EQ(kept(group, true), (Set{0, 7, 8, 9, 10, 12, 17}));
    EXPECT_EQ(kept(group, false), (Set{0, 7, 8, 10, 12, 17}));
    EXPECT_EQ(kept([](const CallTag& call) { return call.ordinal == 7; }, true), (Set{0, 7, 8, 9, 10, 11, 12, 17}));
    EXPECT_EQ(kept([](const CallTag& call) { return call.ordinal == 0; }, true).size(), 18U);
}

TEST(KeepPlan, TellsWhereACallStands)
{
    std::string places;
    kept(
        [&places](const CallTag& call)
        {
            if (call.id)
                places += std::to_string(*call.id) + " page " + std::to_string(call.page) + " line " +
                          std::to_string(call.place.line) + "; ";
            EXPECT_EQ(kLog[call.tag_byte], '<');
            return false;
        },
        true);
    EXPECT_EQ(places, "0 page 0 line 6; 1 page 1 line 20; 2 page 1 line 24; ");
}

}  // namespace
