// Rows of the records of a call: operators, operands and colours, shapes, paths and clips, images, fonts and texts,
// tickets.

#pragma once

#include "inspect/export/callback-rows.h"
#include "inspect/export/export-job.h"
#include "inspect/export/image-bytes.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

class RecordRows
{
public:
    // `ticket_texts` are digests of the tickets' texts of the present call, in the log's order.
    RecordRows(ExportJob& job, ImageBytes& images, std::vector<Digest>& ticket_texts)
        : job_(job), images_(images), ticket_texts_(ticket_texts), callbacks_(job)
    {
    }

    // Where the page of a call lies.
    struct Page
    {
        const GGO_Matrix* to_pixels = nullptr;  // from the call's space; null without a page
        double dpi_x = 0;
        double dpi_y = 0;
    };

    // All rows of an element that stands in the root; of its callbacks, too. Gives how many callbacks there were.
    uint64_t write(const orvlog::reader::Element& element, const Page& page);

private:
    // What stands around a record.
    struct Around
    {
        std::optional<std::string_view> role;
        std::optional<int64_t> operand;
        std::optional<int64_t> shape;
        std::optional<int64_t> clip;
        const orvlog::reader::Element* stop = nullptr;    // of a gradient
        const orvlog::reader::Element* glyphs = nullptr;  // of a text
    };

    void visit(const orvlog::reader::Element& element, const Around& around);
    void record(const orvlog::reader::Element& element, Around around);
    void op(const orvlog::reader::Element& element, const Around& around);
    int64_t operand(const orvlog::reader::Element& element, const Around& around);
    void image(const orvlog::reader::Element& element, const Around& around);
    void put_resolution(const orvlog::reader::Element* record);
    void colour(const orvlog::reader::Element& element, const Around& around);
    int64_t shape(const orvlog::reader::Element& element, const Around& around);
    void path(const orvlog::reader::Element& element, const Around& around);
    int64_t clip(const orvlog::reader::Element& element, const Around& around);
    void text(const orvlog::reader::Element& glyphs, const Around& around);
    void font(const orvlog::reader::Element& element, const Around& around);
    void engine(const orvlog::reader::Element& call);
    void ticket(const orvlog::reader::Element& element);

    struct Ticket
    {
        std::string family;
        std::string hash;
    };

    ExportJob& job_;
    ImageBytes& images_;
    std::vector<Digest>& ticket_texts_;
    CallbackRows callbacks_;
    Page page_;
    size_t images_of_call_ = 0;
    size_t tickets_of_call_ = 0;
    std::map<int64_t, Ticket> tickets_;  // that have been met with their text; so many at most

    static constexpr size_t kMostTickets = 4096;
};

}  // namespace orvlog::inspect
