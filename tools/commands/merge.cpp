// orvlog merge: a temporary log and the logs of its kept images as one log.

#include "clients/stream/malloc-allocator.h"
#include "clients/system/system.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "orvlog/log/orvlog-merge.h"
#include "reader/text/log-bytes.h"
#include "reader/text/log-files.h"
#include "reader/text/log-journal.h"
#include "reader/tree/element.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/input.h"
#include "tools/shared/look.h"
#include "tools/shared/output.h"
#include "tools/shared/source.h"
#include "tools/shared/temporary-folder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;

struct MergeOptions
{
    std::string file;
    std::string output;
    std::vector<std::string> folders;
    bool compressed = false;
};

// The logs of kept images that go into a log, by name.
using Parts = std::map<std::string, fs::path>;

// What stands in the log of a kept image: callbacks of images, perhaps cut short, and nothing else.
bool holds_callbacks(std::istream& file)
{
    orvlog::reader::ElementReader elements(file, orvlog::reader::LogForm::fragment, orvlog::reader::Data::skip);
    std::optional<uint64_t> first;
    uint64_t last = 0;
    elements.on_damage = [&first, &last](const orvlog::reader::Damage& damage)
    {
        first = first.value_or(damage.place.line);
        last = damage.place.line;
    };
    while (const orvlog::reader::Element* element = elements.next())
        if (!element->name.starts_with("GOP_Image") || !element->name.ends_with("Fn"))
            return false;
    return !first || (elements.events().is_cut() && *first + 1 >= last);
}

// Finds the logs of kept images that a temporary log names. Of the text it holds no more than a block.
class PartFinder
{
public:
    explicit PartFinder(const orvlog::reader::LogFiles& files) : files_(files) {}

    // All names that the merge could take, whatever stands around them. False when it is no log, with the reason.
    bool find(std::istream& log, std::string* why)
    {
        std::string text;
        bool kept = false;
        for (bool first = true, at_end = false; !at_end; first = false)
        {
            const size_t carried = text.size();
            text.resize(carried + kBlock);
            log.read(text.data() + carried, kBlock);
            text.resize(carried + static_cast<size_t>(log.gcount()));
            at_end = log.gcount() < static_cast<std::streamsize>(kBlock);
            if (first && !is_plain_log(text, why))
                return false;
            kept = kept || text.find(kKept) != std::string::npos;
            text.erase(0, take_names(text, at_end));
        }
        if (!kept)
            parts_.clear();
        *why = kept ? why_ : "";
        return why->empty();
    }

    const Parts& parts() const
    {
        return parts_;
    }

private:
    static constexpr size_t kBlock = size_t{1} << 16;
    static constexpr std::string_view kKept = "</GOP_ImageKeepFn>";
    static constexpr std::string_view kAttribute = "async_img_log_file_name";
    static constexpr size_t kToName = kAttribute.size() + 2;  // with the equals sign and the quote
    static constexpr size_t kLongest = 100;                   // no name is longer

    static bool is_plain_log(std::string_view text, std::string* why)
    {
        const bool coded = text.starts_with(ORVLOG_CODED_PREFIX);
        *why = coded ? "is a coded log, which has nothing to merge; orvlog unpack makes it plain" : "not a log";
        return text.starts_with("<ORV ") && !coded;
    }

    // Gives how much of the text is done with.
    size_t take_names(std::string_view text, bool at_end)
    {
        size_t at = 0;
        for (; (at = text.find(kAttribute, at)) != std::string_view::npos; ++at)
        {
            if (!at_end && text.size() - at < kToName + kLongest)
                return at;
            const std::string_view rest = text.substr(std::min(at + kToName, text.size()));
            const size_t end = rest.substr(0, kLongest).find_first_of("\"\n");
            take_name(std::string(rest.substr(0, end == std::string_view::npos ? kLongest : end)));
        }
        return text.size() - std::min(text.size(), kKept.size() + kAttribute.size());
    }

    void take_name(const std::string& name)
    {
        if (!why_.empty() || parts_.contains(name))
            return;
        const orvlog::reader::LogFile file = files_.open(name, orvlog::reader::LogFileKind::image_log);
        if (file.stream == nullptr)
            why_ = "the log of a kept image " + file.why + ": " + printable(name);
        else if (!holds_callbacks(*file.stream))
            why_ = "the log of a kept image is not read: it holds something else: " + name;
        else
            parts_[name] = file.path;
    }

    const orvlog::reader::LogFiles& files_;
    Parts parts_;
    std::string why_;  // of the first that can't be had
};

// The merge deletes what it has taken in as it goes, and a failed one would lose it. So it works on links in a
// folder of its own, and the files go when all went well.
class Workshop
{
public:
    Workshop() : back_(fs::current_path()) {}
    Workshop(const Workshop&) = delete;
    Workshop& operator=(const Workshop&) = delete;
    ~Workshop()
    {
        std::error_code ignored;
        fs::current_path(back_, ignored);
    }

    // A file, under the name that it has for the merge.
    void take(const fs::path& file, const std::string& name)
    {
        std::error_code error;
        system::link_file(fs::absolute(file), folder_.path(name), error);
        if (error)
            throw fs::filesystem_error("no link", file, error);
        taken_.insert(fs::absolute(file));
        size_ += fs::file_size(file);
    }
    void enter()
    {
        fs::current_path(folder_.path(""));
    }
    // Bytes of all files together.
    uint64_t size() const
    {
        return size_;
    }
    // All but the one whose place the merged log has taken.
    void remove_originals(const fs::path& merged) const
    {
        std::error_code ignored;
        for (const fs::path& file : taken_)
            if (!fs::equivalent(file, merged, ignored))
                fs::remove(file, ignored);
    }

private:
    TemporaryFolder folder_;
    fs::path back_;
    std::set<fs::path> taken_;
    uint64_t size_ = 0;
};

// Passes on what is written to it and shows how far it is.
class Shown
{
public:
    Shown(GIO_Stream* target, uint64_t whole) : target_(target), progress_(whole)
    {
        ops_.gio_Write = [](const void* data, uint64_t item_size, uint64_t item_count, void* instance) -> uint64_t
        {
            auto* shown = static_cast<Shown*>(instance);
            shown->done_ += item_size * item_count;
            shown->progress_.show(shown->done_);
            return shown->target_->ops->gio_Write(data, item_size, item_count, shown->target_->instance);
        };
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

    GIO_Stream* stream()
    {
        return &handle_;
    }

private:
    GIO_Stream* target_;
    Progress progress_;
    uint64_t done_ = 0;
    GIO_StreamOps ops_{};
    GIO_Stream handle_{this, GIO_KIND_FORWARD_ONLY, &ops_};
};

// In the workshop, with all parts there.
bool merge_into(Output& output, const fs::path& log, uint64_t size, bool has_images, bool compressed)
{
    client_stream::MallocAllocator memory;
    GIO_Stream* coded = compressed ? ORVLOG_OpenCompressedStream(memory.allocator(), output.stream()) : nullptr;
    if (compressed && coded == nullptr)
        return false;
    Shown target(compressed ? coded : output.stream(), size);
    const uint32_t merged =
        ORVLOG_MergeLogs(memory.allocator(), log.string().c_str(), target.stream(), 0, has_images ? 1 : 0);
    ORVLOG_CloseCompressedStream(coded);
    return merged != 0;
}

bool is_file(const std::string& name)
{
    std::error_code error;
    return name != "-" && !is_url(name) && fs::is_regular_file(name, error);
}

// `log` is the log's file, or a copy of what came from elsewhere or is not plain text to its end; `originals` are then
// the files that it was made from.
int merge_parts(const MergeOptions& options, const fs::path& log, const std::vector<fs::path>& originals = {})
{
    const orvlog::reader::LogFiles files(options.file, options.folders);
    PartFinder finder(files);
    std::string why = files.why();
    if (!why.empty())
        return fail(why);
    std::ifstream text(log, std::ios::binary);
    if (!finder.find(text, &why))
        return fail(options.file + ": " + why);
    const bool temporary = orvlog::reader::is_temporary_log_name(fs::path(options.file).filename().string());
    // The logs of its images go with the log that names them, or stay with it. Asked before the workshop is entered,
    // where a relative name means another file.
    const bool images_go = temporary || !is_file(options.file);
    if (finder.parts().empty() && !temporary)
        return fail(options.file +
                    ": nothing to merge: it is no temporary log, and no logs of kept images belong to it");
    const fs::path merged = options.output == "-" ? fs::path("-") : fs::absolute(options.output);
    Output output(merged.string());
    if (!output.open())
        return fail(options.output + ": " + std::strerror(errno));
    Workshop workshop;
    workshop.take(log, "log");
    for (const auto& [name, path] : finder.parts())
        workshop.take(path, name);
    workshop.enter();
    if (!merge_into(output, "log", workshop.size(), !finder.parts().empty(), options.compressed))
        return output.reason() != 0 ? fail(options.output + ": " + std::strerror(output.reason()))
                                    : fail(options.file + ": it or a log of a kept image can't be read");
    if (!output.finish())
        return fail(options.output + ": " + std::strerror(errno));
    if (images_go)
        workshop.remove_originals(merged);
    std::error_code ignored;
    for (const fs::path& original : originals)
        if (temporary && !fs::equivalent(original, merged, ignored))
            fs::remove(original, ignored);
    return EXIT_DONE;
}

// Not in Zstandard frames, and without unused room behind the text.
bool is_plain_file(const std::string& name)
{
    const std::unique_ptr<std::istream> log = orvlog::reader::open_log(name);
    char byte = '\0';
    orvlog::reader::LogBytes bytes(*log);
    const bool plain = bytes.read(&byte, 1) == 0 || !bytes.is_compressed();
    std::ifstream end(name, std::ios::binary | std::ios::ate);
    const bool has_bytes = end.tellg() > 0;
    end.seekg(-1, std::ios::end);
    return plain && !(has_bytes && end.peek() == '\0');
}

// The log and the journal that is a part of it.
std::vector<fs::path> files_of(const std::string& name)
{
    std::vector<fs::path> files = {fs::absolute(name)};
    orvlog::reader::Journal journal;
    if (orvlog::reader::read_journal(name, journal) == orvlog::reader::JournalState::belongs)
        files.push_back(fs::absolute(name + ".journal"));
    return files;
}

// What is no file here is brought first, and its image logs are those of the present folder.
int merge(const MergeOptions& options)
{
    Source source(options.file);
    if (!source.open())
        return fail(options.file + ": " + source.why());
    if (is_file(options.file) && is_plain_file(options.file))
        return merge_parts(options, options.file);
    orvlog::reader::LogBytes bytes(source.stream());
    std::istream text(&bytes);
    const TemporaryFolder brought;
    if (!brought.keep(text, "log"))
        return fail(options.file + ": " + std::strerror(errno));
    if (bytes.is_damaged())
        return fail(options.file + ": the compressed bytes are damaged");
    return merge_parts(options, brought.path("log"),
                       is_file(options.file) ? files_of(options.file) : std::vector<fs::path>());
}

}  // namespace

Run declare_merge(CLI::App& app)
{
    auto options = std::make_shared<MergeOptions>();
    app.footer("TEMPLOG is what was logged while images were kept: it names the logs of these images, which lie beside "
               "it, or in the present folder when it comes from standard input or a URL, or in the folders of "
               "--files-from. Once the merged log is whole the files that went into it are deleted; a log that has "
               "not the name of a temporary one stays, and so do the logs that it names. When anything fails all are "
               "as they were.\n\nA file is taken for the log of a kept image only if it has such a log's name and "
               "holds callbacks of images. A log that is not temporary and names none has nothing to merge.");
    app.add_option("TEMPLOG", options->file, "a temporary log: a path, a URL, or - for standard input")->required();
    app.add_option("-o,--output", options->output, "the merged log, or - for standard output")
        ->type_name("FILE")
        ->required();
    app.add_flag("--compressed", options->compressed, "code the merged log");
    add_files_from(app, options->folders);
    return [options] { return merge(*options); };
}

}  // namespace orvlog::tool
