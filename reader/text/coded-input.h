// A log as text, whatever its file is: plain, coded, or in Zstandard frames. Memory does not grow with the log; it
// holds a block, the decoder's tree and, in a coded log, the text of one colour ticket.

#pragma once

#include "reader/text/coded-bytes.h"
#include "reader/text/log-bytes.h"
#include "reader/text/log-end.h"
#include "reader/text/raw-bytes.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>

namespace orvlog::reader
{

enum class Ending
{
    whole,    // the root element is closed, and the comments behind it
    cut,      // the file ends before that; what was whole has been given
    damaged,  // a coded stream that no coder wrote, from some place on
    other,    // a coded stream of some other text, which has been given
    not_a_log
};

class CodedInput
{
public:
    // Reads from where `source` stands, which must be in binary mode. It is read in blocks and thus farther than
    // the log's end.
    explicit CodedInput(std::istream& source);

    // The next bytes of the log's text, at most `size`; 0 at its end.
    size_t read(char* buffer, size_t size);

    bool is_coded() const
    {
        return coded_.has_value();
    }
    // Tells something once read has given 0.
    Ending ending() const
    {
        return ending_;
    }
    // Bytes of the file that have been used, the plain ones at the beginning of a coded log included.
    uint64_t bytes_used() const
    {
        return bytes_.is_compressed() ? bytes_.bytes_used() : raw_.position();
    }
    uint64_t bytes_given() const
    {
        return given_;
    }

private:
    void fill();
    void finish();
    bool next_text(std::string& text);

    LogBytes bytes_;
    std::istream text_bytes_;
    RawBytes raw_;
    std::optional<CodedBytes> coded_;
    LogEnd end_;
    std::string text_;  // read and not yet given
    size_t next_ = 0;
    uint64_t given_ = 0;
    bool at_end_ = false;
    Ending ending_ = Ending::cut;
};

}  // namespace orvlog::reader
