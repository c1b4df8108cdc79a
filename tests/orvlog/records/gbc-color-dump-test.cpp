#include "orvlog/records/gbc-color-dump.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::Guarded;
using orvlog::test::Parts;
using orvlog::test::RecordLog;

Parts color_head(uint16_t chans, uint8_t depth, uint8_t alpha, uint32_t empty)
{
    GBC_Color color = {};
    color.num_chans = chans;
    color.bit_depth = depth;
    color.has_alpha = alpha;
    color.empty_chans = empty;
    Parts parts;
    parts.add_head(color, offsetof(GBC_Color, channels));
    return parts;
}

std::string dump(const Parts& parts)
{
    RecordLog log;
    Guarded<GBC_Color> color(parts);
    ORVLOG_DumpColor(log.writer(), color.get());
    return log.take();
}

TEST(GbcColorDump, FloatChannels)
{
    EXPECT_EQ(dump(color_head(3, 32, 0, 0).add(0.1F).add(1.0F).add(-2.5F)),
              "<GBC_Color bit_depth=\"32\" num_chans=\"3\" has_alpha=\"FALSE\" base_n=\"0.100000001 1 -2.5 \" "
              "empty_chans=\"0\"/>\n");
    EXPECT_EQ(dump(color_head(2, 32, 1, 0).add(0.5F).add(0.25F)),
              "<GBC_Color bit_depth=\"32\" num_chans=\"2\" has_alpha=\"TRUE\" alpha=\"0.5\" base_n=\"0.25 \" "
              "empty_chans=\"0\"/>\n");
}

TEST(GbcColorDump, IntegerChannels)
{
    EXPECT_EQ(dump(color_head(4, 16, 0, 0).add(uint16_t{0}).add(uint16_t{65535}).add(uint16_t{7}).add(uint16_t{8})),
              "<GBC_Color bit_depth=\"16\" num_chans=\"4\" has_alpha=\"FALSE\" base_n=\"0 65535 7 8 \" "
              "empty_chans=\"0\"/>\n");
    EXPECT_EQ(dump(color_head(2, 8, 255, 0).add(uint16_t{300}).add(uint16_t{5})),
              "<GBC_Color bit_depth=\"8\" num_chans=\"2\" has_alpha=\"TRUE\" alpha=\"300\" base_n=\"5 \" "
              "empty_chans=\"0\"/>\n");
    EXPECT_EQ(attribute_of(dump(color_head(2, 31, 0, 0).add(uint16_t{1}).add(uint16_t{2})), "base_n"), "1 2 ");
    EXPECT_EQ(attribute_of(dump(color_head(2, 33, 0, 0).add(uint16_t{1}).add(uint16_t{2})), "base_n"), "1 2 ");
    EXPECT_EQ(attribute_of(dump(color_head(2, 0, 0, 0).add(uint16_t{1}).add(uint16_t{2})), "base_n"), "1 2 ");
}

TEST(GbcColorDump, AlphaAloneHasAnEmptyBase)
{
    EXPECT_EQ(dump(color_head(1, 32, 1, 0).add(1.0F)),
              "<GBC_Color bit_depth=\"32\" num_chans=\"1\" has_alpha=\"TRUE\" alpha=\"1\" base_n=\"\" "
              "empty_chans=\"0\"/>\n");
}

TEST(GbcColorDump, NoChannelsAtAll)
{
    EXPECT_EQ(dump(color_head(0, 32, 0, 0xFFFFFFFF)),
              "<GBC_Color bit_depth=\"32\" num_chans=\"0\" has_alpha=\"FALSE\" base_n=\"\" empty_chans=\"0\"/>\n");
}

TEST(GbcColorDump, AlphaWithoutAChannelIsNotRead)
{
    EXPECT_EQ(dump(color_head(0, 32, 1, 0)),
              "<GBC_Color bit_depth=\"32\" num_chans=\"0\" has_alpha=\"TRUE\" base_n=\"\" empty_chans=\"0\"/>\n");
    EXPECT_EQ(dump(color_head(0, 16, 255, 5)),
              "<GBC_Color bit_depth=\"16\" num_chans=\"0\" has_alpha=\"TRUE\" base_n=\"\" empty_chans=\"0\"/>\n");
}

TEST(GbcColorDump, AsManyChannelsAsCanBe)
{
    Parts parts = color_head(65535, 16, 1, 0);
    for (int i = 0; i < 65536; ++i)  // one more fills the record up to its alignment
        parts.add(uint16_t{7});
    const std::string text = dump(parts);
    EXPECT_EQ(attribute_of(text, "alpha"), "7");
    EXPECT_EQ(attribute_of(text, "base_n").size(), size_t{2} * 65534);
}

TEST(GbcColorDump, EmptyChannelsAreMaskedToTheChannels)
{
    Parts three = color_head(3, 32, 0, 0xFFFFFFFF);
    EXPECT_EQ(attribute_of(dump(three.add(0.0F).add(0.0F).add(0.0F)), "empty_chans"), "7");
    Parts many = color_head(31, 16, 0, 0xFFFFFFFF);
    for (uint16_t i = 0; i < 32; ++i)
        many.add(i);
    EXPECT_EQ(attribute_of(dump(many), "empty_chans"), "2147483647");
    Parts all = color_head(32, 16, 0, 0xFFFFFFFE);
    for (uint16_t i = 0; i < 32; ++i)
        all.add(i);
    EXPECT_EQ(attribute_of(dump(all), "empty_chans"), "4294967294");
    Parts more = color_head(34, 16, 0, 0x80000001);
    for (uint16_t i = 0; i < 34; ++i)
        more.add(i);
    EXPECT_EQ(attribute_of(dump(more), "empty_chans"), "2147483649");
}

TEST(GbcColorDump, NamedColorHasAFrame)
{
    RecordLog log(1);
    Guarded<GBC_Color> color(color_head(1, 32, 0, 1).add(0.5F));
    ORVLOG_DumpNamedColor(log.writer(), "ORV_group_start", "separation_mask", color.get());
    EXPECT_EQ(log.take(), R"(  <ORV_group_start.separation_mask>
    <GBC_Color bit_depth="32" num_chans="1" has_alpha="FALSE" base_n="0.5 " empty_chans="1"/>
  </ORV_group_start.separation_mask>
)");
    ORVLOG_DumpNamedColor(log.writer(), "ORV_group_start", "separation_mask", nullptr);
    ORVLOG_DumpColor(log.writer(), nullptr);
    EXPECT_EQ(log.take(), "");
}

}  // namespace
