// orvlog ticket: a serialised colour ticket as the text that a log holds.

#include "orvlog/colour/gxc/gxc-ticket.h"
#include "tools/shared/command.h"
#include "tools/shared/input.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

struct TicketOptions
{
    std::string file;
    std::string family = "none";
    std::string prefix;
};

const std::map<std::string, int32_t> FAMILIES = {{"gray", 0}, {"rgb", 1}, {"cmyk", 2}, {"named", 3}, {"none", -1}};

// A stream that lends the bytes.
GIO_StreamOps lending_operations()
{
    GIO_StreamOps ops = {};
    ops.gio_ReadBuffer = [](void* c, void** data, uint64_t* length) -> int32_t
    {
        auto* bytes = static_cast<std::vector<uint8_t>*>(c);
        *data = bytes->data();
        *length = bytes->size();
        return 1;
    };
    return ops;
}

// The standard output, which is flushed once at the end.
GIO_StreamOps printing_operations()
{
    GIO_StreamOps ops = {};
    ops.gio_VPrintf = [](void*, const char* format, va_list args) -> int32_t
    { return std::vfprintf(stdout, format, args); };
    ops.gio_Flush = [](void*) -> int32_t { return 0; };
    return ops;
}

int print_ticket(const TicketOptions& options)
{
    std::vector<uint8_t> bytes;
    std::string why;
    if (!read_input(options.file, &bytes, &why))
        return fail(options.file + ": " + why);
    if (bytes.empty())
        return fail(options.file + ": not a colour ticket: the file is empty");
    const GIO_StreamOps lending = lending_operations();
    const GIO_StreamOps printing = printing_operations();
    GIO_Stream input = {&bytes, GIO_KIND_MEMORY, &lending};
    GIO_Stream output = {nullptr, GIO_KIND_FORWARD_ONLY, &printing};
    const uint32_t whole =
        gxc_deserialise_ticket(nullptr, &input, FAMILIES.at(options.family), &output, options.prefix.c_str());
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        return fail(std::string("standard output: ") + std::strerror(errno));
    return whole != 0 ? EXIT_DONE : fail(options.file + ": the colour ticket is damaged: it ends too early");
}

}  // namespace

Run declare_ticket(CLI::App& app)
{
    auto options = std::make_shared<TicketOptions>();
    app.footer("The text goes to the standard output. A ticket doesn't tell the colour family that it belongs to, but "
               "its text "
               "does: --family names it. Of a damaged ticket it gives what could be read, and the exit status 1.");
    app.add_option("FILE", options->file, "a serialised colour ticket: a path, a URL, or - for standard input")
        ->required();
    app.add_option("--family", options->family, "the family that the text names")
        ->check(CLI::IsMember(FAMILIES))
        ->capture_default_str();
    app.add_option("--prefix", options->prefix, "text before each line, as a log's indent")->type_name("TEXT");
    return [options] { return print_ticket(*options); };
}

}  // namespace orvlog::tool
