// The pixels of images that wait to be painted, because the calls of their drawing are kept: so much of them in memory,
// the rest in a temporary file.

#pragma once

#include "renderers/cairo/complaints.h"
#include "renderers/cairo/scene.h"

#include <cstdint>
#include <memory>

namespace orvlog::cairo_renderer
{

class ImageStore
{
public:
    // At most `bytes` of pixels stay in memory. Borrows `complaints`.
    ImageStore(uint64_t bytes, Complaints& complaints);

    // To be called once for an image that waits. Its pixels stay if there is room for them, until it is gone, else they
    // go to the file. Those that cannot be written are lost: that is said, and the image is painted no more.
    void put_away(Image& image);

    // True if pixels were lost.
    bool has_lost() const;

private:
    class File;

    std::shared_ptr<uint64_t> room_;  // bytes that may still stay in memory
    std::shared_ptr<File> file_;      // null until it is needed
    Complaints& complaints_;
    std::shared_ptr<bool> lost_ = std::make_shared<bool>(false);
};

// The pixels of an image, from memory or from the file; null if there are none. They are the caller's for as long as it
// holds them.
SurfacePtr pixels_of(const Image& image);

}  // namespace orvlog::cairo_renderer
