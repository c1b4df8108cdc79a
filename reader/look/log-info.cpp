#include "reader/look/log-info.h"

#include "reader/look/call-summary.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>

namespace orvlog::reader
{

namespace
{

constexpr size_t kMostPages = 1000;
constexpr size_t kMostDamage = 100;
constexpr size_t kMostComments = 20;
constexpr size_t kMostCommentSize = 200;
constexpr size_t kMostText = 1000;
constexpr uint32_t kMostDepth = LogEvents::kDeepest;

class Counter
{
public:
    explicit Counter(LogInfo& info) : info_(info) {}

    void call(const Element& call)
    {
        if (is_call_name(call.name))
            info_.calls.add(call.name.substr(4));
        if (call.value("font_engine_functions") == "TRUE")
            info_.engines.add(to_text(call.value("fp_EngineIdGet")));
        if (call.name == "ORV_face_start")
            page(call);
        // What stands in the root and is no call belongs to the call before it.
        if (is_call_name(call.name))
            inside(call, 0);
        else
            element(call, 0);
    }

private:
    void page(const Element& call)
    {
        PageRun run;
        run.first = run.last = ++info_.pages;
        if (const Element* face = call.child("ORV_FaceProperties"); face != nullptr)
        {
            const GGO_Matrix matrix = read_matrix(*face, "fp_FaceInchToPixels");
            run.width = read_uint(*face, "fp_WidthInPixels");
            run.height = read_uint(*face, "fp_HeightInPixels");
            run.dpi_x = std::hypot(matrix.m[0], matrix.m[2]);
            run.dpi_y = std::hypot(matrix.m[1], matrix.m[3]);
            run.width_inches = run.dpi_x > 0 ? run.width / run.dpi_x : 0;
            run.height_inches = run.dpi_y > 0 ? run.height / run.dpi_y : 0;
        }
        if (!info_.sizes.empty() && info_.sizes.back().same_size(run) && info_.sizes.back().last + 1 == run.first)
            info_.sizes.back().last = run.last;
        else if (info_.sizes.size() < kMostPages)
            info_.sizes.push_back(run);
    }

    void inside(const Element& around, uint32_t depth)
    {
        for (const Element& child : Children(around))
            element(child, depth);
    }

    void element(const Element& element, uint32_t depth)
    {
        if (element.name.ends_with("Fn"))
        {
            callback(element);
            return;
        }
        if (element.name == "GCM_ColorTicket")
            ticket(element);
        else if (element.name == "GOP_OperandImagePointer")
            image(element);
        else if (element.name == "GSH_ShapePointer")
            info_.strings += element.member("sp_U.glyph") != nullptr ? 1 : 0;
        record(element.name);
        if (depth < kMostDepth)
            inside(element, depth + 1);
    }

    void record(std::string_view name)
    {
        RecordCounts& records = info_.records;
        records.operators += name == "GOP_Operator" ? 1 : 0;
        records.operands += name.starts_with("GOP_Operand") && name.ends_with("Pointer") ? 1 : 0;
        records.colours += name == "GBC_Color" ? 1 : 0;
        records.paths += name == "GPA_PathPointer" ? 1 : 0;
        records.shapes += name == "GSH_ShapePointer" ? 1 : 0;
        records.clips += name == "GSH_ShapeList" ? 1 : 0;
        records.fonts += name == "GFI_FontSpecPointer" ? 1 : 0;
    }

    void callback(const Element& element)
    {
        info_.callbacks.add(element.name);
        info_.kept_logs += element.has("async_img_log_file_name") ? 1 : 0;
        const Element* pointer = element.child("GFI_GlyphDescPointer");
        const Element* holder = pointer != nullptr ? pointer->member("gdp_GlyphDesc") : nullptr;
        if (holder != nullptr && holder->first != nullptr)
            info_.glyphs.add(holder->first->name);
        if (element.name != "GOP_ImageReadFn")
            return;
        const Element* bytes = element.child("img_buf");
        const Element* buffer = bytes != nullptr ? bytes->child("BufferUInt8") : nullptr;
        info_.image_bytes += buffer != nullptr ? buffer->data_size : 0;
        const int32_t returned = read_int(element, "img_returned");
        info_.side_file_bytes += element.has("ImageFileName") && returned > 0 ? static_cast<uint64_t>(returned) : 0;
    }

    void image(const Element& element)
    {
        info_.images.add(image_text(element));
        info_.direct_images += read_bool(element, "imp_DirectImage");
        const Element* data = element.child("imp_DirectImageData");
        const Element* buffer = data != nullptr ? data->child("BufferUInt8") : nullptr;
        info_.image_bytes += buffer != nullptr ? buffer->data_size : 0;
    }

    void ticket(const Element& element)
    {
        ++info_.ticket_uses;
        const Element* text = element.child("GXC_ColorTickets");
        if (text == nullptr)
            return;
        const std::string_view rows = text->rows;
        constexpr std::string_view kEnd = "RenderColorSpace>";
        const size_t at = rows.find(kEnd);
        const size_t begin = at != std::string_view::npos ? rows.rfind('<', at) : at;
        info_.tickets.add(begin != std::string_view::npos ? rows.substr(begin + 1, at - begin - 1) : "no family");
    }

    LogInfo& info_;
};

}  // namespace

void TextCounts::add(std::string_view text, size_t most)
{
    text = text.substr(0, kMostText);
    const auto known = texts.find(text);
    if (known != texts.end())
        ++known->second;
    else if (texts.size() < most)
        texts.emplace(text, 1);
    else
        ++others;
}

uint64_t TextCounts::all() const
{
    uint64_t count = others;
    for (const auto& [text, times] : texts)
        count += times;
    return count;
}

bool PageRun::same_size(const PageRun& other) const
{
    return width == other.width && height == other.height && dpi_x == other.dpi_x && dpi_y == other.dpi_y;
}

LogInfo read_info(std::istream& log, const std::function<void(uint64_t)>& progress)
{
    LogInfo info;
    ElementReader elements(log, LogForm::log, Data::heads);
    elements.split_nested = true;
    elements.on_damage = [&](const Damage& damage)
    {
        ++info.damage;
        if (info.first_damage.size() < kMostDamage)
            info.first_damage.push_back(damage);
    };
    elements.on_comment = [&](const Comment& comment)
    {
        std::string_view text = comment.text;
        if (text.ends_with('\n'))
            text.remove_suffix(1);
        if (comment.warning)
        {
            info.warnings.add(text.substr(std::string_view("ORVLOG: WARNING: ").size()));
            return;
        }
        ++info.comments;
        if (info.first_comments.size() < kMostComments)
            info.first_comments.emplace_back(text.substr(0, kMostCommentSize));
    };
    Counter counter(info);
    while (const Element* call = elements.next())
    {
        counter.call(*call);
        if (call->implied_end && is_call_name(call->name))
        {
            info.in_flight = call->name;
            info.in_flight_id = to_text(call->value("id"));
            info.in_flight_line = call->place.line;
        }
        else
            info.in_flight.clear();
        if (progress)
            progress(elements.events().bytes_used());
    }
    info.is_log = elements.events().is_log();
    info.cut = elements.events().is_cut();
    info.garbled = elements.events().is_coded() && elements.events().is_garbled();
    info.coded = elements.events().is_coded();
    info.compressed = elements.events().is_compressed();
    info.bytes = elements.events().bytes_used();
    info.text_bytes = elements.events().text_bytes();
    for (const Attribute& attribute : elements.root().attributes)
        info.versions.emplace_back(attribute.name, attribute.value);
    return info;
}

}  // namespace orvlog::reader
