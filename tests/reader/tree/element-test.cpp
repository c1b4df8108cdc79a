#include "reader/tree/element.h"
#include "reader/tree/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::reader;

constexpr char kLog[] = "<ORV Endian=\"little\">\n"
                        "  <ORV_a id=\"7\">\n"
                        "    <ORV_a.op>\n"
                        "      <GGO_Point gpf_X=\"0.5\" gpf_Y=\"-inf\"/>\n"
                        "    </ORV_a.op>\n"
                        "    <BufferUInt8 len=\"3\">\n"
                        "00 7f \nff \n"
                        "    </BufferUInt8>\n"
                        "  </ORV_a>\n"
                        "\n<!--\nORVLOG: WARNING: one\n-->\n"
                        "  <ORV_b flags=\"[0x6] A B \" name=\"a\\x22b\">\n"
                        "    <BufferFloat len=\"2\">\n"
                        "1.5 2 \n"
                        "    </BufferFloat>\n"
                        "  </ORV_b>\n"
                        "</ORV>\n";

TEST(ElementReader, GivesOneCallAfterTheOther)
{
    std::istringstream source(kLog);
    ElementReader reader(source);
    std::vector<Comment> comments;
    reader.on_comment = [&](const Comment& comment) { comments.push_back(comment); };

    const Element* call = reader.next();
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(reader.root().value("Endian"), "little");
    EXPECT_EQ(call->name, "ORV_a");
    EXPECT_EQ(read_uint(*call, "id"), 7U);
    ASSERT_NE(call->member("op"), nullptr);
    const Element* point = call->member("op")->child("GGO_Point");
    ASSERT_NE(point, nullptr);
    EXPECT_EQ(read_double(*point, "gpf_X"), 0.5);
    EXPECT_EQ(read_double(*point, "gpf_Y"), -std::numeric_limits<double>::infinity());
    const Element* buffer = call->child("BufferUInt8");
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(buffer->bytes.begin(), buffer->bytes.end()), (std::vector<uint8_t>{0, 0x7f, 0xff}));
    EXPECT_EQ(buffer->place, (Place{114, 6}));

    call = reader.next();
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(call->name, "ORV_b");
    EXPECT_EQ(read_flags(*call, "flags"), 6U);
    EXPECT_EQ(to_text(call->value("name")), "a\"b");
    EXPECT_EQ(to_floats(call->child("BufferFloat")->rows), (std::vector<float>{1.5F, 2}));

    EXPECT_EQ(reader.next(), nullptr);
    ASSERT_EQ(comments.size(), 1U);
    EXPECT_TRUE(comments[0].warning);
    EXPECT_EQ(comments[0].text, "ORVLOG: WARNING: one\n");
    EXPECT_FALSE(comments[0].inside);
}

TEST(ElementReader, SkippedDataIsCounted)
{
    std::istringstream source(kLog);
    ElementReader reader(source, LogForm::log, Data::skip);
    const Element* buffer = reader.next()->child("BufferUInt8");
    EXPECT_EQ(buffer->data_size, 3U);
    EXPECT_TRUE(buffer->bytes.empty());
}

TEST(Values, EnumeratorsByName)
{
    EXPECT_EQ(to_enum("GPA_WINDING_NON_ZERO"), 1U);
    EXPECT_EQ(to_enum("GPA_CAP_TRIANGLE"), 3U);
    EXPECT_EQ(to_enum("UNKNOWN_VALUE(9)"), 9U);
    EXPECT_EQ(to_enum("UNKNOWN_VALUE(-1)"), 0xFFFFFFFFU);
    EXPECT_EQ(to_enum("GPA_CAP"), 0U);
    EXPECT_FALSE(is_enumerator("GPA_CAP"));
}

TEST(Values, Numbers)
{
    EXPECT_EQ(to_double("1.3333333333333335"), 1.3333333333333335);
    EXPECT_TRUE(std::isnan(to_double("-nan")));
    EXPECT_EQ(to_uints("1 22 333 "), (std::vector<uint32_t>{1, 22, 333}));
    EXPECT_EQ(to_doubles("0.1 -2e+30 "), (std::vector<double>{0.1, -2e+30}));
    EXPECT_EQ(to_flags("[0] X_NONE "), 0U);
    EXPECT_EQ(to_uint("4294967295"), 4294967295U);
    EXPECT_EQ(to_text("\\x3ca\\x09\\zz"), "<a\t\\zz");
}

}  // namespace
