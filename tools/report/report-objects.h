// What the calls of a log use, as pictures: images, glyphs, gradients, colour tickets.

#pragma once

#include "inspect/report/blocks.h"
#include "reader/tree/element.h"
#include "tools/extract/extract-images.h"
#include "tools/extract/job-files.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvlog::tool
{

class ReportObjects
{
public:
    // Pictures are left out behind `most_bytes` of the report.
    ReportObjects(orvlog::inspect::Blocks& blocks, JobFiles& files, uint64_t most_bytes);

    // The places of the objects that a call uses, each once.
    std::vector<int64_t> of(const orvlog::reader::Element& call, int64_t place);

    // The object `objects`, as JSON. No call comes behind this.
    std::string finish();

private:
    struct Object
    {
        std::string kind;
        std::string label;
        int64_t call = -1;
        int64_t uses = 0;
        uint32_t width = 0;
        uint32_t height = 0;
        std::string picture = "null";  // as JSON, as what follows
        std::string data = "null";
        std::string view = "null";
        std::string stops = "null";
        std::string content = "null";
        std::string note;
    };

    // The place of the object with this hash; `make` tells of it if it is new.
    template <typename Make> void use(uint64_t hash, const Make& make);
    void add_image(const TakenImage& image, const orvlog::reader::Element& operand);
    void add_images(const orvlog::reader::Element& call);
    void add_glyph(const orvlog::reader::Element& pointer, uint32_t number);
    void add_ticket(const orvlog::reader::Element& ticket);
    void add_gradient(const orvlog::reader::Element& operand);
    void walk(const orvlog::reader::Element& element, uint32_t depth);
    void end_block(uint64_t first, uint64_t count);
    std::string picture_of(std::string_view png, Object& object);

    orvlog::inspect::Blocks& blocks_;
    uint64_t most_bytes_;
    TakenImages images_;
    std::vector<Object> objects_;
    std::unordered_map<uint64_t, int64_t> places_;  // by hash
    std::unordered_map<uint32_t, int64_t> tickets_;
    std::vector<const orvlog::reader::Element*> operands_;  // images of the present call
    uint64_t text_bytes_ = 0;                               // that objects_ hold
    uint64_t left_out_ = 0;
    int64_t call_ = -1;
    std::vector<int64_t> used_;
    GGO_Matrix to_pixels_{};
    uint32_t glyph_ = 0;
    std::string list_;
};

}  // namespace orvlog::tool
