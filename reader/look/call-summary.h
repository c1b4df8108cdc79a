// What can be said of each call in one line.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

// The kinds of calls: their names without "ORV_".
std::span<const std::string_view> call_kinds();

struct CallSummary
{
    Place place;
    std::string_view kind;            // the call's name without "ORV_"
    std::optional<uint32_t> id;       // of a paint
    uint32_t page = 0;                // from 1; 0 for what is not on a page, as the content of resources
    std::optional<GGO_BoxFloat> box;  // what it paints, in pixels of its page, clips left aside
    std::string op;                   // "source-over", "multiply, mask in"; empty for calls that have none
    std::string colour;               // "rgb(1 0 0)", "image 40x40 rgb 8 bits"; empty likewise
};

// Follows the drawings of a log. Memory goes with the drawings that are open and the resources that are there, of each
// 65536 at most: beyond that, those with the lowest numbers are forgotten.
class CallSummaries
{
public:
    // Calls in the order of the log. Views are good as long as the element.
    CallSummary next(const Element& call);

    // From the space in which a call draws to pixels; null if it is not on a page. Good until the next call.
    const GGO_Matrix* to_pixels(const Element& call) const;

    uint32_t pages() const
    {
        return pages_;
    }

private:
    struct Drawing
    {
        uint32_t page = 0;
        std::vector<GGO_Matrix> spaces;  // content to pixels, of the page and its open groups; empty: not known
        GGO_BoxFloat face{};
        uint64_t deeper = 0;  // groups that are open beyond the deepest that is followed
    };

    Drawing* drawing_of(const Element& call);
    void start_face(const Element& call, CallSummary& summary);
    void start_resource(const Element& call, CallSummary& summary);
    void start_group(const Element& call, CallSummary& summary, Drawing& drawing);
    static void finish_group(const Element& call, Drawing& drawing);
    void paint_resource(const Element& call, CallSummary& summary, const Drawing& drawing);
    static std::optional<GGO_BoxFloat> paint_box(const Element& call, const Drawing& drawing);

    std::map<uint32_t, Drawing> drawings_;
    std::map<uint32_t, GGO_BoxFloat> resources_;
    uint32_t pages_ = 0;
};

// The box that the clips of a call leave at most, in the space that `to_pixels` leads to: nothing if they don't tell,
// and a maximum below its minimum if they leave nothing. Groups and resources clip in the space around them.
std::optional<GGO_BoxFloat> clip_box(const Element& call, const GGO_Matrix& to_pixels);

// The operator of a GOP_Operator; of null, source over.
std::string operator_text(const Element* op);
// What paints: one of the operands; empty for null.
std::string operand_text(const Element* operand);
// A GOP_OperandImagePointer: "40x40 rgb 8 bits", with the kind of what is not plain.
std::string image_text(const Element& image);

}  // namespace orvlog::reader
