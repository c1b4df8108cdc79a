// What stands where there is no Cairo.

#include "tools/diff/against.h"
#include "tools/diff/pixel-pass.h"
#include "tools/replay/cairo-pages.h"
#include "tools/shared/clip-drawing.h"
#include "tools/shared/left-out.h"

namespace orvlog::tool
{

Run declare_at(CLI::App& app)
{
    return declare_left_out(app, "Cairo", "at");
}

Run declare_compare(CLI::App& app)
{
    return declare_left_out(app, "Cairo", "compare");
}

Run declare_regress(CLI::App& app)
{
    return declare_left_out(app, "Cairo", "regress");
}

Run declare_report(CLI::App& app)
{
    return declare_left_out(app, "Cairo", "report");
}

int compare_against(const DiffInput& /*log*/, const AgainstOptions& /*options*/)
{
    return left_out("Cairo", "--against");
}

std::unique_ptr<PixelPass> make_pixel_pass(const PixelPassOptions& /*options*/)
{
    return nullptr;
}

int draw_clip(const ClipDrawing& /*options*/, const orvlog::inspect::CallState& /*state*/, LogAgain& /*log*/)
{
    return left_out("Cairo", "--clip-png");
}

std::unique_ptr<CairoPages> make_cairo_pages(CairoPagesOptions /*options*/)
{
    return nullptr;
}

}  // namespace orvlog::tool
