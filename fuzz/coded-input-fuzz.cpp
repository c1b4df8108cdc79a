// The log reader's source on foreign files: coded or not as the first byte says, cut and bent. The text does not
// depend on how it is fetched.

#include "fuzz/fuzz.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "reader/text/coded-input.h"

#include <sstream>
#include <string>
#include <vector>

using orvlog::fuzz::expect;
using orvlog::reader::CodedInput;
using orvlog::reader::Ending;

namespace
{

std::string read_all(const std::string& file, size_t piece, Ending* ending)
{
    std::istringstream source(file);
    CodedInput input(source);
    std::string text;
    std::vector<char> block(piece);
    while (const size_t count = input.read(block.data(), piece))
        text.append(block.data(), count);
    *ending = input.ending();
    expect(input.bytes_given() == text.size(), "each byte is counted");
    expect(input.bytes_used() <= file.size(), "no byte is used that is not there");
    return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    std::string file;
    if (choices.byte() % 2 == 1)
        file = ORVLOG_CODED_PREFIX;
    file.append(choices.rest(), choices.rest() + choices.rest_size());
    Ending ending = Ending::whole;
    Ending same = Ending::whole;
    const std::string text = read_all(file, 4096, &ending);
    expect(text == read_all(file, 1, &same), "the text is the same byte by byte");
    expect(ending == same, "the end is the same byte by byte");
    if (ending == Ending::whole)
        expect(text.starts_with("<ORV") && text.ends_with('\n'), "a whole log has a root and an end");
    if (ending == Ending::not_a_log)
        expect(text.empty(), "what is no log gives no text");
    return 0;
}
