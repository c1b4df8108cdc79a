#include "tools/shared/picture-file.h"

#include "inspect/pixels/pictures.h"
#include "tools/shared/output.h"

#include <cerrno>
#include <cstring>

namespace orvlog::tool
{

using orvlog::inspect::PixelCopy;

std::string write_picture(const PixelCopy& picture, const std::string& file)
{
    if (picture.width <= 0 || picture.height <= 0)
        return {};
    errno = ENOMEM;
    const std::string png = orvlog::inspect::picture_png(picture);
    if (png.empty())
        return file + ": " + std::strerror(errno);
    Output output(file);
    const bool good = output.open() && output.write(png.data(), png.size()) && output.finish();
    return good ? "" : file + ": " + std::strerror(output.reason() != 0 ? output.reason() : errno);
}

std::string write_pictures(const PixelCopy& a, const PixelCopy& b, uint32_t tolerance, const std::string& prefix)
{
    std::string why = write_picture(a, prefix + "-a.png");
    if (why.empty())
        why = write_picture(b, prefix + "-b.png");
    return why.empty() ? write_picture(orvlog::inspect::marked_picture(a, b, tolerance), prefix + "-marked.png") : why;
}

}  // namespace orvlog::tool
