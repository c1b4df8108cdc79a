// An image of a log as a client has it: its callbacks answer with what the log says that the client's answered.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "reader/records/records.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::replay
{

// What was delivered from a prepare or a reset on.
struct ImagePass
{
    struct Read
    {
        bool result = true;
        bool with_attributes = false;
        uint32_t skip_pixels = 0;
        int32_t row_step = 0;
        int32_t returned = 0;
        int32_t attr_row_step = 0;
        int32_t attr_returned = 0;
        std::vector<uint8_t> bytes;
        std::vector<uint8_t> attributes;
    };

    bool prepared = false;
    bool prepare_result = true;
    bool replaced = false;
    std::vector<Read> reads;
    bool finish_result = true;
    size_t bytes = 0;  // of all reads together
};

// Gives a piece of a file beside the log by the name that the log has for it: at most `count` bytes from `begin` on.
using SideFile = std::function<std::vector<uint8_t>(std::string_view name, uint64_t begin, uint64_t count)>;

class ReplayImage
{
public:
    // `record` is the operand's record, which gets the callbacks that `element` says the client's had. It lives as
    // long as the image.
    ReplayImage(GOP_OperandImagePointer* record, const reader::Element& element);
    ReplayImage(const ReplayImage&) = delete;
    ReplayImage& operator=(const ReplayImage&) = delete;

    // A callback element of this image, in the order of the log.
    void add(const reader::Element& callback, const SideFile& side_file, reader::RecordReader& records);

    // A direct image's bytes. False if they are too few for what the record says; the image is then empty.
    bool set_direct(std::vector<uint8_t> bytes);

    // Between a keep that was granted and the release.
    bool is_kept() const
    {
        return kept_;
    }
    // Between a keep that was refused and the release: a renderer may go on all the same.
    bool is_refused() const
    {
        return refused_ && !kept_;
    }
    const GOP_OperandImagePointer& record() const
    {
        return *record_;
    }
    const std::vector<ImagePass>& passes() const
    {
        return passes_;
    }
    // The pixels of the pass that has most of them, row by row without padding. Of a compressed image the stream.
    std::vector<uint8_t> pixels() const;

private:
    struct Callbacks;

    void set_callbacks(GOP_OperandImagePointer* record, const reader::Element& element);
    void begin_pass(bool prepared);
    void start_pass(bool by_prepare);
    const ImagePass* pass() const;
    bool answer_as_logged(uint32_t skip_pixels, uint8_t* buffer, uint32_t size, int32_t row_step, int32_t* returned,
                          uint8_t* attributes, uint32_t attr_size, int32_t* attr_returned, uint32_t* result);
    size_t pixel_bytes(const ImagePass::Read& read) const;
    void fill_from_pixels(uint8_t* buffer, uint32_t size, const ImagePass::Read& read);
    void answer_from_pixels(uint32_t skip_pixels, uint8_t* buffer, uint32_t size, int32_t row_step, int32_t* returned);

    GOP_OperandImagePointer* record_;
    std::vector<GOP_OperandImagePointer*> left_by_prepare_;  // one for each pass; null for one without a prepare
    std::vector<ImagePass> passes_;
    std::map<std::string, size_t> file_places_;  // where the next read of a side file begins
    std::vector<uint8_t> direct_;
    std::vector<uint8_t> pixels_;
    size_t row_bytes_ = 0;
    size_t next_pass_ = 0;
    size_t next_read_ = 0;
    size_t next_byte_ = 0;
    bool by_pixels_ = false;
    std::vector<bool> keep_results_;  // in the order of the log
    size_t next_keep_ = 0;
    bool kept_ = false;
    bool refused_ = false;
};

}  // namespace orvlog::replay
