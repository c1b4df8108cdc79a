// What the steps of a page changed, in chunks, each a few blocks of a report.

#pragma once

#include "inspect/report/blocks.h"
#include "inspect/report/surface-copy.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace orvlog::inspect
{

class StepChunks
{
public:
    explicit StepChunks(Blocks& blocks) : blocks_(blocks) {}

    // The next step, which changed the pixels of `runs`, rows in order, all within `area`: `copy` has them as they are
    // now. `open` are the surfaces that are there.
    void add(const std::vector<PixelRun>& runs, const PixelBox& area, const SurfaceCopy& copy,
             std::span<const std::shared_ptr<SurfaceCopy>> open);

    uint64_t steps() const
    {
        return steps_;
    }
    // The list of chunks, as JSON. Nothing is added behind this.
    std::string finish();

private:
    void begin_chunk();
    void end_chunk();
    void make_key(std::span<const std::shared_ptr<SurfaceCopy>> open);
    void add_runs(const std::vector<PixelRun>& runs, const PixelBox& area, const SurfaceCopy& copy);

    Blocks& blocks_;
    std::string list_;
    std::string key_ = "null";  // of the chunk, as JSON
    std::unique_ptr<Deflated> runs_;
    std::unique_ptr<Deflated> pixels_;
    uint64_t steps_ = 0;
    uint64_t first_ = 0;      // of the chunk
    uint64_t in_chunk_ = 0;   // pixels
    uint64_t since_key_ = 0;  // likewise
    std::string numbers_;
};

}  // namespace orvlog::inspect
