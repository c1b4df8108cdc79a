#include "orvlog/colour/gxc/gxc-ticket.h"

#include "orvlog/colour/gxc/gxc-csd.h"
#include "orvlog/colour/gxc/gxc-layout.h"
#include "orvlog/colour/gxc/gxc-names.h"
#include "orvlog/colour/gxc/gxc-variable.h"

namespace
{

bool lend_block(GIO_Stream* stream, GXC_Input* input)
{
    if (stream == nullptr || stream->ops == nullptr)
        return false;
    const GIO_StreamOps* ops = stream->ops;
    void* data = nullptr;
    uint64_t size = 0;
    if (ops->gio_ReadBuffer != nullptr && ops->gio_ReadBuffer(stream->instance, &data, &size) != 0 && data != nullptr)
    {
        *input = {static_cast<const uint8_t*>(data), size, 0};
        return true;
    }
    if (ops->gio_LastError != nullptr)
        ops->gio_LastError(stream->instance);
    if (ops->gio_ClearErr != nullptr)
        ops->gio_ClearErr(stream->instance);
    return false;
}

const char* name_of_family(int32_t family)
{
    if (family == GXC_FAMILY_UNKNOWN)
        return gxc_unknown_family;
    return gxc_name_of_value("GCM_ColorSpaceFamily", static_cast<uint32_t>(family));
}

// The three parts. A part that the block ends in is the last.
bool write_parts(GXC_Writer* writer, GXC_Input* input)
{
    if (!gxc_write_fixed_data(writer, input))
    {
        gxc_report(writer->error_handle, "[GXC] Failed to deserialise and write the fixed data portion of the colour "
                                         "ticket (bytes_read == 0).\n");
        return false;
    }
    if (!gxc_write_csd_table(writer, input))
    {
        gxc_report(writer->error_handle,
                   "[GXC] Failed to deserialise and write the colour tickets CSD tables (bytes_read == 0).\n");
        return false;
    }
    if (!gxc_write_variable_data(writer, input))
    {
        gxc_report(writer->error_handle, "[GXC] Failed to deserialise and write the variable data portion of the "
                                         "colour ticket (bytes_read == 0).\n");
        return false;
    }
    return true;
}

}  // namespace

const char gxc_unknown_family[] = "UnknownRenderColorSpace";

bool gxc_write_fixed_data(GXC_Writer* writer, GXC_Input* input)
{
    return gxc_write_fields(writer, input, gxc_fixed_fields);
}

bool gxc_write_ticket(GXC_Writer* writer, GXC_Input* input, int32_t family)
{
    const char* family_name = name_of_family(family);
    gxc_open(writer, "GXC_ColorTickets");
    gxc_open(writer, family_name);
    gxc_open(writer, "GCM_ColorTicket");
    const bool whole = write_parts(writer, input);
    gxc_close(writer, "GCM_ColorTicket");
    gxc_close(writer, family_name);
    gxc_close(writer, "GXC_ColorTickets");
    return whole;
}

uint32_t gxc_deserialise_ticket(GMM_Allocator* allocator, GIO_Stream* input_stream, int32_t family,
                                GIO_Stream* output_stream, const char* line_prefix)
{
    GXC_Writer writer = {allocator, nullptr, output_stream, line_prefix != nullptr ? line_prefix : "", 0};
    GXC_Input input = {};
    if (!lend_block(input_stream, &input))
        return 0;
    const bool whole = gxc_write_ticket(&writer, &input, family);
    if (input_stream->ops->gio_Seek != nullptr)
        input_stream->ops->gio_Seek(input_stream->instance, static_cast<int32_t>(input.offset), GIO_SEEK_SET);
    return whole ? 1 : 0;
}
