// SPDX-License-Identifier: GPL-2.0-or-later
//
// The record of a path. It owns its memory; the pointer that it gives is valid as long as it lives and isn't assigned
// to.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/record-block.h"
#include "orvlog/interface/orv-interface.h"

#include <vector>

namespace orvlog::pdf_client
{

// A path, each edge a run of segments of one kind. Edges hold at most 65535 segments; longer runs are cut.
class PathRecord
{
public:
    explicit PathRecord(const Path& path);
    const GPA_PathPointer* get() const;

private:
    std::vector<Block> edges_;
    Block path_;
    Block pointer_;
};

}  // namespace orvlog::pdf_client
