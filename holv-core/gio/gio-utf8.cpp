#include "holv-core/gio/gio-utf8.h"

namespace
{

constexpr uint8_t kFirstRow = 0xC0;

struct Table
{
    GIO_Utf8Row rows[64];
};

constexpr GIO_Utf8Row row_of(uint32_t first)
{
    GIO_Utf8Row row = {0, {{0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}};
    if (first < 0xC2 || first > 0xF4)
        return row;
    const uint32_t continuations = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    const uint32_t payload = first & (first < 0xE0 ? 0x1FU : first < 0xF0 ? 0x0FU : 0x07U);
    row.descriptor = static_cast<uint8_t>(0x80 | continuations << 5 | payload);
    if (first == 0xE0)
        row.range[0][0] = 0xA0;
    if (first == 0xED)
        row.range[0][1] = 0x9F;
    if (first == 0xF0)
        row.range[0][0] = 0x90;
    if (first == 0xF4)
        row.range[0][1] = 0x8F;
    return row;
}

constexpr Table make_table()
{
    Table table = {};
    for (uint32_t i = 0; i < 64; ++i)
        table.rows[i] = row_of(kFirstRow + i);
    return table;
}

constexpr Table kTable = make_table();

}  // namespace

const GIO_Utf8Row* gio_utf8_row(uint8_t first)
{
    return first >= kFirstRow ? &kTable.rows[first - kFirstRow] : nullptr;
}

int32_t gio_utf8_decode(const char* text, uint32_t* length_out)
{
    uint32_t unasked = 0;
    uint32_t& length = length_out != nullptr ? *length_out : unasked;
    length = text != nullptr ? 1 : 0;
    if (text == nullptr)
        return -1;
    const auto first = static_cast<uint8_t>(text[0]);
    if (first < 0x80)
        return first;
    const GIO_Utf8Row* row = gio_utf8_row(first);
    if (row == nullptr || !GIO_UTF8_IS_VALID(row))
        return -1;
    const uint32_t continuations = GIO_UTF8_CONTINUATIONS(row);
    uint32_t code_point = GIO_UTF8_PAYLOAD(row);
    for (uint32_t i = 0; i < continuations; ++i)
    {
        const auto byte = static_cast<uint8_t>(text[i + 1]);
        if (byte < row->range[i][0] || byte > row->range[i][1])
            return -1;
        code_point = code_point << 6 | (byte & 0x3F);
    }
    length = continuations + 1;
    return static_cast<int32_t>(code_point);
}
