#include "orvlog/colour/gcm-csd-dump.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"

namespace
{

constexpr uint32_t kRowSize = 50;
constexpr uint32_t kPieceSize = 512;
constexpr uint32_t kMostNames = 8;
constexpr uint32_t kMostDecodeBits = 30;  // the length of a table is written as a signed number
constexpr uint64_t kMostLutBytes = INT32_MAX;

// One dump, from the outermost definition on.
struct Dump
{
    ORVLOG_Writer* writer;
    uint32_t depth;
    uint32_t count;
    bool warned;
};

void dump_analytical(ORVLOG_Writer* writer, const GCM_AnalyticalColorSpace* space)
{
    orvlog_writer_begin_element(writer, "GCM_AnalyticalColorSpace");
    orvlog_attr_enum(writer, "acs_ColorSpace", &ORVLOG_ANALYTICAL_SPACE, space->acs_ColorSpace);
    orvlog_attr_float(writer, "acs_WhitePointX", space->acs_WhitePointX);
    orvlog_attr_float(writer, "acs_WhitePointY", space->acs_WhitePointY);
    orvlog_attr_float(writer, "acs_WhitePointZ", space->acs_WhitePointZ);
    orvlog_attr_float(writer, "acs_BlackPointX", space->acs_BlackPointX);
    orvlog_attr_float(writer, "acs_BlackPointY", space->acs_BlackPointY);
    orvlog_attr_float(writer, "acs_BlackPointZ", space->acs_BlackPointZ);
    orvlog_attr_float(writer, "acs_LabAMin", space->acs_LabAMin);
    orvlog_attr_float(writer, "acs_LabAMax", space->acs_LabAMax);
    orvlog_attr_float(writer, "acs_LabBMin", space->acs_LabBMin);
    orvlog_attr_float(writer, "acs_LabBMax", space->acs_LabBMax);
    orvlog_writer_end_empty(writer, "GCM_AnalyticalColorSpace");
}

// The attribute that the type adds, of the given type rather than the record's own.
void write_definition(ORVLOG_Writer* writer, const GCM_Csd* csd)
{
    switch (csd->csd_Type)
    {
    case GCM_CSDTYPE_CALLBACK:
        orvlog_attr_uint(writer, "csd_Defn.CallbackBufferSize", csd->csd_Defn.CallbackBufferSize);
        break;
    case GCM_CSDTYPE_PROFILE_BUFFER:
        orvlog_attr_uint(writer, "csd_Defn.ProfileBufferSize", csd->csd_Defn.ProfileBufferSize);
        break;
    case GCM_CSDTYPE_NONCOLORIMETRIC:
        orvlog_attr_enum(writer, "csd_Defn.NonColorimetric", &ORVLOG_PIXEL_FORMAT, csd->csd_Defn.NonColorimetric);
        break;
    case GCM_CSDTYPE_CIELUT_DATA:
        orvlog_attr_enum(writer, "csd_Defn.CieBased", &ORVLOG_CIE_FAMILY, csd->csd_Defn.CieBased);
        break;
    case GCM_CSDTYPE_INPUT:
        orvlog_attr_enum(writer, "csd_Defn.Input", &ORVLOG_COLOR_SPACE_FAMILY, csd->csd_Defn.Input);
        break;
    default:
        break;
    }
}

void dump_csd(ORVLOG_Writer* writer, const GCM_Csd* csd)
{
    orvlog_writer_begin_element(writer, "GCM_Csd");
    orvlog_attr_enum(writer, "csd_Type", &ORVLOG_CSD_TYPE, csd->csd_Type);
    orvlog_attr_uint(writer, "csd_NumBaseChans", csd->csd_NumBaseChans);
    orvlog_attr_uint(writer, "csd_NumNamedChans", csd->csd_NumNamedChans);
    orvlog_attr_bool(writer, "csd_HasSecondaryProfile", csd->csd_HasSecondaryProfile);
    orvlog_attr_bool(writer, "csd_HasAlternateDefn", csd->csd_HasAlternateDefn);
    orvlog_attr_bool(writer, "csd_UseIlluminantInfo", csd->csd_UseIlluminantInfo);
    orvlog_attr_enum(writer, "csd_DefaultRenderIntent", &ORVLOG_RENDER_INTENT, csd->csd_DefaultRenderIntent);
    orvlog_attr_bool(writer, "csd_IsDeviceLinkProfile", csd->csd_IsDeviceLinkProfile);
    write_definition(writer, csd);
    const ORVLOG_Content content(writer, "GCM_Csd");
    if (csd->csd_Type == GCM_CSDTYPE_ANALYTICAL)
        dump_analytical(writer, &csd->csd_Defn.Analytical);
}

// A callback definition stands in the log as a profile buffer of no length.
void dump_callback_csd(ORVLOG_Writer* writer, const GCM_Csd* csd)
{
    GCM_Csd copy = *csd;
    copy.csd_Type = GCM_CSDTYPE_PROFILE_BUFFER;
    copy.csd_Defn.ProfileBufferSize = 0;
    dump_csd(writer, &copy);
}

void dump_callback_stream(ORVLOG_Writer* writer, const GIO_Stream* stream)
{
    uint8_t piece[kPieceSize];
    if (stream == nullptr || stream->ops == nullptr || stream->ops->gio_Read == nullptr)
        return;
    const GIO_StreamOps* ops = stream->ops;
    if (ops->gio_Seek != nullptr)
        ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET);
    uint64_t read = 0;
    for (uint32_t left = ORVLOG_MAX_CSD_STREAM;; left -= static_cast<uint32_t>(read))
    {
        read = ops->gio_Read(piece, 1, kPieceSize, stream->instance);
        if (read == 0 || read > kPieceSize)
            break;
        const bool beyond = read > left;
        read = beyond ? left : read;
        orvlog_elem_bytes(writer, piece, static_cast<uint32_t>(read), kRowSize);
        if (!beyond)
            continue;
        orvlog_writer_warn(writer, "The profile of a callback definition is too large; it is cut short.");
        break;
    }
    if (ops->gio_Eof != nullptr && ops->gio_ClearErr != nullptr && ops->gio_Eof(stream->instance) != 0)
        ops->gio_ClearErr(stream->instance);
}

void dump_cie_luts(ORVLOG_Writer* writer, const GCM_CieLuts* luts)
{
    orvlog_writer_begin_element(writer, "GCM_CieLuts");
    orvlog_attr_uint(writer, "cl_DecodeBitDepth", luts->cl_DecodeBitDepth);
    orvlog_attr_float_array(writer, "cl_WhitePoint", luts->cl_WhitePoint, 3);
    orvlog_attr_float_array(writer, "cl_BlackPoint", luts->cl_BlackPoint, 3);
    orvlog_attr_float_array(writer, "cl_MatrixABC", luts->cl_MatrixABC, 9);
    orvlog_attr_float_array(writer, "cl_MatrixLMN", luts->cl_MatrixLMN, 9);
    orvlog_attr_hex4(writer, "cl_HIJKDimensions", luts->cl_HIJKDimensions);
    orvlog_attr_float_array(writer, "cl_HIJKRange", luts->cl_HIJKRange, 8);
    orvlog_writer_end_empty(writer, "GCM_CieLuts");
}

uint32_t decode_entries(ORVLOG_Writer* writer, const GCM_CieLuts* luts)
{
    if (luts->cl_DecodeBitDepth <= kMostDecodeBits)
        return 1u << luts->cl_DecodeBitDepth;
    orvlog_writer_warn(writer, "The decode tables of a colour space definition are too large; they are left out.");
    return 0;
}

void dump_decode_tables(ORVLOG_Writer* writer, const GCM_CieLutsPointer* pointer, uint32_t family)
{
    const uint32_t entries = decode_entries(writer, pointer->clp_CieLuts);
    orvlog_elem_named_floats(writer, "clp_DecodeABC_A", pointer->clp_DecodeABC_A, entries);
    if (family != GCM_CIE_FAMILY_A && family != GCM_CIE_FAMILY_CALGRAY)
    {
        orvlog_elem_named_floats(writer, "clp_DecodeABC_B", pointer->clp_DecodeABC_B, entries);
        orvlog_elem_named_floats(writer, "clp_DecodeABC_C", pointer->clp_DecodeABC_C, entries);
    }
    if (family != GCM_CIE_FAMILY_CALRGB && family != GCM_CIE_FAMILY_CALGRAY)
    {
        orvlog_elem_named_floats(writer, "clp_DecodeLMN_L", pointer->clp_DecodeLMN_L, entries);
        orvlog_elem_named_floats(writer, "clp_DecodeLMN_M", pointer->clp_DecodeLMN_M, entries);
        orvlog_elem_named_floats(writer, "clp_DecodeLMN_N", pointer->clp_DecodeLMN_N, entries);
    }
}

void dump_hijk_table(ORVLOG_Writer* writer, const GCM_CieLutsPointer* pointer, uint32_t family)
{
    if (family != GCM_CIE_FAMILY_DEF && family != GCM_CIE_FAMILY_DEFG)
        return;
    const uint8_t* dimensions = pointer->clp_CieLuts->cl_HIJKDimensions;
    const uint32_t fourth = family == GCM_CIE_FAMILY_DEFG ? dimensions[3] : 1;
    const uint32_t size = uint32_t{dimensions[0]} * dimensions[1] * dimensions[2] * fourth;
    orvlog_elem_named_bytes(writer, "clp_HIJKTable", pointer->clp_HIJKTable, size);
}

void dump_cie_luts_pointer(ORVLOG_Writer* writer, const GCM_CieLutsPointer* pointer, uint32_t family)
{
    if (pointer == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GCM_CieLutsPointer");
    orvlog_attr_enum(writer, "GCM_CieFamily", &ORVLOG_CIE_FAMILY, family);
    const ORVLOG_Content content(writer, "GCM_CieLutsPointer");
    if (pointer->clp_CieLuts != nullptr)
    {
        dump_cie_luts(writer, pointer->clp_CieLuts);
        dump_decode_tables(writer, pointer, family);
        dump_hijk_table(writer, pointer, family);
    }
}

// Bytes of the table, or one more than there can be.
uint64_t lut_bytes(const GCM_PostRenderLut* lut, uint8_t base_chans)
{
    uint64_t entries = 1;
    for (uint8_t i = 0; i < lut->prl_LutDimensions; ++i)
    {
        entries *= lut->prl_LutSize;
        if (entries > kMostLutBytes)
            break;
    }
    const uint64_t bytes = entries * (lut->prl_OutputBitDepth / 8u) * base_chans;
    return bytes <= kMostLutBytes ? bytes : kMostLutBytes + 1;
}

void dump_post_render_lut(ORVLOG_Writer* writer, const GCM_PostRenderLut* lut, uint8_t base_chans)
{
    if (lut == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GCM_PostRenderLut");
    orvlog_attr_uint(writer, "prl_LutDimensions", lut->prl_LutDimensions);
    orvlog_attr_uint(writer, "prl_LutSize", lut->prl_LutSize);
    orvlog_attr_uint(writer, "prl_OutputBitDepth", lut->prl_OutputBitDepth);
    const ORVLOG_Content content(writer, "GCM_PostRenderLut");
    const uint64_t bytes = lut_bytes(lut, base_chans);
    if (bytes > kMostLutBytes)
        orvlog_writer_warn(writer, "The table of a post render LUT is too large; it is left out.");
    else if (lut->prl_Table != nullptr)
        orvlog_elem_bytes(writer, lut->prl_Table, static_cast<uint32_t>(bytes), kRowSize);
}

void dump_named_chans(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer)
{
    const uint32_t count = pointer->cp_Csd->csd_NumNamedChans;
    const ORVLOG_Member member(writer, "GCM_CsdPointer", "cp_NamedChans");
    for (uint32_t i = 0; i < count && i < kMostNames; ++i)
        orvlog_elem_cstr(writer, pointer->cp_NamedChans[i]);
}

void dump_content(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer)
{
    const GCM_Csd* csd = pointer->cp_Csd;
    switch (csd->csd_Type)
    {
    case GCM_CSDTYPE_CALLBACK:
        dump_callback_stream(writer, pointer->cp_CallbackStream);
        break;
    case GCM_CSDTYPE_PROFILE_BUFFER:
        if (pointer->cp_ProfileBuffer != nullptr)
            orvlog_elem_bytes(writer, pointer->cp_ProfileBuffer, csd->csd_Defn.ProfileBufferSize, kRowSize);
        break;
    case GCM_CSDTYPE_CIELUT_DATA:
        dump_cie_luts_pointer(writer, pointer->cp_CieLuts, csd->csd_Defn.CieBased);
        break;
    case GCM_CSDTYPE_POST_RENDER_LUT:
        dump_post_render_lut(writer, pointer->cp_PostRenderLut, csd->csd_NumBaseChans);
        break;
    default:
        break;
    }
}

void dump_pointer(Dump* dump, const GCM_CsdPointer* pointer);

void dump_wrapper(Dump* dump, const GCM_CsdPointer* pointer, const char* name)
{
    ORVLOG_Writer* writer = dump->writer;
    orvlog_writer_begin_element(writer, "ORVLOG_WRAPPER");
    orvlog_attr_string(writer, "name", name);
    const ORVLOG_Content content(writer, "ORVLOG_WRAPPER");
    ++dump->depth;
    dump_pointer(dump, pointer);
    --dump->depth;
}

bool within_bounds(Dump* dump)
{
    if (dump->depth <= ORVLOG_MAX_CSD_DEPTH && dump->count < ORVLOG_MAX_CSD_COUNT)
    {
        ++dump->count;
        return true;
    }
    if (!dump->warned)
        orvlog_writer_warn(dump->writer,
                           "Colour space definitions refer to one another without end; the rest is left out.");
    dump->warned = true;
    return false;
}

void begin_pointer(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer)
{
    const uint32_t type = pointer->cp_Csd->csd_Type;
    if (type == GCM_CSDTYPE_CALLBACK)
        orvlog_writer_warn(
            writer, "Converted a GCM_CSDTYPE_CALLBACK to a GCM_CSDTYPE_PROFILE_BUFFER in order to dump it to the log.");
    orvlog_writer_begin_element(writer, "GCM_CsdPointer");
    if (type == GCM_CSDTYPE_FILE)
        orvlog_attr_string(writer, "cp_Filename", pointer->cp_Filename);
    if (type == GCM_CSDTYPE_CALLBACK)
        orvlog_attr_bool(writer, "GCM_CsdPointer_callback_dumped_as_profile_buffer", 1);
}

void dump_pointer(Dump* dump, const GCM_CsdPointer* pointer)
{
    if (pointer == nullptr || pointer->cp_Csd == nullptr || !within_bounds(dump))
        return;
    ORVLOG_Writer* writer = dump->writer;
    const GCM_Csd* csd = pointer->cp_Csd;
    begin_pointer(writer, pointer);
    const ORVLOG_Content content(writer, "GCM_CsdPointer");
    if (csd->csd_Type == GCM_CSDTYPE_CALLBACK)
        dump_callback_csd(writer, csd);
    else
        dump_csd(writer, csd);
    dump_content(writer, pointer);
    const bool has_names = pointer->cp_NamedChans[0] != nullptr;
    if (csd->csd_NumNamedChans > 0 && has_names)
        dump_named_chans(writer, pointer);
    if (csd->csd_HasAlternateDefn != 0)
        dump_wrapper(dump, pointer->cp_AlternateDefn, "cp_AlternateDefn");
    if (csd->csd_NumNamedChans > 0 && !has_names)
        dump_wrapper(dump, pointer->cp_TintTransformAltDefn, "cp_TintTransformAltDefn");
}

}  // namespace

void gcm_attr_color_space_type(ORVLOG_Writer* writer, const char* name, uint32_t type)
{
    orvlog_attr_enum(writer, name, &ORVLOG_SPACE_TYPE, type);
}

void gcm_attr_white_point(ORVLOG_Writer* writer, const char* name, uint32_t white_point)
{
    orvlog_attr_enum(writer, name, &ORVLOG_WHITE_POINT, white_point);
}

void ORVLOG_DumpCsdPointer(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer)
{
    Dump dump = {writer, 0, 0, false};
    dump_pointer(&dump, pointer);
}

void ORVLOG_DumpCsdWrapper(ORVLOG_Writer* writer, const GCM_CsdPointer* pointer, const char* name)
{
    Dump dump = {writer, 0, 0, false};
    dump_wrapper(&dump, pointer, name);
}
