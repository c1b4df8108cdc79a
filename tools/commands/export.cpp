// orvlog export: logs as tables, in a database or as lines of JSON.

#include "inspect/export/export-run.h"
#include "inspect/export/schema.h"
#include "inspect/export/table-database.h"
#include "inspect/export/table-folder.h"
#include "tools/shared/command.h"
#include "tools/shared/compression-word.h"
#include "tools/shared/files-from.h"
#include "tools/shared/left-out.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/source.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::ExportResult;

struct ExportCommand
{
    std::vector<std::string> logs;
    std::string sqlite;
    std::string jsonl;
    std::string compression;
    std::vector<std::string> folders;
    orvlog::inspect::ExportOptions options;
    unsigned threads = 0;
    bool schema = false;
};

struct Counts
{
    uint64_t logs = 0;
    uint64_t rows = 0;
    uint64_t known = 0;
};

std::string name_in_rows(const std::string& log)
{
    return log == "-" ? "standard input" : std::filesystem::path(log).filename().string();
}

orvlog::inspect::ExportInput input_of(const std::string& name, orvlog::reader::LogFiles files,
                                      std::mutex& one_at_a_time)
{
    auto log = std::make_shared<std::unique_ptr<LogAgain>>();
    const auto open = [name, log, &one_at_a_time](std::string& why) -> std::unique_ptr<std::istream>
    {
        if (*log == nullptr)
        {
            // What can't be read twice is held in a file first.
            const std::lock_guard lock(one_at_a_time);
            auto again = std::make_unique<LogAgain>(name);
            if (!again->open())
            {
                why = again->why();
                return nullptr;
            }
            *log = std::move(again);
        }
        std::unique_ptr<std::istream> pass = (*log)->pass();
        why = (*log)->why();
        return pass;
    };
    return {{name_in_rows(name), std::move(files)}, open, true};
}

int tell(const std::string& log, const ExportResult& result, Counts& counts)
{
    switch (result.kind)
    {
    case ExportResult::Kind::added:
        ++counts.logs;
        counts.rows += result.rows;
        if (result.state != orvlog::inspect::JobState::whole)
            say(log + (result.state == orvlog::inspect::JobState::cut ? ": is cut short" : ": is damaged") +
                "; what is whole was exported");
        return EXIT_DONE;
    case ExportResult::Kind::known:
        ++counts.known;
        return EXIT_DONE;
    case ExportResult::Kind::no_log:
        return fail(log + ": not a log");
    case ExportResult::Kind::changed:
        return fail(log + ": changed while it was read; it was not exported");
    case ExportResult::Kind::unfinished:
    case ExportResult::Kind::failed:
        break;
    }
    return fail(log + ": " + result.why);
}

std::unique_ptr<orvlog::inspect::TableStore> make_store(const ExportCommand& command)
{
    if (!command.sqlite.empty())
        return std::make_unique<orvlog::inspect::TableDatabase>(command.sqlite);
    return std::make_unique<orvlog::inspect::TableFolder>(command.jsonl, read_compression(command.compression));
}

std::string counted(uint64_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

int export_logs(const ExportCommand& command)
{
    if (command.schema)
    {
        put(orvlog::inspect::schema_json() + "\n");
        return finish_output(EXIT_DONE);
    }
    if (command.logs.empty() || command.sqlite.empty() == command.jsonl.empty())
    {
        fail(command.logs.empty() ? "export: which logs? (see orvlog export --help)"
                                  : "export: into --sqlite FILE or --jsonl DIR? (see orvlog export --help)");
        return EXIT_BAD_USE;
    }
    if (!command.compression.empty() && command.jsonl.empty())
    {
        fail("export: --compress is for --jsonl");
        return EXIT_BAD_USE;
    }
    if (is_left_out(command.compression))
        return left_out("Zstandard", "--compress zstd");
    if (const orvlog::reader::LogFiles given("-", command.folders); !given.why().empty())
        return fail(given.why());
    const std::unique_ptr<orvlog::inspect::TableStore> store = make_store(command);
    std::mutex one_at_a_time;
    std::vector<orvlog::inspect::ExportInput> inputs;
    for (const std::string& log : command.logs)
        inputs.push_back(input_of(log, orvlog::reader::LogFiles(log, command.folders), one_at_a_time));
    Counts counts;
    int status = EXIT_DONE;
    Progress progress(command.logs.size());
    orvlog::inspect::ExportPlan plan;
    plan.options = command.options;
    plan.threads = command.threads != 0 ? command.threads : std::max(1U, std::thread::hardware_concurrency());
    plan.on_result = [&](size_t input, const ExportResult& result)
    {
        status = std::max(status, tell(command.logs[input], result, counts));
        inputs[input].open = {};
        progress.show(input + 1);
        return true;
    };
    run_export(inputs, *store, plan);
    Progress::clear();
    put(counted(counts.logs, "log", "logs") + " exported, " + counted(counts.rows, "row", "rows") +
        (counts.known > 0 ? "; " + std::to_string(counts.known) + " there already" : "") + "\n");
    return finish_output(status);
}

}  // namespace

Run declare_export(CLI::App& app)
{
    auto command = std::make_shared<ExportCommand>();
    app.add_option("LOG", command->logs, "the logs: paths, URLs, or - for standard input");
    auto* sqlite = app.add_option("--sqlite", command->sqlite, "add the rows to this database of SQLite");
    sqlite->type_name("FILE");
    app.add_option("--jsonl", command->jsonl, "add the rows to the files of this folder, one for each table")
        ->type_name("DIR")
        ->excludes(sqlite);
    app.add_option("--compress", command->compression, "how the files of a new folder are compressed")
        ->check(CLI::IsMember({"none", "gzip", "zstd"}));
    app.add_flag("--texts", command->options.texts, "with what texts say, and which glyphs they take");
    app.add_flag("--content", command->options.content,
                 "with each segment of paths, and with bytes of images and profiles");
    add_files_from(app, command->folders);
    app.add_option("--threads", command->threads, "logs that are read side by side")
        ->type_name("N")
        ->check(CLI::Range(1, 64));
    app.add_flag("--schema", command->schema, "write the tables, their columns, keys and units as JSON instead");
    app.footer(
        "Writes jobs, pages, calls and all that is in them as rows of tables. Each log is there once, by the hash "
        "of its text, and whole or not at all, whenever the command is ended: the same command goes on where it "
        "was. What is cut short or damaged is exported as far as it is whole, with the damage as rows. Without "
        "--texts and --content no text and no pixel of a job is in the rows.");
    return [command] { return export_logs(*command); };
}

}  // namespace orvlog::tool
