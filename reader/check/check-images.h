// The part of a check that looks at images: their numbers, and whether their bytes are there.

#pragma once

#include "reader/check/log-check.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace orvlog::reader
{

class CheckImages
{
public:
    using Report = std::function<void(Place, std::string)>;
    // `note` is told of what a sound log may have, too.
    CheckImages(const CheckOptions& options, Report report, Report note)
        : options_(options), report_(std::move(report)), note_(std::move(note))
    {
    }

    void start_call();
    void operand(const Element& image);
    void callback(const Element& callback);
    // The bytes of what the call's callbacks delivered.
    void finish_call();

private:
    // One record of an image, and what was delivered for it since its prepare.
    struct Image
    {
        uint64_t rows = 0;
        uint64_t row_bytes = 0;
        uint32_t width = 0;
        uint64_t delivered = 0;
        uint64_t pixels = 0;  // bytes delivered and skipped over
        bool ended = false;
        bool read = false;
    };

    struct FileUse
    {
        Place place;
        uint64_t bytes = 0;
    };

    static void measure(const Element& image, Image& to);
    void read(const Element& callback, Image& image);
    void finish(const Element& callback, Image& image);
    void follow(const Element& callback);
    void direct(const Element& image, const Image& size);

    const CheckOptions& options_;
    Report report_;
    Report note_;
    uint64_t last_operand_ = 0;
    bool unnumbered_ = false;           // an image without a number came since
    std::map<uint32_t, Image> images_;  // of the call, by Id
    std::map<std::string, FileUse> files_;
    bool in_kept_log_ = false;
};

}  // namespace orvlog::reader
