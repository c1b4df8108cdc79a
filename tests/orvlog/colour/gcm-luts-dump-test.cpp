// What definitions refer to: CIE tables and post-render tables.

#include "tests/orvlog/colour/csd-dump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{

using namespace orvlog::test;

class CieDump : public CsdDump
{
protected:
    CieDump()
    {
        csd.csd_Type = GCM_CSDTYPE_CIELUT_DATA;
        pointer.cp_CieLuts = &luts_pointer;
        luts_pointer.clp_CieLuts = &luts;
        luts_pointer.clp_DecodeABC_A = &values[0];
        luts_pointer.clp_DecodeABC_B = &values[1];
        luts_pointer.clp_DecodeABC_C = &values[2];
        luts_pointer.clp_DecodeLMN_L = &values[3];
        luts_pointer.clp_DecodeLMN_M = &values[4];
        luts_pointer.clp_DecodeLMN_N = &values[5];
        luts_pointer.clp_HIJKTable = table;
    }

    // What stands between the CIE record and its parent's close.
    std::string content(uint32_t family)
    {
        csd.csd_Defn.CieBased = family;
        const std::string text = dump();
        const size_t begin = text.find("    </GCM_CieLuts>\n") + 19;
        return text.substr(begin, text.find("  </GCM_CieLutsPointer>\n") - begin);
    }

    GCM_CieLuts luts = {};
    GCM_CieLutsPointer luts_pointer = {};
    float values[6] = {0, 1, 2, 3, 4, 5};
    uint8_t table[60] = {};
};

std::string decode(const std::string& name, const std::string& value)
{
    return "    <" + name + ">\n      <BufferFloat len=\"1\">\n" + value + " \n      </BufferFloat>\n    </" + name +
           ">\n";
}

TEST_F(CieDump, Record)
{
    luts.cl_DecodeBitDepth = 0;
    for (int i = 0; i < 9; ++i)
    {
        luts.cl_MatrixABC[i] = static_cast<float>(i);
        luts.cl_MatrixLMN[i] = static_cast<float>(i) / 2;
    }
    luts.cl_WhitePoint[0] = 0.9642f;
    luts.cl_BlackPoint[2] = -1;
    luts.cl_HIJKDimensions[0] = 255;
    luts.cl_HIJKDimensions[3] = 10;
    luts.cl_HIJKRange[7] = 100;
    csd.csd_Defn.CieBased = GCM_CIE_FAMILY_CALGRAY;
    const std::string text = dump();
    EXPECT_EQ(text.substr(text.find("  <GCM_CieLutsPointer")),
              R"X(  <GCM_CieLutsPointer GCM_CieFamily="GCM_CIE_FAMILY_CALGRAY">
    <GCM_CieLuts cl_DecodeBitDepth="0" cl_WhitePoint="0.96420002 0 0 " cl_BlackPoint="0 0 -1 " cl_MatrixABC="0 1 2 3 4 5 6 7 8 " cl_MatrixLMN="0 0.5 1 1.5 2 2.5 3 3.5 4 " cl_HIJKDimensions="ff 00 00 0a " cl_HIJKRange="0 0 0 0 0 0 0 100 ">
    </GCM_CieLuts>
    <clp_DecodeABC_A>
      <BufferFloat len="1">
0 
      </BufferFloat>
    </clp_DecodeABC_A>
  </GCM_CieLutsPointer>
</GCM_CsdPointer>
)X");
}

TEST_F(CieDump, TablesByFamily)
{
    const std::string a = decode("clp_DecodeABC_A", "0");
    const std::string bc = decode("clp_DecodeABC_B", "1") + decode("clp_DecodeABC_C", "2");
    const std::string lmn =
        decode("clp_DecodeLMN_L", "3") + decode("clp_DecodeLMN_M", "4") + decode("clp_DecodeLMN_N", "5");
    luts.cl_HIJKDimensions[0] = 2;
    luts.cl_HIJKDimensions[1] = 1;
    luts.cl_HIJKDimensions[2] = 3;
    luts.cl_HIJKDimensions[3] = 2;
    const std::string three = "    <clp_HIJKTable>\n      <BufferUInt8 len=\"6\">\n00 00 00 00 00 00 \n"
                              "      </BufferUInt8>\n    </clp_HIJKTable>\n";
    const std::string four =
        "    <clp_HIJKTable>\n      <BufferUInt8 len=\"12\">\n00 00 00 00 00 00 00 00 00 00 00 00 \n"
        "      </BufferUInt8>\n    </clp_HIJKTable>\n";
    EXPECT_EQ(content(0), a + bc + lmn);
    EXPECT_EQ(content(1), a + lmn);
    EXPECT_EQ(content(2), a + bc + lmn + three);
    EXPECT_EQ(content(3), a + bc + lmn + four);
    EXPECT_EQ(content(4), a + bc);
    EXPECT_EQ(content(5), a);
    EXPECT_EQ(content(6), a + bc + lmn);
    EXPECT_NE(dump().find("<GCM_CieLutsPointer GCM_CieFamily=\"UNKNOWN_VALUE(6)\">"), std::string::npos);
}

TEST_F(CieDump, TablesHaveAPowerOfTwoOfEntries)
{
    luts.cl_DecodeBitDepth = 2;
    GuardedBlock block(sizeof(float) * 4);
    for (int i = 0; i < 4; ++i)
        block.as<float>()[i] = static_cast<float>(i) / 4;
    luts_pointer.clp_DecodeABC_A = block.as<float>();
    EXPECT_EQ(content(5),
              "    <clp_DecodeABC_A>\n      <BufferFloat len=\"4\">\n0 0.25 0.5 0.75 \n      </BufferFloat>\n"
              "    </clp_DecodeABC_A>\n");
}

TEST_F(CieDump, TablesThatCannotBeAreLeftOut)
{
    luts.cl_DecodeBitDepth = 31;
    const std::string text = content(5);
    EXPECT_NE(text.find("<BufferFloat len=\"0\">\n\n"), std::string::npos);
    EXPECT_NE(text.find("\n<!--\nORVLOG: WARNING: The decode tables of a colour space definition are too large; they "
                        "are left out.\n-->\n"),
              std::string::npos);
}

TEST_F(CieDump, NullsLeaveTheirPartOut)
{
    luts_pointer.clp_CieLuts = nullptr;
    csd.csd_Defn.CieBased = 2;
    std::string text = dump();
    EXPECT_EQ(text.substr(text.find("  </GCM_Csd>\n")),
              "  </GCM_Csd>\n  <GCM_CieLutsPointer GCM_CieFamily=\"GCM_CIE_FAMILY_DEF\">\n  </GCM_CieLutsPointer>\n"
              "</GCM_CsdPointer>\n");
    pointer.cp_CieLuts = nullptr;
    text = dump();
    EXPECT_EQ(text.substr(text.find("  </GCM_Csd>\n")), "  </GCM_Csd>\n</GCM_CsdPointer>\n");
    pointer.cp_CieLuts = &luts_pointer;
    luts_pointer = {};
    luts_pointer.clp_CieLuts = &luts;
    luts.cl_HIJKDimensions[0] = luts.cl_HIJKDimensions[1] = luts.cl_HIJKDimensions[2] = 2;
    EXPECT_NE(dump().find("<clp_HIJKTable>"), std::string::npos);
}

// What stands in the element of a post-render LUT with a table of so many bytes.
class LutDump : public CsdDump
{
protected:
    std::string content(uint8_t dimensions, uint8_t size, uint8_t depth, uint8_t channels, size_t bytes)
    {
        GuardedBlock table(bytes);
        std::fill_n(table.data(), bytes, uint8_t{0x0F});
        GCM_PostRenderLut lut = {dimensions, size, depth, table.data()};
        csd.csd_Type = GCM_CSDTYPE_POST_RENDER_LUT;
        csd.csd_NumBaseChans = channels;
        pointer.cp_PostRenderLut = &lut;
        const std::string text = dump();
        return text.substr(text.find("  </GCM_Csd>\n") + 13);
    }
};

TEST_F(LutDump, Element)
{
    EXPECT_EQ(content(2, 2, 8, 1, 4),
              R"X(  <GCM_PostRenderLut prl_LutDimensions="2" prl_LutSize="2" prl_OutputBitDepth="8">
    <BufferUInt8 len="4">
0f 0f 0f 0f 
    </BufferUInt8>
  </GCM_PostRenderLut>
</GCM_CsdPointer>
)X");
}

TEST_F(LutDump, Sizes)
{
    EXPECT_NE(content(3, 17, 8, 3, 14739).find("<BufferUInt8 len=\"14739\">"), std::string::npos);
    EXPECT_NE(content(1, 3, 16, 2, 12).find("<BufferUInt8 len=\"12\">"), std::string::npos);
    EXPECT_NE(content(0, 9, 8, 1, 1).find("<BufferUInt8 len=\"1\">"), std::string::npos);
    EXPECT_NE(content(1, 3, 15, 1, 3).find("<BufferUInt8 len=\"3\">"), std::string::npos);
    EXPECT_EQ(content(1, 3, 7, 1, 0).find("<BufferUInt8"), std::string::npos);
    EXPECT_EQ(content(2, 0, 8, 1, 0).find("<BufferUInt8"), std::string::npos);
}

TEST_F(LutDump, ATableThatCannotBeIsLeftOut)
{
    EXPECT_EQ(content(255, 255, 255, 255, 0),
              R"X(  <GCM_PostRenderLut prl_LutDimensions="255" prl_LutSize="255" prl_OutputBitDepth="255">
  </GCM_PostRenderLut>

<!--
ORVLOG: WARNING: The table of a post render LUT is too large; it is left out.
-->
</GCM_CsdPointer>
)X");
    // 16 to the power 16 is 0 in 64 bits.
    EXPECT_NE(content(16, 16, 8, 1, 0)
                  .find("ORVLOG: WARNING: The table of a post render LUT is too large; it is "
                        "left out.\n"),
              std::string::npos);
    pointer.cp_PostRenderLut = nullptr;
    const std::string text = dump();
    EXPECT_EQ(text.substr(text.find("  </GCM_Csd>\n")), "  </GCM_Csd>\n</GCM_CsdPointer>\n");
}

}  // namespace
