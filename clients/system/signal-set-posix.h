// A set of signals, for the sources of this system.

#pragma once

#include "clients/system/signals.h"

#include <csignal>

namespace orvlog::system
{

struct SignalSet
{
    sigset_t signals;
};

}  // namespace orvlog::system
