#include "orvlog/records/ggo-dump.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/names/orvlog-names.h"

namespace
{

constexpr uint32_t kRotationField = 0xE0;

// One table for every value of the rotation field: the bits, and behind them the name of that field alone.
struct RotationTable
{
    ORVLOG_FlagEntry entries[8];
    uint32_t count;
};

constexpr RotationTable table_for(uint32_t field)
{
    RotationTable table = {};
    for (const ORVLOG_FlagEntry& entry : ORVLOG_TRANSFORM_FLAGS_ENTRIES)
        table.entries[table.count++] = entry;
    for (const ORVLOG_FlagEntry& entry : ORVLOG_TRANSFORM_ROTATIONS_ENTRIES)
        if (entry.value == field)
            table.entries[table.count++] = entry;
    return table;
}

}  // namespace

void dump_GGO_Point(ORVLOG_Writer* writer, const GGO_Point* point)
{
    if (point == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GGO_Point");
    orvlog_attr_double(writer, "gpf_X", point->gpf_X);
    orvlog_attr_double(writer, "gpf_Y", point->gpf_Y);
    orvlog_writer_self_close(writer);
}

void dump_GGO_Vector(ORVLOG_Writer* writer, const GGO_Vector* vector)
{
    if (vector == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GGO_Vector");
    orvlog_attr_double(writer, "gvf_X", vector->gvf_X);
    orvlog_attr_double(writer, "gvf_Y", vector->gvf_Y);
    orvlog_writer_self_close(writer);
}

void dump_GGO_BoxInt(ORVLOG_Writer* writer, const GGO_BoxInt* box)
{
    if (box == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GGO_BoxInt");
    orvlog_attr_int(writer, "gbi_MinX", box->gbi_MinX);
    orvlog_attr_int(writer, "gbi_MinY", box->gbi_MinY);
    orvlog_attr_int(writer, "gbi_MaxX", box->gbi_MaxX);
    orvlog_attr_int(writer, "gbi_MaxY", box->gbi_MaxY);
    orvlog_writer_self_close(writer);
}

void ggo_attr_point(ORVLOG_Writer* writer, const char* name, const GGO_Point* point)
{
    if (point == nullptr)
        return;
    const double values[] = {point->gpf_X, point->gpf_Y};
    orvlog_attr_double_array(writer, name, values, 2);
}

void ggo_attr_vector(ORVLOG_Writer* writer, const char* name, const GGO_Vector* vector)
{
    if (vector == nullptr)
        return;
    const double values[] = {vector->gvf_X, vector->gvf_Y};
    orvlog_attr_double_array(writer, name, values, 2);
}

void ggo_attr_matrix(ORVLOG_Writer* writer, const char* name, const GGO_Matrix* matrix)
{
    if (matrix != nullptr)
        orvlog_attr_double_array(writer, name, matrix->m, 6);
}

void ggo_attr_box(ORVLOG_Writer* writer, const char* name, const GGO_BoxFloat* box)
{
    if (box == nullptr)
        return;
    const double values[] = {box->gbf_MinX, box->gbf_MinY, box->gbf_MaxX, box->gbf_MaxY};
    orvlog_attr_double_array(writer, name, values, 4);
}

void ggo_attr_box_int(ORVLOG_Writer* writer, const char* name, const GGO_BoxInt* box)
{
    if (box == nullptr)
        return;
    const int32_t values[] = {box->gbi_MinX, box->gbi_MinY, box->gbi_MaxX, box->gbi_MaxY};
    orvlog_attr_int4(writer, name, values);
}

void ggo_attr_transform_flags(ORVLOG_Writer* writer, const char* name, uint32_t flags)
{
    const RotationTable table = table_for(flags & kRotationField);
    const ORVLOG_FlagTable names = {table.entries, table.count};
    orvlog_attr_flags(writer, name, &names, flags);
}
