// orvlog regress: the logs of a folder drawn by a renderer, and their pages held against those of a baseline.

#include "tools/render/junit.h"
#include "tools/render/page-folders.h"
#include "tools/render/render-processes.h"
#include "tools/shared/command.h"
#include "tools/shared/look.h"
#include "tools/shared/output.h"
#include "tools/shared/temporary-folder.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;

struct Shard
{
    uint32_t number = 1;
    uint32_t of = 1;
};

struct RegressCommand
{
    std::string folder;
    std::string renderer;
    std::string renderer_options;
    std::string baseline;
    std::string pictures;
    std::string junit;
    Shard shard;
    unsigned jobs = 0;
    unsigned seconds = 300;
    uint64_t megabytes = 4096;
    unsigned dpi = 0;
    uint32_t tolerance = 0;
    bool update = false;
};

bool read_shard(const std::string& text, Shard* shard)
{
    const char* const end = text.data() + text.size();
    const auto number = std::from_chars(text.data(), end, shard->number);
    if (number.ec != std::errc() || number.ptr == end || *number.ptr != '/')
        return false;
    const auto of = std::from_chars(number.ptr + 1, end, shard->of);
    return of.ec == std::errc() && of.ptr == end && shard->number >= 1 && shard->number <= shard->of;
}

std::string check_shard(const std::string& text)
{
    Shard shard;
    return read_shard(text, &shard) ? "" : "a shard is given as I/N, the first one as 1/N";
}

bool is_log_name(const fs::path& file)
{
    const std::string ending = file.extension().string();
    return ending == ".xml" || ending == ".orvlog" || ending == ".zst";
}

// What came of a log.
struct Finding
{
    std::string log;  // its name in the folder
    std::string word = "passed";
    std::string failure;
    std::string error;
    size_t pages = 0;
};

class RegressJob
{
public:
    explicit RegressJob(const RegressCommand& command) : command_(command) {}

    int run()
    {
        if (const std::string why = find_logs(); !why.empty())
            return fail(why);
        if (const std::string why = prepare(); !why.empty())
            return fail(why);
        std::vector<RenderJob> jobs;
        for (size_t i = 0; i < findings_.size(); ++i)
            jobs.push_back(job(i));
        const size_t at_once = command_.jobs > 0 ? command_.jobs : std::max(1U, std::thread::hardware_concurrency());
        done_.assign(jobs.size(), false);
        const bool all = processes_.run(jobs, at_once,
                                        [&](size_t number)
                                        {
                                            judge(jobs[number], number);
                                            show(number);
                                        });
        if (!all)
            return processes_.signal_received() != 0 ? EXIT_SIGNAL + processes_.signal_received()
                                                     : fail(processes_.why());
        return finish();
    }

private:
    // In the order of their names, those of the shard.
    std::string find_logs()
    {
        std::vector<std::string> names;
        std::error_code failed;
        for (fs::directory_iterator file(command_.folder, failed), end; !failed && file != end; file.increment(failed))
        {
            std::error_code none;
            if (is_log_name(file->path()) && !file->is_directory(none))
                names.push_back(file->path().filename().string());
        }
        if (failed)
            return command_.folder + ": " + failed.message();
        if (names.empty())
            return command_.folder + ": has no logs (files that end in .xml, .orvlog or .zst)";
        std::ranges::sort(names);
        for (size_t i = 0; i < names.size(); ++i)
            if (i % command_.shard.of == command_.shard.number - 1)
                findings_.push_back({names[i], "passed", "", "", 0});
        return {};
    }

    std::string prepare() const
    {
        std::error_code failed;
        if (command_.update)
            fs::create_directories(command_.baseline, failed);
        else if (!fs::is_directory(command_.baseline, failed))
            return command_.baseline + ": " +
                   (failed ? failed.message() : std::string("is no folder; --update makes a baseline"));
        if (failed)
            return command_.baseline + ": " + failed.message();
        if (!command_.pictures.empty())
            fs::create_directories(command_.pictures, failed);
        return failed ? command_.pictures + ": " + failed.message() : "";
    }

    std::string pages_folder(size_t number) const
    {
        return folder_.path("pages-" + std::to_string(number));
    }
    std::string baseline_of(const Finding& finding) const
    {
        return (fs::path(command_.baseline) / finding.log).string();
    }

    RenderJob job(size_t number) const
    {
        const std::string log = (fs::path(command_.folder) / findings_[number].log).string();
        RenderJob made = render_job(log, command_.renderer, pages_folder(number), command_.seconds);
        if (!command_.renderer_options.empty())
            made.words.insert(made.words.end(), {"--renderer-options", command_.renderer_options});
        if (command_.dpi > 0)
            made.words.insert(made.words.end(), {"--dpi", std::to_string(command_.dpi)});
        made.errors = folder_.path("errors-" + std::to_string(number));
        made.megabytes = command_.megabytes;
        return made;
    }

    void judge(const RenderJob& job, size_t number)
    {
        Finding& finding = findings_[number];
        std::string line;
        const RenderEnd end = end_of(job, &line);
        if (end != RenderEnd::done)
        {
            finding.word = end == RenderEnd::timeout ? "timeout" : end == RenderEnd::crashed ? "crashed" : "failed";
            finding.error = line.empty() ? "said nothing" : line;
        }
        else if (command_.update)
            update(number, finding);
        else
            compare(number, finding);
        std::error_code none;
        fs::remove_all(pages_folder(number), none);
        fs::remove(job.errors, none);
    }

    void compare(size_t number, Finding& finding) const
    {
        PageFolders folders;
        folders.tolerance = command_.tolerance;
        folders.name_a = "the baseline";
        folders.name_b = "the renderer";
        std::string why;
        folders.b = pages_in(pages_folder(number), &why);
        finding.pages = folders.b.size();
        std::error_code none;
        if (!fs::exists(baseline_of(finding), none))
        {
            finding.word = "unknown";
            finding.error = "has no baseline";
            return;
        }
        folders.a = pages_in(baseline_of(finding), &why);
        if (!why.empty())
        {
            finding.word = "failed";
            finding.error = why;
            return;
        }
        for (const PageFault& fault : compare_folders(folders))
        {
            finding.word = "differs";
            finding.failure +=
                (finding.failure.empty() ? "page " : "; page ") + std::to_string(fault.page) + ": " + fault.what;
            const std::string prefix = (fs::path(command_.pictures) / finding.log).string();
            const std::string unwritten = command_.pictures.empty() ? "" : write_pictures(folders, fault, prefix);
            if (!unwritten.empty())
                finding.error = unwritten;
        }
    }

    // The pages as they are now become the baseline: pictures that were there go, other files stay. Those that were
    // there stay until all new ones are written.
    void update(size_t number, Finding& finding) const
    {
        std::string why;
        const std::map<uint32_t, std::string> pages = pages_in(pages_folder(number), &why);
        std::error_code failed;
        const std::string target = baseline_of(finding);
        const fs::path fresh = fs::path(target) / ".update";
        fs::create_directories(fresh, failed);
        for (const auto& [page, file] : pages)
            if (!failed)
                fs::copy_file(file, fresh / fs::path(file).filename(), fs::copy_options::overwrite_existing, failed);
        // Two of one number come one after the other.
        for (std::map<uint32_t, std::string> old; !failed && !(old = pages_in(target, &why)).empty();)
            for (const auto& [page, file] : old)
                if (!failed)
                    fs::remove(file, failed);
        for (const auto& [page, file] : pages)
            if (!failed)
                fs::rename(fresh / fs::path(file).filename(), fs::path(target) / fs::path(file).filename(), failed);
        std::error_code none;
        fs::remove_all(fresh, none);
        finding.pages = pages.size();
        finding.word = failed ? "failed" : "updated";
        finding.error = failed ? target + ": " + failed.message() : "";
    }

    // Lines come in the order of names, whichever log is done first.
    void show(size_t number)
    {
        done_[number] = true;
        for (; shown_ < done_.size() && done_[shown_]; ++shown_)
        {
            const Finding& finding = findings_[shown_];
            std::string line = finding.word + std::string(9 - std::min<size_t>(finding.word.size(), 8), ' ');
            line += finding.log;
            if (finding.pages > 0)
                line += "  " + std::to_string(finding.pages) + (finding.pages == 1 ? " page" : " pages");
            const std::string& what = finding.error.empty() ? finding.failure : finding.error;
            put(printable(line + (what.empty() ? "" : "  " + what)) + "\n");
        }
    }

    int finish()
    {
        std::map<std::string, size_t> counts;
        for (const Finding& finding : findings_)
            ++counts[finding.word];
        std::string line = std::to_string(findings_.size()) + " logs";
        for (const char* word : {"passed", "updated", "differs", "unknown", "failed", "crashed", "timeout"})
            if (counts[word] > 0)
                line += ", " + std::to_string(counts[word]) + " " + word;
        put(line + "\n");
        const bool good = counts["passed"] + counts["updated"] == findings_.size();
        int status = good ? EXIT_DONE : EXIT_FAILED;
        if (!command_.junit.empty() && !write_junit())
            status = fail(command_.junit + ": " + std::strerror(errno));
        return finish_output(status);
    }

    bool write_junit() const
    {
        std::vector<TestCase> cases;
        for (const Finding& finding : findings_)
            cases.push_back({finding.log, finding.failure, finding.error});
        const std::string text = junit_text("orvlog-regress", cases);
        Output output(command_.junit);
        return output.open() && output.write(text.data(), text.size()) && output.finish();
    }

    const RegressCommand& command_;
    TemporaryFolder folder_;
    RenderProcesses processes_;
    std::vector<Finding> findings_;
    std::vector<bool> done_;
    size_t shown_ = 0;
};

}  // namespace

Run declare_regress(CLI::App& app)
{
    auto command = std::make_shared<RegressCommand>();
    app.add_option("DIR", command->folder, "the folder with the logs: files that end in .xml, .orvlog or .zst")
        ->required()
        ->type_name("DIR");
    app.add_option("--renderer", command->renderer, "a shared library, FILE or FILE:SYMBOL, or cairo")
        ->required()
        ->type_name("RENDERER");
    app.add_option("--baseline", command->baseline, "the folder with a folder of pages for each log")
        ->required()
        ->type_name("FOLDER");
    app.add_option("--renderer-options", command->renderer_options, "for the library")->type_name("TEXT");
    app.add_flag("--update", command->update, "make the pages that are drawn now the baseline");
    app.add_option("--tolerance", command->tolerance, "channels of a pixel may differ by as much")
        ->type_name("N")
        ->check(CLI::Range(0U, 255U));
    app.add_option("--dpi", command->dpi, "resolution of the pages instead of their own")
        ->type_name("N")
        ->check(CLI::Range(1U, 2400U));
    app.add_option("--pictures", command->pictures, "pictures of pages that differ go to FOLDER")->type_name("FOLDER");
    app.add_option("--junit", command->junit, "what came of it, as a JUnit file")->type_name("FILE");
    app.add_option("--jobs", command->jobs, "so many logs side by side; without it one for each processor")
        ->type_name("N")
        ->check(CLI::Range(1U, 1024U));
    app.add_option("--time", command->seconds, "seconds that a log may take")
        ->type_name("S")
        ->capture_default_str()
        ->check(CLI::Range(1U, 86400U));
    app.add_option("--memory", command->megabytes, "megabytes that the process of a log may map; 0 is no limit")
        ->type_name("MB")
        ->capture_default_str();
    app.add_option_function<std::string>(
           "--shard", [command](const std::string& text) { read_shard(text, &command->shard); },
           "of N parts of the logs the one with this number, from 1")
        ->type_name("I/N")
        ->check(check_shard);
    app.footer("Draws each log of a folder in a process of its own, with limits of time and memory, and holds its "
               "pages against those of the baseline. A line for each log says what came of it, in the order of their "
               "names: passed, differs, unknown (it has no baseline), failed, crashed, timeout. The outcome doesn't "
               "depend on how many run side by side.\n\n"
               "With --update the pages become the baseline; a log that can't be drawn keeps the one that it has. "
               "With --shard several machines share the work: their parts together are all logs, each once.\n\n"
               "The exit status is 0 if all have passed or been updated.");
    return [command] { return RegressJob(*command).run(); };
}

}  // namespace orvlog::tool
