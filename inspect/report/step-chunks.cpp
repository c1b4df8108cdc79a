#include "inspect/report/step-chunks.h"

#include "inspect/report/columns.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

constexpr uint64_t kMostSteps = 4096;
constexpr uint64_t kMostPixels = uint64_t{1} << 18;
// With as many of a key a browser brings them up in a tenth of a second.
constexpr uint64_t kPixelsBetweenKeys = uint64_t{3} << 18;

void add_number(std::string& bytes, uint64_t number)
{
    while (number >= 128)
    {
        bytes += static_cast<char>(128U | (number & 127U));
        number >>= 7U;
    }
    bytes += static_cast<char>(number);
}

void add_pixels(Deflated& block, const uint32_t* pixels, size_t count)
{
    // The lowest byte first, as on all machines that this is built for.
    block.add(pixels, count * sizeof *pixels);
}

}  // namespace

void StepChunks::begin_chunk()
{
    first_ = steps_;
    in_chunk_ = 0;
    runs_ = std::make_unique<Deflated>();
    pixels_ = std::make_unique<Deflated>();
}

// Of the chunk that comes next.
void StepChunks::make_key(std::span<const std::shared_ptr<SurfaceCopy>> open)
{
    uint64_t all = 0;
    for (const auto& copy : open)
        all += copy->size();
    key_ = "null";
    if (since_key_ < std::max(kPixelsBetweenKeys, all))
        return;
    since_key_ = 0;
    Deflated key;
    for (const auto& copy : open)
        if (copy->size() > 0)
            add_pixels(key, copy->at(copy->box().x0, copy->box().y0), copy->size());
    key_ = text_json(blocks_.add(key));
}

void StepChunks::end_chunk()
{
    if (runs_ == nullptr)
        return;
    list_.append(list_.empty() ? "" : ",").append("{\"first\":").append(std::to_string(first_));
    list_.append(",\"count\":").append(std::to_string(steps_ - first_));
    list_.append(",\"runs\":").append(text_json(blocks_.add(*runs_)));
    list_.append(",\"pixels\":").append(text_json(blocks_.add(*pixels_)));
    list_.append(",\"key\":").append(key_).append("}");
    since_key_ += in_chunk_;
    runs_.reset();
    pixels_.reset();
}

void StepChunks::add_runs(const std::vector<PixelRun>& runs, const PixelBox& area, const SurfaceCopy& copy)
{
    numbers_.clear();
    add_number(numbers_, runs.size());
    int y = area.y0;
    int x = area.x0;
    for (const PixelRun& run : runs)
    {
        x = run.y != y ? area.x0 : x;
        const auto length = static_cast<uint64_t>(run.x1 - run.x0);
        add_number(numbers_, static_cast<uint64_t>(run.y - y));
        add_number(numbers_, static_cast<uint64_t>(run.x0 - x));
        add_number(numbers_, length);
        add_pixels(*pixels_, copy.at(run.x0, run.y), length);
        in_chunk_ += length;
        y = run.y;
        x = run.x1;
    }
    runs_->add(numbers_);
}

void StepChunks::add(const std::vector<PixelRun>& runs, const PixelBox& area, const SurfaceCopy& copy,
                     std::span<const std::shared_ptr<SurfaceCopy>> open)
{
    if (runs_ == nullptr)
        begin_chunk();
    ++steps_;
    if (!runs.empty())
        add_runs(runs, area, copy);
    if (steps_ - first_ < kMostSteps && in_chunk_ < kMostPixels)
        return;
    end_chunk();
    make_key(open);
}

std::string StepChunks::finish()
{
    end_chunk();
    return "[" + list_ + "]";
}

}  // namespace orvlog::inspect
