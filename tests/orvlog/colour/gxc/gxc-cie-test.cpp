#include "orvlog/colour/gxc/gxc-cie.h"

#include "tests/support/memory-stream.h"
#include "tests/support/ticket-bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

TicketBytes head(uint32_t bit_depth)
{
    TicketBytes t;
    t.u32({bit_depth}).f32({0.9642f, 1, 0.8249f}).f32({0, -0.0f, 0.5f});
    t.f32({1, 0, 0, 0, 1, 0, 0, 0, 1}).f32({1, 2, 3, 4, 5, 6, 7, 8, 9}).u8({2, 1, 3, 2});
    return t.f32({0, 1, -1, 2, 0, 100, 0.25f, 0.75f});
}

std::string luts(uint32_t family, const TicketBytes& bytes)
{
    GuardedBlock block(bytes.bytes().data(), bytes.size());
    MemoryStream log;
    GXC_Writer writer = {nullptr, nullptr, log.get(), "", 0};
    GXC_Input input = {block.data(), block.size(), 0};
    EXPECT_TRUE(gxc_write_cie_luts(&writer, &input, family));
    EXPECT_EQ(input.offset, bytes.size()) << family;
    EXPECT_EQ(writer.level, 0u);
    return log.text();
}

// What stands behind the record with no tables in it.
std::string tables(uint32_t family, const TicketBytes& bytes)
{
    const std::string text = luts(family, bytes);
    const std::string end = "\t</GCM_CieLuts>\n";
    return text.substr(text.find(end) + end.size());
}

TEST(GxcCie, RecordWithOneTable)
{
    EXPECT_EQ(luts(5, head(1).f32({0.5f}).u32({0})), R"X(<GCM_CieLutsPointer>
	<GCM_CieLuts>
		<DecodeBitDepth UInt32="1" />
		<WhitePoint>
			<WhitePoint_X float="0.964200" />
			<WhitePoint_Y float="1.000000" />
			<WhitePoint_Z float="0.824900" />
		</WhitePoint>
		<BlackPoint>
			<BlackPoint_X float="0.000000" />
			<BlackPoint_Y float="-0.000000" />
			<BlackPoint_Z float="0.500000" />
		</BlackPoint>
		<MatrixABC>
			<MatrixRowfloat1=1.000000 float2=0.000000 float3=0.000000  />
			<MatrixRowfloat1=0.000000 float2=1.000000 float3=0.000000  />
			<MatrixRowfloat1=0.000000 float2=0.000000 float3=1.000000  />
		</MatrixABC>
		<MatrixLMN>
			<MatrixRowfloat1=1.000000 float2=2.000000 float3=3.000000  />
			<MatrixRowfloat1=4.000000 float2=5.000000 float3=6.000000  />
			<MatrixRowfloat1=7.000000 float2=8.000000 float3=9.000000  />
		</MatrixLMN>
		<HIJKDimensions>
			<H_Dimension UInt8="2" />
			<I_Dimension UInt8="1" />
			<J_Dimension UInt8="3" />
			<K_Dimension UInt8="2" />
		</HIJKDimensions>
		<HIJKRange>
			<H_Lower float="0.000000" />
			<H_Upper float="1.000000" />
			<I_Lower float="-1.000000" />
			<I_Upper float="2.000000" />
			<J_Lower float="0.000000" />
			<J_Upper float="100.000000" />
			<K_Lower float="0.250000" />
			<K_Upper float="0.750000" />
		</HIJKRange>
	</GCM_CieLuts>
	<DecodeABC_A float_array="0.500000" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, Family0)
{
    EXPECT_EQ(tables(0, head(1).f32({1, 2, 3, 4, 5, 6}).u32({0})), R"X(	<DecodeABC_A float_array="1.000000" />
	<DecodeABC_B float_array="2.000000" />
	<DecodeABC_C float_array="3.000000" />
	<DecodeLMN_L float_array="4.000000" />
	<DecodeLMN_M float_array="5.000000" />
	<DecodeLMN_N float_array="6.000000" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, Family1)
{
    EXPECT_EQ(tables(1, head(1).f32({1, 2, 3, 4}).u32({0})), R"X(	<DecodeABC_A float_array="1.000000" />
	<DecodeLMN_L float_array="2.000000" />
	<DecodeLMN_M float_array="3.000000" />
	<DecodeLMN_N float_array="4.000000" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, Family2HasTheFourthTableAndThreeDimensions)
{
    TicketBytes t = head(1).f32({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    t.u8({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 255}).u32({0});
    EXPECT_EQ(tables(2, t), R"X(	<DecodeABC_A float_array="1.000000" />
	<DecodeABC_B float_array="2.000000" />
	<DecodeABC_C float_array="3.000000" />
	<DecodeLMN_L float_array="4.000000" />
	<DecodeLMN_M float_array="5.000000" />
	<DecodeLMN_N float_array="6.000000" />
	<DecodeDEFG_D float_array="7.000000" />
	<DecodeDEFG_E float_array="8.000000" />
	<DecodeDEFG_F float_array="9.000000" />
	<DecodeDEFG_G float_array="10.000000" />
	<HIJKTable UInt8_array="1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 255" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, Family3HasThreeTablesAndFourDimensions)
{
    TicketBytes t = head(1).f32({1, 2, 3, 4, 5, 6, 7, 8, 9}).repeat(7, 36).u32({0});
    EXPECT_EQ(tables(3, t), R"X(	<DecodeABC_A float_array="1.000000" />
	<DecodeABC_B float_array="2.000000" />
	<DecodeABC_C float_array="3.000000" />
	<DecodeLMN_L float_array="4.000000" />
	<DecodeLMN_M float_array="5.000000" />
	<DecodeLMN_N float_array="6.000000" />
	<DecodeDEFG_D float_array="7.000000" />
	<DecodeDEFG_E float_array="8.000000" />
	<DecodeDEFG_F float_array="9.000000" />
	<HIJKTable UInt8_array="7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7 7" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, Family4)
{
    EXPECT_EQ(tables(4, head(1).f32({1, 2, 3}).u32({0})), R"X(	<DecodeABC_A float_array="1.000000" />
	<DecodeABC_B float_array="2.000000" />
	<DecodeABC_C float_array="3.000000" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, Families5AndAboveHaveOneTable)
{
    for (const uint32_t family : {5u, 6u, 7u, 32u, 33u, 0xFFFFFFFFu})
        EXPECT_EQ(tables(family, head(1).f32({1}).u32({0})), R"X(	<DecodeABC_A float_array="1.000000" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, ABitDepthOf0GivesEmptyTables)
{
    EXPECT_EQ(tables(4, head(0).u32({0})), R"X(	<DecodeABC_A float_array="" />
	<DecodeABC_B float_array="" />
	<DecodeABC_C float_array="" />
	<Extensions>
	</Extensions>
</GCM_CieLutsPointer>
)X");
}

TEST(GxcCie, ABitDepthOf8Gives255Entries)
{
    TicketBytes t = head(8).repeat(0, 1020).u32({0});
    std::string expected = "\t<DecodeABC_A float_array=\"0.000000";
    for (int i = 1; i < 255; ++i)
        expected += " 0.000000";
    EXPECT_EQ(tables(5, t), expected + "\" />\n\t<Extensions>\n\t</Extensions>\n</GCM_CieLutsPointer>\n");
}

TEST(GxcCie, TheShiftCountIsTakenModulo32)
{
    EXPECT_EQ(tables(5, head(34).f32({1, 2, 3}).u32({0})),
              "\t<DecodeABC_A float_array=\"1.000000 2.000000 3.000000\" />\n"
              "\t<Extensions>\n\t</Extensions>\n</GCM_CieLutsPointer>\n");
}

TEST(GxcCie, TheTerminatorIsPassedOverWhateverItHolds)
{
    EXPECT_EQ(tables(5, head(0).u32({0xDEADBEEF})),
              "\t<DecodeABC_A float_array=\"\" />\n\t<Extensions>\n\t</Extensions>\n</GCM_CieLutsPointer>\n");
}

TEST(GxcCie, ADimensionOf0GivesAnEmptyTable)
{
    TicketBytes t;
    t.u32({0}).repeat(0, 96).u8({2, 0, 3, 2}).repeat(0, 32).u32({0});
    const std::string text = tables(3, t);
    EXPECT_NE(text.find("\t<HIJKTable UInt8_array=\"\" />\n\t<Extensions>\n"), std::string::npos);
}

}  // namespace
