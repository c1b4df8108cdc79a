// SPDX-License-Identifier: GPL-2.0-or-later

#pragma once

#include "clients/colour/colour-manager.h"
#include "clients/pdf/poppler/pdf-document.h"

#include <functional>
#include <string>

namespace orvlog::pdf_client
{

// The colour ticket of a page, with one reference that is the caller's.
void* make_page_ticket(orvlog::colour::ColourManager& manager, PageColours colours,
                       const std::function<void(const std::string&)>& complain);

// Writes each ticket of a job to the folder, as ticket-1.bin and onwards. False if that fails.
bool save_tickets(const orvlog::colour::ColourManager& manager, const std::string& folder);

}  // namespace orvlog::pdf_client
