// orvlog merge: a temporary log and the logs of its kept images as one log.

#include "clients/stream/file-stream.h"
#include "orvlog/log/orvlog-merge.h"
#include "tools/command.h"
#include "tools/tool-output.h"
#include "tools/tool-source.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>

namespace tool
{

namespace
{

namespace fs = std::filesystem;

constexpr char ATTRIBUTE[] = "async_img_log_file_name=\"";

struct MergeOptions
{
    std::string file;
    std::string output;
    bool compressed = false;
};

// Names of the logs of kept images that a temporary log tells of. False when it is no log.
bool find_image_logs(const fs::path& log, std::set<std::string>* names)
{
    std::ifstream file(log, std::ios::binary);
    std::string line;
    for (bool first = true; std::getline(file, line); first = false)
    {
        if (first && line.rfind("<ORV ", 0) != 0)
            return false;
        const size_t at =
            line.find("<GOP_ImageKeepFn ") != std::string::npos ? line.find(ATTRIBUTE) : std::string::npos;
        if (at == std::string::npos)
            continue;
        const size_t start = at + sizeof ATTRIBUTE - 1;
        names->insert(line.substr(start, line.find('"', start) - start));
    }
    return !names->empty() || fs::file_size(log) > 0;
}

// The merge deletes what it has taken in as it goes, and a failed one would lose it. So it works on links in a
// folder of its own, and the files go when all went well.
class Workshop
{
public:
    explicit Workshop(const fs::path& log) : folder_(fs::absolute(log).string() + ".merging"), back_(fs::current_path())
    {
        fs::create_directory(folder_);
        take(log);
    }
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;
    ~Workshop()
    {
        std::error_code ignored;
        fs::current_path(back_, ignored);
        fs::remove_all(folder_, ignored);
    }

    void take(const fs::path& file)
    {
        fs::create_symlink(fs::absolute(file), folder_ / file.filename());
        taken_.insert(fs::absolute(file));
    }
    void enter()
    {
        fs::current_path(folder_);
    }
    void remove_originals() const
    {
        std::error_code ignored;
        for (const fs::path& file : taken_)
            fs::remove(file, ignored);
    }

private:
    fs::path folder_;
    fs::path back_;
    std::set<fs::path> taken_;
};

int merge(const MergeOptions& options)
{
    const fs::path log = options.file;
    {
        const Source source(options.file);
        if (!source.open())
            return fail(options.file + ": " + source.why());
    }
    std::set<std::string> names;
    if (!find_image_logs(log, &names))
        return fail(options.file + ": not a log");
    for (const std::string& name : names)
    {
        if (fs::path(name).filename() != name || !fs::is_regular_file(log.parent_path() / name))
            return fail(options.file + ": the log of a kept image is missing: " + name);
    }
    Output output(options.output == "-" ? options.output : fs::absolute(options.output).string());
    if (!output.open())
        return fail(options.output + ": " + std::strerror(errno));
    Workshop workshop(log);
    for (const std::string& name : names)
        workshop.take(log.parent_path() / name);
    workshop.enter();
    client_stream::MallocAllocator memory;
    errno = 0;
    const uint32_t merged = ORVLOG_MergeLogs(memory.allocator(), log.filename().c_str(), output.stream(),
                                             options.compressed ? 1 : 0, names.empty() ? 0 : 1);
    if (merged == 0 || !output.finish())
        return fail(options.output + ": " + std::strerror(errno != 0 ? errno : EIO));
    workshop.remove_originals();
    return EXIT_DONE;
}

}  // namespace

Run declare_merge(CLI::App& app)
{
    auto options = std::make_shared<MergeOptions>();
    app.add_option("TEMPLOG", options->file,
                   "a temporary log, with the logs of its kept images beside it; all are gone once merged")
        ->required();
    app.add_option("-o,--output", options->output, "the merged log, or - for standard output")
        ->type_name("FILE")
        ->required();
    app.add_flag("--compressed", options->compressed, "code the merged log");
    return [options] { return merge(*options); };
}

}  // namespace tool
