// The bytes of the images of a call, as the log or files beside it have them: digested while the call is read, so that
// none are kept.
//
// An image may be read more than once, by the logger and by the renderer. What counts is the first time: from its first
// read to the read that gives nothing, to its finish, to its reset, or to its release.

#pragma once

#include "inspect/export/beside-files.h"
#include "inspect/export/digest.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

struct ImageData
{
    uint64_t bytes = 0;
    std::optional<std::string> hash;
};

class ImageBytes
{
public:
    explicit ImageBytes(BesideFiles& files) : files_(files) {}

    // Elements as their tags are met, the call's own with the depth 0, which begins anew; `outside` says that the
    // element stands in no callback.
    void open(const orvlog::reader::Element& element, bool outside);
    void start_call();
    // Bytes of the BufferUInt8 that was opened last.
    void add(std::span<const uint8_t> bytes);

    // The operand that such bytes are of, counted from 0 within the call.
    std::optional<size_t> owner() const
    {
        return owner_;
    }
    // Of the operand of this number, once the call is read.
    ImageData take(size_t number);

private:
    struct Image
    {
        Digest digest;
        uint64_t bytes = 0;
        bool closed = false;   // what follows is another time
        bool skipped = false;  // not all bytes are there
    };

    void callback(const orvlog::reader::Element& element);
    void read(const orvlog::reader::Element& element, Image& image);
    void read_beside(const orvlog::reader::Element& element, Image* image);
    void read_kept(std::string_view name, size_t image);
    void direct(const orvlog::reader::Element& element, Image& image);
    Image* image_of(const orvlog::reader::Element& callback);

    BesideFiles& files_;
    std::vector<Image> images_;
    std::map<uint32_t, size_t> by_id_;
    std::optional<size_t> prepared_;  // the image whose record stands in the prepare that was opened last
    std::optional<size_t> read_;      // whose read was opened last
    std::optional<size_t> owner_;
    bool counts_ = false;   // the bytes that come
    bool in_kept_ = false;  // they are of the log of a kept image
};

}  // namespace orvlog::inspect
