// Runs a fuzzer's entry point once for each file named, and each file in a folder named.

#include "fuzz/fuzz.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace
{

void run(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(content.data()), content.size());
}

}  // namespace

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i)
    {
        if (!std::filesystem::is_directory(argv[i]))
        {
            run(argv[i]);
            ++count;
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
        {
            run(entry.path());
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
