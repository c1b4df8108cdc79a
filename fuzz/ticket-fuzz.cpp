// The reader of colour tickets on foreign data: it stays in its block, takes no memory, and closes every element
// that it opened. The first byte chooses the family.

#include "fuzz/fuzz.h"
#include "orvlog/colour/gxc/gxc-ticket.h"

#include <cstdarg>
#include <cstring>
#include <string>
#include <vector>

using orvlog::fuzz::expect;

namespace
{

constexpr const char* kOpenForms[] = {"%s%s<%s>\n", "%s%s<%s>"};
constexpr const char* kCloseForm = "%s%s</%s>\n";
constexpr const char* kInlineCloseForm = "</%s>\n";

// The names of the elements that are open, told by the forms of the prints.
using OpenElements = std::vector<std::string>;

int32_t watch(void* c, const char* format, va_list args)
{
    auto* open = static_cast<OpenElements*>(c);
    char text[4096];
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(text, sizeof text, format, again);
    va_end(again);
    const bool opens = std::strcmp(format, kOpenForms[0]) == 0 || std::strcmp(format, kOpenForms[1]) == 0;
    const bool closes = std::strcmp(format, kCloseForm) == 0;
    const bool closes_inline = std::strcmp(format, kInlineCloseForm) == 0;
    if (!opens && !closes && !closes_inline)
        return length;
    if (!closes_inline)
    {
        va_arg(args, const char*);
        va_arg(args, const char*);
    }
    const std::string name = va_arg(args, const char*);
    if (opens)
    {
        open->push_back(name);
        return length;
    }
    expect(!open->empty() && open->back() == name, "an element closes that is the last one open");
    open->pop_back();
    return length;
}

int32_t lend(void* c, void** data, uint64_t* length)
{
    auto* bytes = static_cast<std::vector<uint8_t>*>(c);
    *data = bytes->data();
    *length = bytes->size();
    return 1;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    const int32_t family = choices.byte() % 5 - 1;
    // A block of its own, so that a byte too many is seen.
    std::vector<uint8_t> bytes(choices.rest(), choices.rest() + choices.rest_size());
    OpenElements open;
    GIO_StreamOps lending = {};
    GIO_StreamOps printing = {};
    lending.gio_ReadBuffer = lend;
    printing.gio_VPrintf = watch;
    printing.gio_Flush = [](void*) -> int32_t { return 0; };
    GIO_Stream input = {&bytes, GIO_KIND_MEMORY, &lending};
    GIO_Stream output = {&open, GIO_KIND_FILE, &printing};
    gxc_deserialise_ticket(nullptr, &input, family, &output, "");
    expect(open.empty(), "every element is closed");
    return 0;
}
