// Logs that may be handed on.

#include "inspect/redact/redacted-text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::inspect;

std::string redacted(const std::string& log)
{
    std::istringstream source(log);
    RedactedText text(source);
    return {std::istreambuf_iterator<char>(&text), {}};
}

std::string in_root(const std::string& content)
{
    return "<ORV LoggingMode=\"base\" Endian=\"little\">\n" + content + "</ORV>\n";
}

TEST(RedactedText, MasksTextsAndNumbersGlyphs)
{
    EXPECT_EQ(redacted(in_root(
                  R"X(          <GFI_StringDescPointer gsp_StringDesc.gsd_TextLen="4" gsp_TextPtr="80 0 116 104 ">
          <GFI_GlyphSpec ggs_Flags="0" ggs_GlyphIndex="80" ggs_OffsetX="0.5">
          </GFI_GlyphSpec>
          <GFI_GlyphSpec ggs_Flags="0" ggs_GlyphIndex="97" ggs_OffsetX="0.5">
          </GFI_GlyphSpec>
          <GFI_GlyphIndexGetFn GfpId="0" result="TRUE" glyph_index_out="80" quick_bounding_box="0.09 0 0.6 0.7 "/>
          </GFI_StringDescPointer>
)X")),
              in_root(R"X(          <GFI_StringDescPointer gsp_StringDesc.gsd_TextLen="4" gsp_TextPtr="120 0 120 120 ">
          <GFI_GlyphSpec ggs_Flags="0" ggs_GlyphIndex="1" ggs_OffsetX="0.5">
          </GFI_GlyphSpec>
          <GFI_GlyphSpec ggs_Flags="0" ggs_GlyphIndex="2" ggs_OffsetX="0.5">
          </GFI_GlyphSpec>
          <GFI_GlyphIndexGetFn GfpId="0" result="TRUE" glyph_index_out="1" quick_bounding_box="0.0625 0 0.625 0.75 "/>
          </GFI_StringDescPointer>
)X"));
}

TEST(RedactedText, MasksPixelsBitmapsAndTables)
{
    EXPECT_EQ(
        redacted(in_root(R"X(  <GOP_OperandImagePointer Id="10" imp_IndexColorTable="255 0 17 " imp_DirectImage="TRUE">
    <imp_DirectImageData>
      <BufferUInt8 len="10">
de ad be ef de ad be ef 00 01 
      </BufferUInt8>
    </imp_DirectImageData>
  </GOP_OperandImagePointer>
  <GFI_GlyphDescBitmap gdb_Width="9" gdb_BlackIsOne="1">
    <BufferUInt8 len="2">
80 81 
    </BufferUInt8>
  </GFI_GlyphDescBitmap>
)X")),
        in_root(R"X(  <GOP_OperandImagePointer Id="10" imp_IndexColorTable="62 62 62 " imp_DirectImage="TRUE">
    <imp_DirectImageData>
      <BufferUInt8 len="10">
3e 3e 3e 3e 3e 3e 3e 3e 3f 3f 
      </BufferUInt8>
    </imp_DirectImageData>
  </GOP_OperandImagePointer>
  <GFI_GlyphDescBitmap gdb_Width="9" gdb_BlackIsOne="1">
    <BufferUInt8 len="2">
ff ff 
    </BufferUInt8>
  </GFI_GlyphDescBitmap>
)X"));
}

TEST(RedactedText, DrawsABoxForAGlyph)
{
    EXPECT_EQ(redacted(in_root(R"X(  <GFI_GlyphDescPointer.gdp_GlyphDesc>
    <GPA_Path pa_NumEdges="1" pa_EnclosingBox="0.01 0.02 15.98 15.99 ">
      <GGO_Point gpf_X="3.25" gpf_Y="7.5"/>
    </GPA_Path>
    <GPA_Edge ed_SegmentCount="4"/>
    <GGO_Vector gvf_X="0.3" gvf_Y="0.4"/>
    <GPA_BezierSegment bs_StartTangent="0.1 0.2 " bs_EndTangent="0.3 0.4 " bs_EndPoint="0.5 0.6 ">
    </GPA_BezierSegment>
  </GFI_GlyphDescPointer.gdp_GlyphDesc>
  <GGO_Vector gvf_X="0.3" gvf_Y="0.4"/>
)X")),
              in_root(R"X(  <GFI_GlyphDescPointer.gdp_GlyphDesc>
    <GPA_Path pa_NumEdges="1" pa_EnclosingBox="0 0 16 16 ">
      <GGO_Point gpf_X="1.0096000000000001" gpf_Y="1.0096000000000001"/>
    </GPA_Path>
    <GPA_Edge ed_SegmentCount="4"/>
    <GGO_Vector gvf_X="13.9808" gvf_Y="0"/>
    <GPA_BezierSegment bs_StartTangent="0 4.6602666666666668 " bs_EndTangent="0 9.3205333333333336 " bs_EndPoint="0 13.9808 ">
    </GPA_BezierSegment>
  </GFI_GlyphDescPointer.gdp_GlyphDesc>
  <GGO_Vector gvf_X="0.3" gvf_Y="0.4"/>
)X"));
}

TEST(RedactedText, MasksNamesAndComments)
{
    EXPECT_EQ(redacted(in_root(R"X(
<!--
My Secret
ink
-->

<!--
ORVLOG: WARNING: Image is too large.
-->

<!--
ORVLOG: WARNING: My own.
-->
  <GCM_CsdPointer cp_Filename="C:\\Users\\me.icc" fp_EngineIdGet="A B\xe9" val="Cyan">
  </GCM_CsdPointer>
  <CStr val="PANTONE 12"/>
  <GOP_ImageReadFn ImageFileName="sub/job-img-10.bin" odd="my odd" kind="GPA_PLACEMENT_PS" f="[0x2] GOP_OP_FLAGS_SMOOTH ">
  </GOP_ImageReadFn>
)X")),
              in_root(R"X(
<!--
xx xxxxxx
xxx
-->

<!--
ORVLOG: WARNING: Image is too large.
-->

<!--
xxxxxxx xxxxxxxx xx xxxx
-->
  <GCM_CsdPointer cp_Filename="x:\\xxxxx\\xx.xxx" fp_EngineIdGet="x xx" val="Cyan">
  </GCM_CsdPointer>
  <CStr val="xxxxxxx xx"/>
  <GOP_ImageReadFn ImageFileName="xxx/xxx-img-10.bin" odd="xx xxx" kind="GPA_PLACEMENT_PS" f="[0x2] GOP_OP_FLAGS_SMOOTH ">
  </GOP_ImageReadFn>
)X"));
}

TEST(RedactedText, MasksStringsOfTickets)
{
    EXPECT_EQ(redacted(in_root(R"X(    <GCM_ColorTicket id="1">
      <GXC_ColorTickets>
      	<RGBRenderColorSpace>
      		<ChanName String="My Gold" />
      		<ChanName String="Magenta" />
      		<ProfileNames String="one" String="two" />
      		<Filename String="a
b<c>" />
      		<Size UInt32="26" />
      		<Quality GCM_QualityHint="GCM_QUAL_HIGH" />
      		<MatrixRowfloat1=1.000000 float2=0.000000 float3=0.000000  />
      		what is this
      		<ProfileBuffer>00FF</ProfileBuffer>
      	</RGBRenderColorSpace>
      </GXC_ColorTickets>
    </GCM_ColorTicket>
)X")),
              in_root(R"X(    <GCM_ColorTicket id="1">
      <GXC_ColorTickets>
      	<RGBRenderColorSpace>
      		<ChanName String="xx xxxx" />
      		<ChanName String="Magenta" />
      		<ProfileNames String="xxx" String="xxx" />
      		<Filename String="x
xxxx" />
      		<Size UInt32="26" />
      		<Quality GCM_QualityHint="GCM_QUAL_HIGH" />
      		<MatrixRowfloat1=1.000000 float2=0.000000 float3=0.000000  />
      		xxxx xx xxxx
      		<ProfileBuffer>0000</ProfileBuffer>
      	</RGBRenderColorSpace>
      </GXC_ColorTickets>
    </GCM_ColorTicket>
)X"));
}

TEST(RedactedText, LeavesOutWhatNoLogHas)
{
    EXPECT_EQ(redacted("<ORV Endian=\"little\">\nsecret line\n  <Secret a=\"1\">\n  </Secret>\n  <ORV_face_start "
                       "secret!=\"1\" a=\"1\">\nsecret\n  </ORV_face_start>\n</ORV>\n"),
              "<ORV Endian=\"little\">\n  <ORV_face_start a=\"1\">\n  </ORV_face_start>\n</ORV>\n");
}

TEST(RedactedText, IsALogOfTheSameForm)
{
    size_t logs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ORVLOG_SOURCE_DIR "/tests/expected"))
    {
        if (!entry.is_regular_file())
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string log(std::istreambuf_iterator<char>(file), {});
        if (!log.starts_with("<ORV "))
            continue;
        const std::string once = redacted(log);
        EXPECT_EQ(std::count(once.begin(), once.end(), '\n'), std::count(log.begin(), log.end(), '\n'));
        ++logs;
    }
    EXPECT_GE(logs, 2U);
}

}  // namespace
