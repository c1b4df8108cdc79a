// GXC: the tables of a definition by CIE values.

#pragma once

#include "orvlog/colour/gxc/gxc-fields.h"

#include <cstdint>

// Writes the record that `input` stands at, whose decode tables and HIJK table follow the family of the
// definition, 0 to 5; a family above has table A alone. False at the end of the block.
bool gxc_write_cie_luts(GXC_Writer* writer, GXC_Input* input, uint32_t cie_family);
