// The text of a coded stream: what stands behind the 35 plain bytes of a coded log.
//
// A symbol is given out when all its bits are in the file, and none that leans on a bit behind the end. So a
// whole stream gives exactly the text that went in, and one that is cut gives what was whole.
//
// The text of a colour ticket stands as plain bytes between coded ones, because the ticket's reader prints it
// straight to the stream. The coder's waiting bits come after it. It is found by its first line at the place where a
// GCM_ColorTicket element has just begun, goes on to its last line, and is given out behind the element's.

#pragma once

#include "orvlog/log/ahc-coder.h"
#include "reader/text/raw-bytes.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace orvlog::reader
{

class CodedBytes
{
public:
    // `source` stands on the first coded byte.
    explicit CodedBytes(RawBytes& source);

    // Appends some text to `out`; false at the end of the stream or where it cannot be decoded further.
    bool read(std::string& out);

    // The stream asked for what no encoder writes.
    bool damaged() const
    {
        return damaged_;
    }
    // The stream was whole and held no text.
    bool of_nothing() const
    {
        return of_nothing_;
    }

private:
    struct Release
    {
        void operator()(AdaptiveHuffmanCoder* coder) const
        {
            AHC_DecoderDestroy(coder);
        }
    };

    void decode(std::string_view coded, std::string& out);
    void decode_last(std::string& out);
    bool step(uint32_t limit, std::string& out);
    void put(std::string_view text, std::string& out);
    bool starts_ticket(std::string_view raw) const;
    size_t coded_before_ticket(std::string_view raw) const;
    bool is_end_of_ticket();
    void take_ticket();

    RawBytes& source_;
    std::unique_ptr<AdaptiveHuffmanCoder, Release> coder_;
    std::string line_;    // the first bytes of the present line of text
    std::string ticket_;  // text that waits for the end of the present line
    uint64_t looked_again_ = 0;
    bool looked_at_ticket_ = false;
    bool begun_ = false;
    bool ended_ = false;
    bool damaged_ = false;
    bool of_nothing_ = false;
};

}  // namespace orvlog::reader
