// Rows as JSON in columns: an object with an array for each column.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

class Columns
{
public:
    // Names are of this program; in this order they are written.
    explicit Columns(std::vector<std::string> names);

    // Values of one row are added column by column, in the order of the names.
    void add(int64_t value);
    void add(double value);  // what is no number becomes null
    void add_null();
    void add_json(std::string_view json);
    // A text, as its place in `strings`; -1 for an empty one.
    void add_text(std::string_view text);
    void add_box(int64_t x0, int64_t y0, int64_t x1, int64_t y1);

    uint64_t rows() const
    {
        return values_ / names_.size();
    }
    // Bytes of the text so far.
    size_t size() const
    {
        return size_;
    }
    // The place of a text in `strings`, which has each but once.
    int64_t place_of(std::string_view text);

    // The object, with the array `strings` if there are texts. `more`: further members, ",\"name\":..." each.
    std::string json(std::string_view more = {}) const;

private:
    void put(std::string_view json);

    std::vector<std::string> names_;
    std::vector<std::string> columns_;
    std::map<std::string, int64_t, std::less<>> places_;
    std::string strings_;
    uint64_t values_ = 0;
    size_t size_ = 0;
};

// A text as JSON, in quotes. Bytes that are no characters become U+FFFD; there is nothing in it but ASCII, and no "<",
// ">" or "&".
std::string text_json(std::string_view text);
// The shortest decimal that reads back the same; "null" for what isn't finite.
std::string number_json(double value);

}  // namespace orvlog::inspect
