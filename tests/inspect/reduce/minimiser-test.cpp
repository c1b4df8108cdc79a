// Making logs as small as they get.

#include "inspect/reduce/minimiser.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace
{

using orvlog::inspect::count_calls;
using orvlog::inspect::LogTrials;
using orvlog::inspect::Minimiser;

class Trials : public LogTrials
{
public:
    Trials(std::function<bool(const std::string&)> good, size_t at_once) : good_(std::move(good)), at_once_(at_once) {}

    size_t at_once() const override
    {
        return at_once_;
    }
    std::optional<size_t> first_good(const std::vector<std::string>& logs) override
    {
        for (size_t i = 0; i < logs.size(); ++i)
        {
            ++runs;
            if (good_(logs[i]))
                return i;
        }
        return std::nullopt;
    }
    bool is_over() const override
    {
        return runs >= limit;
    }

    size_t runs = 0;
    size_t limit = 1000000;

private:
    std::function<bool(const std::string&)> good_;
    size_t at_once_;
};

// Two pages with so many paints each, in groups of ten.
std::string log_of(int paints)
{
    std::string log = "<ORV LoggingMode=\"transparent\">\n"
                      "  <ORV_document_start document_context=\"0\">\n  </ORV_document_start>\n";
    int id = 0;
    for (const std::string page : {"0", "1"})
    {
        const std::string drawing = " drawing_context=\"" + page + "\"";
        log += "  <ORV_face_start document_context=\"0\"" + drawing + ">\n  </ORV_face_start>\n";
        for (int i = 0; i < paints; ++i, ++id)
        {
            if (i % 10 == 0)
                log += "  <ORV_group_start" + drawing + ">\n  </ORV_group_start>\n";
            log += "  <ORV_object_paint id=\"" + std::to_string(id) + "\"" + drawing + " object_type_and_flag=\"" +
                   (id == paints / 3 ? "77" : "1") + "\">\n  </ORV_object_paint>\n";
            if (i % 10 == 9)
                log += "  <ORV_group_finish" + drawing + " replay_group=\"FALSE\">\n  </ORV_group_finish>\n";
        }
        log += "  <ORV_drawing_finish" + drawing + ">\n  </ORV_drawing_finish>\n";
    }
    return log + "  <ORV_document_finish document_context=\"0\">\n  </ORV_document_finish>\n</ORV>\n";
}

bool has_guilty(const std::string& log)
{
    return log.find("flag=\"77\"") != std::string::npos;
}

constexpr const char* kSmallest = R"X(<ORV LoggingMode="transparent">
  <ORV_document_start document_context="0">
  </ORV_document_start>
  <ORV_face_start document_context="0" drawing_context="0">
  </ORV_face_start>
  <ORV_object_paint id="0" drawing_context="0" object_type_and_flag="77">
  </ORV_object_paint>
  <ORV_drawing_finish drawing_context="0">
  </ORV_drawing_finish>
  <ORV_document_finish document_context="0">
  </ORV_document_finish>
</ORV>
)X";

TEST(Minimiser, FindsOneGuiltyCallOfTenThousand)
{
    const std::string log = log_of(4200);
    ASSERT_GT(count_calls(log), 10000U);
    Trials trials(has_guilty, 2);
    Minimiser minimiser(log, trials);
    minimiser.run();
    EXPECT_EQ(minimiser.log(), kSmallest);
    EXPECT_LT(trials.runs, 120U);
}

TEST(Minimiser, GivesTheSameWhateverIsTriedSideBySide)
{
    const std::string log = log_of(100);
    // Two calls that are needed together, on one page, in their order.
    const auto good = [](const std::string& text)
    {
        const size_t first = text.find("flag=\"77\"");
        return first != std::string::npos && text.find("flag=\"1\"", first) != std::string::npos;
    };
    std::string found;
    for (const size_t at_once : {1U, 2U, 3U, 8U})
    {
        Trials trials(good, at_once);
        Minimiser minimiser(log, trials);
        minimiser.run();
        EXPECT_TRUE(found.empty() || found == minimiser.log()) << at_once;
        found = minimiser.log();
        EXPECT_TRUE(good(found));
        EXPECT_EQ(count_calls(found), 6U);
    }
}

TEST(Minimiser, StopsWhenTheTrialsAreOver)
{
    Trials trials(has_guilty, 1);
    trials.limit = 3;
    Minimiser minimiser(log_of(100), trials);
    minimiser.run();
    EXPECT_EQ(trials.runs, 3U);
    EXPECT_TRUE(has_guilty(minimiser.log()));
}

}  // namespace
