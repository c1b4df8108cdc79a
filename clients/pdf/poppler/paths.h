// SPDX-License-Identifier: GPL-2.0-or-later
//
// Poppler's paths, matrices and line styles as the painter has them.

#pragma once

#include "clients/pdf/content/graphics.h"

class GfxPath;
class GfxState;
class SplashPath;

namespace orvlog::pdf_client
{

// Six numbers in the order of the document.
GGO_Matrix matrix_of(const double* m);

Path path_of(const GfxPath& source);
// The points of a font's outline, already in the wanted units.
Path path_of(SplashPath& source);

// The closing line of a closed subpath goes without saying.
void drop_closing_lines(Path& path);
// False if a coordinate is no number, or beyond what anything on a page could need.
bool all_finite(const Path& path);

// The state's line style, its lengths multiplied by `scale`.
StrokeStyle style_of(GfxState* state, double scale);

}  // namespace orvlog::pdf_client
