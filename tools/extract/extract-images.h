// The images of a call, put together from its operands, its callbacks and the files that they name.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "reader/records/records.h"
#include "reader/tree/element.h"
#include "tools/extract/extract-output.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace orvlog::tool
{

// A record of an image, with the bytes that were delivered for it: rows without padding, or a compressed stream.
struct TakenImage
{
    uint32_t operand = 0;  // the Id of the operand that it belongs to
    const GOP_OperandImagePointer* record = nullptr;
    std::vector<uint8_t> color_table;
    uint64_t row_bytes = 0;  // 0: not known
    uint64_t rows = 0;
    std::vector<uint8_t> bytes;    // of the pass that delivered most
    std::vector<uint8_t> present;  // of the pass that is going on

    void end_pass();
};

class TakenImages
{
public:
    // The record's name, where it begins, and how much of it is wanted.
    using SideFile = std::function<std::vector<uint8_t>(const std::string& name, uint64_t begin, uint64_t count)>;
    using KeptLog = std::function<std::unique_ptr<std::istream>(const std::string& name)>;
    TakenImages(SideFile side_file, KeptLog kept_log) : side_file_(std::move(side_file)), kept_log_(std::move(kept_log))
    {
    }

    // All that stands in the call. Images are in the order of their operands.
    const std::vector<const TakenImage*>& take(const orvlog::reader::Element& call);

private:
    void walk(const orvlog::reader::Element& element, uint32_t depth);
    void operand(const orvlog::reader::Element& element);
    void callback(const orvlog::reader::Element& element);
    void read(const orvlog::reader::Element& element, TakenImage& image);
    void describe(const orvlog::reader::Element& element, TakenImage& image);

    SideFile side_file_;
    KeptLog kept_log_;
    orvlog::reader::Arena arena_;
    std::unique_ptr<orvlog::reader::RecordReader> records_;
    std::map<uint32_t, TakenImage> images_;      // by Id
    std::map<std::string, uint64_t> file_ends_;  // how much of a side file has been used
    std::vector<const TakenImage*> order_;
    uint32_t unnumbered_ = 0;
};

// Writes an image as PNG, as PAM if its channels are no colours that PNG has, or as raw bytes. Gives the file's name,
// which is `stem` with an ending, and empty if there are no bytes or the file could not be written.
std::string write_image(ExtractOutput& output, const std::string& stem, const TakenImage& image);

// The image as the bytes of a PNG file, made smaller by leaving out rows and columns until no side is longer than
// `longest`. Empty if it isn't one of gray, RGB or CMYK, or nothing of it is there.
std::string image_png(const TakenImage& image, uint32_t longest);

}  // namespace orvlog::tool
