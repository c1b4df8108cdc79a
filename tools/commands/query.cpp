// orvlog query: questions to a database of tables.

#include "inspect/export/query.h"
#include "inspect/export/questions.h"
#include "tools/query/query-output.h"
#include "tools/shared/command.h"
#include "tools/shared/look.h"

#include <memory>
#include <string>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::Question;

struct QueryCommand
{
    std::string file;
    std::string question;
    bool list = false;
    bool json = false;
    bool csv = false;
    double seconds = 60;
};

int list_questions(bool json)
{
    using nlohmann::ordered_json;
    if (json)
    {
        ordered_json list = ordered_json::array();
        for (const Question& question : orvlog::inspect::questions())
            list.push_back({{"name", question.name}, {"meaning", question.meaning}, {"sql", question.sql}});
        put(json_text(list, 2) + "\n");
        return finish_output(EXIT_DONE);
    }
    for (const Question& question : orvlog::inspect::questions())
    {
        std::string line(question.name);
        line.append(line.size() < 20 ? 20 - line.size() : 1, ' ');
        put(line.append(question.meaning).append("\n"));
    }
    return finish_output(EXIT_DONE);
}

std::string sql_of(const std::string& question)
{
    for (const Question& known : orvlog::inspect::questions())
        if (known.name == question)
            return std::string(known.sql);
    return question;
}

// A word is meant to be a name.
bool is_word(const std::string& question)
{
    return question.find_first_of(" \t\r\n(*;") == std::string::npos;
}

int query(const QueryCommand& command)
{
    if (command.list)
        return list_questions(command.json);
    const std::string sql = sql_of(command.question);
    if (command.file.empty() || command.question.empty() || (sql == command.question && is_word(sql)))
    {
        fail(command.question.empty() ? "query: which question? (orvlog query --list tells those that have a name)"
                                      : "query: no question '" + printable(command.question) +
                                            "' (orvlog query --list tells those that have a name)");
        return EXIT_BAD_USE;
    }
    const std::unique_ptr<QueryOutput> output = command.json ? json_rows() : command.csv ? csv_rows() : table_rows();
    orvlog::inspect::QueryPlan plan;
    plan.seconds = command.seconds;
    plan.on_columns = [&output](const std::vector<std::string>& columns) { output->begin(columns); };
    plan.on_row = [&output](std::span<const orvlog::inspect::QueryValue> row) { return output->row(row); };
    try
    {
        orvlog::inspect::ask(command.file, sql, plan);
    }
    catch (const orvlog::inspect::DatabaseError& error)
    {
        output->end();
        finish_output(EXIT_FAILED);
        return fail(printable(error.what()));
    }
    output->end();
    return finish_output(EXIT_DONE);
}

}  // namespace

Run declare_query(CLI::App& app)
{
    auto command = std::make_shared<QueryCommand>();
    app.add_option("FILE", command->file, "the database, as orvlog export --sqlite makes it");
    app.add_option("QUESTION", command->question, "a question in SQL, or the name of one that --list tells");
    app.add_flag("--list", command->list, "list the questions that have a name; with --json with their SQL");
    auto* json = app.add_flag("--json", command->json, "write an array of objects instead");
    app.add_flag("--csv", command->csv, "write lines of values with commas between them instead")->excludes(json);
    app.add_option("--seconds", command->seconds, "give up a question that takes longer; 0 never does")
        ->type_name("S")
        ->check(CLI::Range(0.0, 1e6))
        ->capture_default_str();
    app.footer("Asks a database of tables, which is opened for reading only: a question can change nothing, open no "
               "other file and load nothing. The tables and their columns are told in docs/tables.md, and in the table "
               "schema of the database itself.");
    return [command] { return query(*command); };
}

}  // namespace orvlog::tool
