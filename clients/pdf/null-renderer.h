// SPDX-License-Identifier: GPL-2.0-or-later

#pragma once

#include "orvlog/interface/orv-interface.h"

namespace orvlog::pdf_client
{

// A table that takes every call and draws nothing: what stands behind a job that is run without a renderer and
// without the logger. Has no state.
const ORV_Interface* null_renderer();

}  // namespace orvlog::pdf_client
