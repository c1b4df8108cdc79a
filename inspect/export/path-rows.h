// What is told of a path: how much of what is in it, and a digest of its geometry.

#pragma once

#include "inspect/export/row-writer.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <string>

namespace orvlog::inspect
{

struct PathFacts
{
    uint64_t edges = 0;
    uint64_t segments = 0;
    uint64_t straights = 0;
    uint64_t beziers = 0;
    uint64_t quadratics = 0;
    uint64_t staircases = 0;
    uint64_t ellipses = 0;
    uint64_t closed = 0;
    std::string hash;  // of start points, edges and segments as the log writes them
    bool complete = false;
};

// `path` is a GPA_PathPointer. `segment` is told of each segment, and may be empty: its edge, the number of that in the
// path from 1, the edge's start point at its first segment, else null.
using TakeSegment = std::function<void(const orvlog::reader::Element& edge, uint64_t number,
                                       const orvlog::reader::Element* start, const orvlog::reader::Element& segment)>;
PathFacts path_facts(const orvlog::reader::Element& path, const TakeSegment& segment);

// The kind of an edge and its numbers, behind those that tell which segment it is: the rest of a row of segments.
void put_segment(RowWriter& rows, const orvlog::reader::Element& edge, const orvlog::reader::Element* start,
                 const orvlog::reader::Element& segment);

}  // namespace orvlog::inspect
