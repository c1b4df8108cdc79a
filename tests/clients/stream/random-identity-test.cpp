#include "clients/stream/random-identity.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace
{

using orvlog::client_stream::RandomIdentity;

TEST(RandomIdentity, GivesItsNumberEachTime)
{
    const RandomIdentity one;
    const RandomIdentity other;
    uint8_t first[16] = {};
    uint8_t again[16] = {};
    uint8_t different[16] = {};
    const auto number_of = [](const RandomIdentity& identity, uint8_t* number)
    {
        ORVLOG_IdentityObject* object = identity.source()->object;
        return object->functions->orvlog_get_session_id(object, number);
    };
    EXPECT_EQ(number_of(one, first), 1U);
    EXPECT_EQ(number_of(one, again), 1U);
    EXPECT_EQ(number_of(other, different), 1U);
    EXPECT_TRUE(std::equal(first, first + 16, again));
    EXPECT_FALSE(std::equal(first, first + 16, different));
}

}  // namespace
