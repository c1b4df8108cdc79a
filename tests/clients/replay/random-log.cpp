// random-log SEED: a job by chance, whose log becomes job.xml in the present folder, beside what else it leaves there.

#include "tests/clients/replay/random-job.h"

#include <cstdlib>
#include <fstream>

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    orvlog::test::RandomJob job(static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 10)));
    job.run();
    std::ofstream log("job.xml", std::ios::binary);
    log << job.log();
    log.close();
    return log ? 0 : 1;
}
