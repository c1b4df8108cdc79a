#include "inspect/c-source/c-call.h"
#include "inspect/c-source/c-prelude.h"
#include "inspect/c-source/c-program.h"
#include "inspect/c-source/c-text.h"

#include <algorithm>
#include <vector>

namespace orvlog::inspect
{

// What the three exports have no argument for.
bool CProgram::needs_options() const
{
    return kind_.base_mode || coded_ || kind_.script.merged || kind_.fixed_formats || kind_.image_attributes ||
           kind_.glyph_get_type != GFI_GDT_BITMAP;
}

std::string CProgram::head() const
{
    const std::string library = needs_options() ? "orvlog-static" : "orvlog";
    const std::string name = c_comment(options_.stem);
    std::string text = "/* The calls of " + c_comment(options_.log) + ", made again. Written by orvlog to-c " +
                       options_.version + ".\n *\n *     cc -std=c11 " + name + ".c $(pkg-config --cflags --libs " +
                       library + ")" + (needs_options() ? " -lstdc++ -lm" : "") + " -o " + name + "\n *     ./" + name +
                       " LOG [FOLDER]\n *\n * The program makes these calls on the logger, which writes them to LOG. "
                       "A renderer within it asks for what\n * the job's renderer asked for. FOLDER, the present one "
                       "unless told, is where the files beside this one are. */\n\n";
    text += std::string("#include \"orvlog/interface/orvlog") + (needs_options() ? "-session-options" : "") + ".h\"\n";
    text += kCIncludes;
    const char* kNames[] = {"IMAGES", "PROFILES", "GLYPHS"};
    for (size_t i = 0; i < options_.data_files.size(); ++i)
        text += std::string("#define ") + kNames[i] + " " + c_string(options_.data_files[i]) + "\n";
    text += kCRecordTypes;
    text += kCSteps;
    text += kCCallRecords;
    // Compilers that see that a table has one place only warn of the others.
    const auto table = [](const char* type, const char* table_name, uint32_t count)
    { return std::string("static ") + type + " " + table_name + "[" + std::to_string(std::max(count, 2U)) + "];\n"; };
    text += "\n" + table("void*", "documents", document_places_) +
            table("ORV_DrawingInterface", "drawings", drawing_places_);
    if (resource_places_ > 0)
        text += table("uint32_t", "resources", resource_places_);
    text += table("const GFI_FontEngineTable*", "engines", steps_.most_engines() + 1) +
            table("GOP_OperandImagePointer*", "images", steps_.most_images() + 1);
    text += kCState;
    text += has_comments_ ? kCComment : kCNoComment;
    text += kCClient;
    text += kCFonts;
    text += kCImages;
    text += kCStreams;
    if (has_tickets_)
        text += kCTickets;
    text += kCAskFonts;
    text += kCAskImages;
    text += kCRun;
    text += kCMaking;
    text += "\nstatic const uint8_t session[16] = " + c_bytes(session_) + ";\n";
    return text + kCHost;
}

std::string CProgram::open_session() const
{
    const std::string prefix = prefix_.empty() ? "NULL" : c_string(prefix_);
    const std::string tickets = has_tickets_ ? "&ticket_functions" : "NULL";
    const std::string serial = has_tickets_ ? "&ticket_serial_functions" : "NULL";
    if (!needs_options())
        return "    const uint32_t begun = ORVLOG_DLL_initialise(&orv, &renderer, &memory, &identity, 0, &stream, " +
               prefix + ", 0, " + tickets + ", " + serial + ", 0, &comment_function, &comment_context);\n" +
               (kind_.base_content ? "    const ORVLOG_Params params = {NULL, 0, 0};\n    if (begun)\n"
                                     "        ORVLOG_DLL_set_parameters(orv.document_start.context, &params);\n"
                                   : "");
    CFields fields;
    fields.add("interface_out", "&orv")
        .add("interface_in", "&renderer")
        .add("allocator", "&memory")
        .add("identity", "&identity")
        .add("log_stream", "&stream")
        .add("file_prefix", prefix)
        .add("ticket_functions", tickets)
        .add("ticket_serial_functions", serial)
        .add("comment_fn_out", "&comment_function")
        .add("comment_ctx_out", "&comment_context")
        .add("compress", coded_ ? "1" : "0")
        .add("mode", kind_.base_mode ? "ORVLOG_MODE_BASE" : "0")
        .add("via_temporary_log", kind_.script.merged ? "1" : "0")
        .add("base_content", kind_.base_content ? "1" : "0")
        .add("image_dump_flag", kind_.image_attributes ? "1" : "0")
        .add("glyph_fixed_format", kind_.fixed_formats ? "1" : "0")
        .add("glyph_get_format", c_uint(kind_.glyph_get_type));
    return "    const ORVLOG_SessionOptions options = " + fields.text() +
           ";\n    const uint32_t begun = orvlog_create_session_with(&options);\n";
}

std::string CProgram::tail() const
{
    std::string text = R"c(int main(int argc, char** argv)
{
    static const ORVLOG_IdentityTable identities = {{NULL}, session_number};
    static const GIO_StreamOps operations = {.gio_Write = write_items, .gio_Flush = flush, .gio_VPrintf = print};
    ORVLOG_IdentityObject object = {&identities};
    const ORVLOG_IdentitySource identity = {&object};
    GMM_Allocator memory = {.gmm_Alloc = allocate, .gmm_Free = release, .gmm_Realloc = resize};
    FILE* log = argc == 2 || argc == 3 ? fopen(argv[1], "wb") : NULL;
    GIO_Stream stream = {log, 0, &operations};
    if (argc == 3)
        folder = argv[2];
    if (log == NULL)
    {
        fprintf(stderr, argc == 2 || argc == 3 ? "the log can't be opened\n" : "usage: LOG [FOLDER]\n");
        return argc == 2 || argc == 3 ? 1 : 2;
    }
)c";
    text += open_session();
    text += "    if (!begun)\n        complain(\"the log can't be begun\");\n    if (!begun)\n        return 1;\n";
    for (uint64_t part = 1; part <= parts_; ++part)
        text += "    make_all(part_" + std::to_string(part) + ", LENGTH(part_" + std::to_string(part) + "));\n";
    return text + R"c(    if (!ORVLOG_DLL_shutdown(orv.document_start.context))
        complain("the log can't be ended");
    if (fclose(log) != 0)
        complain("not all of the log could be written");
    return failed;
}
)c";
}

}  // namespace orvlog::inspect
