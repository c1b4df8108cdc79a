// orvlog to-c: a log as a program in C that makes the same calls.

#include "clients/command-line/number-range.h"
#include "clients/replay/replay.h"
#include "clients/system/system.h"
#include "clients/system/unfinished.h"
#include "inspect/c-source/c-program.h"
#include "inspect/reduce/keep-plan.h"
#include "inspect/reduce/trimmed-text.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/new-log.h"
#include "tools/shared/output.h"
#include "tools/shared/temporary-folder.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;
using command_line::NumberRange;
using orvlog::inspect::CallTag;
using orvlog::inspect::CDataKind;

struct ToCCommand
{
    std::string log;
    std::string output;
    std::vector<std::string> pages;
    std::vector<std::string> ids;
    std::vector<std::string> folders;
};

// Part of a log: pages and paints that are wanted, and whether they were met.
class Part
{
public:
    explicit Part(const ToCCommand& command)
    {
        for (const std::string& text : command.pages)
            command_line::read_pages(text, &ranges_.emplace_back(Range{{}, "page " + text, true}).range);
        for (const std::string& text : command.ids)
            command_line::read_ids(text, &ranges_.emplace_back(Range{{}, "paint " + text, false}).range);
    }
    bool is_all() const
    {
        return ranges_.empty();
    }
    bool holds(const CallTag& call)
    {
        bool wanted = false;
        for (Range& one : ranges_)
        {
            const bool has_number = one.of_pages ? call.page != 0 : call.id.has_value();
            const bool meets = has_number && one.range.holds(one.of_pages ? call.page : *call.id);
            one.met |= meets;
            wanted |= meets;
        }
        return wanted;
    }
    // Empty if all was met.
    std::string lacking() const
    {
        for (const Range& one : ranges_)
            if (!one.met)
                return "no " + one.text;
        return {};
    }

private:
    struct Range
    {
        NumberRange range;
        std::string text;
        bool of_pages = false;
        bool met = false;
    };

    std::vector<Range> ranges_;
};

// The files beside the source, made when something is put into them. None is overwritten; those that were made go
// unless `keep` is called.
class DataFiles
{
public:
    explicit DataFiles(const fs::path& source) : folder_(source.parent_path())
    {
        const std::string stem = source.stem().string();
        names = {stem + "-images.bin", stem + "-profiles.bin", stem + "-glyphs.bin"};
    }
    DataFiles(const DataFiles&) = delete;
    DataFiles& operator=(const DataFiles&) = delete;
    ~DataFiles()
    {
        std::error_code none;
        for (const std::string& path : made_)
            fs::remove(path, none);
        system::forget_files_beside();
    }

    // Throws std::runtime_error if it can't be written.
    uint64_t put(CDataKind kind, std::span<const uint8_t> bytes)
    {
        One& file = files_[static_cast<size_t>(kind)];
        if (file.stream == nullptr)
            make(kind, file);
        const uint64_t from = file.size;
        file.size += bytes.size();
        if (std::fwrite(bytes.data(), 1, bytes.size(), file.stream.get()) != bytes.size())
            throw std::runtime_error(path(kind) + ": " + std::strerror(errno) + "; nothing was written");
        return from;
    }
    // False if something could not be written; the reason is the error variable's.
    bool close()
    {
        bool whole = true;
        for (One& one : files_)
            whole = (one.stream == nullptr || std::fclose(one.stream.release()) == 0) && whole;
        return whole;
    }
    void keep()
    {
        made_.clear();
    }

    std::array<std::string, 3> names;

private:
    struct Close
    {
        void operator()(std::FILE* file) const
        {
            std::fclose(file);
        }
    };
    struct One
    {
        std::unique_ptr<std::FILE, Close> stream;
        uint64_t size = 0;
    };

    std::string path(CDataKind kind) const
    {
        return (folder_ / names[static_cast<size_t>(kind)]).string();
    }
    void make(CDataKind kind, One& file)
    {
        file.stream.reset(system::create_file(path(kind)));
        if (file.stream == nullptr)
            throw std::runtime_error(path(kind) + ": " + std::strerror(errno) + "; nothing was written");
        system::note_file_beside(path(kind));
        made_.push_back(path(kind));
    }

    fs::path folder_;
    std::array<One, 3> files_;
    std::vector<std::string> made_;
};

class ToCJob
{
public:
    explicit ToCJob(const ToCCommand& command)
        : command_(command), log_(command.log), files_(command.log, command.folders), part_(command)
    {
    }

    int run()
    {
        if (!files_.why().empty())
            return fail(files_.why());
        if (!log_.open())
            return fail(command_.log + ": " + log_.why());
        if (is_same_file(command_.output, command_.log))
            return fail(command_.output + ": is the log");
        std::string path = command_.log;
        if (!part_.is_all())
        {
            path = folder_.path("part.xml");
            if (const int status = make_part(path); status != EXIT_DONE)
                return status;
        }
        return write(path);
    }

private:
    // The log of what is wanted, with all bytes in it.
    int make_part(const std::string& path)
    {
        Progress progress(2 * log_.size());
        orvlog::inspect::KeepPlan plan([this](const CallTag& call) { return part_.holds(call); }, true);
        const std::unique_ptr<std::istream> source = log_.pass();
        if (source == nullptr)
            return fail(command_.log + ": " + log_.why());
        orvlog::inspect::LogScan scan(*source);
        for (orvlog::reader::Event event; scan.next(event);)
        {
            plan.event(event, scan.text());
            progress.show(scan.bytes_used());
        }
        plan.finish();
        if (!scan.is_log())
            return fail(command_.log + ": not a log");
        if (const std::string lacking = part_.lacking(); !lacking.empty())
            return fail(command_.log + ": has " + lacking);
        const std::unique_ptr<std::istream> again = log_.pass();
        if (again == nullptr)
            return fail(command_.log + ": " + log_.why());
        orvlog::inspect::TrimOptions options;
        options.plan = &plan;
        options.open_file = [this](const std::string& name, orvlog::reader::LogFileKind kind)
        { return files_.open(name, kind); };
        options.complain = [this](const std::string& line) { complain(line); };
        orvlog::inspect::TrimmedText text(*again, std::move(options));
        std::istream stream(&text);
        stream.exceptions(std::ios::badbit);
        const std::string why = write_new_log(stream, path, [&] { progress.show(log_.size() + text.bytes_used()); });
        if (!why.empty())
            return fail(why);
        missing_ += text.missing();
        damage_ += text.damage();
        cut_ = text.is_cut();
        return EXIT_DONE;
    }

    int write(const std::string& path)
    {
        LogAgain log(part_.is_all() ? command_.log : path);
        LogAgain& source = part_.is_all() ? log_ : log;
        if (!part_.is_all() && !log.open())
            return fail(path + ": " + log.why());
        const orvlog::replay::LogKind kind = orvlog::replay::examine(source.from_start());
        if (!kind.is_log)
            return fail(command_.log + ": not a log");
        const fs::path target(command_.output);
        DataFiles data(target);
        orvlog::inspect::CProgramOptions options;
        options.files = files_;
        options.log = fs::path(command_.log).filename().string();
        options.version = ORVLOG_VERSION;
        options.stem = target.stem().string();
        options.data_files = data.names;
        options.put = [&data](CDataKind which, std::span<const uint8_t> bytes) { return data.put(which, bytes); };
        options.complain = [this](const std::string& line) { complain(line); };
        Progress progress(source.size());
        options.progress = [&progress](uint64_t done) { progress.show(done); };
        orvlog::inspect::CProgram program(kind, options);
        const std::string calls = folder_.path("calls.c");
        std::ofstream body(calls, std::ios::binary);
        program.write_calls(source.from_start(), body);
        body.close();
        if (!body || !data.close())
            return fail(command_.output + ": " + std::strerror(errno));
        if (const std::string why = put_together(program, calls); !why.empty())
            return fail(why);
        data.keep();
        return finish(program.outcome());
    }

    std::string put_together(const orvlog::inspect::CProgram& program, const std::string& calls) const
    {
        Output output(command_.output);
        if (!output.open())
            return command_.output + ": " + std::strerror(errno);
        const std::string head = program.head();
        const std::string tail = program.tail();
        output.write(head.data(), head.size());
        std::ifstream body(calls, std::ios::binary);
        std::vector<char> block(1U << 16);
        while (body.read(block.data(), static_cast<std::streamsize>(block.size())), body.gcount() > 0)
            output.write(block.data(), static_cast<size_t>(body.gcount()));
        output.write(tail.data(), tail.size());
        return output.finish() ? "" : command_.output + ": " + std::strerror(errno);
    }

    int finish(const orvlog::inspect::CProgramOutcome& outcome) const
    {
        Progress::make_way_for_output();
        std::fprintf(stderr, "%llu calls\n", static_cast<unsigned long long>(outcome.calls));
        int status = EXIT_DONE;
        const auto lack = [&](const std::string& line) { status = fail(command_.log + ": " + line); };
        if (outcome.not_made > 0)
            lack(std::to_string(outcome.not_made) + " calls and callbacks can't be made again; the program is without "
                                                    "them");
        if (const uint64_t missing = missing_ + outcome.missing; missing > 0)
            lack("lacks data in " + std::to_string(missing) + " places; the program has zeros there");
        if (cut_ || outcome.cut)
            lack("is cut short; the program makes the calls that it has");
        else if (const uint64_t damage = damage_ + outcome.damage; damage > 0)
            lack("is damaged in " + std::to_string(damage) + " places; the program makes what could be read");
        return status;
    }

    void complain(const std::string& line)
    {
        constexpr size_t kMost = 100;
        if (said_.size() < kMost && said_.insert(line).second)
            say(printable(command_.log + ": " + line));
    }

    const ToCCommand& command_;
    LogAgain log_;
    orvlog::reader::LogFiles files_;
    Part part_;
    TemporaryFolder folder_;
    std::set<std::string> said_;
    uint64_t missing_ = 0;
    uint64_t damage_ = 0;
    bool cut_ = false;
};

int to_c(const ToCCommand& command)
{
    if (command.output != "-")
        try
        {
            return ToCJob(command).run();
        }
        catch (const std::runtime_error& error)
        {
            return fail(error.what());
        }
    std::fprintf(stderr, "orvlog to-c: the source has files beside it; name a file (see orvlog to-c --help)\n");
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_to_c(CLI::App& app)
{
    auto command = std::make_shared<ToCCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded; a path, or - for standard input")->required();
    app.add_option("-o,--output", command->output, "the source; image data, profiles and large glyphs lie beside it")
        ->required()
        ->type_name("FILE");
    const auto list = [&app](const char* name, std::vector<std::string>& values, const char* meaning,
                             std::string (*check)(const std::string&)) {
        app.add_option(name, values, meaning)
            ->type_name("A-B,...")
            ->delimiter(',')
            ->take_all()
            ->expected(1)
            ->check(check);
    };
    list("--pages", command->pages, "only what is on these pages, from 1", command_line::check_pages);
    list("--ids", command->ids, "only the paints of these ids", command_line::check_ids);
    add_files_from(app, command->folders);
    app.footer("Writes a program in C11 that makes the calls of the log on the logger, with nothing but the installed "
               "headers. A renderer within it asks for images and glyphs as the job's renderer did, so that the "
               "program writes the same log, byte for byte. Its first lines say how it is compiled and run.\n\n"
               "With --pages or --ids the program has what a log would have that orvlog trim makes.\n\n"
               "Files beside the source are named after it; none is overwritten.");
    return [command] { return to_c(*command); };
}

}  // namespace orvlog::tool
