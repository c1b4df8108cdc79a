// SPDX-License-Identifier: GPL-2.0-or-later
//
// compare-pages A.png B.png [C.png D.png ...]: how far the two pictures of each pair differ, then all pairs.

#include "renderers/cairo/cairo-renderer.h"

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 3 || argc % 2 == 0)
    {
        std::fprintf(stderr, "usage: compare-pages A.png B.png [C.png D.png ...]\n");
        return 2;
    }
    const int pairs = (argc - 1) / 2;
    double sum = 0;
    for (int i = 1; i + 1 < argc; i += 2)
    {
        const orvlog::cairo_renderer::PagePixels one = orvlog::cairo_renderer::read_png(argv[i]);
        const orvlog::cairo_renderer::PagePixels other = orvlog::cairo_renderer::read_png(argv[i + 1]);
        const orvlog::cairo_renderer::PixelDifference difference = orvlog::cairo_renderer::compare_pixels(one, other);
        std::printf("%8.4f  largest %3u  %s (%ux%u, %ux%u)\n", difference.mean, difference.largest, argv[i], one.width,
                    one.height, other.width, other.height);
        sum += difference.mean;
    }
    std::printf("%8.4f  mean of all pages\n", sum / pairs);
    return 0;
}
