#include "renderers/cairo/image-store.h"

#include <cstddef>
#include <cstdio>
#include <iterator>
#include <map>
#include <utility>

namespace orvlog::cairo_renderer
{

// A file without a name that is gone when it is closed. What was given back is used again.
class ImageStore::File
{
public:
    File() : file_(std::tmpfile()) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    ~File()
    {
        if (file_ != nullptr)
            std::fclose(file_);
    }

    // Takes as much place as the bytes need. False if they cannot be written.
    bool write(const uint8_t* bytes, uint64_t size, uint64_t& place)
    {
        place = take(size);
        if (file_ != nullptr && seek(place) && std::fwrite(bytes, 1, size, file_) == size && std::fflush(file_) == 0)
            return true;
        give_back(place, size);
        return false;
    }

    bool read(uint8_t* bytes, uint64_t size, uint64_t place)
    {
        return seek(place) && std::fread(bytes, 1, size, file_) == size;
    }

    void give_back(uint64_t place, uint64_t size)
    {
        auto next = free_.emplace(place, size).first;
        if (next != free_.begin())
        {
            const auto before = std::prev(next);
            if (before->first + before->second == place)
            {
                before->second += size;
                free_.erase(next);
                next = before;
            }
        }
        const auto behind = std::next(next);
        if (behind != free_.end() && next->first + next->second == behind->first)
        {
            next->second += behind->second;
            free_.erase(behind);
        }
        if (next->first + next->second == end_)
        {
            end_ = next->first;
            free_.erase(next);
        }
    }

private:
    bool seek(uint64_t place)
    {
        return fseeko(file_, static_cast<off_t>(place), SEEK_SET) == 0;
    }

    uint64_t take(uint64_t size)
    {
        for (auto hole = free_.begin(); hole != free_.end(); ++hole)
        {
            if (hole->second < size)
                continue;
            const uint64_t place = hole->first;
            const uint64_t rest = hole->second - size;
            free_.erase(hole);
            if (rest > 0)
                free_.emplace(place + size, rest);
            return place;
        }
        const uint64_t place = end_;
        end_ += size;
        return place;
    }

    std::FILE* file_;
    std::map<uint64_t, uint64_t> free_;  // sizes by places, none next to another
    uint64_t end_ = 0;
};

namespace
{

uint64_t bytes_of(cairo_surface_t* surface)
{
    return static_cast<uint64_t>(cairo_image_surface_get_stride(surface)) *
           static_cast<uint64_t>(cairo_image_surface_get_height(surface));
}

}  // namespace

ImageStore::ImageStore(uint64_t bytes, Complaints& complaints)
    : room_(std::make_shared<uint64_t>(bytes)), complaints_(complaints)
{
}

bool ImageStore::has_lost() const
{
    return *lost_;
}

void ImageStore::put_away(Image& image)
{
    if (image.surface == nullptr)
        return;
    const uint64_t size = bytes_of(image.surface.get());
    if (size <= *room_)
    {
        *room_ -= size;
        image.kept = std::shared_ptr<void>(nullptr, [room = room_, size](void*) { *room += size; });
        return;
    }
    if (file_ == nullptr)
        file_ = std::make_shared<File>();
    cairo_surface_flush(image.surface.get());
    uint64_t place = 0;
    const bool written = file_->write(cairo_image_surface_get_data(image.surface.get()), size, place);
    const cairo_format_t format = cairo_image_surface_get_format(image.surface.get());
    const int width = cairo_image_surface_get_width(image.surface.get());
    const int height = cairo_image_surface_get_height(image.surface.get());
    image.surface = nullptr;
    const auto lose = [lost = lost_, complaints = &complaints_]
    {
        *lost = true;
        complaints->lose_once("images for which neither memory nor the temporary folder has room are left out");
    };
    if (!written)
        return lose();
    image.kept = std::shared_ptr<void>(nullptr, [file = file_, place, size](void*) { file->give_back(place, size); });
    image.load = [=, file = file_]
    {
        SurfacePtr surface = own_surface(cairo_image_surface_create(format, width, height));
        uint8_t* data = cairo_image_surface_get_data(surface.get());
        if (data == nullptr || bytes_of(surface.get()) != size || !file->read(data, size, place))
        {
            lose();
            return SurfacePtr();
        }
        cairo_surface_mark_dirty(surface.get());
        return surface;
    };
}

SurfacePtr pixels_of(const Image& image)
{
    return image.surface == nullptr && image.load ? image.load() : image.surface;
}

}  // namespace orvlog::cairo_renderer
