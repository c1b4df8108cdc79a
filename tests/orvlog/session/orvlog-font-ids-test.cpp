// The numbers of fonts and strings: what each gets, held against a plain walk along the list, and how deep a search
// goes among many.

#include "orvlog/session/orvlog-font-ids.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace
{

using namespace orvlog::test;

const GFI_FontSpecPointer* font_at(uintptr_t address)
{
    return reinterpret_cast<const GFI_FontSpecPointer*>(address);
}

const GFI_StringDescPointer* string_at(uintptr_t address)
{
    return reinterpret_cast<const GFI_StringDescPointer*>(address);
}

// The same by walking along a list, newest first.
class Walk
{
public:
    ORVLOG_FontIds take(uintptr_t font, uintptr_t string)
    {
        const Node* with_font = nullptr;
        const Node* with_string = nullptr;
        for (auto node = nodes_.rbegin(); node != nodes_.rend() && (!with_font || !with_string); ++node)
        {
            if (node->font == font)
                with_font = &*node;
            if (node->string == string)
                with_string = &*node;
        }
        const ORVLOG_FontIds ids = {with_font != nullptr ? with_font->ids.font_spec_id : next_font_,
                                    with_string != nullptr ? with_string->ids.string_desc_id : next_string_};
        if (with_font != nullptr && with_string != nullptr)
            return ids;
        next_font_ += with_font == nullptr ? 1 : 0;
        next_string_ += with_string == nullptr ? 1 : 0;
        nodes_.push_back({font, string, ids});
        return ids;
    }
    bool holds(uintptr_t font, uintptr_t string) const
    {
        return std::any_of(nodes_.begin(), nodes_.end(),
                           [&](const Node& node) { return node.font == font && node.string == string; });
    }
    void clear()
    {
        nodes_.clear();
    }
    size_t size() const
    {
        return nodes_.size();
    }

private:
    struct Node
    {
        uintptr_t font;
        uintptr_t string;
        ORVLOG_FontIds ids;
    };
    std::vector<Node> nodes_;
    uint32_t next_font_ = 0;
    uint32_t next_string_ = 0;
};

TEST(FontIds, AreThoseOfAWalkAlongTheList)
{
    for (uint32_t seed = 0; seed < 60; ++seed)
    {
        std::mt19937 random(seed);
        RecordLog log;
        Walk walk;
        // Few addresses make crossed pairs, many make long lists; null is an address like any other.
        const uintptr_t fonts = 1 + random() % 40;
        const uintptr_t strings = 1 + random() % 90;
        for (uint32_t i = 0; i < 300; ++i)
        {
            if (random() % 150 == 0)
            {
                orvlog_session_clear_scratch(&log.session);
                walk.clear();
            }
            const uintptr_t font = random() % fonts * 64;
            const uintptr_t string = random() % strings * 24;
            ASSERT_EQ(orvlog_font_ids_find(&log.session, font_at(font), string_at(string)) != nullptr,
                      walk.holds(font, string))
                << seed;
            ORVLOG_FontIds ids = {};
            ASSERT_EQ(orvlog_font_ids_take(&log.session, font_at(font), string_at(string), &ids), 1U);
            const ORVLOG_FontIds expected = walk.take(font, string);
            ASSERT_EQ(ids.font_spec_id, expected.font_spec_id) << seed;
            ASSERT_EQ(ids.string_desc_id, expected.string_desc_id) << seed;
            const font_id_pair* pair = orvlog_font_ids_find(&log.session, font_at(font), string_at(string));
            ASSERT_EQ(pair != nullptr, walk.holds(font, string)) << seed;
            if (pair != nullptr)
            {
                ASSERT_EQ(pair->font_spec, font_at(font));
                ASSERT_EQ(pair->string_desc, string_at(string));
                ASSERT_EQ(pair->font_spec_id, ids.font_spec_id);
                ASSERT_EQ(pair->string_desc_id, ids.string_desc_id);
            }
            ASSERT_EQ(log.allocator.outstanding(), walk.size());
        }
        orvlog_session_clear_scratch(&log.session);
        EXPECT_EQ(log.allocator.outstanding(), 0U);
    }
}

TEST(FontIds, RefusedNodeTakesNoNumber)
{
    RecordLog log;
    ORVLOG_FontIds ids = {7, 8};
    ASSERT_EQ(orvlog_font_ids_take(&log.session, font_at(64), string_at(64), &ids), 1U);
    log.allocator.refuse(1);
    EXPECT_EQ(orvlog_font_ids_take(&log.session, font_at(64), string_at(128), &ids), 0U);
    EXPECT_EQ(log.session.next_font_spec_id, 1U);
    EXPECT_EQ(log.session.next_string_desc_id, 1U);
    EXPECT_EQ(orvlog_font_ids_find(&log.session, font_at(64), string_at(128)), nullptr);
    ASSERT_EQ(orvlog_font_ids_take(&log.session, font_at(64), string_at(128), &ids), 1U);
    EXPECT_EQ(ids.font_spec_id, 0U);
    EXPECT_EQ(ids.string_desc_id, 1U);
    orvlog_session_clear_scratch(&log.session);
}

uint32_t depth(const font_id_pair* pair, font_id_pair* (font_id_pair::*branches)[2])
{
    if (pair == nullptr)
        return 0;
    return 1 + std::max(depth((pair->*branches)[0], branches), depth((pair->*branches)[1], branches));
}

// A search takes a few steps more for each doubling, however the records lie in memory.
TEST(FontIds, SearchesStayShortAmongMany)
{
    constexpr uint32_t kCount = 20000;
    for (const uintptr_t stride : {uintptr_t{1}, uintptr_t{16}, uintptr_t{48}, uintptr_t{4096}, uintptr_t{1} << 32})
    {
        RecordLog log;
        for (uint32_t i = 0; i < kCount; ++i)
        {
            ORVLOG_FontIds ids = {};
            ASSERT_EQ(orvlog_font_ids_take(&log.session, font_at(stride * i), string_at(stride * (i + kCount)), &ids),
                      1U);
            ASSERT_EQ(ids.font_spec_id, i);
            ASSERT_EQ(ids.string_desc_id, i);
        }
        EXPECT_LE(depth(log.session.pairs_by_font, &font_id_pair::by_font), 48U) << stride;
        EXPECT_LE(depth(log.session.pairs_by_string, &font_id_pair::by_string), 48U) << stride;
        EXPECT_LE(depth(log.session.pairs_by_both, &font_id_pair::by_both), 48U) << stride;
        for (uint32_t i = 0; i < kCount; ++i)
            ASSERT_NE(orvlog_font_ids_find(&log.session, font_at(stride * i), string_at(stride * (i + kCount))),
                      nullptr);
        orvlog_session_clear_scratch(&log.session);
        EXPECT_EQ(log.allocator.outstanding(), 0U);
    }
}

}  // namespace
