// GXC: colour space definitions in a serialised ticket.

#pragma once

#include "orvlog/colour/gxc/gxc-fields.h"

#include <cstdint>

// Each writes what `input` stands at and gives false when the block ends before it does.

// The list of markers and definitions up to its terminator.
bool gxc_write_csd_table(GXC_Writer* writer, GXC_Input* input);

// One definition, with its alternate definitions inside it, however many.
bool gxc_write_csd(GXC_Writer* writer, GXC_Input* input);

// The extensions of a definition of the given type and number of channels, up to their terminator. Extensions
// that are not known write nothing.
bool gxc_write_csd_extensions(GXC_Writer* writer, GXC_Input* input, uint32_t type, uint8_t num_base_chans);

// A table of output values. At a depth of 16 the block holds half as many values as are printed.
bool gxc_write_post_render_lut(GXC_Writer* writer, GXC_Input* input, uint8_t num_base_chans);
