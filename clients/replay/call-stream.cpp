#include "clients/replay/call-stream.h"

#include <utility>

namespace orvlog::replay
{

CallStream::CallStream(std::istream& log, const Options& options) : elements_(log)
{
    elements_.on_damage = [this, &options](const reader::Damage& one)
    {
        ++damage_;
        if (options.complain)
            options.complain("line " + std::to_string(one.place.line) + ": " + one.text);
    };
    elements_.on_comment = [this, &options](const reader::Comment& one)
    {
        if (one.warning)
            return;
        if (one.inside && options.as_logged != nullptr)
            comments_.push_back(one);
        else if (!one.inside && options.comment)
            options.comment(one.text);
    };
}

const reader::Element* CallStream::peek()
{
    if (next_ == nullptr)
    {
        comments_.clear();
        next_ = elements_.next();
    }
    return next_;
}

const reader::Element* CallStream::take()
{
    peek();
    return std::exchange(next_, nullptr);
}

}  // namespace orvlog::replay
