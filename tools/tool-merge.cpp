// orvlog merge: a temporary log and the logs of its kept images as one log.

#include "clients/stream/file-stream.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "orvlog/log/orvlog-merge.h"
#include "reader/log-bytes.h"
#include "reader/log-files.h"
#include "reader/log-journal.h"
#include "tools/command.h"
#include "tools/temporary-folder.h"
#include "tools/tool-input.h"
#include "tools/tool-output.h"
#include "tools/tool-source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tool
{

namespace
{

namespace fs = std::filesystem;

constexpr char ATTRIBUTE[] = "async_img_log_file_name";
constexpr char KEPT[] = "</GOP_ImageKeepFn>";

struct MergeOptions
{
    std::string file;
    std::string output;
    bool compressed = false;
};

// The names that the merge could take from a line, whatever stands around them; one that has no end is empty.
void find_names(const std::string& line, std::set<std::string>* names)
{
    constexpr size_t kToName = sizeof ATTRIBUTE - 1 + sizeof "=\"" - 1;
    for (size_t at = line.find(ATTRIBUTE); at != std::string::npos; at = line.find(ATTRIBUTE, at + 1))
    {
        const size_t start = std::min(at + kToName, line.size()), end = line.find('"', start);
        names->insert(end != std::string::npos ? line.substr(start, end - start) : "");
    }
}

// Names of the logs of kept images that a temporary log tells of. False when it is no log, or a coded one.
bool find_image_logs(const fs::path& log, std::set<std::string>* names)
{
    std::ifstream file(log, std::ios::binary);
    std::string line;
    bool kept = false;
    for (bool first = true; std::getline(file, line); first = false)
    {
        if (first && (line.rfind("<ORV ", 0) != 0 || line.rfind(ORVLOG_CODED_PREFIX, 0) == 0))
            return false;
        kept = kept || line.find(KEPT) != std::string::npos;
        find_names(line, names);
    }
    if (!kept)
        names->clear();
    return fs::file_size(log) > 0;
}

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

    void take(const fs::path& file)
    {
        fs::create_symlink(fs::absolute(file), folder_.path(file.filename()));
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
        {
            if (!fs::equivalent(file, merged, ignored))
                fs::remove(file, ignored);
        }
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
    const uint32_t merged = ORVLOG_MergeLogs(memory.allocator(), log.c_str(), target.stream(), 0, has_images ? 1 : 0);
    ORVLOG_CloseCompressedStream(coded);
    return merged != 0;
}

// Names of the logs of kept images, and where they lie. False with the reason in `why`.
bool find_parts(const fs::path& log, const fs::path& folder, std::set<std::string>* names, std::string* why)
{
    *why = "not a log";
    if (!find_image_logs(log, names))
        return false;
    for (const std::string& name : *names)
    {
        *why = "the log of a kept image is missing: " + name;
        if (fs::path(name).filename() != name || name == log.filename() || !fs::is_regular_file(folder / name))
            return false;
    }
    return true;
}

// What is not plain text to its end is merged from a copy that is; `originals` go when all went well.
int merge_parts(const MergeOptions& options, const fs::path& log, const fs::path& folder,
                const std::vector<fs::path>& originals = {})
{
    std::set<std::string> names;
    std::string why;
    if (!find_parts(log, folder, &names, &why))
        return fail(options.file + ": " + why);
    const fs::path merged = options.output == "-" ? fs::path("-") : fs::absolute(options.output);
    Output output(merged.string());
    if (!output.open())
        return fail(options.output + ": " + std::strerror(errno));
    Workshop workshop;
    workshop.take(log);
    for (const std::string& name : names)
        workshop.take(folder / name);
    workshop.enter();
    if (!merge_into(output, log.filename(), workshop.size(), !names.empty(), options.compressed))
        return fail(options.output + ": " + std::strerror(output.reason() != 0 ? output.reason() : EIO));
    if (!output.finish())
        return fail(options.output + ": " + std::strerror(errno));
    workshop.remove_originals(merged);
    std::error_code ignored;
    for (const fs::path& original : originals)
    {
        if (!fs::equivalent(original, merged, ignored))
            fs::remove(original, ignored);
    }
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
    const bool is_file = options.file != "-" && !is_url(options.file);
    const fs::path folder = is_file ? fs::path(options.file).parent_path() : fs::path();
    if (is_file && is_plain_file(options.file))
        return merge_parts(options, options.file, folder);
    orvlog::reader::LogBytes bytes(source.stream());
    std::istream text(&bytes);
    const TemporaryFolder brought;
    if (!brought.keep(text, "log"))
        return fail(options.file + ": " + std::strerror(errno));
    if (bytes.is_damaged())
        return fail(options.file + ": the compressed bytes are damaged");
    const auto originals = is_file ? files_of(options.file) : std::vector<fs::path>();
    return merge_parts(options, brought.path("log"), folder, originals);
}

}  // namespace

Run declare_merge(CLI::App& app)
{
    auto options = std::make_shared<MergeOptions>();
    app.footer("TEMPLOG is what was logged while images were kept: it names the logs of these images, which lie beside "
               "it, or in the present folder when it comes from standard input or a URL. All the files that went into "
               "the merged log are deleted once it is whole; when anything fails they are as they were.");
    app.add_option("TEMPLOG", options->file, "a temporary log: a path, a URL, or - for standard input")->required();
    app.add_option("-o,--output", options->output, "the merged log, or - for standard output")
        ->type_name("FILE")
        ->required();
    app.add_flag("--compressed", options->compressed, "code the merged log");
    return [options] { return merge(*options); };
}

}  // namespace tool
