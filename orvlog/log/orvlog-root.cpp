#include "orvlog/log/orvlog-root.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-coding.h"

namespace
{

struct Version
{
    const char* name;
    uint32_t value;
};

constexpr Version kVersions[] = {
    {"MIRDA_TOLMA_VERSION", 10034}, {"ORV_VERSION", 10066}, {"TPN_VERSION", 10061}, {"TRN_VERSION", 10010},
    {"HOLV_VERSION", 10055},        {"GAM_VERSION", 10044}, {"GBT_VERSION", 10003}, {"GCA_VERSION", 10003},
    {"GCD_VERSION", 10044},         {"GCM_VERSION", 10099}, {"GER_VERSION", 10017}, {"GFI_VERSION", 10053},
    {"GFX_VERSION", 10024},         {"GGO_VERSION", 10021}, {"GHT_VERSION", 10003}, {"GIO_VERSION", 10028},
    {"GME_VERSION", 10028},         {"GMM_VERSION", 10031}, {"GNC_VERSION", 10024}, {"GOP_VERSION", 10090},
    {"GOS_VERSION", 10052},         {"GPA_VERSION", 10057}, {"GSH_VERSION", 10043}, {"GUT_VERSION", 10003},
};

constexpr const char* kRoot = "ORV";
constexpr uint32_t kContentVersion = 2;

}  // namespace

void orvlog_open_root(ORVLOG_Writer* writer, bool base)
{
    orvlog_writer_begin_element(writer, kRoot);
    if (writer->compress == 1)
    {
        orvlog_attr_string(writer, "compression", "Adaptive Huffman");
        orvlog_writer_start_coding(writer);
        orvlog_writer_begin_element(writer, kRoot);
    }
    for (const Version& version : kVersions)
        orvlog_attr_uint(writer, version.name, version.value);
    orvlog_attr_string(writer, "Endian", "little");
    orvlog_attr_string(writer, "LoggingMode", base ? "base" : "transparent");
    // Follows neither mode; readers of the log rely on it.
    orvlog_attr_string(writer, "GlyphLoggingMode", "transparent");
    orvlog_attr_uint(writer, "ORVLOG_CONTENT_VERSION", kContentVersion);
    orvlog_writer_enter(writer);
}

void orvlog_close_root(ORVLOG_Writer* writer)
{
    orvlog_writer_leave_element(writer, kRoot);
}
