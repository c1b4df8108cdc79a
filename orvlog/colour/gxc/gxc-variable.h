// GXC: the tagged sections at the end of a serialised ticket.

#pragma once

#include "orvlog/colour/gxc/gxc-fields.h"

// Writes the sections that `input` stands at up to the end marker, which is read too. Sections that are not
// known are passed over by their size, without a word. False when the block ends before the end marker.
bool gxc_write_variable_data(GXC_Writer* writer, GXC_Input* input);
