#include "inspect/report/step-recorder.h"

#include <algorithm>

namespace orvlog::inspect
{

using cairo_renderer::WatchStep;

namespace
{

constexpr uint32_t kWhite = 0xFFFFFFFFU;
constexpr uint64_t kMostSteps = uint64_t{1} << 20;

enum SurfaceKind
{
    the_page,
    a_layer,
    a_cell
};

int64_t number_of(const std::optional<uint32_t>& frame)
{
    return frame ? int64_t{*frame} : -1;
}

std::string matrix_json(const cairo_matrix_t& matrix)
{
    std::string json = "[";
    for (const double value : {matrix.xx, matrix.yx, matrix.xy, matrix.yy, matrix.x0, matrix.y0})
        json.append(json.size() > 1 ? "," : "").append(number_json(value));
    return json + "]";
}

}  // namespace

StepRecorder::StepRecorder(Blocks& blocks, const CallPlaces& places, uint64_t most_bytes)
    : blocks_(blocks), places_(places), most_bytes_(most_bytes), chunks_(blocks)
{
}

void StepRecorder::take(const WatchStep& step)
{
    if (is_full())
        return;
    if (step.kind == WatchStep::Kind::page_begins)
        begin_page(step);
    else if (step.kind == WatchStep::Kind::painted)
        paint(step);
    else if (step.begins())
        begin(step);
    else
        end(step);
}

bool StepRecorder::is_full()
{
    if (note_ == "null" && (chunks_.steps() >= kMostSteps || blocks_.written() >= most_bytes_))
        note_ = text_json("the steps end here: they would make the report too large");
    return note_ != "null";
}

void StepRecorder::begin_page(const WatchStep& step)
{
    if (begun())
        return;
    SurfaceRow row;
    row.kind = the_page;
    open_surface(row, step, {0, 0, INT32_MAX, INT32_MAX}, kWhite, true);
}

// `compare`: the surface may begin with other pixels than `begins`.
void StepRecorder::open_surface(SurfaceRow row, const WatchStep& step, const PixelBox& within, uint32_t begins,
                                bool compare)
{
    const auto copy = std::make_shared<SurfaceCopy>(step.target, within, begins);
    row.below = surfaces_.empty() ? -1 : surfaces_.back().number;
    row.first = static_cast<int64_t>(chunks_.steps());
    row.box = copy->box();
    surfaces_.push_back({copy, static_cast<int64_t>(rows_.size())});
    copies_.push_back(copy);
    rows_.push_back(row);
    runs_.clear();
    if (compare)
        copy->compare(copy->box(), runs_);
    add_step(surface_begins, row.kind == the_page ? -1 : places_.of(step.call), -1);
}

void StepRecorder::close_surface()
{
    rows_[static_cast<size_t>(surfaces_.back().number)].last = static_cast<int64_t>(chunks_.steps()) - 1;
    surfaces_.pop_back();
    copies_.pop_back();
}

void StepRecorder::begin(const WatchStep& step)
{
    const bool cell = step.kind == WatchStep::Kind::cell_begins;
    SurfaceRow row;
    row.kind = cell ? a_cell : a_layer;
    if (cell)
    {
        row.to_cell = step.to_cell;
        row.reach = step.reach;
        open_surface(row, step, {INT32_MIN / 2, INT32_MIN / 2, INT32_MAX / 2, INT32_MAX / 2}, 0, true);
    }
    else if (step.layer && !surfaces_.empty())
        open_surface(row, step, surfaces_.back().copy->box(), 0, step.backdrop);
    groups_.begin(step);
}

// Looks for what the step changed on the innermost surface; false if it wasn't made there.
bool StepRecorder::look(const WatchStep& step)
{
    runs_.clear();
    if (surfaces_.empty() || surfaces_.back().copy->surface() != step.target)
        return false;
    surfaces_.back().copy->compare(step.area, runs_);
    return true;
}

// A step that changed `runs_` of the innermost surface.
void StepRecorder::add_step(Kind kind, int64_t call, int64_t by)
{
    const SurfaceCopy& copy = *surfaces_.back().copy;
    pixels_ = 0;
    area_ = {};
    for (const PixelRun& run : runs_)
    {
        const PixelBox box{run.x0, run.y, run.x1, run.y + 1};
        area_ = pixels_ == 0 ? box
                             : PixelBox{std::min(area_.x0, box.x0), area_.y0, std::max(area_.x1, box.x1),
                                        std::max(area_.y1, box.y1)};
        pixels_ += static_cast<uint64_t>(run.x1 - run.x0);
    }
    table_.add(int64_t{kind});
    table_.add(call);
    table_.add(by);
    table_.add(number_of(groups_.innermost()));
    table_.add(surfaces_.back().number);
    table_.add(static_cast<int64_t>(pixels_));
    if (runs_.empty())
        table_.add_null();
    else
        table_.add_box(area_.x0, area_.y0, area_.x1, area_.y1);
    chunks_.add(runs_, area_, copy, copies_);
}

void StepRecorder::tell_effect(int64_t call, int64_t by)
{
    if (call >= 0)
        effects_.changed(call, pixels_, area_);
    if (by >= 0 && by != call)
        effects_.changed(by, pixels_, area_);
}

void StepRecorder::paint(const WatchStep& step)
{
    if (!look(step))
        return;
    const int64_t call = places_.of(step.call);
    const bool half = groups_.is_part(step);
    if (!runs_.empty())
    {
        add_step(half ? part : painted, call, -1);
        if (!half)
            tell_effect(call, -1);
    }
    else if (call >= 0 && !half)
        effects_.unchanged(call, step, meet(step.area, surfaces_.back().copy->box()), places_);
}

void StepRecorder::end(const WatchStep& step)
{
    if (!groups_.end().value_or(false) || surfaces_.size() < 2)
        return;
    close_surface();
    if (!look(step))
        return;
    const int64_t call = places_.of(step.call);
    const int64_t by = places_.of(step.group);
    const bool cell = step.kind == WatchStep::Kind::cell_ends;
    if (!runs_.empty())
    {
        add_step(cell ? cell_put : group_put, call, by);
        tell_effect(call, by);
    }
    else if (by >= 0)
        effects_.unchanged(by, step, meet(step.area, surfaces_.back().copy->box()), places_);
}

std::string StepRecorder::frames_json() const
{
    Columns columns({"call", "outside"});
    for (const Around& group : groups_.list())
    {
        columns.add(places_.of(group.call));
        columns.add(number_of(group.outside));
    }
    return columns.json();
}

std::string StepRecorder::surfaces_json() const
{
    Columns columns({"kind", "below", "first", "last", "x", "y", "width", "height", "to_cell", "reach"});
    for (const SurfaceRow& row : rows_)
    {
        columns.add(int64_t{row.kind});
        for (const int64_t value : {row.below, row.first, row.last, int64_t{row.box.x0}, int64_t{row.box.y0},
                                    int64_t{row.box.x1} - row.box.x0, int64_t{row.box.y1} - row.box.y0})
            columns.add(value);
        if (row.to_cell)
            columns.add_json(matrix_json(*row.to_cell));
        else
            columns.add_null();
        columns.add(row.reach);
    }
    return columns.json();
}

RecordedSteps StepRecorder::finish()
{
    while (!surfaces_.empty())
        close_surface();
    RecordedSteps recorded;
    const std::string chunks = chunks_.finish();
    recorded.steps = "{\"count\":" + std::to_string(chunks_.steps());
    recorded.steps += ",\"table\":" + text_json(blocks_.add_deflated(table_.json()));
    recorded.steps += ",\"surfaces\":" + text_json(blocks_.add_deflated(surfaces_json()));
    recorded.steps += ",\"frames\":" + text_json(blocks_.add_deflated(frames_json()));
    recorded.steps += ",\"chunks\":" + chunks + ",\"note\":" + note_ + "}";
    recorded.effects = text_json(blocks_.add_deflated(effects_.json()));
    return recorded;
}

}  // namespace orvlog::inspect
