// Jobs by chance, replayed as they were: the log of the replay is the log, byte for byte.

#include "tests/clients/replay/played-again.h"
#include "tests/clients/replay/random-job.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

// The first line in which they differ, with those around it.
std::string first_difference(const std::string& one, const std::string& other)
{
    size_t same = 0;
    while (same < one.size() && same < other.size() && one[same] == other[same])
        ++same;
    const size_t from = same > 600 ? same - 600 : 0;
    return one.substr(from, same - from + 300) + "\n---- instead:\n" + other.substr(same, 300);
}

uint32_t told(const char* name, uint32_t usual)
{
    const char* text = std::getenv(name);
    return text != nullptr ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : usual;
}

// What a log is for a job by chance, or what it became instead, to be looked at in ORVLOG_KEEP.
void keep(uint32_t seed, const char* which, const std::string& log)
{
    if (const char* folder = std::getenv("ORVLOG_KEEP"); folder != nullptr)
        std::ofstream(std::string(folder) + "/" + std::to_string(seed) + which, std::ios::binary) << log;
}

TEST(AsLogged, GivesTheLogsOfJobsByChance)
{
    TempFolder folder;
    const uint32_t first = told("ORVLOG_SEED", 0);
    for (uint32_t seed = first; seed < first + told("ORVLOG_SESSIONS", 20); ++seed)
    {
        fs::create_directories("job");
        fs::create_directories("again");
        fs::current_path("job");
        RandomJob job(seed);
        job.run();
        const auto left = files_here();
        fs::current_path("../again");
        std::string differences;
        const std::string log = play_again(job.log(), "../job", job.side_files(), &differences);
        const bool same = log == job.log();
        if (!same || std::getenv("ORVLOG_ALL") != nullptr)
            keep(seed, "-job.xml", job.log());
        if (!same || std::getenv("ORVLOG_ALL") != nullptr)
            keep(seed, "-again.xml", log);
        EXPECT_TRUE(same) << "seed " << seed << "\n" << differences << first_difference(job.log(), log);
        EXPECT_EQ(differences, "") << "seed " << seed;
        EXPECT_EQ(first_other(left, files_here()), "") << "seed " << seed;
        fs::current_path("..");
        fs::remove_all("job");
        fs::remove_all("again");
    }
}

}  // namespace
