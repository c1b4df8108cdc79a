// Logs as rows: of a foreign text, too, each row has its columns, is sound JSON, and is the same in both forms. The
// first byte says what is asked for.

#include "fuzz/fuzz.h"
#include "inspect/export/log-rows.h"
#include "inspect/export/staged-rows.h"

#include <nlohmann/json.hpp>

#include <sstream>
#include <string>

using orvlog::fuzz::expect;
using namespace orvlog::inspect;

namespace
{

void hold_lines(StagedRows& staged, Table table)
{
    const auto place = static_cast<size_t>(table);
    std::string lines;
    staged.tables[place].read([&lines](std::string_view piece) { lines += piece; });
    std::istringstream source(lines);
    uint64_t count = 0;
    for (std::string line; std::getline(source, line); ++count)
    {
        const nlohmann::json row = nlohmann::json::parse(line, nullptr, false);
        expect(row.is_object() && row.size() == form_of(table).columns.size(), "a row is an object with all columns");
    }
    expect(count == staged.counts[place], "as many lines as rows");
}

void hold_packed(StagedRows& staged, Table table, uint64_t due)
{
    uint64_t count = 0;
    read_packed(staged, table,
                [&](std::span<const PackedValue> row)
                {
                    ++count;
                    expect(row.size() == form_of(table).columns.size(), "a packed row has all columns");
                });
    expect(count == due, "as many packed rows as lines");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    const uint8_t asked = choices.byte();
    const std::string log(choices.rest(), choices.rest() + choices.rest_size());
    ExportOptions options;
    options.texts = (asked & 1) != 0;
    options.content = (asked & 2) != 0;
    std::istringstream first(log);
    const LogKey key = read_log_key(first);
    if (!key.is_log)
        return 0;
    StagedRows lines;
    StagedRows packed;
    JsonRows json_rows(lines);
    PackedRows packed_rows(packed);
    for (RowWriter* rows : {static_cast<RowWriter*>(&json_rows), static_cast<RowWriter*>(&packed_rows)})
    {
        std::istringstream source(log);
        const RowsOutcome outcome = write_log_rows(source, key, {"log", {}}, options, *rows, {});
        if (!outcome.is_log)
            return 0;
        expect(outcome.text_bytes == key.text_bytes, "all of the text is read");
        expect(key.is_whole || outcome.state != JobState::whole, "what is cut isn't whole");
    }
    expect(lines.counts[0] == 1, "a log is a row");
    for (size_t i = 0; i < kTables; ++i)
    {
        hold_lines(lines, static_cast<Table>(i));
        hold_packed(packed, static_cast<Table>(i), lines.counts[i]);
    }
    return 0;
}
