// Captures a 100-megapixel RGB image in base mode to a null stream, to a file and to side files, beside a copy in
// memory and a plain loop that makes hexadecimal text by a table.

#include "bench/bench-clock.h"
#include "bench/null-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "holv-core/gio/gio-file.h"
#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "orvlog/log/orvlog-scope.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

using orvlog::bench::NullStream;
using orvlog::bench::quickest;

constexpr uint32_t kWidth = 10000;
constexpr uint32_t kHeight = 10000;
constexpr uint32_t kRowBytes = 3 * kWidth;
constexpr uint64_t kBytes = uint64_t{kRowBytes} * kHeight;
constexpr int kRuns = 2;

// Delivers the same row again and again.
struct Rows
{
    std::vector<uint8_t> row;
    uint32_t left;
};

GOP_OperandImagePointer make_record(const GOP_OperandImage* image, Rows* rows)
{
    GOP_OperandImagePointer record = {};
    record.imp_Image = image;
    record.imp_Context = rows;
    record.imp_ImagePrepareFn = [](GOP_OperandImagePointer** record_p, uint32_t, uint32_t, uint32_t, float, float,
                                   float, float, uint32_t, uint32_t, uint32_t) -> uint32_t
    {
        static_cast<Rows*>((*record_p)->imp_Context)->left = kHeight;
        return 1;
    };
    record.imp_ImageReadFn = [](GOP_OperandImagePointer*, void* context, uint32_t, uint8_t* buffer, uint32_t size,
                                int32_t, int32_t* returned, uint8_t*, uint32_t, int32_t, int32_t*) -> uint32_t
    {
        auto* source = static_cast<Rows*>(context);
        *returned = source->left != 0 ? static_cast<int32_t>(size) : 0;
        if (source->left == 0)
            return 1;
        --source->left;
        std::memcpy(buffer, source->row.data(), size);
        return 1;
    };
    record.imp_ImageFinishFn = [](GOP_OperandImagePointer*, void*) -> uint32_t { return 1; };
    return record;
}

void capture(ORVLOG_Session* session, GOP_OperandImagePointer* record)
{
    auto* operand = reinterpret_cast<GOP_OperandPointer*>(record);
    uint32_t kept = 0;
    ORVLOG_ReplaceImageOperand(session, &operand, &kept);
    ORVLOG_DumpOperandPointer(session, operand);
    ORVLOG_EndImageCall(reinterpret_cast<GOP_OperandImagePointer*>(operand), kept);
}

void report(const char* what, double seconds)
{
    std::printf("  %-28s %8.1f MB/s\n", what, static_cast<double>(kBytes) / 1e6 / seconds);
}

// The plain way: row by row, two digits and a blank for each byte, fifty bytes in a line.
uint64_t hex_loop(const std::vector<uint8_t>& row)
{
    static const char digits[] = "0123456789abcdef";
    std::vector<char> text(3 * row.size() + row.size() / 50 + 2);
    uint64_t total = 0;
    for (uint32_t y = 0; y < kHeight; ++y)
    {
        char* to = text.data();
        for (size_t i = 0; i < row.size(); ++i)
        {
            *to++ = digits[row[i] >> 4];
            *to++ = digits[row[i] & 0xF];
            *to++ = ' ';
            if (i % 50 == 49)
                *to++ = '\n';
        }
        total += static_cast<uint64_t>(to - text.data()) + static_cast<uint8_t>(text[y % row.size()]);
    }
    return total;
}

// The same with a table of all bytes: three characters at a time.
uint64_t hex_loop_by_bytes(const std::vector<uint8_t>& row)
{
    static const char digits[] = "0123456789abcdef";
    char table[256][4];
    for (int i = 0; i < 256; ++i)
    {
        const char text[4] = {digits[i >> 4], digits[i & 0xF], ' ', ' '};
        std::memcpy(table[i], text, 4);
    }
    std::vector<char> text(3 * row.size() + row.size() / 50 + 6);
    uint64_t total = 0;
    for (uint32_t y = 0; y < kHeight; ++y)
    {
        char* to = text.data();
        for (size_t i = 0; i < row.size(); i += 50)
        {
            for (size_t j = i; j < row.size() && j < i + 50; ++j, to += 3)
                std::memcpy(to, table[row[j]], 4);
            *to++ = '\n';
        }
        total += static_cast<uint64_t>(to - text.data()) + static_cast<uint8_t>(text[y % row.size()]);
    }
    return total;
}

double plain_write(const std::vector<uint8_t>& row)
{
    return quickest(kRuns,
                    [&]
                    {
                        std::ofstream file("plain.bin", std::ios::binary);
                        for (uint32_t y = 0; y < kHeight; ++y)
                            file.write(reinterpret_cast<const char*>(row.data()),
                                       static_cast<std::streamsize>(row.size()));
                    });
}

double capture_to_file(ORVLOG_Session* session, GOP_OperandImagePointer* record)
{
    return quickest(1,
                    [&]
                    {
                        GIO_Stream* file = nullptr;
                        gio_OpenFile("image.log", GIO_OPEN_WRITE, 0, session->allocator, &file);
                        {
                            const ORVLOG_Redirect redirect(&session->writer, file);
                            capture(session, record);
                        }
                        file->ops->gio_Close(file->instance);
                    });
}

}  // namespace

int main()
{
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / "orvlog-image-bench";
    fs::create_directories(folder);
    fs::current_path(folder);

    Rows rows = {std::vector<uint8_t>(kRowBytes), 0};
    for (uint32_t i = 0; i < kRowBytes; ++i)
        rows.row[i] = static_cast<uint8_t>(i * 7 + i / 256);
    GOP_OperandImage image = {};
    image.im_Operand = {GOP_OPERAND_IMAGE, 0, GNC_BMP_DEPTH_8, 0, GCM_CSF_RGB};
    image.im_ImageWidthPixels = kWidth;
    image.im_ImageHeightPixels = kHeight;
    GOP_OperandImagePointer record = make_record(&image, &rows);

    NullStream null;
    orvlog::client_stream::MallocAllocator allocator;
    ORVLOG_Session session = {};
    session.allocator = allocator.allocator();
    session.side_allocator = allocator.allocator();
    session.image.image_logging_mode = ORVLOG_MODE_BASE;
    orvlog_writer_init(&session.writer, nullptr, null.get(), 0, 0);

    std::vector<uint8_t> copy(kRowBytes);
    uint64_t sum = 0;
    const double memory = quickest(kRuns,
                                   [&]
                                   {
                                       for (uint32_t y = 0; y < kHeight; ++y)
                                       {
                                           std::memcpy(copy.data(), rows.row.data(), copy.size());
                                           sum += copy[y % copy.size()];
                                       }
                                   });
    const double loop = quickest(kRuns, [&] { sum += hex_loop(rows.row); });
    const double by_bytes = quickest(kRuns, [&] { sum += hex_loop_by_bytes(rows.row); });
    const double to_null = quickest(kRuns, [&] { capture(&session, &record); });
    const double to_file = capture_to_file(&session, &record);
    session.image.has_file_prefix = 1;
    std::strcpy(session.image.file_prefix, "side");
    const double to_side = quickest(1, [&] { capture(&session, &record); });
    const double plain = plain_write(rows.row);

    std::printf("RGB image of %u by %u pixels, %.0f MB (check %u)\n", kWidth, kHeight,
                static_cast<double>(kBytes) / 1e6, static_cast<unsigned>(sum & 1));
    report("copy in memory", memory);
    report("hex loop", loop);
    report("hex loop by bytes", by_bytes);
    report("captured to a null stream", to_null);
    report("captured to a file", to_file);
    report("captured to a side file", to_side);
    report("plain write of a file", plain);
    std::printf("  capture against hex loop     %8.2f\n", loop / to_null);
    std::printf("  against the loop by bytes    %8.2f\n", by_bytes / to_null);
    std::printf("  side file against write      %8.2f\n", plain / to_side);
    std::printf("  most memory in use           %8llu bytes\n",
                static_cast<unsigned long long>(allocator.peak_bytes()));
    fs::current_path(folder.parent_path());
    fs::remove_all(folder);
    return 0;
}
