#include "tools/child-program.h"
#include "tools/command.h"
#include "tools/record-summary.h"
#include "tools/tool-input.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <regex>
#include <vector>

namespace tool
{

namespace
{

using std::filesystem::path;

struct RecordOptions
{
    std::string document;
    std::string log;
    std::string pages;
    std::string mode = "transparent";
    std::string image_prefix;
    std::string png_folder;
    std::string ticket_folder;
    unsigned dpi = 96;
    bool no_renderer = false;
    bool check = false;
    bool keep_images = false;
    bool compressed = false;
    bool temporary_log = false;
};

// A file that is there for as long as this object.
struct TemporaryFile
{
    TemporaryFile()
    {
        name = (std::filesystem::temp_directory_path() / "orvlog-summary-XXXXXX").string();
        const int file = mkstemp(name.data());
        if (file < 0)
            throw std::filesystem::filesystem_error("no temporary file", name,
                                                    std::error_code(errno, std::generic_category()));
        close(file);
    }
    ~TemporaryFile()
    {
        unlink(name.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string name;
};

std::string check_pages(const std::string& text)
{
    static const std::regex form("([1-9][0-9]{0,8})(-([1-9][0-9]{0,8}))?");
    std::smatch parts;
    if (!std::regex_match(text, parts, form))
        return "pages are given as A or A-B, counting from 1";
    if (parts[3].matched && std::stoul(parts[1]) > std::stoul(parts[3]))
        return "the last page comes before the first";
    return {};
}

void declare_options(CLI::App& app, RecordOptions& options)
{
    app.add_option("FILE", options.document, "the PDF document: a path or a URL")->required();
    app.add_option("-o,--output", options.log, "write the log to LOG instead of FILE.orvlog.xml")->type_name("LOG");
    app.add_option("--pages", options.pages, "only these pages, from 1")->type_name("A-B")->check(check_pages);
    app.add_option("--mode", options.mode, "base: log all images and glyphs; transparent: what the renderer asks for")
        ->check(CLI::IsMember({"transparent", "base"}))
        ->capture_default_str();
    app.add_option("--images-beside", options.image_prefix, "image data goes to files PREFIX-..., not into the log")
        ->type_name("PREFIX");
    app.add_flag("--no-renderer", options.no_renderer, "log without drawing: no page images");
    app.add_option("--png", options.png_folder, "folder for the page images instead of the document's")
        ->type_name("DIR");
    app.add_option("--dpi", options.dpi, "resolution of the page images")
        ->type_name("N")
        ->check(CLI::Range(1U, 2400U))
        ->capture_default_str();
    app.add_flag("--check", options.check, "draw again without the logger and compare each pixel");
    app.add_flag("--keep-images", options.keep_images, "let the renderer keep images until a drawing ends");
    app.add_flag("--compressed", options.compressed, "write a coded log");
    app.add_flag("--via-temporary-log", options.temporary_log, "log to a temporary file first, then merge");
    app.add_option("--save-tickets", options.ticket_folder, "save the job's colour tickets in DIR")->type_name("DIR");
}

path without_pdf(const path& document)
{
    const std::string extension = document.extension().string();
    return extension == ".pdf" || extension == ".PDF" ? path(document).replace_extension() : document;
}

std::string folder_of(const path& document)
{
    const path folder = document.parent_path();
    return folder.empty() ? "." : folder.string();
}

std::vector<std::string> arguments_of(const RecordOptions& options, const std::string& summary_file)
{
    std::vector<std::string> words = {options.document, "-o", options.log, "--mode", options.mode};
    const auto option = [&words](const char* name, const std::string& value)
    {
        if (!value.empty())
            words.insert(words.end(), {name, value});
    };
    const auto flag = [&words](const char* name, bool given)
    {
        if (given)
            words.emplace_back(name);
    };
    option("--pages", options.pages);
    option("--images-beside", options.image_prefix);
    flag("--no-renderer", options.no_renderer);
    option("--png", options.png_folder);
    option("--dpi", std::to_string(options.dpi));
    flag("--check", options.check);
    flag("--keep-images", options.keep_images);
    flag("--compressed", options.compressed);
    flag("--via-temporary-log", options.temporary_log);
    option("--save-tickets", options.ticket_folder);
    flag("--progress", isatty(STDERR_FILENO) != 0);
    option("--summary", summary_file);
    return words;
}

// A log on the standard output has it for itself.
void print_summary(const RecordOptions& options, const std::string& file)
{
    const auto summary = read_record_summary(file);
    if (!summary)
        return;
    std::FILE* output = options.log == "-" ? stderr : stdout;
    std::fputs(format_record_summary(*summary).c_str(), output);
    if (!options.png_folder.empty() && summary->pages.value_or(0) > 0)
        std::fprintf(output, "page images in %s\n", options.png_folder.c_str());
}

// The last element of a URL's path: what its document is called here.
std::string name_in(const std::string& url)
{
    const std::string name = url.substr(url.rfind('/') + 1);
    return name.substr(0, name.find_first_of("?#"));
}

// A document that comes by a URL is fetched first, and what it leaves goes to the present folder.
bool fetch(RecordOptions& options, const TemporaryFile& file, std::string* why)
{
    std::vector<uint8_t> bytes;
    if (!read_input(options.document, &bytes, why))
        return false;
    const std::string name = name_in(options.document).empty() ? "document.pdf" : name_in(options.document);
    if (options.log.empty())
        options.log = without_pdf(name).string() + ".orvlog.xml";
    if (options.png_folder.empty() && !options.no_renderer)
        options.png_folder = ".";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> copy(std::fopen(file.name.c_str(), "wb"), std::fclose);
    const bool whole = copy != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), copy.get()) == bytes.size();
    if (!whole)
        *why = std::strerror(errno);
    options.document = file.name;
    return whole;
}

bool is_url(const std::string& name)
{
    return name.rfind("http://", 0) == 0 || name.rfind("file://", 0) == 0;
}

int record(RecordOptions options)
{
    const TemporaryFile fetched;
    const std::string given = options.document;
    std::string why;
    if (is_url(given) && !fetch(options, fetched, &why))
        return fail(given + ": " + why);
    if (access(options.document.c_str(), R_OK) != 0)
        return fail(options.document + ": " + std::strerror(errno));
    if (options.log.empty())
        options.log = without_pdf(options.document).string() + ".orvlog.xml";
    if (options.png_folder.empty() && !options.no_renderer)
        options.png_folder = folder_of(options.document);

    const std::string program = find_program("orvlog-record", "../clients/pdf");
    if (program.empty())
        return fail("orvlog-record, which reads PDF documents, is not installed");
    const TemporaryFile summary_file;
    const int status = run_program(program, arguments_of(options, summary_file.name));
    if (status < 0)
        return fail(program + ": " + std::strerror(errno));
    print_summary(options, summary_file.name);
    return status;
}

}  // namespace

Run declare_record(CLI::App& app)
{
    auto options = std::make_shared<RecordOptions>();
    declare_options(app, *options);
    return [options] { return record(*options); };
}

}  // namespace tool
