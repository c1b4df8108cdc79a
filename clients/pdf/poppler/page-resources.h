// SPDX-License-Identifier: GPL-2.0-or-later
//
// What a document says of a page's colours and blending before the page is read.

#pragma once

#include "clients/pdf/poppler/pdf-document.h"

#include <cstdint>
#include <vector>

#include <Object.h>

class PDFDoc;

namespace orvlog::pdf_client
{

// True if the resources, or those of the forms and patterns in them, have a blend mode other than the ordinary one.
// They may be null.
bool blends_within(Dict* resources);

// Adds the profiles that the resources name, and says which stand for the device families. They may be null.
void gather_profiles(Dict* resources, PageColours& colours);

// How many channels the colours of a device space or one with a profile have; 0 for all others.
uint16_t channels_of_space(const Object& space);

// The profile that the document was made for; empty if there is none.
std::vector<uint8_t> output_intent_of(PDFDoc& document);

}  // namespace orvlog::pdf_client
