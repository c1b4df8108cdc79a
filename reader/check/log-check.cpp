#include "reader/check/log-check.h"

#include "reader/check/check-calls.h"
#include "reader/check/check-images.h"
#include "reader/check/check-paints.h"
#include "reader/look/call-box.h"
#include "reader/look/call-in-flight.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

constexpr uint32_t kDeepest = 4096;
constexpr size_t kWholeRows = 1 << 16;  // longer ones are not kept whole
constexpr GGO_Matrix kIdentity = {{1, 0, 0, 1, 0, 0}};

// "nan", "-nan", "inf", "-inf".
bool is_no_number(std::string_view word)
{
    if (word.starts_with('-'))
        word.remove_prefix(1);
    return word == "nan" || word == "inf";
}

bool is_number_start(char c)
{
    return (c >= '0' && c <= '9') || c == '-' || c == 'n' || c == 'i';
}

// Numbers of which one is none.
bool has_no_number(std::string_view value)
{
    if (value.empty() || !is_number_start(value[0]) || value.find('n') == std::string_view::npos)
        return false;
    bool found = false;
    while (!value.empty())
    {
        const std::string_view word = value.substr(0, value.find_first_of(" \n"));
        const bool none = is_no_number(word);
        if (!none && word.find_first_not_of("0123456789+-.e") != std::string_view::npos)
            return false;
        found |= none;
        value.remove_prefix(std::min(word.size() + 1, value.size()));
    }
    return found;
}

uint64_t count_words(std::string_view rows)
{
    uint64_t count = 0;
    bool in_word = false;
    for (const char c : rows)
    {
        const bool word = c != ' ' && c != '\n' && c != '\r';
        count += word && !in_word ? 1 : 0;
        in_word = word;
    }
    return count;
}

bool is_text_attribute(std::string_view name)
{
    return name.ends_with("Name") || name.ends_with("name") || name == "val" || name == "fp_EngineIdGet" ||
           name == "compression";
}

class Check
{
public:
    Check(const CheckOptions& options, CheckOutcome& outcome)
        : options_(options), outcome_(outcome), calls_(errors(), notes()), images_(options, errors(), notes()),
          paints_(notes())
    {
    }

    void report(Place place, std::string text)
    {
        ++outcome_.errors;
        if (options_.on_finding)
            options_.on_finding({place, std::move(text), false});
    }

    // What a sound log may have, too.
    void note(Place place, std::string text)
    {
        ++outcome_.notes;
        if (options_.on_finding)
            options_.on_finding({place, std::move(text), true});
    }

    void root(const Element& element)
    {
        if (element.value("ORVLOG_CONTENT_VERSION") != "2")
            report(element.place,
                   "the content version is '" + std::string(element.value("ORVLOG_CONTENT_VERSION")) + "', known is 2");
    }

    void element(const Element& element)
    {
        images_.start_call();
        if (is_call_name(element.name))
        {
            ++outcome_.calls;
            calls_.call(element);
            paints_.call(element);
        }
        walk(element, 0);
        images_.finish_call();
    }

    void finish()
    {
        calls_.finish();
    }

private:
    using Report = std::function<void(Place, std::string)>;

    Report errors()
    {
        return [this](Place place, std::string text) { report(place, std::move(text)); };
    }
    Report notes()
    {
        return [this](Place place, std::string text) { note(place, std::move(text)); };
    }

    void walk(const Element& element, uint32_t depth)
    {
        numbers(element);
        buffer(element);
        if (element.name.ends_with("Fn"))
        {
            if (element.name.starts_with("GFI_"))
                calls_.font_callback(element);
            else if (element.name.starts_with("GOP_Image"))
                images_.callback(element);
        }
        else if (element.name == "GOP_OperandImagePointer" && !in_callback_)
            images_.operand(element);
        else if (element.name == "GSH_ShapeList")
            clip(element);
        const bool outer = in_callback_;
        in_callback_ = in_callback_ || element.name.ends_with("Fn");
        if (depth < kDeepest)
            for (const Element& child : Children(element))
                walk(child, depth + 1);
        in_callback_ = outer;
    }

    void numbers(const Element& element)
    {
        for (const Attribute& attribute : element.attributes)
        {
            if (has_no_number(attribute.value) && !is_text_attribute(attribute.name))
                note(element.place,
                     std::string(attribute.name).append(" of ").append(element.name).append(" is not finite: ") +
                         std::string(attribute.value.substr(0, 80)));
        }
        if (element.name == "BufferFloat" && has_no_number(element.rows))
            note(element.place, "a table holds a number that is not finite");
    }

    void buffer(const Element& element)
    {
        if (!element.name.starts_with("Buffer"))
            return;
        const int64_t len = read_int(element, "len");
        const bool floats = element.name == "BufferFloat";
        const bool known = !floats || element.data_size < kWholeRows;
        const uint64_t found = floats ? count_words(element.rows) : element.data_size;
        // Tables that the client counted and didn't give are empty.
        if (!known || len < 0 || found == static_cast<uint64_t>(len) || (floats && found == 0))
            return;
        report(element.place, std::string(element.name) + " holds " + std::to_string(found) + " values, due were " +
                                  std::to_string(len));
    }

    void clip(const Element& list)
    {
        const Element* holder = list.member("sl_Shape");
        const Element* shape = holder != nullptr ? holder->child("GSH_ShapePointer") : nullptr;
        if (read_bool(list, "sl_ClipIn") == 0 || list.child("GSH_ShapeListCollection") != nullptr)
            return;
        if (shape != nullptr && is_text(*shape))
            return;
        const std::optional<GGO_BoxFloat> box = shape != nullptr ? shape_box(*shape, kIdentity) : std::nullopt;
        if (!box || !(box->gbf_MinX < box->gbf_MaxX) || !(box->gbf_MinY < box->gbf_MaxY))
            note(list.place, "a clip is empty");
    }

    const CheckOptions& options_;
    CheckOutcome& outcome_;
    CheckCalls calls_;
    CheckImages images_;
    CheckPaints paints_;
    bool in_callback_ = false;
};

}  // namespace

CheckOutcome check_log(std::istream& log, const CheckOptions& options)
{
    CheckOutcome outcome;
    Check check(options, outcome);
    ElementReader elements(log, LogForm::log, Data::heads);
    elements.split_nested = true;
    elements.on_damage = [&check](const Damage& damage) { check.report(damage.place, damage.text); };
    CallInFlight in_flight;
    while (const Element* element = elements.next())
    {
        in_flight.next(*element);
        check.element(*element);
        if (options.progress)
            options.progress(elements.events().bytes_used());
    }
    outcome.is_log = elements.events().is_log();
    if (!outcome.is_log)
        return outcome;
    check.root(elements.root());
    if (elements.events().is_cut() && !in_flight.text().empty())
        check.report(in_flight.place(), "in flight: " + in_flight.text());
    check.finish();
    return outcome;
}

}  // namespace orvlog::reader
