// orvlog compare: the job of a log drawn by two renderers, page by page.

#include "clients/command-line/number-range.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"
#include "tools/render/page-folders.h"
#include "tools/render/render-processes.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/temporary-folder.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;
using nlohmann::ordered_json;

struct CompareCommand
{
    std::string log;
    std::vector<std::string> renderers;
    std::vector<std::string> options;
    std::vector<std::string> folders;
    std::string pages;
    std::string pictures;
    uint32_t tolerance = 0;
    unsigned dpi = 0;
    unsigned seconds = 300;
    uint64_t megabytes = 0;
    bool json = false;
    bool no_calls = false;
};

// The calls of a page, from its start to its end.
struct PageCalls
{
    struct Call
    {
        uint64_t line;
        std::string kind;
        std::string id;  // "17"; empty for calls without one
    };

    uint32_t page = 0;  // its place in the log, from 1
    std::vector<Call> calls;
};

class CompareJob
{
public:
    explicit CompareJob(const CompareCommand& command) : command_(command), log_(command.log) {}

    int run()
    {
        if (!log_.open())
            return fail(command_.log + ": " + log_.why());
        std::array<std::string, 2> folders;
        if (!draw({}, &folders))
            return broken_off();
        PageFolders pages;
        pages.name_a = command_.renderers[0];
        pages.name_b = command_.renderers[1];
        if (pages.name_a == pages.name_b)
            pages.name_b += " (the second)";
        pages.tolerance = command_.tolerance;
        std::string why;
        pages.a = pages_in(folders[0], &why);
        if (why.empty())
            pages.b = pages_in(folders[1], &why);
        if (!why.empty())
            return fail(why);
        if (pages.a.empty() && pages.b.empty())
            return fail(command_.log + ": neither renderer gave a page");
        return tell(pages, compare_folders(pages));
    }

private:
    int broken_off() const
    {
        if (processes_.signal_received() != 0)
            return EXIT_SIGNAL + processes_.signal_received();
        return processes_.why().empty() ? EXIT_FAILED : fail(processes_.why());
    }

    // Both renderers, with these words more. Says what they have to say, and gives the folders of their pages; false
    // when one made none.
    bool draw(const std::vector<std::string>& words, std::array<std::string, 2>* folders)
    {
        const bool whole = words.empty();
        std::vector<RenderJob> jobs(2);
        for (size_t i = 0; i < 2; ++i)
        {
            (*folders)[i] = folder_.path((whole ? "pages-" : "step-") + std::to_string(i));
            std::error_code none;
            fs::remove_all((*folders)[i], none);
            fs::create_directory((*folders)[i], none);
            jobs[i] = job(i, (*folders)[i], words);
        }
        if (!processes_.run(jobs, 2, [](size_t) {}))
            return false;
        bool good = true;
        for (size_t i = 0; i < 2; ++i)
            good = (!whole || report(command_.renderers[i], jobs[i], (*folders)[i])) && good;
        return good;
    }

    RenderJob job(size_t renderer, const std::string& folder, const std::vector<std::string>& words) const
    {
        RenderJob made = render_job(command_.log, command_.renderers[renderer], folder, command_.seconds);
        if (!command_.options.empty())
            made.words.insert(made.words.end(),
                              {"--renderer-options", command_.options[renderer % command_.options.size()]});
        if (!command_.pages.empty() && words.empty())
            made.words.insert(made.words.end(), {"--pages", command_.pages});
        if (command_.dpi > 0)
            made.words.insert(made.words.end(), {"--dpi", std::to_string(command_.dpi)});
        for (const std::string& one : command_.folders)
            made.words.insert(made.words.end(), {"--files-from", one});
        made.words.insert(made.words.end(), words.begin(), words.end());
        made.errors = folder_.path("errors-" + std::to_string(renderer));
        made.megabytes = command_.megabytes;
        return made;
    }

    // False if there are no pages to compare.
    bool report(const std::string& renderer, const RenderJob& job, const std::string& folder)
    {
        const std::vector<std::string> lines = lines_said(job.errors);
        for (const std::string& line : lines)
            if (said_.insert(line).second)
                say(printable(line));
        std::string line;
        const RenderEnd end = end_of(job, &line);
        if (end == RenderEnd::done)
            return true;
        failed_ = true;
        // A log that lacks something is drawn as far as it goes.
        std::string why;
        if (end == RenderEnd::failed && !pages_in(folder, &why).empty())
            return true;
        const bool told =
            std::ranges::any_of(lines, [&](const std::string& one) { return one.starts_with(job.renderer + ": "); });
        if (!told)
            fail(printable(renderer + ": " + (end == RenderEnd::failed ? "has drawn no page" : line)));
        return false;
    }

    int tell(const PageFolders& pages, const std::vector<PageFault>& faults)
    {
        ordered_json list = ordered_json::array();
        for (const PageFault& fault : faults)
        {
            const PageCalls::Call* call = nullptr;
            PageCalls calls;
            if (fault.has_both && !command_.no_calls && !first_call(pages, fault, &calls, &call))
                return broken_off();
            std::string line = "page " + std::to_string(fault.page) + ": " + fault.what;
            if (call != nullptr)
                line += ", first behind " + (call->id.empty() ? "line:" + std::to_string(call->line) : call->id) + " " +
                        call->kind;
            if (!command_.json)
                put(printable(line) + "\n");
            list.push_back(page_json(fault, call));
            if (!write(pages, fault))
                return EXIT_FAILED;
        }
        const size_t compared = std::max(pages.a.size(), pages.b.size());
        if (command_.json)
            put(json_text({{"pages", list}, {"compared", compared}, {"equal", faults.empty()}}, 1) + "\n");
        else
            put(std::to_string(compared) + " pages compared, " + std::to_string(faults.size()) + " differ\n");
        return finish_output(faults.empty() && !failed_ ? EXIT_DONE : EXIT_FAILED);
    }

    static ordered_json page_json(const PageFault& fault, const PageCalls::Call* call)
    {
        ordered_json page;
        page["page"] = fault.page;
        page["what"] = fault.what;
        page["pixels"] = fault.area.pixels;
        page["call"] = call == nullptr
                           ? ordered_json()
                           : ordered_json(call->id.empty() ? "line:" + std::to_string(call->line) : call->id);
        page["line"] = call == nullptr ? ordered_json() : ordered_json(call->line);
        page["kind"] = call == nullptr ? ordered_json() : ordered_json(call->kind);
        return page;
    }

    bool write(const PageFolders& pages, const PageFault& fault) const
    {
        if (command_.pictures.empty())
            return true;
        std::error_code failed;
        fs::create_directories(command_.pictures, failed);
        const fs::path prefix = fs::path(command_.pictures) / fs::path(command_.log).stem();
        const std::string why = write_pictures(pages, fault, prefix.string());
        if (!why.empty())
            fail(why);
        return why.empty();
    }

    // The place in the log of the page with this number, and its calls.
    void find_calls(uint32_t number, PageCalls* found)
    {
        reader::ElementReader elements(log_.from_start(), reader::LogForm::log, reader::Data::skip);
        elements.split_nested = true;
        uint32_t page = 0;
        std::string context;
        bool open = false;
        const bool numbered = numbers_rise();
        while (const reader::Element* call = elements.next())
        {
            if (!reader::is_call_name(call->name))
                continue;
            if (call->name == "ORV_face_start" && !open)
            {
                ++page;
                open = (numbered ? reader::read_uint(*call, "face_seq_number") : page) == number;
                context = std::string(call->value("drawing_context"));
                found->page = page;
            }
            if (!open)
                continue;
            const bool is_paint = call->has("id");
            found->calls.push_back(
                {call->place.line, std::string(call->name), is_paint ? std::string(call->value("id")) : ""});
            const bool ends = call->name == "ORV_drawing_finish" || call->name == "ORV_drawing_discard";
            if (ends && call->value("drawing_context") == context)
                return;
        }
    }

    // Whether pages are named by their own numbers, as `orvlog replay` does.
    bool numbers_rise()
    {
        if (!examined_)
        {
            const std::unique_ptr<std::istream> pass = log_.pass();
            reader::ElementReader elements(*pass, reader::LogForm::log, reader::Data::skip);
            uint32_t last = 0;
            while (const reader::Element* call = elements.next())
            {
                if (call->name != "ORV_face_start")
                    continue;
                const uint32_t number = reader::read_uint(*call, "face_seq_number");
                rise_ = rise_ && number > last;
                last = number;
            }
            examined_ = true;
        }
        return rise_;
    }

    // Between a call behind which the pages are the same and one behind which they aren't. False when broken off.
    bool first_call(const PageFolders& pages, const PageFault& fault, PageCalls* calls, const PageCalls::Call** call)
    {
        find_calls(fault.page, calls);
        if (calls->calls.empty())
            return true;
        size_t same = 0;
        size_t other = calls->calls.size() - 1;
        bool differs = false;
        if (!looks_other(*calls, 0, pages.tolerance, &differs))
            return processes_.signal_received() == 0;
        if (differs)
            other = 0;
        while (same + 1 < other)
        {
            const size_t middle = same + (other - same) / 2;
            if (!looks_other(*calls, middle, pages.tolerance, &differs))
                return processes_.signal_received() == 0;
            (differs ? other : same) = middle;
        }
        *call = &calls->calls[other];
        return true;
    }

    // The page as it is behind a call. False if it could not be drawn.
    bool looks_other(const PageCalls& calls, size_t place, uint32_t tolerance, bool* differs)
    {
        const std::string page = std::to_string(calls.page);
        std::array<std::string, 2> folders;
        if (!draw({"--pages", page + "-" + page, "--up-to", "line:" + std::to_string(calls.calls[place].line)},
                  &folders))
            return false;
        std::array<std::map<uint32_t, std::string>, 2> drawn;
        std::string why;
        for (size_t i = 0; i < 2; ++i)
            drawn[i] = pages_in(folders[i], &why);
        if (drawn[0].empty() || drawn[1].empty())
            return false;
        *differs = page_differs(drawn[0].begin()->second, drawn[1].begin()->second, tolerance);
        return true;
    }

    const CompareCommand& command_;
    LogAgain log_;
    TemporaryFolder folder_;
    RenderProcesses processes_;
    std::set<std::string> said_;
    bool failed_ = false;
    bool examined_ = false;
    bool rise_ = true;
};

int compare(const CompareCommand& command)
{
    const char* wrong = nullptr;
    if (command.renderers.size() != 2)
        wrong = "two renderers are compared: --renderer A --renderer B";
    else if (command.options.size() > 2)
        wrong = "--renderer-options is given once, or once for each renderer";
    else if (command.log == "-")
        wrong = "the log is read by several processes; name a file";
    if (wrong == nullptr)
        return CompareJob(command).run();
    std::fprintf(stderr, "orvlog compare: %s (see orvlog compare --help)\n", wrong);
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_compare(CLI::App& app)
{
    auto command = std::make_shared<CompareCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded; a path")->required();
    const auto list = [&app](const char* name, std::vector<std::string>& values, const char* meaning, const char* type)
    { app.add_option(name, values, meaning)->type_name(type)->take_all()->expected(1); };
    list("--renderer", command->renderers, "a shared library, FILE or FILE:SYMBOL, or cairo; given twice", "RENDERER");
    list("--renderer-options", command->options, "for the libraries: once for both, or once for each", "TEXT");
    app.add_option("--tolerance", command->tolerance, "channels of a pixel may differ by as much")
        ->type_name("N")
        ->check(CLI::Range(0U, 255U));
    app.add_option("--pages", command->pages, "only these pages, from 1")
        ->type_name("A-B")
        ->check(command_line::check_pages);
    app.add_option("--dpi", command->dpi, "resolution of the pages instead of their own")
        ->type_name("N")
        ->check(CLI::Range(1U, 2400U));
    app.add_option("--pictures", command->pictures, "pictures of pages that differ go to DIR")->type_name("DIR");
    app.add_option("--time", command->seconds, "seconds that a renderer may take")
        ->type_name("S")
        ->capture_default_str()
        ->check(CLI::Range(1U, 86400U));
    app.add_option("--memory", command->megabytes, "megabytes that a renderer may map; 0 is no limit")
        ->type_name("MB")
        ->capture_default_str();
    app.add_flag("--no-calls", command->no_calls, "don't look for the calls that make the difference");
    app.add_flag("--json", command->json, "tell it as JSON");
    add_files_from(app, command->folders);
    app.footer("Draws the pages of a log with two renderers, each in a process of its own, and tells where they "
               "differ. For each page that does, parts of the job are drawn again to find a call behind which the "
               "pages differ, while ahead of it they were the same. The exit status is 0 if all pages are the same, "
               "and 1 if some differ or could not be drawn.");
    return [command] { return compare(*command); };
}

}  // namespace orvlog::tool
