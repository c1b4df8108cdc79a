// Redacted logs: whatever the text is, nothing of what a log doesn't say by itself comes through.

#include "fuzz/fuzz.h"
#include "inspect/redact/redacted-text.h"

#include <iterator>
#include <sstream>
#include <string>

using orvlog::fuzz::expect;
using namespace orvlog::inspect;

namespace
{

std::string redact(const std::string& log)
{
    std::istringstream source(log);
    RedactedText text(source);
    return {std::istreambuf_iterator<char>(&text), {}};
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string log(reinterpret_cast<const char*>(data), size);
    const std::string once = redact(log);
    // Names of elements and attributes, in which no blank can be, stay.
    for (const char* secret : {"hidden words", "Warm Red", "My Secret"})
        expect(once.find(secret) == std::string::npos, "no text comes through");
    for (const char c : once)
        expect(c == '\n' || c == '\r' || c == '\t' || (c >= ' ' && c <= '~'), "what comes is a log's own characters");
    redact(once);
    return 0;
}
