// SPDX-License-Identifier: GPL-2.0-or-later
//
// Operands that are colours: flat ones and gradients. Each owns its memory; the pointer that it gives is valid as long
// as it lives and isn't assigned to.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/record-block.h"
#include "clients/pdf/records/space-record.h"
#include "orvlog/interface/orv-interface.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace orvlog::pdf_client
{

// An operand of any kind but an image.
class OperandRecord
{
public:
    // Flat colours; with an alpha below 1 the colour has an alpha channel.
    static OperandRecord flat(const Colour& colour, double alpha);
    // A constant mask: gray with one channel.
    static OperandRecord constant_mask(double alpha);
    // A gradient of two stops at 0 and 1 is a two-point gradient, any other a multistop one.
    static OperandRecord gradient(const AxialGradient& gradient, double alpha);
    static OperandRecord gradient(const RadialGradient& gradient, double alpha);
    static OperandRecord gradient(const Triangle& triangle, double alpha);

    // The record, with this number as its op_UniqueId.
    GOP_OperandPointer* get(uint32_t unique_id);

private:
    OperandRecord() = default;
    static OperandRecord make(const ColourSpace& space, size_t operand_size, size_t pointer_size);
    GOP_Operand* head();
    void set_head(uint8_t kind, size_t count, double alpha);
    const GBC_Color* add_colour(const Colour& colour, double alpha);
    const GOP_GradStop* add_stop(const GradientStop& stop, double alpha);
    // Adds all stops, and points to them from the place at `offset` of the pointer record on.
    void add_stops(const std::vector<GradientStop>& stops, double alpha, size_t offset);

    Block operand_;
    Block pointer_;
    std::vector<Block> parts_;
    std::unique_ptr<SpaceRecord> space_;
};

}  // namespace orvlog::pdf_client
