// What a signal takes away that ends the command while it writes a file.

#pragma once

#include <string>

namespace orvlog::system
{

// The file that is being written, "" for none. From the first one on SIGINT, SIGTERM and SIGHUP are handled here, but
// for those that are ignored; who handled them before is told behind this.
void set_unfinished(const std::string& part);
// A file that belongs to what is written, and goes with it.
void note_file_beside(const std::string& path);
void forget_files_beside();

}  // namespace orvlog::system
