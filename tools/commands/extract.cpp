// orvlog extract: what a log holds, as files of their own.

#include "reader/look/call-summary.h"
#include "reader/text/log-files.h"
#include "reader/tickets/ticket-bytes.h"
#include "reader/tree/values.h"
#include "tools/extract/extract-images.h"
#include "tools/extract/extract-output.h"
#include "tools/extract/extract-shapes.h"
#include "tools/extract/job-files.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::reader::CallSummary;
using orvlog::reader::Children;
using orvlog::reader::Element;
using orvlog::reader::LogFileKind;
using orvlog::reader::read_uint;

constexpr GGO_Matrix kIdentity = {{1, 0, 0, 1, 0, 0}};
constexpr uint32_t kDeepest = 4096;

struct ExtractOptions
{
    std::string what;
    std::string log;
    std::string folder;
    std::vector<std::string> folders;
    bool json = false;
};

class Extract
{
public:
    Extract(const ExtractOptions& options, const orvlog::reader::LogFiles& files, ExtractOutput& output)
        : options_(options), files_(files), output_(output),
          images_([this](const std::string& name, uint64_t begin, uint64_t count)
                  { return files_.read(name, begin, count); },
                  [this](const std::string& name) { return files_.open(name, LogFileKind::image_log); })
    {
    }

    void call(const Element& call)
    {
        const CallSummary summary = summaries_.next(call);
        call_ = ordered_json::object();
        call_["call"] = summary.id ? ordered_json(*summary.id) : ordered_json(nullptr);
        call_["kind"] = summary.kind;
        call_["page"] = summary.page != 0 ? ordered_json(summary.page) : ordered_json(nullptr);
        call_["line"] = call.place.line;
        name_ = output_.call_name(std::string(call.value("id")), call.place.line);
        count_ = 0;
        if (options_.what == "images")
            extract_images(call);
        else if (options_.what == "glyphs")
            extract_glyphs(call, 0);
        else if (options_.what == "profiles")
            extract_profiles(call, 0);
        else if (options_.what == "tickets")
            extract_ticket(call);
        else
            extract_paths(call);
    }

    const JobFiles& files() const
    {
        return files_;
    }

private:
    void list(const std::string& file, const ordered_json& more)
    {
        ordered_json entry;
        entry["file"] = file.empty() ? ordered_json(nullptr) : ordered_json(file);
        entry.update(call_);
        entry.update(more);
        output_.list(entry);
    }

    void extract_images(const Element& call)
    {
        for (const TakenImage* image : images_.take(call))
        {
            std::string stem = "image-";
            stem.append(name_).append("-").append(std::to_string(image->operand));
            if (image->operand == 0)
                stem.append("-").append(std::to_string(count_++));
            const std::string file = write_image(output_, stem, *image);
            const GOP_OperandImage* record = image->record != nullptr ? image->record->imp_Image : nullptr;
            const uint64_t due = image->rows * image->row_bytes;
            ordered_json more;
            more["image"] = image->operand;
            more["width"] = record != nullptr ? record->im_ImageWidthPixels : 0;
            more["height"] = record != nullptr ? record->im_ImageHeightPixels : 0;
            more["bytes"] = image->bytes.size();
            more["missing_bytes"] = due > image->bytes.size() ? due - image->bytes.size() : 0;
            list(file, more);
        }
    }

    void extract_glyphs(const Element& element, uint32_t depth)
    {
        for (const Element& child : Children(element))
            if (child.name == "GFI_StringStartFn")
            {
                font_ = child.value("unique_font_id");
                to_pixels_ = orvlog::reader::read_matrix(child, "glyphdesc_to_face_pixel");
            }
            else if (child.name == "GFI_GlyphIndexGetFn")
                glyph_ = read_uint(child, "glyph_index_out");
            else if (child.name == "GFI_GlyphGetFn" || child.name == "GFI_GlyphGetFixedFormatFn")
                extract_glyph(child);
            else if (depth < kDeepest)
                extract_glyphs(child, depth + 1);
    }

    void extract_glyph(const Element& callback)
    {
        if (callback.has("glyphdesc_to_face_pixel"))
            to_pixels_ = orvlog::reader::read_matrix(callback, "glyphdesc_to_face_pixel");
        const Element* pointer = callback.child("GFI_GlyphDescPointer");
        if (pointer == nullptr)
            return;
        const GlyphFile glyph = glyph_file(*pointer, to_pixels_);
        std::string file;
        if (!glyph.ending.empty())
        {
            char number[24];
            std::snprintf(number, sizeof number, "-%03u", count_);
            file = "glyph-" + name_ + number + glyph.ending;
            output_.write(file, glyph.content);
        }
        ++count_;
        ordered_json more;
        more["glyph"] = glyph_;
        more["font"] = orvlog::reader::to_int(font_);
        more["size"] = glyph.content.size();
        list(file, more);
    }

    // The same profile is written once.
    void profile(std::span<const uint8_t> bytes, uint64_t due, ordered_json more)
    {
        const std::string content(bytes.begin(), bytes.end());
        const size_t hash = std::hash<std::string>()(content);
        auto known = profiles_.find({hash, content.size()});
        if (known == profiles_.end())
        {
            const std::string file = "profile-" + name_ + "-" + std::to_string(count_++) + ".icc";
            output_.write(file, content);
            known = profiles_.emplace(std::pair(hash, content.size()), file).first;
        }
        more["size"] = bytes.size();
        more["missing_bytes"] = due > bytes.size() ? due - bytes.size() : 0;
        list(known->second, more);
    }

    void extract_profiles(const Element& element, uint32_t depth)
    {
        if (element.name == "GCM_CsdPointer")
        {
            const Element* csd = element.child("GCM_Csd");
            const bool holds = csd != nullptr && csd->value("csd_Type") == "GCM_CSDTYPE_PROFILE_BUFFER";
            std::vector<uint8_t> bytes;
            for (const Element& child : Children(element))
                if (child.name == "BufferUInt8")
                    bytes.insert(bytes.end(), child.bytes.begin(), child.bytes.end());
            if (holds && !bytes.empty())
                profile(bytes, read_uint(*csd, "csd_Defn.ProfileBufferSize"), ordered_json::object());
        }
        if (element.name == "GXC_ColorTickets")
        {
            const auto reading = orvlog::reader::read_ticket_text(element.rows);
            for (const auto& definition : reading.definitions)
                if (definition.profile_size > 0)
                    profile(reading.profile(definition), definition.profile_size, {{"from", "ticket"}});
        }
        for (const Element& child : Children(element))
            if (depth < kDeepest)
                extract_profiles(child, depth + 1);
    }

    void extract_ticket(const Element& call)
    {
        const Element* ticket = call.child("GCM_ColorTicket");
        const Element* text = ticket != nullptr ? ticket->child("GXC_ColorTickets") : nullptr;
        if (text == nullptr)
            return;
        const uint32_t id = read_uint(*ticket, "id");
        const bool named = id != 0 && id > last_ticket_;
        last_ticket_ = std::max(last_ticket_, id);
        const std::string file =
            "ticket-" + (named ? std::to_string(id) : "line-" + std::to_string(ticket->place.line)) + ".txt";
        output_.write(file, text->rows);
        list(file, {{"ticket", id}, {"size", text->rows.size()}});
    }

    void path(const Element& shape, const Element* stroke, const GGO_Matrix& matrix, const std::string& file)
    {
        const std::string svg = shape_svg(shape, stroke, matrix);
        if (svg.empty())
            return;
        output_.write(file, svg);
        list(file, {{"size", svg.size()}});
    }

    void extract_paths(const Element& call)
    {
        const GGO_Matrix* known = summaries_.to_pixels(call);
        const GGO_Matrix& matrix = known != nullptr ? *known : kIdentity;
        const Element* member = call.member("paint_path");
        const Element* shape = member != nullptr ? member->child("GSH_ShapePointer") : nullptr;
        const Element* params = call.member("stroking_params");
        if (shape != nullptr)
            path(*shape, params != nullptr ? params->first : nullptr, matrix, "path-" + name_ + ".svg");
        for (const char* name : {"clip", "group_clip"})
        {
            const Element* clip = call.member(name);
            for (const Element* list = clip != nullptr ? clip->first : nullptr; list != nullptr; list = list->next)
            {
                const Element* holder = list->member("sl_Shape");
                const Element* one = holder != nullptr ? holder->child("GSH_ShapePointer") : nullptr;
                if (one != nullptr)
                    path(*one, nullptr, matrix, "path-" + name_ + "-clip-" + std::to_string(count_++) + ".svg");
            }
        }
    }

    const ExtractOptions& options_;
    JobFiles files_;
    ExtractOutput& output_;
    orvlog::reader::CallSummaries summaries_;
    TakenImages images_;
    ordered_json call_;
    std::string name_;
    uint32_t count_ = 0;
    GGO_Matrix to_pixels_ = kIdentity;
    std::string font_;
    uint32_t glyph_ = 0;
    uint32_t last_ticket_ = 0;
    std::map<std::pair<size_t, size_t>, std::string> profiles_;
};

int extract(const ExtractOptions& options)
{
    const orvlog::reader::LogFiles files(options.log, options.folders);
    if (!files.why().empty())
        return fail(files.why());
    LogInput input(options.log);
    if (!input.open())
        return input.fail_to_open();
    orvlog::reader::ElementReader elements(input.stream());
    elements.split_nested = true;
    uint64_t damage = 0;
    elements.on_damage = [&damage](const orvlog::reader::Damage&) { ++damage; };
    const Element* element = elements.next();
    if (!elements.events().is_log())
        return input.fail_as_no_log();
    ExtractOutput output(options.folder, options.log, options.what);
    Extract job(options, files, output);
    for (; element != nullptr && output.good(); element = elements.next())
    {
        if (orvlog::reader::is_call_name(element->name))
            job.call(*element);
        input.show(elements.events().bytes_used());
    }
    if (!output.finish())
        return fail(output.why());
    for (const std::string& missing : job.files().missing())
        say(options.log + ": the file " + printable(missing));
    if (damage > 0)
        say(options.log + ": damaged in " + std::to_string(damage) + " places");
    if (options.json)
        put(json_text({{"files", output.files()}, {"manifest", output.path("manifest.json")}}) + "\n");
    else
        put(std::to_string(output.files()) + " " + options.what + " in " + output.path("manifest.json") + "\n");
    return finish_output(job.files().refused() ? EXIT_FAILED : EXIT_DONE);
}

}  // namespace

Run declare_extract(CLI::App& app)
{
    auto options = std::make_shared<ExtractOptions>();
    app.add_option("WHAT", options->what, "what to write")
        ->required()
        ->check(CLI::IsMember({"images", "glyphs", "profiles", "tickets", "paths"}));
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("-o,--output", options->folder, "the folder for the files")->type_name("DIR")->required();
    add_files_from(app, options->folders);
    app.add_flag("--json", options->json, "tell what was written as an object");
    app.footer("Files are named by the id of the paint that they belong to, or by the line of the call where that has "
               "none, and manifest.json in the folder lists them with their call, page and size. Images are PNG, CMYK "
               "turned to RGB; with other channels PAM; compressed streams as they are. Glyphs are SVG or, from "
               "bitmaps, PGM; paths and clips are SVG, in pixels of their page; profiles are ICC; tickets are the "
               "text of the log. Images come from the log, from the files beside it and from the logs of kept images; "
               "what the "
               "log names elsewhere is not read, and the exit status is 1.");
    return [options] { return extract(*options); };
}

}  // namespace orvlog::tool
