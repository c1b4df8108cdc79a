#include "reader/text/raw-bytes.h"

#include <algorithm>

namespace orvlog::reader
{

RawBytes::RawBytes(std::istream& source) : source_(source), block_(kBlockSize) {}

std::string_view RawBytes::look(size_t wanted)
{
    if (end_ - next_ < wanted)
    {
        std::copy(block_.begin() + static_cast<ptrdiff_t>(next_), block_.begin() + static_cast<ptrdiff_t>(end_),
                  block_.begin());
        end_ -= next_;
        next_ = 0;
        while (end_ < wanted && source_.good())
        {
            source_.read(block_.data() + end_, static_cast<std::streamsize>(kBlockSize - end_));
            end_ += static_cast<size_t>(source_.gcount());
        }
    }
    return {block_.data() + next_, end_ - next_};
}

void RawBytes::skip(size_t count)
{
    next_ += count;
    position_ += count;
}

}  // namespace orvlog::reader
