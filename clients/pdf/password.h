// SPDX-License-Identifier: GPL-2.0-or-later
//
// Where the password of a document comes from: a file, or whoever sits at the terminal.

#pragma once

#include <optional>
#include <string>

namespace orvlog::pdf_client
{

// The first line of a file, without its end; of standard input for "-". Nothing if it can't be read or is longer than
// 4096 bytes; then `error` says what is wrong with it, the file's name first.
std::optional<std::string> read_password(const std::string& file, std::string& error);

// Asks on the terminal for the password of `document`; what is typed isn't shown. Nothing if there is no terminal, that
// is, if neither standard input nor standard error is one, or if the input ended. A signal that ends the process while
// it waits ends it with the terminal as it was.
std::optional<std::string> ask_password(const std::string& document);

}  // namespace orvlog::pdf_client
