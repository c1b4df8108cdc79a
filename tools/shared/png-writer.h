// A PNG picture that is written row by row, so that none need be in memory as a whole. The same rows give the same
// bytes on every system.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace orvlog::tool
{

struct PngForm
{
    uint32_t width = 0;   // pixels, from 1 to INT32_MAX
    uint32_t height = 0;  // likewise
    uint32_t depth = 8;   // bits of a channel, 8 or 16, the higher byte first
    bool gray = false;    // one channel instead of red, green and blue
    bool alpha = false;   // another one behind these
};

class PngWriter
{
public:
    // Takes the next bytes of the picture; false if it can't.
    using Sink = std::function<bool(std::string_view bytes)>;

    PngWriter(const PngForm& form, Sink sink);
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter();

    size_t row_bytes() const
    {
        return last_.size();
    }
    // The next row, as many bytes. False once something has failed, and for a row too many.
    bool add_row(const uint8_t* row);
    // False if something has failed, or rows are missing.
    bool finish();

private:
    struct Deflater;

    void put_chunk(std::string_view type, std::string_view data);
    void put_head(const PngForm& form);
    void deflate_bytes(const uint8_t* bytes, size_t size, bool last);
    const std::vector<uint8_t>& filtered(const uint8_t* row);

    Sink sink_;
    std::unique_ptr<Deflater> deflater_;
    size_t pixel_bytes_;
    uint32_t rows_left_;
    bool good_ = true;
    std::vector<uint8_t> last_;                    // the row before
    std::array<std::vector<uint8_t>, 5> filters_;  // the row by each filter, the filter's number first
};

}  // namespace orvlog::tool
