// Two logs, call by call: what is named when one call of many differs, whatever the numbers in the logs are.

#include "inspect/align/log-alignment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::inspect;

const std::string begin = "<ORV LoggingMode=\"transparent\" ORVLOG_CONTENT_VERSION=\"2\">\n"
                          "  <ORV_document_start document_context=\"0\" document_id=\"1\" "
                          "font_engine_functions=\"FALSE\">\n  </ORV_document_start>\n";
const std::string end = "</ORV>\n";

std::string paint(unsigned id, const std::string& x, const std::string& colour, unsigned drawing = 0,
                  unsigned unique = 7)
{
    return "  <ORV_object_paint id=\"" + std::to_string(id) + "\" drawing_context=\"" + std::to_string(drawing) +
           "\" object_hints=\"[0] ORV_OBJ_HINT_NONE \">\n    <ORV_object_paint.paint_path>\n      <GGO_Point gpf_X=\"" +
           x + "\" gpf_Y=\"2\"/>\n    </ORV_object_paint.paint_path>\n    <ORV_object_paint.operand1>\n" +
           "      <GOP_OperandFlatPointer op_UniqueId=\"" + std::to_string(unique) +
           "\">\n        <GBC_Color base_n=\"" + colour +
           "\"/>\n      </GOP_OperandFlatPointer>\n    </ORV_object_paint.operand1>\n  </ORV_object_paint>\n";
}

OpenLog opener(const std::string& text)
{
    return [text]() -> std::shared_ptr<std::istream> { return std::make_shared<std::istringstream>(text); };
}

std::string name_of(const orvlog::reader::Element* call)
{
    return call == nullptr ? "-" : call->has("id") ? std::string(call->value("id")) : std::string(call->name);
}

struct Compared
{
    AlignOutcome outcome;
    uint64_t same = 0;
    std::vector<std::string> told;  // "changed 3 4 path attribute a|b", "missing 3 -", ...
};

Compared compare(const std::string& a, const std::string& b, const AlignOptions& options = {})
{
    Compared compared;
    const auto take = [&compared](const Step& step)
    {
        std::string calls(1, ' ');
        calls.append(name_of(step.a)).append(" ").append(name_of(step.b));
        compared.same += step.kind == StepKind::same ? 1 : 0;
        std::string moved;
        if (step.moved)
            moved.append(" moved ").append(std::to_string(step.moved->id.value_or(0)));
        if (step.kind == StepKind::missing)
            compared.told.push_back("missing" + calls + moved);
        if (step.kind == StepKind::added)
            compared.told.push_back("added" + calls + (step.twice ? " twice" : "") + moved);
        for (const Difference& one : step.differences)
            compared.told.push_back("changed" + calls + " " + one.path + " " + one.attribute + " " +
                                    one.a.value_or("none") + "|" + one.b.value_or("none"));
        return true;
    };
    compared.outcome = align_logs(opener(a), opener(b), options, take);
    return compared;
}

using Told = std::vector<std::string>;

std::string many(unsigned count, unsigned left_out = UINT32_MAX)
{
    std::string log = begin;
    unsigned id = 0;
    for (unsigned i = 0; i < count; ++i)
        if (i != left_out)
            log += paint(id++, std::to_string(i % 50), "0.5 ");
    return log + end;
}

TEST(LogAlignment, EqualLogsHaveNoDifference)
{
    const std::string log = begin + paint(0, "1", "0 ") + paint(1, "2", "0 ") + end;
    const Compared compared = compare(log, log);
    EXPECT_EQ(compared.told, Told{});
    EXPECT_EQ(compared.same, 3U);
    EXPECT_TRUE(compared.outcome.a.is_log);
    EXPECT_TRUE(compared.outcome.roots.empty());
}

TEST(LogAlignment, NamesMayBeOthersIfTheyStandForTheSame)
{
    const std::string a = begin + paint(0, "1", "0 ", 3, 20) + paint(1, "2", "0 ", 3, 21) + end;
    const std::string b = begin + paint(40, "1", "0 ", 9, 77) + paint(41, "2", "0 ", 9, 78) + end;
    EXPECT_EQ(compare(a, b).told, Told{});
    const std::string other = begin + paint(40, "1", "0 ", 9, 77) + paint(41, "2", "0 ", 9, 77) + end;
    EXPECT_EQ(compare(a, other).told,
              Told{"changed 1 41 ORV_object_paint.operand1/GOP_OperandFlatPointer op_UniqueId 21|77"});
}

TEST(LogAlignment, OneAttributeOfOneCallIsNamed)
{
    const std::string a = begin + paint(0, "1", "0 ") + paint(1, "2", "0 ") + paint(2, "3", "0 ") + end;
    const std::string b = begin + paint(0, "1", "0 ") + paint(1, "2", "1 ") + paint(2, "3", "0 ") + end;
    EXPECT_EQ(compare(a, b).told,
              Told{"changed 1 1 ORV_object_paint.operand1/GOP_OperandFlatPointer/GBC_Color base_n 0 |1 "});
}

TEST(LogAlignment, OneOfTenThousandCallsIsMissing)
{
    const Compared compared = compare(many(10000), many(10000, 5000));
    EXPECT_EQ(compared.same, 10000U);
    EXPECT_EQ(compared.told, Told{"missing 5000 -"});
}

TEST(LogAlignment, CallsThatAreAllTheSameLoseOne)
{
    std::string a = begin;
    std::string b = begin;
    for (unsigned i = 0; i < 3000; ++i)
        a += paint(i, "1", "0 ");
    for (unsigned i = 0; i < 2999; ++i)
        b += paint(i, "1", "0 ");
    const Compared compared = compare(a + end, b + end);
    EXPECT_EQ(compared.same, 3000U);
    EXPECT_EQ(compared.told, Told{"missing 2999 -"});
}

TEST(LogAlignment, ACallIsAddedTwiceOrMoved)
{
    const std::string a = begin + paint(0, "1", "0 ") + paint(1, "2", "0 ") + paint(2, "3", "0 ") + end;
    const std::string twice =
        begin + paint(0, "1", "0 ") + paint(1, "2", "0 ") + paint(2, "2", "0 ") + paint(3, "3", "0 ") + end;
    EXPECT_EQ(compare(a, twice).told, Told{"added - 2 twice"});
    const std::string swapped = begin + paint(0, "1", "0 ") + paint(1, "3", "0 ") + paint(2, "2", "0 ") + end;
    EXPECT_EQ(compare(a, swapped).told, (Told{"missing 1 - moved 2", "added - 2 moved 1"}));
}

TEST(LogAlignment, MeasuresMayDifferByTheTolerance)
{
    const std::string a = begin + paint(0, "1", "0.5 ") + paint(1, "200", "0.5 ") + paint(2, "3", "0 ") + end;
    const std::string b = begin + paint(0, "1.0005", "0.5004 ") + paint(1, "200.1", "0.5 ") + paint(2, "3", "0 ") + end;
    AlignOptions options;
    options.tolerance = 0.001;
    EXPECT_EQ(compare(a, b, options).told, Told{});
    options.tolerance = 0.0001;
    EXPECT_EQ(compare(a, b, options).told.size(), 3U);
    EXPECT_EQ(compare(a, b).told.size(), 3U);
}

TEST(LogAlignment, ToleranceDoesNotHideAMissingCall)
{
    std::string a = begin;
    std::string b = begin;
    for (unsigned i = 0; i < 500; ++i)
        a += paint(i, std::to_string(i), "0.5 ");
    for (unsigned i = 0; i < 500; ++i)
        if (i != 250)
            b += paint(i, std::to_string(i) + ".0001", "0.5 ");
    AlignOptions options;
    options.tolerance = 0.001;
    EXPECT_EQ(compare(a + end, b + end, options).told, Told{"missing 250 -"});
}

TEST(LogAlignment, ASmallWindowFindsTheSame)
{
    AlignOptions options;
    options.window = 16;
    EXPECT_EQ(compare(many(2000), many(2000, 700), options).told, Told{"missing 700 -"});
}

TEST(LogAlignment, WhatIsCutIsComparedAsFarAsItGoes)
{
    const std::string a = begin + paint(0, "1", "0 ") + paint(1, "2", "0 ") + end;
    const std::string b = a.substr(0, a.size() - end.size());
    const Compared compared = compare(a, b);
    EXPECT_EQ(compared.told, Told{});
    EXPECT_TRUE(compared.outcome.b.cut);
    EXPECT_FALSE(compared.outcome.a.cut);
    EXPECT_FALSE(compare(a, "no log").outcome.b.is_log);
}

std::string every_call()
{
    std::ifstream file(ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// More of them by hand: ORVLOG_SWEEP=10000.
int sweep(int usual)
{
    const char* wanted = std::getenv("ORVLOG_SWEEP");
    return wanted != nullptr ? std::atoi(wanted) : usual;
}

TEST(LogAlignment, BentAndCutLogsAreComparedToTheirEnd)
{
    const std::string log = every_call();
    ASSERT_GT(log.size(), 10000U);
    std::mt19937 random(20);
    AlignOptions options;
    options.window = 8;
    for (int round = 0; round < sweep(40); ++round)
    {
        std::string bent = log;
        for (unsigned i = 0; i < 1 + random() % 5; ++i)
            bent[random() % bent.size()] = static_cast<char>(random());
        if (round % 2 == 0)
            bent.resize(random() % bent.size());
        options.tolerance = round % 3 == 0 ? 0.01 : 0;
        const Compared compared = compare(log, bent, options);
        uint64_t told_a = compared.same;
        for (const std::string& line : compared.told)
            told_a += line.starts_with("missing") ? 1 : 0;
        EXPECT_TRUE(!compared.outcome.b.is_log || told_a <= compared.outcome.a.calls);
    }
}

}  // namespace
