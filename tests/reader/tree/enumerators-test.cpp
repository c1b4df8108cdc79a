#include "reader/tree/enumerators.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::reader::find_enumerator;

TEST(Enumerators, AreFoundByTheirNames)
{
    EXPECT_EQ(find_enumerator("GPA_JOIN_MITER"), 0U);
    EXPECT_EQ(find_enumerator("GPA_JOIN_MITER_DUAL_CLIPPED"), 6U);
    EXPECT_EQ(find_enumerator("GPA_PLACEMENT_CENTER_INTERSECT"), 8U);
    EXPECT_EQ(find_enumerator("GSH_SHAPE_STROKE_GLYPHS"), 6U);
    EXPECT_EQ(find_enumerator("GOP_OPERAND_IMAGE"), 5U);
    EXPECT_EQ(find_enumerator("GOP_ATTRIBUTE_MASK"), 3U);
    EXPECT_EQ(find_enumerator("GNC_BMP_DEPTH_32_FL"), 5U);
    EXPECT_EQ(find_enumerator("GNC_FORMAT_NONE"), 6U);
    EXPECT_EQ(find_enumerator("GCM_CSDTYPE_INPUT"), 8U);
    EXPECT_EQ(find_enumerator("GFI_CE_ADOBE_CID"), 8U);
    EXPECT_EQ(find_enumerator("ORV_GROUP_MAKE_SEPARATION"), 4U);
}

TEST(Enumerators, OfListsThatNoCallWritesAreKnownToo)
{
    EXPECT_EQ(find_enumerator("GCM_CST_ADDITIVE"), 0U);
    EXPECT_EQ(find_enumerator("GCM_CST_OTHER"), 2U);
    EXPECT_EQ(find_enumerator("GCM_WHITEPOINT_D50"), 1U);
}

// The fourth value of a colour flag goes by a name that belongs to a white point.
TEST(Enumerators, NameThatIsBorrowedIsItsOwners)
{
    EXPECT_EQ(find_enumerator("GCM_WHITEPOINT_D65"), 0U);
}

TEST(Enumerators, OthersAreNot)
{
    for (const char* name :
         {"", "GPA_JOIN", "GPA_JOIN_MITERS", "gpa_join_miter", "GPA_HINT_NONE", "ZZZ", "AAA", "UNKNOWN_VALUE(3)"})
        EXPECT_FALSE(find_enumerator(name).has_value()) << name;
}

}  // namespace
