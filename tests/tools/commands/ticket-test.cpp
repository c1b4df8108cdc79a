#include "tests/support/ticket-bytes.h"
#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

std::string bytes_of(const TicketBytes& ticket)
{
    return std::string(ticket.bytes().begin(), ticket.bytes().end());
}

TEST(ToolTicket, WritesTheTextOfALog)
{
    const ScratchFolder folder;
    const std::string file = folder.write("a.ticket", bytes_of(fixed_data().u32({0xFFFFFFFF}).u32({20, 4, 7, 0})));
    const ToolResult result = run_tool({"ticket", file, "--family", "cmyk", "--prefix", "%s "});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, R"X(%s <GXC_ColorTickets>
%s 	<CMYKRenderColorSpace>
%s 		<GCM_ColorTicket>
%s 			<FixedSizeData>
%s 				<PreRenderOverrideGrayPreserve Bool="TRUE" />
%s 				<PostRenderGrayPreserve Bool="FALSE" />
%s 				<PureBlackTextPreserve Bool="FALSE" />
%s 				<PostConvInRenderer Bool="TRUE" />
%s 				<UseOutputGbd Bool="FALSE" />
%s 				<UseOverride Bool="FALSE" />
%s 				<PreConvInPdl Bool="TRUE" />
%s 				<PreConvImageOverrideInPdl Bool="FALSE" />
%s 				<XformQuality GCM_QualityHint="GCM_QUAL_HIGH" />
%s 				<XformPerformance GCM_PerformanceHint="GCM_PERF_LOW" />
%s 			</FixedSizeData>
%s 			<CSD_Data>
%s 			</CSD_Data>
%s 			<VariableSizedData>
%s 				<GrayPreserveRenderCsd>
%s 					<GCM_SerMarker GCM_SerMarker="GCM_SER_MARKER_GRAY_PRESERVE_RENDER_CSD" />
%s 					<Size UInt32="4" />
%s 					<CsdRef UInt32="7" />
%s 				</GrayPreserveRenderCsd>
%s 			</VariableSizedData>
%s 		</GCM_ColorTicket>
%s 	</CMYKRenderColorSpace>
%s </GXC_ColorTickets>
)X");
}

TEST(ToolTicket, NamesEachFamilyAndReadsTheStandardInput)
{
    const std::string ticket = bytes_of(fixed_data().u32({0xFFFFFFFF}).u32({0}));
    const char* const families[][2] = {{"gray", "GrayRenderColorSpace"},
                                       {"rgb", "RGBRenderColorSpace"},
                                       {"cmyk", "CMYKRenderColorSpace"},
                                       {"named", "NamedRenderColorSpace"},
                                       {"none", "(null)"}};
    for (const auto& family : families)
    {
        const ToolResult result = run_tool({"ticket", "-", "--family", family[0]}, ticket);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.out.find(std::string("<GXC_ColorTickets>\n\t<") + family[1] + ">\n"), 0u) << result.out;
    }
    EXPECT_EQ(run_tool({"ticket", "-"}, ticket).out.find("<GXC_ColorTickets>\n\t<(null)>\n"), 0u);
}

TEST(ToolTicket, ADamagedTicketIsWrittenAsFarAsItGoes)
{
    const ScratchFolder folder;
    const std::string file = folder.write("cut", bytes_of(fixed_data().u32({0, 6})));
    const ToolResult result = run_tool({"ticket", file});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + file + ": the colour ticket is damaged: it ends too early\n");
    const std::string end = "\t\t\t</CSD_Data>\n\t\t</GCM_ColorTicket>\n\t</(null)>\n</GXC_ColorTickets>\n";
    ASSERT_GE(result.out.size(), end.size());
    EXPECT_EQ(result.out.substr(result.out.size() - end.size()), end);
}

TEST(ToolTicket, WhatCannotBeReadIsSaid)
{
    const ScratchFolder folder;
    ToolResult result = run_tool({"ticket", folder.path("none")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + folder.path("none") + ": No such file or directory\n");
    result = run_tool({"ticket", "-"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: -: not a colour ticket: the file is empty\n");
    result = run_tool({"ticket", folder.write("a", "b"), "--family", "lab"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(run_tool({"ticket"}).status, 2);
}

}  // namespace
