// What a logged call costs: time to a stream that drops everything, memory over a long job, and the printing
// of numbers beside the C library's. With a file's name as argument it writes one log there instead, so that
// its system calls can be counted.

#include "bench/bench-clock.h"
#include "bench/null-stream.h"
#include "clients/stream/file-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "orvlog/interface/orvlog.h"
#include "orvlog/log/orvlog-number.h"

#include <cstdio>
#include <vector>

namespace
{

using orvlog::bench::NullStream;
using orvlog::bench::quickest;

constexpr int kPaints = 100000;

struct Job
{
    ORV_Interface orv = {};
    ORV_DrawingInterface face = {};
    void* document = nullptr;
    orvlog::client_stream::MallocAllocator allocator;
    orvlog::client_stream::RandomIdentity identity;

    bool begin(GIO_Stream* stream)
    {
        static const ORV_FaceProperties letter = {
            0, {{600, 0, 0, 600, 0, 0}}, 5100, 6600, {0, 0, 8.5, 11}, {0, 0, 8.5, 11}, {8.5, 11}};
        return ORVLOG_DLL_initialise(&orv, nullptr, allocator.allocator(), identity.source(), 0, stream, nullptr, 0,
                                     nullptr, nullptr, 0, nullptr, nullptr) != 0 &&
               orv.document_start.fn(nullptr, &orv, &document, 1, nullptr, nullptr) != 0 &&
               orv.face_start.fn(nullptr, &orv, document, &face, nullptr, 1, &letter, nullptr, 0, 0) != 0;
    }
    void paint(int count)
    {
        GSH_ImageRectShape rectangle = {};
        rectangle.irs_Shape.sh_ShapeType = GSH_SHAPE_IMAGE_RECT;
        rectangle.irs_Shape.sh_Transform = {{1.0 / 3, 0, 0, 1.0 / 7, 1.1, 2.2}};
        GSH_ShapePointer shape = {};
        shape.sp_HeaderPtr = &rectangle.irs_Shape;
        GOP_Operator op = {};
        for (int i = 0; i < count; ++i)
            face.object_paint.fn(&face, 4, 0, &op, &shape, 0, nullptr, nullptr, nullptr, nullptr);
    }
    void end()
    {
        face.drawing_finish.fn(&face);
        orv.document_finish.fn(&orv, document);
        ORVLOG_DLL_shutdown(orv.document_start.context);
    }
};

void measure_calls()
{
    NullStream stream;
    Job job;
    if (!job.begin(stream.get()))
        return;
    job.paint(1000);
    const uint64_t memory_before = job.allocator.bytes_in_use();
    stream.clear();
    const double seconds = quickest(5, [&job] { job.paint(kPaints / 5); });
    std::printf("a logged paint of a rectangle       %8.0f ns, %.0f bytes, %.1f flushes\n",
                seconds * 1e9 / (kPaints / 5.0), static_cast<double>(stream.bytes()) / kPaints,
                static_cast<double>(stream.flushes()) / kPaints);
    std::printf("memory of the session               %8llu bytes before, %llu after %d paints\n",
                static_cast<unsigned long long>(memory_before),
                static_cast<unsigned long long>(job.allocator.bytes_in_use()), kPaints);
    job.end();
}

void measure_numbers()
{
    std::vector<double> values;
    for (int i = 0; i < 100000; ++i)
        values.push_back(1000.0 / (i + 3.0));
    char text[ORVLOG_NUMBER_SIZE];
    uint64_t length = 0;
    const double own = quickest(5,
                                [&]
                                {
                                    for (const double value : values)
                                        length += orvlog_format_double(text, value);
                                });
    const double library = quickest(5,
                                    [&]
                                    {
                                        for (const double value : values)
                                            length +=
                                                static_cast<uint64_t>(std::snprintf(text, sizeof text, "%.17g", value));
                                    });
    const auto count = static_cast<double>(values.size());
    std::printf("a double as text                    %8.0f ns, by the C library %.0f ns: %.1f times (%llu bytes)\n",
                own * 1e9 / count, library * 1e9 / count, library / own, static_cast<unsigned long long>(length));
}

int write_file(const char* name)
{
    const auto stream = orvlog::client_stream::FileStream::open(name, "wb");
    Job job;
    if (stream == nullptr || !job.begin(stream->stream()))
        return 1;
    job.paint(100);
    job.end();
    return stream->close() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc > 1)
        return write_file(argv[1]);
    measure_calls();
    measure_numbers();
    return 0;
}
