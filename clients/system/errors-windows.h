// What the system says of a failure, as the C library's numbers.

#pragma once

namespace orvlog::system
{

// Gives `done` back; where it is false, errno is set by the last error of this thread.
bool noted(bool done);

}  // namespace orvlog::system
