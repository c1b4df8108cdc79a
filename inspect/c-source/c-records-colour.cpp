#include "inspect/c-source/c-records.h"
#include "inspect/c-source/c-text.h"
#include "orvlog/names/orvlog-names.h"

#include <algorithm>
#include <vector>

namespace orvlog::inspect
{

namespace
{

template <typename Values> std::string floats_text(const Values& values)
{
    std::vector<std::string> made;
    for (const float value : values)
        made.push_back(c_float(value));
    return c_list(made);
}

std::string analytical_text(const GCM_AnalyticalColorSpace& told)
{
    const float numbers[] = {told.acs_WhitePointX, told.acs_WhitePointY, told.acs_WhitePointZ, told.acs_BlackPointX,
                             told.acs_BlackPointY, told.acs_BlackPointZ, told.acs_LabAMin,     told.acs_LabAMax,
                             told.acs_LabBMin,     told.acs_LabBMax};
    std::string text = "{" + c_enum(ORVLOG_ANALYTICAL_SPACE, told.acs_ColorSpace);
    for (const float number : numbers)
        text += ", " + c_float(number);
    return text + "}";
}

std::string union_text(const GCM_Csd& record)
{
    CFields fields;
    if (record.csd_Type == GCM_CSDTYPE_PROFILE_BUFFER)
        fields.add("ProfileBufferSize", c_uint(record.csd_Defn.ProfileBufferSize));
    else if (record.csd_Type == GCM_CSDTYPE_ANALYTICAL)
        fields.add("Analytical", analytical_text(record.csd_Defn.Analytical));
    else if (record.csd_Type == GCM_CSDTYPE_NONCOLORIMETRIC)
        fields.add("NonColorimetric", c_enum(ORVLOG_PIXEL_FORMAT, record.csd_Defn.NonColorimetric));
    else if (record.csd_Type == GCM_CSDTYPE_CIELUT_DATA)
        fields.add("CieBased", c_enum(ORVLOG_CIE_FAMILY, record.csd_Defn.CieBased));
    else if (record.csd_Type == GCM_CSDTYPE_INPUT)
        fields.add("Input", c_enum(ORVLOG_COLOR_SPACE_FAMILY, record.csd_Defn.Input));
    return fields.text();
}

}  // namespace

std::string CRecords::csd_head(const GCM_Csd* record)
{
    return define(
        "const GCM_Csd", "csd",
        CFields()
            .add("csd_Type", c_enum(ORVLOG_CSD_TYPE, record->csd_Type))
            .add("csd_NumBaseChans", c_uint(record->csd_NumBaseChans))
            .add("csd_NumNamedChans", c_uint(record->csd_NumNamedChans))
            .add("csd_HasSecondaryProfile", c_uint(record->csd_HasSecondaryProfile))
            .add("csd_HasAlternateDefn", c_uint(record->csd_HasAlternateDefn))
            .add("csd_DefaultRenderIntent", record->csd_DefaultRenderIntent == 0
                                                ? "0"
                                                : c_enum(ORVLOG_RENDER_INTENT, record->csd_DefaultRenderIntent))
            .add("csd_UseIlluminantInfo", c_uint(record->csd_UseIlluminantInfo))
            .add("csd_IsDeviceLinkProfile", c_uint(record->csd_IsDeviceLinkProfile))
            .add("csd_Defn", union_text(*record))
            .text());
}

std::string CRecords::callback_stream(const GIO_Stream* stream)
{
    if (stream == nullptr)
        return "NULL";
    std::vector<uint8_t> profile;
    stream->ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET);
    uint8_t piece[4096];
    for (uint64_t count = 0; (count = stream->ops->gio_Read(piece, 1, sizeof piece, stream->instance)) > 0;)
        profile.insert(profile.end(), piece, piece + count);
    stream->ops->gio_ClearErr(stream->instance);
    stream->ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET);
    const std::string data = profile.empty() ? "no_bytes" : bytes(CDataKind::profiles, profile, "profile");
    const std::string state = define("Bytes", "profile", "{" + data + ", " + std::to_string(profile.size()) + ", 0}");
    return define("GIO_Stream", "stream", "{" + state + ", 0, &byte_operations}");
}

std::string CRecords::float_table(const float* values, size_t count)
{
    if (values == nullptr)
        return "NULL";
    const auto* raw = reinterpret_cast<const uint8_t*>(values);
    return "(const float*)(const void*)" + bytes(CDataKind::profiles, std::span(raw, count * sizeof(float)), "decode");
}

std::string CRecords::cie_luts(const GCM_CieLutsPointer* record)
{
    if (record == nullptr)
        return "NULL";
    const GCM_CieLuts* luts = record->clp_CieLuts;
    if (luts == nullptr)
        return define("const GCM_CieLutsPointer", "luts_pointer", "{0}");
    const size_t entries = luts->cl_DecodeBitDepth <= 22 ? size_t{1} << luts->cl_DecodeBitDepth : 0;
    const std::string made = define("const GCM_CieLuts", "luts",
                                    CFields()
                                        .add("cl_DecodeBitDepth", c_uint(luts->cl_DecodeBitDepth))
                                        .add("cl_WhitePoint", floats_text(luts->cl_WhitePoint))
                                        .add("cl_BlackPoint", floats_text(luts->cl_BlackPoint))
                                        .add("cl_MatrixABC", floats_text(luts->cl_MatrixABC))
                                        .add("cl_MatrixLMN", floats_text(luts->cl_MatrixLMN))
                                        .add("cl_HIJKDimensions", c_bytes(luts->cl_HIJKDimensions))
                                        .add("cl_HIJKRange", floats_text(luts->cl_HIJKRange))
                                        .text());
    const uint8_t* sizes = luts->cl_HIJKDimensions;
    const uint64_t size = uint64_t{sizes[0]} * sizes[1] * sizes[2] * std::max<uint64_t>(sizes[3], 1);
    std::string table = "NULL";
    if (record->clp_HIJKTable != nullptr)
        table = size == 0 ? "no_bytes" : bytes(CDataKind::profiles, std::span(record->clp_HIJKTable, size), "table");
    CFields fields;
    fields.add("clp_CieLuts", made);
    fields.add("clp_DecodeABC_A", float_table(record->clp_DecodeABC_A, entries));
    fields.add("clp_DecodeABC_B", float_table(record->clp_DecodeABC_B, entries));
    fields.add("clp_DecodeABC_C", float_table(record->clp_DecodeABC_C, entries));
    fields.add("clp_DecodeLMN_L", float_table(record->clp_DecodeLMN_L, entries));
    fields.add("clp_DecodeLMN_M", float_table(record->clp_DecodeLMN_M, entries));
    fields.add("clp_DecodeLMN_N", float_table(record->clp_DecodeLMN_N, entries));
    fields.add("clp_HIJKTable", table);
    return define("const GCM_CieLutsPointer", "luts_pointer", fields.text());
}

std::string CRecords::render_lut(const GCM_PostRenderLut* record, uint8_t base_channels)
{
    if (record == nullptr)
        return "NULL";
    uint64_t size = uint64_t{record->prl_OutputBitDepth} / 8 * base_channels;
    for (uint8_t i = 0; i < record->prl_LutDimensions && size <= (uint64_t{1} << 27); ++i)
        size *= record->prl_LutSize;
    std::string table = "NULL";
    if (record->prl_Table != nullptr)
        table = size == 0 ? "no_bytes" : bytes(CDataKind::profiles, std::span(record->prl_Table, size), "lut");
    return define("const GCM_PostRenderLut", "render_lut",
                  CFields()
                      .add("prl_LutDimensions", c_uint(record->prl_LutDimensions))
                      .add("prl_LutSize", c_uint(record->prl_LutSize))
                      .add("prl_OutputBitDepth", c_uint(record->prl_OutputBitDepth))
                      .add("prl_Table", table)
                      .text());
}

std::string CRecords::csd_text(const GCM_CsdPointer& record)
{
    if (record.cp_Csd == nullptr)
        return "{0}";
    const GCM_Csd& head = *record.cp_Csd;
    std::vector<std::string> names;
    for (const char* name : record.cp_NamedChans)
        if (name != nullptr)
            names.push_back(c_string(name));
    std::string profile = "NULL";
    const uint32_t size = head.csd_Defn.ProfileBufferSize;
    if (head.csd_Type == GCM_CSDTYPE_PROFILE_BUFFER && record.cp_ProfileBuffer != nullptr)
        profile =
            size == 0 ? "no_bytes" : bytes(CDataKind::profiles, std::span(record.cp_ProfileBuffer, size), "profile");
    CFields fields;
    fields.add("cp_Csd", csd_head(record.cp_Csd))
        .add("cp_NamedChans", c_list(names))
        .add("cp_Filename", record.cp_Filename != nullptr ? c_string(record.cp_Filename) : "NULL")
        .add("cp_CallbackStream", callback_stream(record.cp_CallbackStream))
        .add("cp_ProfileBuffer", profile)
        .add("cp_CieLuts", cie_luts(record.cp_CieLuts))
        .add("cp_PostRenderLut", render_lut(record.cp_PostRenderLut, head.csd_NumBaseChans))
        .add("cp_AlternateDefn", csd(record.cp_AlternateDefn))
        .add("cp_TintTransformAltDefn", csd(record.cp_TintTransformAltDefn));
    return fields.text();
}

std::string CRecords::csd(const GCM_CsdPointer* record)
{
    return record == nullptr ? "NULL" : define("const GCM_CsdPointer", "definition", csd_text(*record));
}

}  // namespace orvlog::inspect
