// SPDX-License-Identifier: GPL-2.0-or-later
//
// Rows of an image under watch: that they end before their time is said, and that a later reading doesn't give what the
// first one gave.

#pragma once

#include "clients/pdf/content/graphics.h"

#include <functional>
#include <memory>
#include <string>

namespace orvlog::pdf_client
{

// Puts the image's rows under watch; the image is complete but for that. `name` begins what is said, "image 5 0 R" for
// example; `complain` outlives the image. Takes 2 KB at most, however large the image is.
void watch(Image& image, const std::string& name, std::function<void(const std::string&)> complain);

}  // namespace orvlog::pdf_client
