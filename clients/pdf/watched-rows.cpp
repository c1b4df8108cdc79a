// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/watched-rows.h"

#include <cstring>
#include <utility>
#include <vector>

namespace orvlog::pdf_client
{

namespace
{

constexpr uint32_t kMostMarks = 256;

uint64_t mixed(uint64_t sum, uint64_t word)
{
    sum = (sum ^ word) * 0x9E3779B97F4A7C15U;
    return sum ^ sum >> 29;
}

uint64_t mixed(uint64_t sum, const uint8_t* bytes, size_t count)
{
    for (; count >= sizeof(uint64_t); count -= sizeof(uint64_t), bytes += sizeof(uint64_t))
    {
        uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        sum = mixed(sum, word);
    }
    uint64_t rest = count;
    for (; count > 0; --count)
        rest = rest << 8 | *bytes++;
    return mixed(sum, rest);
}

class WatchedRows : public ImageRows
{
public:
    WatchedRows(const Image& image, std::string name, std::function<void(const std::string&)> complain)
        : rows_(image.rows), name_(std::move(name)), complain_(std::move(complain)), height_(image.height),
          size_(static_cast<uint64_t>(image.row_bytes()) * image.height),
          rows_for_a_mark_(image.height / kMostMarks + 1)
    {
    }

    bool restart() override
    {
        row_ = 0;
        came_ = 0;
        sum_ = 0;
        has_ended_ = false;
        return rows_->restart();
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        const size_t came = rows_->read_row(row, size);
        const bool ended = came < size;
        if (ended && has_ended_)
            return came;
        has_ended_ = ended;
        came_ += came;
        sum_ = mixed(sum_, row, came);
        const uint32_t mark = row_++ / rows_for_a_mark_;
        if (ended || row_ % rows_for_a_mark_ == 0 || row_ == height_)
            compare(mark);
        if (ended && !told_end_)
        {
            told_end_ = true;
            complain_(name_ + " ends early: " + std::to_string(came_) + " of its " + std::to_string(size_) + " bytes");
        }
        return came;
    }

    std::shared_ptr<const ReadingMarks> marks() const override
    {
        return marks_;
    }

private:
    // The sum so far with that of the first reading, if that came as far.
    void compare(uint32_t mark)
    {
        if (mark >= marks_->size())
        {
            marks_->push_back(sum_);
        }
        else if ((*marks_)[mark] != sum_ && !told_difference_)
        {
            told_difference_ = true;
            complain_(name_ + " gave other bytes when it was read again");
        }
    }

    std::shared_ptr<ImageRows> rows_;
    std::string name_;
    std::function<void(const std::string&)> complain_;
    uint32_t height_;
    uint64_t size_;
    uint32_t rows_for_a_mark_;
    std::shared_ptr<ReadingMarks> marks_ = std::make_shared<ReadingMarks>();
    uint32_t row_ = 0;
    uint64_t came_ = 0;
    uint64_t sum_ = 0;
    bool has_ended_ = false;  // in this reading
    bool told_end_ = false;
    bool told_difference_ = false;
};

}  // namespace

void watch(Image& image, const std::string& name, std::function<void(const std::string&)> complain)
{
    if (image.rows != nullptr)
        image.rows = std::make_shared<WatchedRows>(image, name, std::move(complain));
}

}  // namespace orvlog::pdf_client
