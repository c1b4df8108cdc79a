// What goes by while a call is read and isn't kept: bytes and the text of tickets. They are counted, digested and, when
// asked for, written.

#pragma once

#include "inspect/export/digest.h"
#include "inspect/export/export-job.h"
#include "inspect/export/image-bytes.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

class ByteRows
{
public:
    ByteRows(ExportJob& job, ImageBytes& images) : job_(job), images_(images) {}

    // As ElementReader tells them.
    void open(const orvlog::reader::Element& element, size_t depth);
    void row(const orvlog::reader::Element& element, std::string_view row);
    // The element that stands in the root has ended.
    void finish();

    // Of the element that is being read, one for each ticket with text.
    std::vector<Digest>& ticket_texts()
    {
        return ticket_texts_;
    }
    // Of the log so far.
    uint64_t image_bytes() const
    {
        return image_bytes_;
    }
    uint64_t side_file_bytes() const
    {
        return side_file_bytes_;
    }

private:
    bool in_callback() const;
    void count(const orvlog::reader::Element& element);
    std::string_view kind() const;
    void start_buffer(const orvlog::reader::Element& buffer);
    void put_piece();

    static constexpr size_t kPiece = 8192;

    ExportJob& job_;
    ImageBytes& images_;
    std::vector<Digest> ticket_texts_;
    std::vector<std::string_view> names_;  // of the open elements
    std::vector<uint8_t> row_;
    bool wanted_ = false;  // the bytes of the buffer that is read
    std::string hex_;      // of the piece that is being gathered
    int64_t offset_ = 0;   // where it begins
    int64_t elements_ = 0;
    std::string_view kind_;
    std::optional<int64_t> image_;
    int64_t images_before_ = 0;  // operands of earlier calls
    uint64_t image_bytes_ = 0;
    uint64_t side_file_bytes_ = 0;
};

}  // namespace orvlog::inspect
