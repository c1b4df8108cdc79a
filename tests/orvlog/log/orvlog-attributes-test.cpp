#include "orvlog/log/orvlog-attributes.h"

#include "orvlog/names/orvlog-names.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

namespace
{

using orvlog::test::MemoryStream;
using orvlog::test::TestAllocator;

constexpr const char* kColourNames[] = {"RED", "GREEN", "BLUE"};
constexpr ORVLOG_EnumTable kColours = orvlog_enum_table(kColourNames);

constexpr ORVLOG_FlagEntry kHintEntries[] = {{"NONE", 0}, {"ONE", 1}, {"FOUR", 4}, {"SIX", 6}};
constexpr ORVLOG_FlagTable kHints = orvlog_flag_table(kHintEntries);
constexpr ORVLOG_FlagEntry kNoZeroEntries[] = {{"ONE", 1}};
constexpr ORVLOG_FlagTable kNoZero = orvlog_flag_table(kNoZeroEntries);

class Attributes : public testing::Test
{
protected:
    Attributes()
    {
        orvlog_writer_init(&writer, allocator.get(), stream.get(), 0, 0);
    }

    // The text since the last call; all of it has been flushed.
    std::string take()
    {
        EXPECT_EQ(stream.unflushed(), 0U);
        std::string text = stream.text();
        stream.clear();
        return text;
    }

    TestAllocator allocator;
    MemoryStream stream;
    ORVLOG_Writer writer;
};

TEST_F(Attributes, BeginAndEnd)
{
    orvlog_attr_begin(&writer, "a");
    orvlog_attr_end(&writer);
    EXPECT_EQ(take(), " a=\"\"");
}

TEST_F(Attributes, StringEscapesFourCharactersAndAllThatIsNotPrintable)
{
    orvlog_attr_string(&writer, "s", "<&>\"");
    EXPECT_EQ(take(), " s=\"\\x3c\\x26\\x3e\\x22\"");
    orvlog_attr_string(&writer, "s", "it's a \\ back");
    EXPECT_EQ(take(), " s=\"it's a \\ back\"");
    orvlog_attr_string(&writer, "s", "\x01\x1f\x7f\x80\xff ~");
    EXPECT_EQ(take(), " s=\"\\x01\\x1f\\x7f\\x80\\xff ~\"");
    orvlog_attr_string(&writer, "s", "\xc3\xa9");
    EXPECT_EQ(take(), " s=\"\\xc3\\xa9\"");
    orvlog_attr_string(&writer, "s", "tab\tline\n");
    EXPECT_EQ(take(), " s=\"tab\\x09line\\x0a\"");
}

TEST_F(Attributes, StringOfNullOrNothing)
{
    orvlog_attr_string(&writer, "s", nullptr);
    EXPECT_EQ(take(), " s=\"\"");
    orvlog_attr_string(&writer, "s", "");
    EXPECT_EQ(take(), " s=\"\"");
}

TEST_F(Attributes, StringOfAnyLength)
{
    const std::string text(5000, 'z');
    orvlog_attr_string(&writer, "s", text.c_str());
    EXPECT_EQ(take(), " s=\"" + text + "\"");
    orvlog_attr_string(&writer, "s", std::string(2000, '\n').c_str());
    std::string expected = " s=\"";
    for (int i = 0; i < 2000; ++i)
        expected += "\\x0a";
    EXPECT_EQ(take(), expected + "\"");
}

TEST_F(Attributes, Flags)
{
    orvlog_attr_flags(&writer, "f", &kHints, 0);
    EXPECT_EQ(take(), " f=\"[0] NONE \"");
    orvlog_attr_flags(&writer, "f", &kHints, 1);
    EXPECT_EQ(take(), " f=\"[0x1] ONE \"");
    orvlog_attr_flags(&writer, "f", &kHints, 5);
    EXPECT_EQ(take(), " f=\"[0x5] ONE FOUR SIX \"");
    orvlog_attr_flags(&writer, "f", &kHints, 2);
    EXPECT_EQ(take(), " f=\"[0x2] SIX \"");
    orvlog_attr_flags(&writer, "f", &kHints, 0x80000000U);
    EXPECT_EQ(take(), " f=\"[0x80000000] \"");
    orvlog_attr_flags(&writer, "f", &kNoZero, 0);
    EXPECT_EQ(take(), " f=\"[0] \"");
}

TEST_F(Attributes, EmptyFlagsAreNamedByTheFirstEntryOfZeroAlone)
{
    static constexpr ORVLOG_FlagEntry kEntries[] = {{"ONE", 1}, {"NONE", 0}, {"NOTHING", 0}};
    constexpr ORVLOG_FlagTable kTable = {kEntries, 3};
    orvlog_attr_flags(&writer, "f", &kTable, 0);
    EXPECT_EQ(take(), " f=\"[0] NONE \"");
    orvlog_attr_flags(&writer, "f", &kTable, 1);
    EXPECT_EQ(take(), " f=\"[0x1] ONE \"");
}

TEST_F(Attributes, Enumerations)
{
    orvlog_attr_enum(&writer, "e", &kColours, 0);
    EXPECT_EQ(take(), " e=\"RED\"");
    orvlog_attr_enum(&writer, "e", &kColours, 2);
    EXPECT_EQ(take(), " e=\"BLUE\"");
    orvlog_attr_enum(&writer, "e", &kColours, 3);
    EXPECT_EQ(take(), " e=\"UNKNOWN_VALUE(3)\"");
    orvlog_attr_enum(&writer, "e", &kColours, 0xFFFFFFFFU);
    EXPECT_EQ(take(), " e=\"UNKNOWN_VALUE(-1)\"");
}

TEST_F(Attributes, Numbers)
{
    orvlog_attr_uint(&writer, "u", 4294967295U);
    EXPECT_EQ(take(), " u=\"4294967295\"");
    orvlog_attr_int(&writer, "i", -5);
    EXPECT_EQ(take(), " i=\"-5\"");
    orvlog_attr_bool(&writer, "b", 0);
    EXPECT_EQ(take(), " b=\"FALSE\"");
    orvlog_attr_bool(&writer, "b", 0x100);
    EXPECT_EQ(take(), " b=\"TRUE\"");
    orvlog_attr_double(&writer, "d", 0.1);
    EXPECT_EQ(take(), " d=\"0.10000000000000001\"");
    orvlog_attr_double(&writer, "d", 1e100);
    EXPECT_EQ(take(), " d=\"1e+100\"");
    orvlog_attr_double(&writer, "d", 1e20);
    EXPECT_EQ(take(), " d=\"1e+20\"");
    orvlog_attr_float(&writer, "f", 0.1F);
    EXPECT_EQ(take(), " f=\"0.100000001\"");
}

TEST_F(Attributes, ArraysEndInABlank)
{
    const uint32_t words[] = {1, 4294967295U};
    orvlog_attr_uint_array(&writer, "a", words, 2);
    EXPECT_EQ(take(), " a=\"1 4294967295 \"");
    orvlog_attr_uint_array(&writer, "a", words, 0);
    EXPECT_EQ(take(), " a=\"\"");
    const int32_t four[] = {-1, 2, -3, 4};
    orvlog_attr_int4(&writer, "a", four);
    EXPECT_EQ(take(), " a=\"-1 2 -3 4 \"");
    const uint16_t halves[] = {0, 65535};
    orvlog_attr_uint16_array(&writer, "a", halves, 2);
    EXPECT_EQ(take(), " a=\"0 65535 \"");
    const uint8_t bytes[] = {0, 255, 16, 1};
    orvlog_attr_uint8_array(&writer, "a", bytes, 3);
    EXPECT_EQ(take(), " a=\"0 255 16 \"");
    orvlog_attr_hex4(&writer, "a", bytes);
    EXPECT_EQ(take(), " a=\"00 ff 10 01 \"");
    const double doubles[] = {1, 0.1};
    orvlog_attr_double_array(&writer, "a", doubles, 2);
    EXPECT_EQ(take(), " a=\"1 0.10000000000000001 \"");
    const float floats[] = {1, 0.1F};
    orvlog_attr_float_array(&writer, "a", floats, 2);
    EXPECT_EQ(take(), " a=\"1 0.100000001 \"");
}

TEST_F(Attributes, NullArraysCountAsEmpty)
{
    orvlog_attr_uint_array(&writer, "a", nullptr, 3);
    EXPECT_EQ(take(), " a=\"\"");
    orvlog_attr_float_array(&writer, "a", nullptr, 3);
    EXPECT_EQ(take(), " a=\"\"");
    orvlog_write_hex_rows(&writer, nullptr, 3, 50);
    EXPECT_EQ(take(), "");
    orvlog_write_float_rows(&writer, nullptr, 3);
    EXPECT_EQ(take(), "\n");
}

TEST_F(Attributes, LongArrays)
{
    const std::vector<uint8_t> bytes(3000, 200);
    orvlog_attr_uint8_array(&writer, "a", bytes.data(), bytes.size());
    std::string expected = " a=\"";
    for (int i = 0; i < 3000; ++i)
        expected += "200 ";
    EXPECT_EQ(take(), expected + "\"");
}

std::string hex(int first, int count)
{
    std::string text;
    static const char digits[] = "0123456789abcdef";
    for (int i = first; i < first + count; ++i)
    {
        text += digits[(i >> 4) & 15];
        text += digits[i & 15];
        text += ' ';
    }
    return text;
}

class Bytes : public Attributes
{
protected:
    Bytes() : bytes(200)
    {
        std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    }

    std::vector<uint8_t> bytes;
};

TEST_F(Bytes, ElementOfThreeBytes)
{
    writer.depth = 1;
    orvlog_elem_bytes(&writer, bytes.data(), 3, 50);
    EXPECT_EQ(take(), "  <BufferUInt8 len=\"3\">\n00 01 02 \n  </BufferUInt8>\n");
    EXPECT_EQ(writer.element_open, 0U);
}

TEST_F(Bytes, LengthOfZeroWritesNothing)
{
    writer.element_open = 1;
    orvlog_elem_bytes(&writer, bytes.data(), 0, 50);
    EXPECT_EQ(take(), "");
    EXPECT_EQ(writer.element_open, 1U);
}

TEST_F(Bytes, FiftyBytesMakeOneRow)
{
    orvlog_elem_bytes(&writer, bytes.data(), 50, 50);
    EXPECT_EQ(take(), "<BufferUInt8 len=\"50\">\n" + hex(0, 50) + "\n</BufferUInt8>\n");
}

TEST_F(Bytes, FiftyOneBytesMakeTwoRows)
{
    orvlog_elem_bytes(&writer, bytes.data(), 51, 50);
    EXPECT_EQ(take(), "<BufferUInt8 len=\"51\">\n" + hex(0, 50) + "\n32 \n</BufferUInt8>\n");
}

TEST_F(Bytes, RowSizeOfZeroHasNoNewlines)
{
    orvlog_elem_bytes(&writer, bytes.data(), 170, 0);
    EXPECT_EQ(take(), "<BufferUInt8 len=\"170\">\n" + hex(0, 170) + "</BufferUInt8>\n");
}

TEST_F(Bytes, RowsHoldEightyAtMost)
{
    orvlog_write_hex_rows(&writer, bytes.data(), 170, 81);
    EXPECT_EQ(take(), hex(0, 80) + "\n" + hex(80, 80) + "\n" + hex(160, 10) + "\n");
    orvlog_write_hex_rows(&writer, bytes.data(), 160, 80);
    EXPECT_EQ(take(), hex(0, 80) + "\n" + hex(80, 80) + "\n");
    orvlog_write_hex_rows(&writer, bytes.data(), 3, 1);
    EXPECT_EQ(take(), "00 \n01 \n02 \n");
}

TEST_F(Bytes, NamedElement)
{
    orvlog_elem_named_bytes(&writer, "clp_HIJKTable", bytes.data(), 2);
    EXPECT_EQ(take(), "<clp_HIJKTable>\n  <BufferUInt8 len=\"2\">\n00 01 \n  </BufferUInt8>\n</clp_HIJKTable>\n");
    orvlog_elem_named_bytes(&writer, "Empty", bytes.data(), 0);
    EXPECT_EQ(take(), "<Empty>\n</Empty>\n");
    orvlog_elem_named_bytes(&writer, "Long", bytes.data(), 51);
    EXPECT_EQ(take(), "<Long>\n  <BufferUInt8 len=\"51\">\n" + hex(0, 50) + "\n32 \n  </BufferUInt8>\n</Long>\n");
}

TEST_F(Bytes, CodedRowsLoseWhatIsBeyondOnePrint)
{
    writer.compress = 1;
    writer.coder = AHC_EncoderCreate(allocator.get());
    orvlog_write_hex_rows(&writer, bytes.data(), 140, 70);
    orvlog_write_hex_rows(&writer, bytes.data(), 66, 66);
    orvlog_write_hex_rows(&writer, bytes.data(), 100, 50);
    const char last = static_cast<char>(AHC_EncoderFinish(writer.coder));
    writer.coder = nullptr;
    AdaptiveHuffmanCoder* decoder = AHC_DecoderCreate(allocator.get());
    const std::string coded = stream.text() + last + '\0';
    AHC_SetInput(decoder, reinterpret_cast<const uint8_t*>(coded.data()), static_cast<uint32_t>(coded.size()));
    std::string text(899, '\0');
    EXPECT_EQ(AHC_Decode(decoder, reinterpret_cast<uint8_t*>(text.data()), 899), 899);
    AHC_DecoderDestroy(decoder);
    EXPECT_EQ(text,
              hex(0, 66) + "\n" + hex(70, 66) + "\n" + hex(0, 66) + "\n" + hex(0, 50) + "\n" + hex(50, 50) + "\n");
}

TEST_F(Attributes, FloatElement)
{
    const std::vector<float> values(26, 0.5F);
    orvlog_elem_floats(&writer, values.data(), 2);
    EXPECT_EQ(take(), "<BufferFloat len=\"2\">\n0.5 0.5 \n</BufferFloat>\n");
    orvlog_elem_floats(&writer, values.data(), 0);
    EXPECT_EQ(take(), "<BufferFloat len=\"0\">\n\n</BufferFloat>\n");
    std::string row;
    for (int i = 0; i < 25; ++i)
        row += "0.5 ";
    orvlog_elem_floats(&writer, values.data(), 25);
    EXPECT_EQ(take(), "<BufferFloat len=\"25\">\n" + row + "\n</BufferFloat>\n");
    orvlog_elem_floats(&writer, values.data(), 26);
    EXPECT_EQ(take(), "<BufferFloat len=\"26\">\n" + row + "\n0.5 \n</BufferFloat>\n");
    orvlog_elem_named_floats(&writer, "psp_DashLength", values.data(), 1);
    EXPECT_EQ(take(), "<psp_DashLength>\n  <BufferFloat len=\"1\">\n0.5 \n  </BufferFloat>\n</psp_DashLength>\n");
}

TEST_F(Attributes, TextElement)
{
    writer.depth = 1;
    orvlog_elem_cstr(&writer, "a<b");
    EXPECT_EQ(take(), "  <CStr val=\"a\\x3cb\">\n  </CStr>\n");
    EXPECT_EQ(writer.element_open, 0U);
}

TEST_F(Attributes, ElementsLetWarningsOut)
{
    orvlog_writer_open_element(&writer, "A");
    orvlog_writer_defer_warning(&writer, "w\n");
    orvlog_elem_cstr(&writer, "x");
    EXPECT_EQ(take(), "<A>\n<CStr val=\"x\">\n</CStr>\n\n<!--\nw\n-->\n");
}

}  // namespace
