#include "inspect/export/schema.h"

#include "inspect/export/schema-columns.h"

#include <nlohmann/json.hpp>

#include <array>

namespace orvlog::inspect
{

namespace
{

constexpr std::array<TableForm, kTables> kForms = {{
    {"jobs", "a log", 1, columns::kJobs, false},
    {"pages", "a page", 2, columns::kPages, false},
    {"calls", "a call", 2, columns::kCalls, false},
    {"operators", "an operator of a call", 3, columns::kOperators, false},
    {"operands", "an operand of a call", 3, columns::kOperands, false},
    {"colours", "a colour", 3, columns::kColours, false},
    {"paths", "a path of a shape", 3, columns::kPaths, false},
    {"shapes", "a shape of a call", 3, columns::kShapes, false},
    {"clips", "a list of a clip", 3, columns::kClips, false},
    {"images", "an image operand", 3, columns::kImages, false},
    {"engines", "a font engine that a call brings", 3, columns::kEngines, false},
    {"fonts", "the font of a text", 3, columns::kFonts, false},
    {"texts", "a text", 3, columns::kTexts, false},
    {"glyphs", "a glyph that an engine delivered", 3, columns::kGlyphs, false},
    {"tickets", "a colour ticket that a call brings", 3, columns::kTickets, false},
    {"warnings", "a warning of the logger", 3, columns::kWarnings, false},
    {"damage", "a place where the log is damaged or ends early", 3, columns::kDamage, false},
    {"segments", "a segment of a path", 3, columns::kSegments, true},
    {"bytes", "a piece of the bytes of an image, a profile, a table or a glyph", 3, columns::kBytes, true},
}};

}  // namespace

std::span<const TableForm> table_forms()
{
    return kForms;
}

std::string_view type_name(ColumnType type)
{
    constexpr std::array<std::string_view, 3> kNames = {"text", "integer", "real"};
    return kNames[static_cast<size_t>(type)];
}

std::string schema_json()
{
    using nlohmann::ordered_json;
    ordered_json object;
    object["version"] = kTablesVersion;
    object["tables"] = ordered_json::array();
    for (const TableForm& form : table_forms())
    {
        ordered_json columns = ordered_json::array();
        for (const Column& column : form.columns)
            columns.push_back({{"name", column.name},
                               {"type", type_name(column.type)},
                               {"null", column.may_be_null},
                               {"meaning", column.meaning}});
        ordered_json key = ordered_json::array();
        for (const Column& column : form.columns.first(form.key))
            key.push_back(column.name);
        object["tables"].push_back({{"name", form.name},
                                    {"meaning", form.meaning},
                                    {"key", key},
                                    {"content", form.of_content},
                                    {"columns", columns}});
    }
    return object.dump(2);
}

}  // namespace orvlog::inspect
