// SPDX-License-Identifier: GPL-2.0-or-later
//
// The definition of a colour space. It owns its memory; what it gives is valid as long as it lives and isn't assigned
// to.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "orvlog/interface/orv-interface.h"

#include <cstdint>
#include <memory>

namespace orvlog::pdf_client
{

// A colour definition for an operand; null in cp_Csd for device spaces.
class SpaceRecord
{
public:
    explicit SpaceRecord(const ColourSpace& space);
    const GCM_CsdPointer& pointer() const;
    // The go_ColorInfo and go_ColorSpaceFamily of an operand in this space.
    uint8_t colour_info() const;
    uint16_t family() const;

private:
    struct Tables;
    void fill_cie_tables(const SpaceDefinition& definition);

    ColourSpace space_;
    std::shared_ptr<Tables> tables_;
    GCM_CsdPointer pointer_{};
};

}  // namespace orvlog::pdf_client
