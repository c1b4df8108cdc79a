// How calls are named.

#include "reader/look/call-address.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace
{

using namespace orvlog::reader;

using Kind = CallAddress::Kind;

TEST(CallAddress, IsAnIdALineOrAByte)
{
    EXPECT_EQ(parse_call_address("0"), (CallAddress{Kind::id, 0}));
    EXPECT_EQ(parse_call_address("4294967295"), (CallAddress{Kind::id, 4294967295}));
    EXPECT_EQ(parse_call_address("line:1"), (CallAddress{Kind::line, 1}));
    EXPECT_EQ(parse_call_address("line:5000000000"), (CallAddress{Kind::line, 5000000000}));
    EXPECT_EQ(parse_call_address("byte:0"), (CallAddress{Kind::byte, 0}));
    EXPECT_EQ(parse_call_address("byte:18446744073709551615"), (CallAddress{Kind::byte, UINT64_MAX}));
}

TEST(CallAddress, OtherTextsAreNone)
{
    for (const char* text : {"", "-1", "+1", " 1", "1 ", "1x", "0x1", "4294967296", "line:", "line:0", "line:-1",
                             "line: 1", "byte:", "byte:x", "byte:18446744073709551616", "Line:1", "call:1", "1-2"})
        EXPECT_FALSE(parse_call_address(text).has_value()) << text;
}

// A log whose third line is a paint, its fourth a finish within it, and its sixth the paint's callback.
constexpr const char* kLog = "<ORV>\n"
                             "  <ORV_face_start drawing_context=\"0\"/>\n"
                             "  <ORV_object_paint id=\"7\" drawing_context=\"0\">\n"
                             "      <ORV_drawing_finish drawing_context=\"1\">\n"
                             "      </ORV_drawing_finish>\n"
                             "    <GFI_StringStartFn id=\"8\"/>\n"
                             "  </ORV_object_paint>\n"
                             "</ORV>\n";

// The addresses by which the elements of the log are found, each with its name.
std::string found_at(const CallAddress& address)
{
    std::istringstream source(kLog);
    ElementReader elements(source);
    elements.split_nested = true;
    std::string found;
    while (const Element* element = elements.next())
        if (is_at(*element, address))
            found += std::string(element->name) + "=" + call_address_text(*element) + " ";
    return found;
}

TEST(CallAddress, FindsTheCall)
{
    EXPECT_EQ(found_at({Kind::id, 7}), "ORV_object_paint=7 ");
    EXPECT_EQ(found_at({Kind::id, 0}), "");
    EXPECT_EQ(found_at({Kind::id, 8}), "");
    EXPECT_EQ(found_at({Kind::line, 2}), "ORV_face_start=line:2 ");
    EXPECT_EQ(found_at({Kind::line, 3}), "ORV_object_paint=7 ");
    EXPECT_EQ(found_at({Kind::line, 4}), "ORV_drawing_finish=line:4 ");
    EXPECT_EQ(found_at({Kind::line, 1}), "");
    EXPECT_EQ(found_at({Kind::line, 6}), "");
    const std::string log = kLog;
    const size_t paint = log.find("<ORV_object_paint");
    EXPECT_EQ(found_at({Kind::byte, paint}), "ORV_object_paint=7 ");
    EXPECT_EQ(found_at({Kind::byte, paint - 2}), "ORV_object_paint=7 ");
    EXPECT_EQ(found_at({Kind::byte, paint - 3}), "");
    EXPECT_EQ(found_at({Kind::byte, paint + 1}), "");
    const size_t finish = log.find("<ORV_drawing_finish");
    EXPECT_EQ(found_at({Kind::byte, finish}), "ORV_drawing_finish=line:4 ");
    EXPECT_EQ(found_at({Kind::byte, finish - 6}), "ORV_drawing_finish=line:4 ");
    EXPECT_EQ(found_at({Kind::byte, finish - 7}), "");
}

TEST(CallAddress, IsTold)
{
    EXPECT_EQ(describe({Kind::id, 7}), "paint 7");
    EXPECT_EQ(describe({Kind::line, 8}), "call that begins in line 8");
    EXPECT_EQ(describe({Kind::byte, 9}), "call that begins at byte 9");
}

}  // namespace
