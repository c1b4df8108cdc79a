// Logs a path of 100,000 Bezier segments to a null stream, and makes the same text by the C library's snprintf.

#include "bench/bench-clock.h"
#include "bench/null-stream.h"
#include "orvlog/records/gpa-path-dump.h"

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace
{

using orvlog::bench::NullStream;
using orvlog::bench::quickest;

constexpr uint32_t kEdges = 100;
constexpr uint32_t kSegments = 1000;
constexpr int kRuns = 7;
constexpr const char* kIndent = "          ";

struct Edge
{
    GPA_Edge head;
    uint32_t gap;
    GPA_BezierSegment segments[kSegments];
};

std::vector<Edge> make_edges()
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> inches(-11, 11);
    std::vector<Edge> edges(kEdges);
    for (Edge& edge : edges)
    {
        edge.head = {GPA_EDGE_BEZIER, GPA_SUBPATH_CONTINUE, kSegments};
        for (GPA_BezierSegment& s : edge.segments)
            s = {{inches(random), inches(random)}, {inches(random), inches(random)}, {inches(random), inches(random)}};
    }
    return edges;
}

void log_edges(ORVLOG_Writer* writer, const std::vector<Edge>& edges)
{
    for (const Edge& edge : edges)
        dump_GPA_BezierEdge(writer, reinterpret_cast<const GPA_BezierEdge*>(&edge));
}

// The plain way: one snprintf for each line, straight into one text.
size_t print_edges(std::string* text, const std::vector<Edge>& edges)
{
    char* at = text->data();
    char* end = at + text->size();
    const auto room = [&] { return static_cast<size_t>(end - at); };
    for (const Edge& edge : edges)
    {
        at += std::snprintf(at, room(), "%s<GPA_BezierEdge>\n", kIndent);
        at += std::snprintf(at, room(),
                            "%s  <GPA_Edge ed_EdgeType=\"GPA_EDGE_BEZIER\" ed_EdgeFlag=\"[%#x] GPA_SUBPATH_CONTINUE \" "
                            "ed_SegmentCount=\"%u\"/>\n%s  <GPA_BezierEdge.be_BezierSegment>\n",
                            kIndent, edge.head.ed_EdgeFlag, edge.head.ed_SegmentCount, kIndent);
        for (const GPA_BezierSegment& s : edge.segments)
        {
            at += std::snprintf(at, room(),
                                "%s    <GPA_BezierSegment bs_StartTangent=\"%.17g %.17g \" bs_EndTangent=\"%.17g %.17g "
                                "\" bs_EndPoint=\"%.17g %.17g \">\n%s    </GPA_BezierSegment>\n",
                                kIndent, s.bs_StartTangent.gvf_X, s.bs_StartTangent.gvf_Y, s.bs_EndTangent.gvf_X,
                                s.bs_EndTangent.gvf_Y, s.bs_EndPoint.gvf_X, s.bs_EndPoint.gvf_Y, kIndent);
        }
        at += std::snprintf(at, room(), "%s  </GPA_BezierEdge.be_BezierSegment>\n%s</GPA_BezierEdge>\n", kIndent,
                            kIndent);
    }
    return static_cast<size_t>(at - text->data());
}

}  // namespace

int main()
{
    const std::vector<Edge> edges = make_edges();
    NullStream stream;
    ORVLOG_Writer writer;
    orvlog_writer_init(&writer, nullptr, stream.get(), 0, 0);
    for (int level = 0; level < 5; ++level)
        orvlog_writer_depth_up(&writer);

    std::string logged;
    stream.keep_in(&logged);
    log_edges(&writer, edges);
    stream.keep_in(nullptr);
    std::string printed(logged.size() + 4096, '\0');
    printed.resize(print_edges(&printed, edges));
    if (logged != printed)
    {
        std::puts("the texts differ");
        return 1;
    }
    const auto flushes = static_cast<double>(stream.flushes());

    const double ours = quickest(kRuns, [&] { log_edges(&writer, edges); });
    printed.resize(logged.size() + 4096);
    const double theirs = quickest(kRuns, [&] { print_edges(&printed, edges); });
    const double megabytes = static_cast<double>(logged.size()) / 1e6;
    std::printf("path of %u Bezier segments, %.1f MB of text, %.0f flushes\n", kEdges * kSegments, megabytes, flushes);
    std::printf("  logged       %7.1f MB/s\n", megabytes / ours);
    std::printf("  by snprintf  %7.1f MB/s\n", megabytes / theirs);
    std::printf("  ratio        %7.2f\n", theirs / ours);
    return 0;
}
