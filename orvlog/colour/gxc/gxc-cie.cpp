#include "orvlog/colour/gxc/gxc-cie.h"

#include "orvlog/colour/gxc/gxc-layout.h"

namespace
{

constexpr uint64_t kTerminatorSize = 4;

// A row has no blank before its first value and no quotes: readers of the log rely on the form.
bool write_matrix_row(GXC_Writer* writer, GXC_Input* input)
{
    float values[3];
    char text[3][GXC_FLOAT_TEXT];
    for (int i = 0; i < 3; ++i)
    {
        if (!gxc_read_float(input, &values[i]))
            return false;
        gxc_format_float(text[i], values[i]);
    }
    gxc_begin(writer, "MatrixRow");
    gxc_print(writer, "float1=%s ", text[0]);
    gxc_print(writer, "float2=%s ", text[1]);
    gxc_print(writer, "float3=%s ", text[2]);
    gxc_end(writer);
    return true;
}

bool write_matrix(GXC_Writer* writer, GXC_Input* input, const char* name)
{
    gxc_open(writer, name);
    const bool whole =
        write_matrix_row(writer, input) && write_matrix_row(writer, input) && write_matrix_row(writer, input);
    gxc_close(writer, name);
    return whole;
}

bool write_dimensions(GXC_Writer* writer, GXC_Input* input, uint8_t* dimensions)
{
    constexpr const char* kNames[4] = {"H_Dimension", "I_Dimension", "J_Dimension", "K_Dimension"};
    gxc_open(writer, "HIJKDimensions");
    bool whole = true;
    for (int i = 0; i < 4 && whole; ++i)
    {
        whole = gxc_read_uint8(input, &dimensions[i]);
        if (!whole)
            break;
        gxc_begin(writer, kNames[i]);
        gxc_value_uint8(writer, dimensions[i]);
        gxc_end(writer);
    }
    gxc_close(writer, "HIJKDimensions");
    return whole;
}

bool write_head(GXC_Writer* writer, GXC_Input* input, uint32_t* bit_depth, uint8_t* dimensions)
{
    if (!gxc_read_uint32(input, bit_depth))
        return false;
    gxc_begin(writer, "DecodeBitDepth");
    gxc_value_uint32(writer, *bit_depth);
    gxc_end(writer);
    return gxc_write_fields(writer, input, gxc_cie_point_fields) && write_matrix(writer, input, "MatrixABC") &&
           write_matrix(writer, input, "MatrixLMN") && write_dimensions(writer, input, dimensions) &&
           gxc_write_fields(writer, input, gxc_cie_range_fields);
}

bool write_hijk_table(GXC_Writer* writer, GXC_Input* input, uint32_t family, const uint8_t* dimensions)
{
    if (family != GXC_CIE_DEF && family != GXC_CIE_DEFG)
        return true;
    return gxc_write_array(writer, input, "HIJKTable", GXC_ENTRY_UINT8, gxc_hijk_size(family, dimensions), 0);
}

bool write_tables(GXC_Writer* writer, GXC_Input* input, uint32_t family, uint32_t bit_depth, const uint8_t* dimensions)
{
    const uint32_t entries = gxc_decode_entries(bit_depth);
    for (const GXC_DecodeTable& table : gxc_decode_tables)
        if (gxc_family_has_table(&table, family) &&
            !gxc_write_array(writer, input, table.name, GXC_ENTRY_FLOAT, entries, 0))
            return false;
    return write_hijk_table(writer, input, family, dimensions);
}

// The record's own list is passed over, not read, and both lines stand at one level.
bool write_extensions(GXC_Writer* writer, GXC_Input* input)
{
    gxc_open(writer, "Extensions");
    gxc_close(writer, "Extensions");
    return gxc_skip(input, kTerminatorSize);
}

}  // namespace

bool gxc_write_cie_luts(GXC_Writer* writer, GXC_Input* input, uint32_t cie_family)
{
    uint32_t bit_depth = 0;
    uint8_t dimensions[4] = {};
    gxc_open(writer, "GCM_CieLutsPointer");
    gxc_open(writer, "GCM_CieLuts");
    bool whole = write_head(writer, input, &bit_depth, dimensions);
    gxc_close(writer, "GCM_CieLuts");
    whole = whole && write_tables(writer, input, cie_family, bit_depth, dimensions) && write_extensions(writer, input);
    gxc_close(writer, "GCM_CieLutsPointer");
    return whole;
}
