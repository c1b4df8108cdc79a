// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/path-record.h"

#include <algorithm>
#include <cstddef>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kGreatestSegmentCount = 65535;

GGO_Vector between(GGO_Point from, GGO_Point to)
{
    return {to.gpf_X - from.gpf_X, to.gpf_Y - from.gpf_Y};
}

// A run of segments of one kind within a subpath.
struct Run
{
    const Subpath* subpath;
    size_t first;
    size_t count;
    GGO_Point start;
    bool last;
};

std::vector<Run> split_into_runs(const Path& path)
{
    std::vector<Run> runs;
    for (const Subpath& subpath : path.subpaths)
    {
        const size_t total = subpath.segments.size();
        GGO_Point start = subpath.start;
        size_t first = 0;
        do
        {
            size_t count = 0;
            while (first + count < total && count < kGreatestSegmentCount &&
                   subpath.segments[first + count].curve == subpath.segments[first].curve)
                ++count;
            runs.push_back({&subpath, first, count, start, first + count >= total});
            first += count;
            if (count > 0)
                start = subpath.segments[first - 1].end;
        } while (first < total);
    }
    return runs;
}

Block straight_edge(const Run& run)
{
    Block block(offsetof(GPA_StraightEdge, se_Segment) + run.count * sizeof(GGO_Vector));
    GGO_Vector* segments = part_in<GGO_Vector>(block, offsetof(GPA_StraightEdge, se_Segment));
    GGO_Point from = run.start;
    for (size_t i = 0; i < run.count; ++i)
    {
        const Segment& segment = run.subpath->segments[run.first + i];
        segments[i] = between(from, segment.end);
        from = segment.end;
    }
    return block;
}

Block bezier_edge(const Run& run)
{
    Block block(offsetof(GPA_BezierEdge, be_BezierSegment) + run.count * sizeof(GPA_BezierSegment));
    GPA_BezierSegment* segments = part_in<GPA_BezierSegment>(block, offsetof(GPA_BezierEdge, be_BezierSegment));
    GGO_Point from = run.start;
    for (size_t i = 0; i < run.count; ++i)
    {
        const Segment& segment = run.subpath->segments[run.first + i];
        segments[i] = {between(from, segment.control1), between(from, segment.control2), between(from, segment.end)};
        from = segment.end;
    }
    return block;
}

Block edge_of(const Run& run)
{
    const bool curves = run.count > 0 && run.subpath->segments[run.first].curve;
    Block block = curves ? bezier_edge(run) : straight_edge(run);
    GPA_Edge* edge = record_in<GPA_Edge>(block);
    edge->ed_EdgeType = curves ? GPA_EDGE_BEZIER : GPA_EDGE_STRAIGHT;
    const uint8_t end = run.subpath->closed ? GPA_SUBPATH_END_CLOSED : GPA_SUBPATH_END_OPEN;
    edge->ed_EdgeFlag = run.last ? end : static_cast<uint8_t>(GPA_SUBPATH_CONTINUE);
    edge->ed_SegmentCount = static_cast<uint16_t>(run.count);
    return block;
}

bool is_rectangle(const Path& path)
{
    if (path.subpaths.size() != 1)
        return false;
    const Subpath& subpath = path.subpaths[0];
    const size_t count = subpath.segments.size();
    if (count < 3 || count > 4 || (!subpath.closed && count != 4))
        return false;
    std::vector<GGO_Point> points = {subpath.start};
    for (const Segment& segment : subpath.segments)
    {
        if (segment.curve)
            return false;
        points.push_back(segment.end);
    }
    if (count == 4 && (points[4].gpf_X != points[0].gpf_X || points[4].gpf_Y != points[0].gpf_Y))
        return false;
    const bool across = points[0].gpf_Y == points[1].gpf_Y && points[1].gpf_X == points[2].gpf_X &&
                        points[2].gpf_Y == points[3].gpf_Y && points[3].gpf_X == points[0].gpf_X;
    const bool along = points[0].gpf_X == points[1].gpf_X && points[1].gpf_Y == points[2].gpf_Y &&
                       points[2].gpf_X == points[3].gpf_X && points[3].gpf_Y == points[0].gpf_Y;
    return across || along;
}

uint16_t hints_of(const Path& path)
{
    uint16_t hints = 0;
    if (is_rectangle(path))
        hints |= GPA_HINT_IS_RECTANGLE;
    if (path.subpaths.size() == 1)
        hints |= GPA_HINT_ONE_SUBPATH;
    bool curves = false;
    for (const Subpath& subpath : path.subpaths)
    {
        curves = curves || std::any_of(subpath.segments.begin(), subpath.segments.end(),
                                       [](const Segment& segment) { return segment.curve; });
    }
    if (!curves)
        hints |= GPA_HINT_ONLY_STRAIGHTS | GPA_HINT_BOX_IS_MINIMAL;
    return hints;
}

}  // namespace

PathRecord::PathRecord(const Path& path)
{
    const std::vector<Run> runs = split_into_runs(path);
    path_.resize(std::max(sizeof(GPA_Path), offsetof(GPA_Path, pa_EdgeStart) + runs.size() * sizeof(GGO_Point)));
    pointer_.resize(std::max(sizeof(GPA_PathPointer),
                             offsetof(GPA_PathPointer, lpp_EdgePointer) + runs.size() * sizeof(GPA_EdgePointer)));
    GPA_Path* record = record_in<GPA_Path>(path_);
    record->pa_NumEdges = static_cast<uint32_t>(runs.size());
    record->pa_PathHints = hints_of(path);
    record->pa_EnclosingBox = path.bounds();
    GPA_PathPointer* pointer = record_in<GPA_PathPointer>(pointer_);
    pointer->lpp_Path = record;
    GGO_Point* starts = part_in<GGO_Point>(path_, offsetof(GPA_Path, pa_EdgeStart));
    GPA_EdgePointer* edges = part_in<GPA_EdgePointer>(pointer_, offsetof(GPA_PathPointer, lpp_EdgePointer));
    edges_.reserve(runs.size());
    for (size_t i = 0; i < runs.size(); ++i)
    {
        edges_.push_back(edge_of(runs[i]));
        starts[i] = runs[i].start;
        edges[i].ep_Pointer = record_in<GPA_Edge>(edges_.back());
    }
}

const GPA_PathPointer* PathRecord::get() const
{
    return record_in<GPA_PathPointer>(pointer_);
}

}  // namespace orvlog::pdf_client
