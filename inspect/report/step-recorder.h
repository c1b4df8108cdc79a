// The steps of drawing one page, as they are made: what each changed, exactly.

#pragma once

#include "inspect/history/open-groups.h"
#include "inspect/report/call-effects.h"
#include "inspect/report/columns.h"
#include "inspect/report/step-chunks.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// What the report of a page has of its steps.
struct RecordedSteps
{
    std::string steps;    // the object `steps`, as JSON
    std::string effects;  // the name of the block, as JSON
};

class StepRecorder
{
public:
    // Blocks are written as the steps come, until `most_bytes` of the report are reached; the steps end then.
    StepRecorder(Blocks& blocks, const CallPlaces& places, uint64_t most_bytes);

    // What the renderer tells of the page. True for a step with which a page begins that isn't this one.
    void take(const cairo_renderer::WatchStep& step);

    bool begun() const
    {
        return !surfaces_.empty();
    }
    RecordedSteps finish();

private:
    enum Kind : uint8_t
    {
        surface_begins,
        painted,
        group_put,
        cell_put,
        part
    };
    // A surface that is there.
    struct Surface
    {
        std::shared_ptr<SurfaceCopy> copy;
        int64_t number = 0;
    };
    // Its row in the table.
    struct SurfaceRow
    {
        int kind = 0;
        int64_t below = -1;
        int64_t first = 0;
        int64_t last = 0;
        PixelBox box;
        std::optional<cairo_matrix_t> to_cell;
        double reach = 0;
    };

    void begin_page(const cairo_renderer::WatchStep& step);
    void begin(const cairo_renderer::WatchStep& step);
    void end(const cairo_renderer::WatchStep& step);
    void paint(const cairo_renderer::WatchStep& step);
    void open_surface(SurfaceRow row, const cairo_renderer::WatchStep& step, const PixelBox& within, uint32_t begins,
                      bool compare);
    void close_surface();
    bool look(const cairo_renderer::WatchStep& step);
    void add_step(Kind kind, int64_t call, int64_t by);
    void tell_effect(int64_t call, int64_t by);
    std::string frames_json() const;
    std::string surfaces_json() const;
    bool is_full();

    Blocks& blocks_;
    const CallPlaces& places_;
    uint64_t most_bytes_;
    StepChunks chunks_;
    Columns table_{{"kind", "call", "by", "frame", "surface", "pixels", "area"}};
    CallEffects effects_;
    std::vector<SurfaceRow> rows_;
    std::vector<Surface> surfaces_;
    std::vector<std::shared_ptr<SurfaceCopy>> copies_;  // of surfaces_
    OpenGroups groups_;
    std::vector<PixelRun> runs_;
    PixelBox area_;  // around these
    uint64_t pixels_ = 0;
    std::string note_ = "null";
};

}  // namespace orvlog::inspect
