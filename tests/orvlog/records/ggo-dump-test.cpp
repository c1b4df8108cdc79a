#include "orvlog/records/ggo-dump.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <limits>

namespace
{

using orvlog::test::Guarded;
using orvlog::test::RecordLog;

TEST(GgoDump, ElementsAreSelfClosed)
{
    RecordLog log;
    Guarded<GGO_Point> point({1.5, 2});
    dump_GGO_Point(log.writer(), point.get());
    EXPECT_EQ(log.take(), "<GGO_Point gpf_X=\"1.5\" gpf_Y=\"2\"/>\n");
    Guarded<GGO_Vector> vector({1.5, 2});
    dump_GGO_Vector(log.writer(), vector.get());
    EXPECT_EQ(log.take(), "<GGO_Vector gvf_X=\"1.5\" gvf_Y=\"2\"/>\n");
    Guarded<GGO_BoxInt> box({0, 0, 10, 10});
    dump_GGO_BoxInt(log.writer(), box.get());
    EXPECT_EQ(log.take(), "<GGO_BoxInt gbi_MinX=\"0\" gbi_MinY=\"0\" gbi_MaxX=\"10\" gbi_MaxY=\"10\"/>\n");
}

TEST(GgoDump, ElementsStandAtTheWritersDepth)
{
    RecordLog log(2);
    const GGO_BoxInt box = {INT32_MIN, -1, 1, INT32_MAX};
    dump_GGO_BoxInt(log.writer(), &box);
    EXPECT_EQ(log.take(), "    <GGO_BoxInt gbi_MinX=\"-2147483648\" gbi_MinY=\"-1\" gbi_MaxX=\"1\" "
                          "gbi_MaxY=\"2147483647\"/>\n");
}

TEST(GgoDump, NullWritesNothing)
{
    RecordLog log;
    dump_GGO_Point(log.writer(), nullptr);
    dump_GGO_Vector(log.writer(), nullptr);
    dump_GGO_BoxInt(log.writer(), nullptr);
    ggo_attr_point(log.writer(), "a", nullptr);
    ggo_attr_vector(log.writer(), "a", nullptr);
    ggo_attr_matrix(log.writer(), "a", nullptr);
    ggo_attr_box(log.writer(), "a", nullptr);
    ggo_attr_box_int(log.writer(), "a", nullptr);
    EXPECT_EQ(log.take(), "");
}

TEST(GgoDump, AttributesEndInABlank)
{
    RecordLog log;
    Guarded<GGO_Matrix> identity(GGO_Matrix{{1, 0, 0, 1, 0, 0}});
    ggo_attr_matrix(log.writer(), "sh_Transform", identity.get());
    EXPECT_EQ(log.take(), " sh_Transform=\"1 0 0 1 0 0 \"");
    Guarded<GGO_Matrix> matrix(GGO_Matrix{{1, 2, 3, 4, 5, 6.5}});
    ggo_attr_matrix(log.writer(), "sh_Transform", matrix.get());
    EXPECT_EQ(log.take(), " sh_Transform=\"1 2 3 4 5 6.5 \"");
    Guarded<GGO_Point> point({0.1, -2});
    ggo_attr_point(log.writer(), "g2_Pt1", point.get());
    EXPECT_EQ(log.take(), " g2_Pt1=\"0.10000000000000001 -2 \"");
    Guarded<GGO_Vector> vector({-0.0, 1e300});
    ggo_attr_vector(log.writer(), "gd_Offset", vector.get());
    EXPECT_EQ(log.take(), " gd_Offset=\"-0 1.0000000000000001e+300 \"");
    Guarded<GGO_BoxFloat> far({-1e100, 1e-100, 1e20, 5e-324});
    ggo_attr_box(log.writer(), "quick_bounding_box", far.get());
    EXPECT_EQ(log.take(), " quick_bounding_box=\"-1e+100 1e-100 1e+20 4.9406564584124654e-324 \"");
    Guarded<GGO_BoxFloat> box({1, 2, 3, 4});
    ggo_attr_box(log.writer(), "fp_TrimBox", box.get());
    EXPECT_EQ(log.take(), " fp_TrimBox=\"1 2 3 4 \"");
    Guarded<GGO_BoxInt> box_int({-1, 2, -3, 4});
    ggo_attr_box_int(log.writer(), "ss_BoundingBox", box_int.get());
    EXPECT_EQ(log.take(), " ss_BoundingBox=\"-1 2 -3 4 \"");
}

TEST(GgoDump, ExponentsStandAsFormatted)
{
    RecordLog log;
    const GGO_Point point = {1e20, 1e-7};
    ggo_attr_point(log.writer(), "p", &point);
    EXPECT_EQ(log.take(), " p=\"1e+20 9.9999999999999995e-08 \"");
    dump_GGO_Point(log.writer(), &point);
    EXPECT_EQ(log.take(), "<GGO_Point gpf_X=\"1e+20\" gpf_Y=\"9.9999999999999995e-08\"/>\n");
    const double infinity = std::numeric_limits<double>::infinity();
    const GGO_Vector vector = {infinity, -infinity};
    ggo_attr_vector(log.writer(), "v", &vector);
    EXPECT_EQ(log.take(), " v=\"inf -inf \"");
}

std::string flags(uint32_t word)
{
    RecordLog log;
    ggo_attr_transform_flags(log.writer(), "f", word);
    return log.take();
}

TEST(GgoDump, TransformFlagsNameEachBit)
{
    EXPECT_EQ(flags(0), " f=\"[0] GGO_XFLAG_NONE \"");
    EXPECT_EQ(flags(0x1), " f=\"[0x1] GGO_XFLAG_IDENTITY \"");
    EXPECT_EQ(flags(0x2), " f=\"[0x2] GGO_XFLAG_XLATE \"");
    EXPECT_EQ(flags(0x4), " f=\"[0x4] GGO_XFLAG_SCALE \"");
    EXPECT_EQ(flags(0x8), " f=\"[0x8] GGO_XFLAG_FLIP_HORZ \"");
    EXPECT_EQ(flags(0x10), " f=\"[0x10] GGO_XFLAG_FLIP_VERT \"");
    EXPECT_EQ(flags(0x100), " f=\"[0x100] GGO_XFLAG_GENERAL \"");
    EXPECT_EQ(flags(0x1F), " f=\"[0x1f] GGO_XFLAG_IDENTITY GGO_XFLAG_XLATE GGO_XFLAG_SCALE GGO_XFLAG_FLIP_HORZ "
                           "GGO_XFLAG_FLIP_VERT \"");
    EXPECT_EQ(flags(0x80000000), " f=\"[0x80000000] \"");
}

TEST(GgoDump, RotationIsOneFieldBehindTheFlags)
{
    EXPECT_EQ(flags(0x20), " f=\"[0x20] GGO_XFLAG_ROTATE \"");
    EXPECT_EQ(flags(0x60), " f=\"[0x60] GGO_XFLAG_ROT_90 \"");
    EXPECT_EQ(flags(0xA0), " f=\"[0xa0] GGO_XFLAG_ROT_180 \"");
    EXPECT_EQ(flags(0xE0), " f=\"[0xe0] GGO_XFLAG_ROT_270 \"");
    EXPECT_EQ(flags(0x140), " f=\"[0x140] GGO_XFLAG_GENERAL \"");
    EXPECT_EQ(flags(0x6A), " f=\"[0x6a] GGO_XFLAG_XLATE GGO_XFLAG_FLIP_HORZ GGO_XFLAG_ROT_90 \"");
    EXPECT_EQ(flags(0xFFFFFFFF), " f=\"[0xffffffff] GGO_XFLAG_IDENTITY GGO_XFLAG_XLATE GGO_XFLAG_SCALE "
                                 "GGO_XFLAG_FLIP_HORZ GGO_XFLAG_FLIP_VERT GGO_XFLAG_GENERAL GGO_XFLAG_ROT_270 \"");
    EXPECT_EQ(flags(0x160), " f=\"[0x160] GGO_XFLAG_GENERAL GGO_XFLAG_ROT_90 \"");
    EXPECT_EQ(flags(0xAA), " f=\"[0xaa] GGO_XFLAG_XLATE GGO_XFLAG_FLIP_HORZ GGO_XFLAG_ROT_180 \"");
    EXPECT_EQ(flags(0x40), " f=\"[0x40] \"");
    EXPECT_EQ(flags(0x80), " f=\"[0x80] \"");
    EXPECT_EQ(flags(0xC0), " f=\"[0xc0] \"");
}

}  // namespace
