#include "inspect/export/log-rows.h"

#include "inspect/export/byte-rows.h"
#include "inspect/export/page-clips.h"
#include "inspect/export/record-rows.h"
#include "inspect/redact/known-forms.h"
#include "reader/look/call-summary.h"
#include "reader/text/coded-input.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace orvlog::inspect
{

namespace
{

using orvlog::reader::Comment;
using orvlog::reader::Damage;
using orvlog::reader::Element;
using orvlog::reader::ElementReader;

constexpr std::string_view kWarning = "ORVLOG: WARNING: ";
constexpr std::array kVersions = {"MIRDA_TOLMA", "ORV", "TPN", "TRN", "HOLV", "GAM", "GBT", "GCA",
                                  "GCD",         "GCM", "GER", "GFI", "GFX",  "GGO", "GHT", "GIO",
                                  "GME",         "GMM", "GNC", "GOP", "GOS",  "GPA", "GSH", "GUT"};

// What is wrong, without names that only the log's job knows.
std::string damage_text(const std::string& text, bool all)
{
    const size_t begin = text.find('\'');
    const size_t end = text.rfind('\'');
    if (all || begin == end || is_known_element(std::string_view(text).substr(begin + 1, end - begin - 1)))
        return text;
    return text.substr(0, begin + 1) + "..." + text.substr(end);
}

std::optional<std::string_view> mode_of(std::string_view mode)
{
    return mode == "base" || mode == "transparent" ? std::optional(mode) : std::nullopt;
}

// A call that no log has is told by no name.
std::string_view kind_of(std::string_view kind)
{
    const std::span<const std::string_view> kinds = orvlog::reader::call_kinds();
    return std::ranges::find(kinds, kind) != kinds.end() ? kind : "other";
}

class LogRows
{
public:
    LogRows(std::istream& log, const LogKey& key, const LogOrigin& origin, const ExportOptions& options,
            RowWriter& rows)
        : job_{rows, options, key.key}, elements_(log, orvlog::reader::LogForm::log, orvlog::reader::Data::heads),
          files_(origin.files), images_(files_), bytes_(job_, images_), records_(job_, images_, bytes_.ticket_texts())
    {
        elements_.split_nested = true;
        elements_.on_damage = [this](const Damage& damage) { note(damage); };
        elements_.on_comment = [this](const Comment& comment) { note(comment); };
        elements_.on_open = [this](const Element& element, size_t depth)
        {
            // What comes while a call is read is the call's.
            if (depth == 0 && orvlog::reader::is_call_name(element.name))
                ++job_.call;
            bytes_.open(element, depth);
        };
        elements_.on_row = [this](const Element& element, std::string_view row) { bytes_.row(element, row); };
    }

    RowsOutcome write(const LogKey& key, const std::string& name, const std::function<void(uint64_t)>& progress)
    {
        while (const Element* element = elements_.next())
        {
            bytes_.finish();
            if (orvlog::reader::is_call_name(element->name))
                call(*element);
            else
                callbacks_ += records_.write(*element, page_);
            if (progress)
                progress(elements_.events().bytes_used());
        }
        RowsOutcome outcome;
        outcome.is_log = elements_.events().is_log();
        outcome.damage = damage_;
        outcome.text_bytes = elements_.events().text_bytes();
        const bool garbled = elements_.events().is_coded() && elements_.events().is_garbled();
        outcome.state = garbled || (damage_ > 0 && !elements_.events().is_cut()) ? JobState::damaged
                        : elements_.events().is_cut()                            ? JobState::cut
                                                                                 : JobState::whole;
        if (outcome.is_log)
            job(key, name, outcome.state);
        return outcome;
    }

private:
    void note(const Damage& damage)
    {
        ++damage_;
        job_.begin(Table::damage);
        job_.rows.integer(static_cast<int64_t>(damage.place.line)).integer(static_cast<int64_t>(damage.place.byte));
        job_.rows.text(damage_text(damage.text, job_.options.texts)).end();
    }

    void note(const Comment& comment)
    {
        if (!comment.warning)
        {
            ++comments_;
            return;
        }
        std::string_view text = comment.text;
        const bool told = job_.options.texts || is_known_warning(text);
        text.remove_prefix(kWarning.size());
        while (text.ends_with('\n'))
            text.remove_suffix(1);
        job_.begin(Table::warnings);
        job_.rows.integer(static_cast<int64_t>(comment.place.line)).integer(static_cast<int64_t>(comment.place.byte));
        job_.rows.text(told ? std::optional(text) : std::nullopt).end();
    }

    void call(const Element& call)
    {
        const GGO_Matrix* around = summaries_.to_pixels(call);
        std::optional<GGO_Matrix> space;
        if (around != nullptr)
            space = *around;
        const orvlog::reader::CallSummary summary = summaries_.next(call);
        const ClipView clips = clips_.next(call, space ? &*space : nullptr, summary);
        space_ = space.value_or(ggo_identity());
        page_ = {space ? &space_ : nullptr, clips.dpi_x, clips.dpi_y};
        if (call.name == "ORV_face_start")
            page(call, summary.page);
        const uint64_t callbacks = records_.write(call, page_);
        callbacks_ += callbacks;
        call_row(call, summary, clips, callbacks);
    }

    void page(const Element& call, uint32_t number)
    {
        const Element* face = call.child("ORV_FaceProperties");
        RowWriter& rows = job_.rows;
        rows.begin(Table::pages);
        rows.text(job_.key).integer(static_cast<int64_t>(job_.call)).integer(number);
        rows.integer(number_of(&call, "drawing_context")).integer(number_of(&call, "document_context"));
        const auto width = number_of(face, "fp_WidthInPixels");
        const auto height = number_of(face, "fp_HeightInPixels");
        rows.integer(width).integer(height);
        const auto inches = [](std::optional<int64_t> pixels, double dpi)
        { return pixels && dpi > 0 ? std::optional(static_cast<double>(*pixels) / dpi) : std::nullopt; };
        rows.real(inches(width, page_.dpi_x)).real(inches(height, page_.dpi_y));
        rows.real(page_.dpi_x > 0 ? std::optional(page_.dpi_x) : std::nullopt);
        rows.real(page_.dpi_y > 0 ? std::optional(page_.dpi_y) : std::nullopt);
        rows.integer(flags_of(face, "fp_FaceHints")).text(name_of(&call, "pixel_placement"));
        rows.text(name_of(&call, "pixel_placement_orientation")).end();
        ++pages_;
    }

    void call_row(const Element& call, const orvlog::reader::CallSummary& summary, const ClipView& clips,
                  uint64_t callbacks)
    {
        const auto either = [&call](const char* one, const char* other, auto* read)
        {
            const auto value = read(&call, one);
            return value ? value : read(&call, other);
        };
        RowWriter& rows = job_.rows;
        rows.begin(Table::calls);
        rows.text(job_.key).integer(static_cast<int64_t>(job_.call)).text(kind_of(summary.kind));
        rows.integer(number_of(&call, "id"));
        rows.integer(summary.page != 0 ? std::optional<int64_t>(summary.page) : std::nullopt);
        rows.integer(number_of(&call, "drawing_context")).integer(number_of(&call, "document_context"));
        rows.integer(number_of(&call, "resource_id")).integer(static_cast<int64_t>(call.place.line));
        rows.integer(static_cast<int64_t>(call.place.byte));
        rows.integer(static_cast<int64_t>(elements_.end_of_element() - call.place.byte));
        rows.integer(static_cast<int64_t>(callbacks));
        rows.integer(either("object_type_and_flag", "fill_object_type", number_of));
        rows.integer(either("object_hints", "hints", flags_of)).integer(flags_of(&call, "paint_flags"));
        rows.text(name_of(&call, "group_type")).integer(number_of(&call, "group_unique_id"));
        rows.integer(call.has("drawing_context") ? std::optional(static_cast<int64_t>(clips.depth)) : std::nullopt);
        put_box(rows, summary.box);
        put_box(rows, clips.box);
        rows.integer(clips.shut ? std::optional<int64_t>(*clips.shut ? 1 : 0) : std::nullopt);
        rows.integer(call.implied_end ? 0 : 1).end();
    }

    void job(const LogKey& key, const std::string& name, JobState state)
    {
        constexpr std::array<std::string_view, 3> kStates = {"whole", "cut", "damaged"};
        const Element& root = elements_.root();
        const orvlog::reader::LogEvents& events = elements_.events();
        RowWriter& rows = job_.rows;
        rows.begin(Table::jobs);
        rows.text(key.key).integer(kTablesVersion).text(name).text(events.is_coded() ? "coded" : "plain");
        rows.integer(events.is_compressed() ? 1 : 0).integer(static_cast<int64_t>(events.bytes_used()));
        rows.integer(static_cast<int64_t>(events.text_bytes())).text(kStates[static_cast<size_t>(state)]);
        rows.integer(job_.options.texts ? 1 : 0).integer(job_.options.content ? 1 : 0);
        rows.text(mode_of(root.value("LoggingMode"))).integer(number_of(&root, "ORVLOG_CONTENT_VERSION"));
        for (const char* version : kVersions)
            rows.integer(number_of(&root, std::string(version) + "_VERSION"));
        rows.integer(pages_).integer(static_cast<int64_t>(job_.call)).integer(static_cast<int64_t>(callbacks_));
        rows.integer(static_cast<int64_t>(comments_)).integer(static_cast<int64_t>(bytes_.image_bytes()));
        rows.integer(static_cast<int64_t>(bytes_.side_file_bytes())).end();
    }

    ExportJob job_;
    ElementReader elements_;
    BesideFiles files_;
    ImageBytes images_;
    ByteRows bytes_;
    RecordRows records_;
    orvlog::reader::CallSummaries summaries_;
    PageClips clips_;
    GGO_Matrix space_{};
    RecordRows::Page page_;
    int64_t pages_ = 0;
    uint64_t callbacks_ = 0;
    uint64_t comments_ = 0;
    uint64_t damage_ = 0;
};

}  // namespace

LogKey read_log_key(std::istream& log)
{
    orvlog::reader::CodedInput text(log);
    Digest digest;
    LogKey key;
    std::vector<char> piece(1 << 16);
    for (size_t got = 0; (got = text.read(piece.data(), piece.size())) > 0;)
    {
        digest.add(std::string_view(piece.data(), got));
        key.text_bytes += got;
    }
    key.is_log = text.ending() != orvlog::reader::Ending::not_a_log && text.ending() != orvlog::reader::Ending::other;
    key.is_whole = text.ending() == orvlog::reader::Ending::whole;
    key.key = digest.take();
    return key;
}

RowsOutcome write_log_rows(std::istream& log, const LogKey& key, const LogOrigin& origin, const ExportOptions& options,
                           RowWriter& rows, const std::function<void(uint64_t)>& progress)
{
    LogRows log_rows(log, key, origin, options, rows);
    return log_rows.write(key, origin.name, progress);
}

}  // namespace orvlog::inspect
