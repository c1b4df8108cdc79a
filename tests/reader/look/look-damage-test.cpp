// What looks into logs takes logs that are cut anywhere, and logs with bytes that are others.

#include "reader/check/log-check.h"
#include "reader/look/call-summary.h"
#include "reader/look/log-info.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::reader;

std::string every_call()
{
    std::ifstream file(ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A number to hold on to, so that nothing of it is left out.
struct Looked
{
    uint64_t calls = 0;
    uint64_t damage = 0;
    uint64_t findings = 0;
    bool cut = false;
};

Looked look(const std::string& log)
{
    Looked looked;
    std::istringstream for_info(log);
    const LogInfo info = read_info(for_info, {});
    looked.calls = info.calls.all();
    looked.damage = info.damage;
    looked.cut = info.cut;
    std::istringstream for_list(log);
    ElementReader elements(for_list, LogForm::log, Data::skip);
    elements.split_nested = true;
    CallSummaries summaries;
    uint64_t listed = 0;
    while (const Element* element = elements.next())
    {
        if (!is_call_name(element->name))
            continue;
        const CallSummary summary = summaries.next(*element);
        EXPECT_LE(summary.page, summaries.pages());
        ++listed;
    }
    EXPECT_EQ(listed, looked.calls);
    std::istringstream for_check(log);
    CheckOptions options;
    options.open_file = [](const std::string&, LogFileKind) -> LogFile {
        return {std::make_unique<std::istringstream>("<GOP_Image"), "", "", false};
    };
    options.on_finding = [&looked](const Finding& finding)
    {
        ++looked.findings;
        EXPECT_FALSE(finding.text.empty());
    };
    EXPECT_EQ(check_log(for_check, options).calls, looked.calls);
    return looked;
}

// More of them by hand: ORVLOG_SWEEP=10000.
int sweep(int usual)
{
    const char* wanted = std::getenv("ORVLOG_SWEEP");
    return wanted != nullptr ? std::atoi(wanted) : usual;
}

TEST(LookDamage, AWholeLogHasNoDamage)
{
    const Looked looked = look(every_call());
    EXPECT_EQ(looked.calls, 32U);
    EXPECT_EQ(looked.damage, 0U);
    EXPECT_FALSE(looked.cut);
}

TEST(LookDamage, LogsCutAnywhere)
{
    const std::string log = every_call();
    std::mt19937 random(9);
    const size_t end = log.size() - std::string_view("</ORV>\n").size();
    for (int i = 0; i < sweep(200); ++i)
    {
        const size_t size = 5 + random() % (end - 5);
        const Looked looked = look(log.substr(0, size));
        EXPECT_TRUE(looked.cut) << size;
        EXPECT_GE(looked.damage, 1U) << size;
        EXPECT_GE(looked.findings, 1U) << size;
    }
}

TEST(LookDamage, LogsWithOtherBytes)
{
    const std::string log = every_call();
    std::mt19937 random(10);
    uint64_t calls = 0;
    for (int i = 0; i < sweep(300); ++i)
    {
        std::string bent = log;
        for (uint32_t changes = 1 + random() % 8; changes > 0; --changes)
        {
            const size_t at = 5 + random() % (bent.size() - 5);
            const uint32_t kind = random() % 4;
            if (kind == 0)
                bent[at] = static_cast<char>(random());
            else if (kind == 1)
                bent[at] = "<>\"/0919-en \n"[random() % 13];
            else if (kind == 2)
                bent.erase(at, random() % 200);
            else
                bent.insert(at, bent.substr(random() % bent.size(), random() % 500));
        }
        calls += look(bent).calls;
    }
    EXPECT_GT(calls, 300U);
}

}  // namespace
