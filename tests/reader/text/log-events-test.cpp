#include "reader/text/log-events.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::reader;

// Each event on a line: kind, place, what it says.
std::string events_of(const std::string& log, LogForm form = LogForm::log)
{
    std::istringstream source(log);
    LogEvents events(source, form);
    std::string told;
    for (Event event; events.next(event);)
    {
        told.append(std::to_string(event.place.byte)).append(":").append(std::to_string(event.place.line)).append(" ");
        switch (event.kind)
        {
        case EventKind::open:
            told += '<';
            told += event.name;
            for (const Attribute& attribute : event.attributes)
                told.append(" ").append(attribute.name).append("=").append(attribute.value).append(";");
            told += event.self_closed ? "/>" : ">";
            break;
        case EventKind::close:
            told += event.implied ? "(implied) </" : "</";
            told += event.name;
            told += '>';
            break;
        case EventKind::row:
            told.append("row ").append(event.text);
            break;
        case EventKind::comment:
            told.append("comment ").append(event.text);
            break;
        case EventKind::damage:
            told.append("damage ").append(event.text);
            break;
        }
        told += "\n";
    }
    return told + (events.is_log() ? "" : "no log\n") + (events.is_cut() ? "cut\n" : "");
}

TEST(LogEvents, TakesNoMoreAttributesOfATagThanAnyRecordHas)
{
    std::string log = "<ORV>\n  <a";
    for (int i = 0; i < 5000; ++i)
        log += " x=\"\"";
    std::istringstream source(log + ">\n  </a>\n</ORV>\n");
    LogEvents events(source);
    size_t most = 0;
    int damage = 0;
    for (Event event; events.next(event);)
    {
        most = std::max(most, event.attributes.size());
        damage += event.kind == EventKind::damage ? 1 : 0;
    }
    EXPECT_EQ(most, 1024U);
    EXPECT_EQ(damage, 1);
    EXPECT_FALSE(events.is_cut());
}

TEST(LogEvents, TagsAttributesAndRows)
{
    EXPECT_EQ(events_of("<ORV a=\"1\">\n"
                        "  <ORV_object_paint id=\"0\" box=\"0 0 1 1 \">\n"
                        "    <GSH_Shape x=\"\"/>\n"
                        "    <BufferUInt8 len=\"2\">\n"
                        "0a ff \n"
                        "    </BufferUInt8>\n"
                        "  </ORV_object_paint>\n"
                        "</ORV>\n"),
              "0:1 <ORV a=1;>\n"
              "12:2 <ORV_object_paint id=0; box=0 0 1 1 ;>\n"
              "55:3 <GSH_Shape x=;/>\n"
              "77:4 </GSH_Shape>\n"
              "77:4 <BufferUInt8 len=2;>\n"
              "103:5 row 0a ff \n"
              "110:6 </BufferUInt8>\n"
              "129:7 </ORV_object_paint>\n"
              "151:8 </ORV>\n");
}

TEST(LogEvents, CommentsAreFoundWhereverTheyStand)
{
    EXPECT_EQ(events_of("<ORV>\n"
                        "\n<!--\nfirst\n-->\n"
                        "  <ORV_a x=\"1\"\n<!--\ninside\n-->\n\n<!--\nagain\n-->\n y=\"2\">\n"
                        "  </ORV_a>\n"
                        "</ORV>\n"
                        "\n<!--\nORVLOG: WARNING: late\n-->\n"),
              "0:1 <ORV>\n"
              "7:3 comment first\n\n"
              "22:6 <ORV_a x=1; y=2;>\n"
              "37:7 comment inside\n\n"
              "54:11 comment again\n\n"
              "77:15 </ORV_a>\n"
              "88:16 </ORV>\n"
              "96:18 comment ORVLOG: WARNING: late\n\n");
}

TEST(LogEvents, ACommentMayHoldItsEndMark)
{
    EXPECT_EQ(events_of("<ORV>\n\n<!--\nlook -->\nthere\n-->\nand -->\n-->\n  <ORV_a>\n  </ORV_a>\n</ORV>\n"),
              "0:1 <ORV>\n"
              "7:3 comment look -->\nthere\n-->\nand -->\n\n"
              "43:9 <ORV_a>\n"
              "53:10 </ORV_a>\n"
              "64:11 </ORV>\n");
}

TEST(LogEvents, ACommentWithoutALineFeed)
{
    EXPECT_EQ(events_of("<ORV>\n\n<!--\nno line feed-->\n</ORV>\n"),
              "0:1 <ORV>\n7:3 comment no line feed\n28:5 </ORV>\n");
}

TEST(LogEvents, TicketTextIsGivenAsItStands)
{
    EXPECT_EQ(events_of("<ORV>\n"
                        "  <GCM_ColorTicket id=\"1\">\n"
                        "    <GXC_ColorTickets>\n"
                        "    \t<(null)>\n"
                        "    \t<MatrixRowfloat1=1.0 />\n"
                        "    \t</(null)>\n"
                        "    </GXC_ColorTickets>\n"
                        "  </GCM_ColorTicket>\n"
                        "</ORV>\n"),
              "0:1 <ORV>\n"
              "6:2 <GCM_ColorTicket id=1;>\n"
              "33:3 <GXC_ColorTickets>\n"
              "33:3 row     <GXC_ColorTickets>\n"
              "56:4 row     \t<(null)>\n"
              "70:5 row     \t<MatrixRowfloat1=1.0 />\n"
              "99:6 row     \t</(null)>\n"
              "114:7 row     </GXC_ColorTickets>\n"
              "114:7 </GXC_ColorTickets>\n"
              "138:8 </GCM_ColorTicket>\n"
              "159:9 </ORV>\n");
}

TEST(LogEvents, ACutLogIsClosed)
{
    EXPECT_EQ(events_of("<ORV>\n  <ORV_a x=\"1\" y=\"2"), "0:1 <ORV>\n"
                                                          "6:2 <ORV_a x=1;>\n"
                                                          "25:2 damage the log ends here, before its end\n"
                                                          "25:2 (implied) </ORV_a>\n"
                                                          "25:2 (implied) </ORV>\n"
                                                          "cut\n");
    EXPECT_EQ(events_of("<ORV>\n  <OR"), "0:1 <ORV>\n"
                                         "11:2 damage the log ends here, before its end\n"
                                         "11:2 (implied) </ORV>\n"
                                         "cut\n");
}

TEST(LogEvents, ACommentMayBeCut)
{
    EXPECT_EQ(events_of("<ORV>\n\n<!--\nleft\n-"), "0:1 <ORV>\n"
                                                   "7:3 comment left\n-\n"
                                                   "18:5 damage the log ends here, before its end\n"
                                                   "18:5 (implied) </ORV>\n"
                                                   "cut\n");
    EXPECT_EQ(events_of("<ORV>\n\n<!--\nno end\n  <ORV_a>\n  </ORV_a>\n</ORV>\n"),
              "0:1 <ORV>\n"
              "7:3 damage a comment without an end\n"
              "12:4 row no end\n"
              "12:4 damage text that is neither a tag nor a row of numbers\n"
              "19:5 <ORV_a>\n"
              "29:6 </ORV_a>\n"
              "40:7 </ORV>\n");
}

TEST(LogEvents, ReadingGoesOnBehindDamage)
{
    EXPECT_EQ(events_of("<ORV>\n"
                        "  <ORV_a>\n"
                        "    <b>\n"
                        "      <c>\n"
                        "    </b>\n"
                        "    </d>\n"
                        "gar bage\n"
                        "  <ORV_e f=1>\n"
                        "  </ORV_e>\n"
                        "</ORV>\n"),
              "0:1 <ORV>\n"
              "6:2 <ORV_a>\n"
              "16:3 <b>\n"
              "24:4 <c>\n"
              "34:5 damage no end tag of 'c'\n"
              "34:5 (implied) </c>\n"
              "34:5 </b>\n"
              "43:6 damage an end tag of 'd' where none is due\n"
              "52:7 row gar bage\n"
              "52:7 damage text that is neither a tag nor a row of numbers\n"
              "61:8 damage no end tag of 'ORV_a'\n"
              "61:8 (implied) </ORV_a>\n"
              "61:8 <ORV_e>\n"
              "61:8 damage attributes of 'ORV_e' that are not understood\n"
              "75:9 </ORV_e>\n"
              "86:10 </ORV>\n");
}

// The start of a document whose font engine could not be wrapped.
TEST(LogEvents, ATagMayBeLeftWithoutItsEnd)
{
    EXPECT_EQ(events_of("<ORV>\n"
                        "  <ORV_a x=\"1\"  <ORV_b y=\"2\">\n"
                        "  </ORV_b>\n"
                        "</ORV>\n"),
              "0:1 <ORV>\n"
              "6:2 <ORV_a x=1;>\n"
              "6:2 damage no end of the tag 'ORV_a'\n"
              "20:2 damage no end tag of 'ORV_a'\n"
              "20:2 (implied) </ORV_a>\n"
              "20:2 <ORV_b y=2;>\n"
              "36:3 </ORV_b>\n"
              "47:4 </ORV>\n");
}

TEST(LogEvents, CarriageReturns)
{
    EXPECT_EQ(events_of("<ORV>\r\n"
                        "  <ORV_a x=\"1\"\r\n<!--\r\ninside\r\n-->\r\n y=\"2\">\r\n"
                        "    <BufferUInt8 len=\"1\">\r\n"
                        "0a \r\n"
                        "    </BufferUInt8>\r\n"
                        "  </ORV_a>\r\n"
                        "</ORV>\r\n"),
              "0:1 <ORV>\n"
              "7:2 <ORV_a x=1; y=2;>\n"
              "23:3 comment inside\r\n\n"
              "51:7 <BufferUInt8 len=1;>\n"
              "78:8 row 0a \n"
              "83:9 </BufferUInt8>\n"
              "103:10 </ORV_a>\n"
              "115:11 </ORV>\n");
}

TEST(LogEvents, WhatIsNoLogGivesNothing)
{
    EXPECT_EQ(events_of(""), "no log\n");
    EXPECT_EQ(events_of("<ORVILLE>\n"), "no log\n");
    EXPECT_EQ(events_of("%PDF-1.7\n"), "no log\n");
}

TEST(LogEvents, AFragmentHasNoRoot)
{
    EXPECT_EQ(events_of("  <GOP_ImageFinishFn Id=\"10\">\n  </GOP_ImageFinishFn>\n", LogForm::fragment),
              "0:1 <GOP_ImageFinishFn Id=10;>\n30:2 </GOP_ImageFinishFn>\n");
}

TEST(LogEvents, BytesBehindTheLogAreNotItsOwn)
{
    EXPECT_EQ(events_of("<ORV>\n</ORV>\nrest of an older file"), "0:1 <ORV>\n6:2 </ORV>\n");
}

}  // namespace
