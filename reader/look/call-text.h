// What the text of a call says.

#pragma once

#include "reader/tree/element.h"

#include <string>

namespace orvlog::reader
{

// The bytes of the text that a paint draws, in the client's encoding; empty for what draws none. Texts of clips don't
// count.
std::string text_of(const Element& call);

}  // namespace orvlog::reader
