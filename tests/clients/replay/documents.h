// Documents of one page each, for what the sample doesn't have: one thing each, by name.

#pragma once

#include <string>
#include <vector>

namespace orvlog::test
{

// "blend-modes", "cmyk-image", "gradients", "knockout-group", "tiling-patterns", "true-type-text"
const std::vector<std::string>& made_documents();

// The text of such a document.
std::string made_document(const std::string& name);

}  // namespace orvlog::test
