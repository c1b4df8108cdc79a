// orvlog check: whether a log holds together.

#include "inspect/repack/index-check.h"
#include "reader/check/log-check.h"
#include "reader/text/log-files.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/look.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::reader::CheckOutcome;
using orvlog::reader::Finding;

struct CheckCommand
{
    std::string log;
    std::vector<std::string> folders;
    bool json = false;
    bool no_files = false;
    bool strict = false;
    bool all = false;
};

// Findings that differ by nothing but numbers are of one kind.
std::string kind_of(const Finding& finding)
{
    std::string kind(1, finding.note ? 'n' : 'e');
    for (const char c : finding.text.substr(0, 200))
    {
        const bool digit = c >= '0' && c <= '9';
        if (!digit || kind.back() != '#')
            kind += digit ? '#' : c;
    }
    return kind;
}

// Writes findings as they come, the first of each kind only, and then how many more there were.
class Findings
{
public:
    explicit Findings(const CheckCommand& command) : command_(command) {}

    void add(const Finding& finding)
    {
        Kind& kind = kinds_.size() < kMostKinds ? kinds_[kind_of(finding)] : known(kind_of(finding));
        if (kind.count == 0)
        {
            kind.first = finding;
            kind.place = ++places_;
        }
        ++kind.count;
        if (command_.all || kind.count <= kMostOfAKind)
            write(finding, 0);
    }

    void finish()
    {
        std::map<size_t, const Kind*> in_order;
        for (const auto& [name, kind] : kinds_)
            if (!command_.all && kind.count > kMostOfAKind)
                in_order[kind.place] = &kind;
        if (!command_.all && others_.count > kMostOfAKind)
            in_order[others_.place] = &others_;
        for (const auto& [place, kind] : in_order)
            write(kind->first, kind->count - kMostOfAKind);
        if (command_.json)
            put(first_ ? "[]\n" : "\n]\n");
    }

private:
    static constexpr uint64_t kMostOfAKind = 10;
    static constexpr size_t kMostKinds = 1000;

    struct Kind
    {
        Finding first;
        uint64_t count = 0;
        size_t place = 0;
    };

    Kind& known(const std::string& name)
    {
        const auto found = kinds_.find(name);
        return found != kinds_.end() ? found->second : others_;
    }

    // `more` is how many like this one are not written.
    void write(const Finding& finding, uint64_t more)
    {
        if (command_.json)
            write_object(finding, more);
        else if (more == 0)
            put("line " + std::to_string(finding.place.line) + (finding.note ? ": note: " : ": ") +
                printable(finding.text) + "\n");
        else
            put(std::to_string(more) + " more like line " + std::to_string(finding.place.line) +
                (finding.note ? ": note: " : ": ") + printable(finding.text) + "\n");
        first_ = false;
    }

    void write_object(const Finding& finding, uint64_t more)
    {
        ordered_json object;
        object["line"] = finding.place.line;
        object["byte"] = finding.place.byte;
        object["text"] = finding.text;
        if (finding.note)
            object["note"] = true;
        if (more > 0)
            object["more"] = more;
        put((first_ ? "[\n" : ",\n") + json_text(object));
    }

    const CheckCommand& command_;
    std::map<std::string, Kind> kinds_;
    Kind others_;  // all that are of no kind that is known
    size_t places_ = 0;
    bool first_ = true;
};

// What is wrong with the index of a repacked log.
std::vector<std::string> faults_of_index(const std::string& log)
{
    std::error_code none;
    if (log == "-" || !std::filesystem::is_regular_file(log, none))
        return {};
    std::ifstream file(log, std::ios::binary);
    std::string why;
    const std::optional<orvlog::reader::LogIndex> index = orvlog::reader::read_log_index(file, why);
    if (!index)
        return why.empty() ? std::vector<std::string>() : std::vector<std::string>{why};
    const std::unique_ptr<std::istream> text = orvlog::reader::open_log(log);
    return text != nullptr ? orvlog::inspect::check_index(*text, *index) : std::vector<std::string>();
}

int check(const CheckCommand& command)
{
    const orvlog::reader::LogFiles files(command.log, command.folders);
    if (!files.why().empty())
        return fail(files.why());
    LogInput input(command.log);
    if (!input.open())
        return input.fail_to_open();
    Findings findings(command);
    orvlog::reader::CheckOptions options;
    options.on_finding = [&findings](const Finding& finding) { findings.add(finding); };
    if (!command.no_files)
        options.open_file = [&files](const std::string& name, orvlog::reader::LogFileKind kind)
        { return files.open(name, kind); };
    options.progress = [&input](uint64_t done) { input.show(done); };
    const CheckOutcome outcome = orvlog::reader::check_log(input.stream(), options);
    if (!outcome.is_log)
        return input.fail_as_no_log();
    const std::vector<std::string> faults = faults_of_index(command.log);
    for (const std::string& fault : faults)
        findings.add({{0, 1}, fault});
    findings.finish();
    const bool good = outcome.errors == 0 && faults.empty() && (!command.strict || outcome.notes == 0);
    return finish_output(good ? EXIT_DONE : EXIT_FAILED);
}

}  // namespace

Run declare_check(CLI::App& app)
{
    auto command = std::make_shared<CheckCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_flag("--no-files", command->no_files, "don't look for the files that the log names");
    add_files_from(app, command->folders);
    app.add_flag("--strict", command->strict, "fail for notes, too");
    app.add_flag("--all", command->all, "write each finding, however many there are of its kind");
    app.add_flag("--json", command->json, "write an array of objects instead");
    app.footer(
        "Writes a line for each finding: damaged text, numbers out of order, documents, drawings, groups and "
        "resources that are not begun or not ended, engines, images and tickets that are not known, images and "
        "buffers with too few bytes, files beside the log that are missing, too short, or not to be read, and the "
        "index of a repacked log if it isn't that of its text. "
        "A finding that a sound log may have, too, is a note: numbers that are not finite, empty clips, images "
        "and tickets that their client ended early, paints without effect or far beyond their page, and groups "
        "that nothing is drawn into. Of findings that differ by nothing but numbers the first "
        "ten are written, and behind all others how many more there are.\n\nThe exit status is 0 if there is "
        "no error, and 1 if there is one, or if it is no log.");
    return [command] { return check(*command); };
}

}  // namespace orvlog::tool
