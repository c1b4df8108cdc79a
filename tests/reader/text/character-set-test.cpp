#include "reader/text/character-set.h"

#include <gtest/gtest.h>

namespace orvlog::reader
{

namespace
{

constexpr CharacterSet kBlanks(" \t");

TEST(CharacterSet, FindsTheFirstCharacterThatIsInIt)
{
    EXPECT_EQ(kBlanks.first_in("ab\tc "), 2U);
    EXPECT_EQ(kBlanks.first_in("ab\tc ", 3), 4U);
    EXPECT_EQ(kBlanks.first_not_in(" \t x "), 3U);
    EXPECT_EQ(kBlanks.first_not_in("a  b", 1), 3U);
}

TEST(CharacterSet, GivesTheSizeOfATextInWhichThereIsNone)
{
    EXPECT_EQ(kBlanks.first_in("abc"), 3U);
    EXPECT_EQ(kBlanks.first_not_in(" \t "), 3U);
    EXPECT_EQ(kBlanks.first_in(""), 0U);
    EXPECT_EQ(kBlanks.first_in("a b", 7), 3U);
    EXPECT_EQ(kBlanks.first_not_in("a b", 7), 3U);
}

TEST(CharacterSet, TakesZeroBytesAndBytesAboveAsciiForCharacters)
{
    constexpr std::string_view kText("a\0\xE4z", 4);
    EXPECT_FALSE(kBlanks.has('\0'));
    EXPECT_EQ(CharacterSet(std::string_view("\0", 1)).first_in(kText), 1U);
    EXPECT_EQ(CharacterSet("\xE4").first_in(kText), 2U);
}

}  // namespace

}  // namespace orvlog::reader
