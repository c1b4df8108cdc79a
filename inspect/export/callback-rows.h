// Rows of the callbacks in a call: glyphs; and which engine was asked for which font.

#pragma once

#include "inspect/export/export-job.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

// A font as an engine knows it.
struct FontUse
{
    int64_t engine = 0;
    std::optional<int64_t> font;
};

class CallbackRows
{
public:
    explicit CallbackRows(ExportJob& job) : job_(job) {}

    // Looks for the fonts that are asked for within an element of the root.
    void start(const orvlog::reader::Element& element);
    // The rows of a callback.
    void write(const orvlog::reader::Element& callback);
    uint64_t count() const
    {
        return count_;
    }

    // Of a font of the element that was started last; null if it was never asked for.
    const FontUse* font(int64_t font_spec) const;
    // An engine's name, which the log's calls tell.
    void note_engine(int64_t engine, std::string_view name);
    std::optional<std::string_view> engine_name(int64_t engine) const;

private:
    struct String
    {
        std::optional<int64_t> string_desc;
        std::optional<int64_t> glyph;
    };

    void look_for_fonts(const orvlog::reader::Element& element);
    void glyph(const orvlog::reader::Element& callback, const orvlog::reader::Element& holder);

    static constexpr size_t kMostEngines = 1 << 16;
    static constexpr size_t kLongestName = 200;

    ExportJob& job_;
    std::map<int64_t, FontUse> fonts_;   // of the call
    std::map<int64_t, String> strings_;  // of the call, that an engine is asked about
    std::map<int64_t, std::string> engines_;
    uint64_t count_ = 0;
};

}  // namespace orvlog::inspect
