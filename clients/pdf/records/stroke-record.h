// SPDX-License-Identifier: GPL-2.0-or-later
//
// The parameters of a stroke. The record owns its memory; the pointer that it gives is valid as long as it lives and
// isn't assigned to.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/record-block.h"
#include "orvlog/interface/orv-interface.h"

namespace orvlog::pdf_client
{

// Lengths are in the unit of the shape that is stroked.
class StrokeRecord
{
public:
    explicit StrokeRecord(const StrokeStyle& style);
    const GPA_PathStrokingParams* get() const;

private:
    Block block_;
};

}  // namespace orvlog::pdf_client
