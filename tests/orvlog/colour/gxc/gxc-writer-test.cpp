#include "orvlog/colour/gxc/gxc-writer.h"

#include "tests/support/memory-stream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace
{

using orvlog::test::MemoryStream;

class GxcWriter : public testing::Test
{
protected:
    MemoryStream stream;
    GXC_Writer writer = {nullptr, nullptr, stream.get(), "> ", 0};

    std::string take()
    {
        std::string text = stream.text();
        EXPECT_EQ(stream.unflushed(), 0u);
        stream.clear();
        return text;
    }
};

std::string format(float value)
{
    char buffer[GXC_FLOAT_TEXT];
    const uint32_t length = gxc_format_float(buffer, value);
    EXPECT_EQ(length, std::strlen(buffer));
    return buffer;
}

float of_bits(uint32_t bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

TEST_F(GxcWriter, OpensAndClosesElements)
{
    gxc_open(&writer, "A");
    gxc_open(&writer, nullptr);
    gxc_open_inline(&writer, "B");
    EXPECT_EQ(writer.level, 3u);
    gxc_close_inline(&writer, "B");
    gxc_close(&writer, nullptr);
    gxc_close(&writer, "A");
    EXPECT_EQ(writer.level, 0u);
    EXPECT_EQ(take(), "> <A>\n> \t<(null)>\n> \t\t<B></B>\n> \t</(null)>\n> </A>\n");
}

TEST_F(GxcWriter, PrefixIsDataAndNeverAFormat)
{
    writer.prefix = "%s%n%d";
    gxc_open(&writer, "%x");
    gxc_close(&writer, "%x");
    EXPECT_EQ(take(), "%s%n%d<%x>\n%s%n%d</%x>\n");
}

TEST_F(GxcWriter, IndentStopsAt16TabsWhileTheLevelGoesOn)
{
    writer.level = 15;
    EXPECT_EQ(std::string(gxc_indent(&writer)), std::string(15, '\t'));
    writer.level = 16;
    EXPECT_EQ(std::string(gxc_indent(&writer)), std::string(16, '\t'));
    gxc_open(&writer, "A");
    gxc_open(&writer, "B");
    EXPECT_EQ(writer.level, 18u);
    gxc_close(&writer, "B");
    gxc_close(&writer, "A");
    const std::string tabs(16, '\t');
    EXPECT_EQ(take(), "> " + tabs + "<A>\n> " + tabs + "<B>\n> " + tabs + "</B>\n> " + tabs + "</A>\n");
    writer.level = 0xFFFFFFFF;
    EXPECT_EQ(std::string(gxc_indent(&writer)), tabs);
}

TEST_F(GxcWriter, NeedsTheStreamToPrintAndNothingElse)
{
    GIO_StreamOps ops = {};
    GIO_Stream prints = {stream.get()->instance, 0, &ops};
    writer.stream = &prints;
    EXPECT_EQ(gxc_print(&writer, "x"), -1);
    ops.gio_VPrintf = stream.get()->ops->gio_VPrintf;
    EXPECT_EQ(gxc_print(&writer, "<%s>\n", "A"), 4);
    EXPECT_EQ(stream.text(), "<A>\n");
}

TEST_F(GxcWriter, EachPrintIsOnePrintAndOneFlush)
{
    gxc_begin(&writer, "Size");
    gxc_value_uint32(&writer, 4294967295u);
    gxc_end(&writer);
    EXPECT_EQ(stream.pieces(), (std::vector<uint64_t>{7, 20, 4}));
    EXPECT_EQ(stream.flushes(), 3u);
    EXPECT_EQ(take(), "> <Size UInt32=\"4294967295\" />\n");
    EXPECT_EQ(gxc_print(&writer, "%s", "abc"), 3);
    stream.fail(1);
    EXPECT_EQ(gxc_print(&writer, "%s", "abc"), -1);
}

TEST_F(GxcWriter, ValuesHaveTheirForms)
{
    gxc_value_bool(&writer, 1);
    gxc_value_bool(&writer, 0);
    gxc_value_uint16(&writer, 65535);
    gxc_value_uint8(&writer, 255);
    gxc_value_float(&writer, 0.5f);
    gxc_value_string(&writer, "a<&\">%s\x80", 8);
    gxc_value_string(&writer, "", 0);
    gxc_value_enum(&writer, "GCM_QualityHint", 4);
    gxc_value_enum(&writer, "GCM_QualityHint", 5);
    EXPECT_EQ(take(), " Bool=\"TRUE\" Bool=\"FALSE\" UInt16=\"65535\" UInt8=\"255\" float=\"0.500000\""
                      " String=\"a<&\">%s\x80\" String=\"\" GCM_QualityHint=\"GCM_QUAL_HIGHEST\""
                      " GCM_QualityHint=\"(null)\"");
}

TEST_F(GxcWriter, ArraysHaveTheirForms)
{
    const uint8_t bytes[] = {0, 1, 2, 255, 0, 0, 0x80, 0x3F, 0, 0, 0, 0xC0};
    gxc_value_array(&writer, GXC_ENTRY_BOOL, bytes, 4, 0);
    gxc_value_array(&writer, GXC_ENTRY_UINT8, bytes, 4, 0);
    gxc_value_array(&writer, GXC_ENTRY_UINT16, bytes, 2, 3);
    gxc_value_array(&writer, GXC_ENTRY_FLOAT, bytes + 4, 2, 0);
    gxc_value_array(&writer, GXC_ENTRY_BYTE_AS_FLOAT, bytes + 1, 3, 0);
    gxc_value_array(&writer, GXC_ENTRY_FLOAT, bytes, 0, 0);
    EXPECT_EQ(take(), " BoolArray=\"FALSE TRUE FALSE FALSE\" UInt8_array=\"0 1 2 255\""
                      " UInt16_array=\"256 65282 0 0 0\" float_array=\"1.000000 -2.000000\""
                      " float_array=\"1.000000 2.000000 255.000000\" float_array=\"\"");
    gxc_value_hex(&writer, bytes, 8);
    gxc_hex_run(&writer, bytes + 6, 2);
    gxc_hex_run(&writer, bytes, 0);
    EXPECT_EQ(take(), " HexData=\"000102FF0000803F\" 803F");
}

TEST_F(GxcWriter, LongArraysAreWholeAndGoOutInRows)
{
    const std::vector<uint8_t> bytes(100000, 0xAB);
    gxc_hex_run(&writer, bytes.data(), bytes.size());
    EXPECT_LT(stream.flushes(), 300u);
    std::string expected;
    for (int i = 0; i < 100000; ++i)
        expected += "AB";
    EXPECT_EQ(take(), expected);
    gxc_value_array(&writer, GXC_ENTRY_UINT8, bytes.data(), bytes.size(), 0);
    expected = " UInt8_array=\"171";
    for (int i = 1; i < 100000; ++i)
        expected += " 171";
    EXPECT_EQ(take(), expected + "\"");
}

TEST(GxcFloat, PrintsLiteralForms)
{
    EXPECT_EQ(format(0.0f), "0.000000");
    EXPECT_EQ(format(-0.0f), "-0.000000");
    EXPECT_EQ(format(0.1f), "0.100000");
    EXPECT_EQ(format(1e-7f), "0.000000");
    EXPECT_EQ(format(0.0078125f), "0.007812");  // ties go to even
    EXPECT_EQ(format(0.0234375f), "0.023438");
    EXPECT_EQ(format(-123456.789f), "-123456.789062");
    EXPECT_EQ(format(3.40282346638528859812e+38f), "340282346638528859811704183484516925440.000000");
    EXPECT_EQ(format(-3.40282346638528859812e+38f), "-340282346638528859811704183484516925440.000000");
    EXPECT_EQ(format(std::numeric_limits<float>::denorm_min()), "0.000000");
    EXPECT_EQ(format(of_bits(0x7F800000)), "inf");
    EXPECT_EQ(format(of_bits(0xFF800000)), "-inf");
    EXPECT_EQ(format(of_bits(0x7FC00000)), "nan");
    EXPECT_EQ(format(of_bits(0xFFC00000)), "-nan");
    EXPECT_EQ(format(of_bits(0x7F800001)), "nan");
}

TEST(GxcFloat, SameAsTheCLibraryInAnyLocale)
{
    std::mt19937 random(7);
    for (int i = 0; i < 100000; ++i)
    {
        const float value = of_bits(static_cast<uint32_t>(random()));
        if (!std::isfinite(value))
            continue;
        char expected[64];
        const int length = std::snprintf(expected, sizeof expected, "%f", static_cast<double>(value));
        expected[length - 7] = '.';  // whatever the locale writes there
        ASSERT_EQ(format(value), expected);
    }
}

}  // namespace
