#include "inspect/export/schema.h"

#include <nlohmann/json.hpp>

#include <array>

namespace orvlog::inspect
{

namespace
{

using enum ColumnType;

constexpr bool kNull = true;
constexpr bool kSet = false;

constexpr Column kJobs[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"tables_version", integer, kSet, "version of these tables"},
    {"name", text, kSet, "name of the log's file, without its folder"},
    {"form", text, kSet, "plain or coded"},
    {"compressed", integer, kSet, "1: in Zstandard frames"},
    {"bytes", integer, kSet, "bytes of the file, without unused room"},
    {"text_bytes", integer, kSet, "bytes of the log's text"},
    {"state", text, kSet, "whole, cut or damaged"},
    {"texts", integer, kSet, "1: exported with texts"},
    {"content", integer, kSet, "1: exported with segments and bytes"},
    {"mode", text, kNull, "transparent or base"},
    {"content_version", integer, kNull, "ORVLOG_CONTENT_VERSION"},
    {"mirda_tolma_version", integer, kNull, "MIRDA_TOLMA_VERSION"},
    {"orv_version", integer, kNull, "ORV_VERSION"},
    {"tpn_version", integer, kNull, "TPN_VERSION"},
    {"trn_version", integer, kNull, "TRN_VERSION"},
    {"holv_version", integer, kNull, "HOLV_VERSION"},
    {"gam_version", integer, kNull, "GAM_VERSION"},
    {"gbt_version", integer, kNull, "GBT_VERSION"},
    {"gca_version", integer, kNull, "GCA_VERSION"},
    {"gcd_version", integer, kNull, "GCD_VERSION"},
    {"gcm_version", integer, kNull, "GCM_VERSION"},
    {"ger_version", integer, kNull, "GER_VERSION"},
    {"gfi_version", integer, kNull, "GFI_VERSION"},
    {"gfx_version", integer, kNull, "GFX_VERSION"},
    {"ggo_version", integer, kNull, "GGO_VERSION"},
    {"ght_version", integer, kNull, "GHT_VERSION"},
    {"gio_version", integer, kNull, "GIO_VERSION"},
    {"gme_version", integer, kNull, "GME_VERSION"},
    {"gmm_version", integer, kNull, "GMM_VERSION"},
    {"gnc_version", integer, kNull, "GNC_VERSION"},
    {"gop_version", integer, kNull, "GOP_VERSION"},
    {"gos_version", integer, kNull, "GOS_VERSION"},
    {"gpa_version", integer, kNull, "GPA_VERSION"},
    {"gsh_version", integer, kNull, "GSH_VERSION"},
    {"gut_version", integer, kNull, "GUT_VERSION"},
    {"pages", integer, kSet, "pages"},
    {"calls", integer, kSet, "calls"},
    {"callbacks", integer, kSet, "callbacks of images and font engines"},
    {"comments", integer, kSet, "comments of the client"},
    {"image_bytes", integer, kSet, "bytes of images that stand in the log"},
    {"side_file_bytes", integer, kSet, "bytes of images that went into files beside it"},
};

constexpr Column kPages[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"page", integer, kSet, "number of the page, from 1"},
    {"drawing", integer, kNull, "drawing_context"},
    {"document", integer, kNull, "document_context"},
    {"width", integer, kNull, "pixels"},
    {"height", integer, kNull, "pixels"},
    {"width_inches", real, kNull, "inches"},
    {"height_inches", real, kNull, "inches"},
    {"dpi_x", real, kNull, "pixels to the inch"},
    {"dpi_y", real, kNull, "pixels to the inch"},
    {"hints", integer, kNull, "fp_FaceHints"},
    {"pixel_placement", text, kNull, "name of the rule"},
    {"orientation", text, kNull, "pixel_placement_orientation"},
};

constexpr Column kCalls[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"kind", text, kSet, "name of the call without ORV_"},
    {"id", integer, kNull, "id of a paint"},
    {"page", integer, kNull, "page that it is on"},
    {"drawing", integer, kNull, "drawing_context"},
    {"document", integer, kNull, "document_context"},
    {"resource", integer, kNull, "resource_id"},
    {"line", integer, kSet, "line of the log's text, from 1"},
    {"byte", integer, kSet, "byte of the log's text, from 0"},
    {"bytes", integer, kSet, "bytes of the log's text that it takes"},
    {"callbacks", integer, kSet, "callbacks in it"},
    {"object_type", integer, kNull, "object_type_and_flag, or fill_object_type"},
    {"hints", integer, kNull, "object_hints, or hints"},
    {"paint_flags", integer, kNull, "paint_flags"},
    {"group_type", text, kNull, "group_type"},
    {"group", integer, kNull, "group_unique_id"},
    {"depth", integer, kNull, "groups around it in its drawing"},
    {"box_min_x", real, kNull, "what it paints, in pixels of its page: least x"},
    {"box_min_y", real, kNull, "what it paints, in pixels of its page: least y"},
    {"box_max_x", real, kNull, "what it paints, in pixels of its page: greatest x"},
    {"box_max_y", real, kNull, "what it paints, in pixels of its page: greatest y"},
    {"clip_min_x", real, kNull,
     "what its clips and those of the groups around it leave, in pixels of its page: least x"},
    {"clip_min_y", real, kNull,
     "what its clips and those of the groups around it leave, in pixels of its page: least y"},
    {"clip_max_x", real, kNull,
     "what its clips and those of the groups around it leave, in pixels of its page: greatest x"},
    {"clip_max_y", real, kNull,
     "what its clips and those of the groups around it leave, in pixels of its page: greatest y"},
    {"shut", integer, kNull, "1: its clips leave nothing of what it paints"},
    {"complete", integer, kSet, "0: its end is missing"},
};

constexpr Column kOperators[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"type", text, kNull, "op_OperatorType"},
    {"operation", integer, kSet, "op_Operator"},
    {"name", text, kSet, "as orvlog ls tells it: source-over, multiply, ..."},
    {"known", integer, kSet, "0: no operator of this number is known"},
    {"blend", integer, kSet, "1: a blend mode, separable or not"},
    {"mask_mode", text, kNull, "op_MaskMode"},
    {"transparency", text, kNull, "op_TransparencyType"},
    {"transparency_flags", integer, kSet, "op_TransparencyFlags"},
    {"hints", integer, kSet, "op_OperatorHints"},
    {"bitmap_transfer", integer, kSet, "1: has a transfer function for bitmaps"},
    {"colour_transfer", integer, kSet, "1: has a transfer function for colours"},
};

constexpr Column kOperands[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"kind", text, kNull, "go_OpType"},
    {"unique_id", integer, kSet, "op_UniqueId"},
    {"space", text, kNull, "GOP_OperandColorSpace"},
    {"family", text, kNull, "go_ColorSpaceFamily"},
    {"definition", text, kNull, "csd_Type of its colour space definition"},
    {"colour_flag", text, kNull, "GCM_ColorFlag"},
    {"count", integer, kNull, "go_Count"},
    {"hints", integer, kNull, "go_Hints"},
    {"extend", integer, kNull, "extend mode of a gradient"},
    {"m0", real, kNull, "transform from the operand's space to the call's, number 0"},
    {"m1", real, kNull, "transform from the operand's space to the call's, number 1"},
    {"m2", real, kNull, "transform from the operand's space to the call's, number 2"},
    {"m3", real, kNull, "transform from the operand's space to the call's, number 3"},
    {"m4", real, kNull, "transform from the operand's space to the call's, number 4"},
    {"m5", real, kNull, "transform from the operand's space to the call's, number 5"},
};

constexpr Column kColours[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"operand", integer, kNull, "item of the operand that it belongs to"},
    {"stop", real, kNull, "position of a stop of a gradient"},
    {"bit_depth", integer, kSet, "bits of a channel; 32: float"},
    {"channels", integer, kSet, "num_chans, with alpha"},
    {"alpha", real, kNull, "alpha as it stands in the log"},
    {"levels", text, kSet, "channels without alpha, with blanks between them"},
    {"empty_channels", integer, kSet, "empty_chans"},
};

constexpr Column kPaths[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"shape", integer, kNull, "item of its shape"},
    {"edges", integer, kSet, "edges"},
    {"segments", integer, kSet, "segments"},
    {"straights", integer, kSet, "straight segments"},
    {"beziers", integer, kSet, "cubic Bezier segments"},
    {"quadratics", integer, kSet, "quadratic Bezier segments"},
    {"staircases", integer, kSet, "segments of staircases"},
    {"ellipses", integer, kSet, "elliptical segments"},
    {"closed", integer, kSet, "edges that close their subpath"},
    {"hints", integer, kNull, "pa_PathHints"},
    {"box_min_x", real, kNull, "pa_EnclosingBox, in the shape's space: least x"},
    {"box_min_y", real, kNull, "pa_EnclosingBox, in the shape's space: least y"},
    {"box_max_x", real, kNull, "pa_EnclosingBox, in the shape's space: greatest x"},
    {"box_max_y", real, kNull, "pa_EnclosingBox, in the shape's space: greatest y"},
    {"hash", text, kSet, "of start points, edges and segments: 32 digits"},
    {"complete", integer, kSet, "0: edges are missing"},
};

constexpr Column kShapes[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"clip", integer, kNull, "item of the clip that it is of"},
    {"kind", text, kNull, "sh_ShapeType"},
    {"hints", integer, kNull, "sh_Hints"},
    {"winding", text, kNull, "winding rule"},
    {"parts", integer, kNull, "rectangles or rows"},
    {"width", integer, kNull, "irs_ImageWidth, in pixels of an image"},
    {"height", integer, kNull, "irs_ImageHeight, or ss_Height"},
    {"stroke_width", real, kNull, "psp_StrokeWidth, in the shape's space"},
    {"m0", real, kNull, "transform from the shape's space to the call's, number 0"},
    {"m1", real, kNull, "transform from the shape's space to the call's, number 1"},
    {"m2", real, kNull, "transform from the shape's space to the call's, number 2"},
    {"m3", real, kNull, "transform from the shape's space to the call's, number 3"},
    {"m4", real, kNull, "transform from the shape's space to the call's, number 4"},
    {"m5", real, kNull, "transform from the shape's space to the call's, number 5"},
};

constexpr Column kClips[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"around", integer, kNull, "item of the clip whose collection it is in"},
    {"clip_in", integer, kSet, "1: leaves the inside"},
    {"hints", integer, kSet, "sl_Hints"},
    {"unique_id", integer, kSet, "sl_UniqueId"},
    {"collection", integer, kSet, "1: has a partner"},
};

constexpr Column kImages[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"operand", integer, kSet, "item of the operand that it is"},
    {"id", integer, kSet, "Id"},
    {"unique_id", integer, kSet, "op_UniqueId"},
    {"width", integer, kNull, "pixels"},
    {"height", integer, kNull, "pixels"},
    {"channels", integer, kNull, "channels without alpha"},
    {"depth", integer, kNull, "bits of a sample"},
    {"space", text, kNull, "GOP_OperandColorSpace"},
    {"family", text, kNull, "go_ColorSpaceFamily"},
    {"definition", text, kNull, "csd_Type of its colour space definition"},
    {"encoding", integer, kNull, "im_ImageEncoding"},
    {"flags", integer, kNull, "im_Flags"},
    {"indexed", integer, kNull, "1: of indexed colours"},
    {"has_alpha", integer, kNull, "1: has an alpha channel"},
    {"alpha", real, kNull, "im_Alpha"},
    {"quality", text, kNull, "im_QualitySetting"},
    {"direct", integer, kSet, "1: its bytes come with the call"},
    {"tiled", integer, kSet, "1: repeated without end"},
    {"m0", real, kNull, "im_Transform, number 0"},
    {"m1", real, kNull, "im_Transform, number 1"},
    {"m2", real, kNull, "im_Transform, number 2"},
    {"m3", real, kNull, "im_Transform, number 3"},
    {"m4", real, kNull, "im_Transform, number 4"},
    {"m5", real, kNull, "im_Transform, number 5"},
    {"dpi_x", real, kNull, "pixels of the image to the inch of the page"},
    {"dpi_y", real, kNull, "pixels of the image to the inch of the page"},
    {"data_bytes", integer, kSet, "bytes that the log has of it, read once"},
    {"data_hash", text, kNull, "of these bytes: 32 digits; null if there are none, or not from the first on"},
};

constexpr Column kEngines[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"engine", integer, kNull, "GfpId"},
    {"name", text, kNull, "fp_EngineIdGet"},
};

constexpr Column kFonts[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"shape", integer, kNull, "item of the text's shape"},
    {"font_spec", integer, kNull, "orvlog_font_spec_id"},
    {"size", real, kNull, "ufs_FontSize"},
    {"direction", text, kNull, "ufs_Direction"},
    {"volatility", text, kNull, "ufs_FontVolatility"},
    {"engine", integer, kNull, "GfpId of the engine that was asked for it"},
    {"engine_name", text, kNull, "fp_EngineIdGet of that engine"},
    {"font", integer, kNull, "unique_font_id that the engine gave"},
};

constexpr Column kTexts[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"role", text, kNull, "the member of the call that it stands in: op, fill_op, paint_path, clip, operand1, ..."},
    {"shape", integer, kSet, "item of its shape"},
    {"font_spec", integer, kNull, "orvlog_font_spec_id"},
    {"string_desc", integer, kNull, "orvlog_string_desc_id"},
    {"bytes", integer, kNull, "gsd_TextLen"},
    {"clusters", integer, kNull, "gsd_GlyphMappingLen"},
    {"glyphs", integer, kSet, "glyphs of its clusters"},
    {"style", integer, kNull, "gsd_StyleSimulation"},
    {"text", text, kNull, "the text, with U+FFFD for what is not UTF-8; null unless texts were asked for"},
    {"text_hex", text, kNull, "its bytes, in hexadecimal; likewise"},
};

constexpr Column kGlyphs[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"engine", integer, kNull, "GfpId"},
    {"string_desc", integer, kNull, "orvlog_string_desc_id of the string that it is for"},
    {"kind", text, kSet, "GFI_GlyphDescBitmap, GFI_GlyphDescPath, ..."},
    {"width", integer, kNull, "pixels of a bitmap"},
    {"height", integer, kNull, "pixels of a bitmap"},
    {"bytes", integer, kSet, "bytes of its description"},
    {"segments", integer, kNull, "segments of its path"},
    {"glyph", integer, kNull, "glyph_index_out; null unless texts were asked for"},
    {"hash", text, kNull, "of its bytes or its path; likewise"},
};

constexpr Column kTickets[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"ticket", integer, kNull, "id"},
    {"has_text", integer, kSet, "1: its text stands here"},
    {"bytes", integer, kSet, "bytes of its text here"},
    {"family", text, kNull, "family of its render space: RGB, CMYK, ..."},
    {"hash", text, kNull, "of its text: 32 digits"},
};

constexpr Column kWarnings[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"line", integer, kSet, "line of the log's text"},
    {"byte", integer, kSet, "byte of the log's text"},
    {"text", text, kNull, "the warning; null for one that the logger doesn't know, unless texts were asked for"},
};

constexpr Column kDamage[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"line", integer, kSet, "line of the log's text"},
    {"byte", integer, kSet, "byte of the log's text"},
    {"text", text, kSet, "what is wrong"},
};

constexpr Column kSegments[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"path", integer, kSet, "item of its path"},
    {"edge", integer, kSet, "number of its edge in the path, from 1"},
    {"kind", text, kSet, "straight, bezier, quadratic, staircase or ellipse"},
    {"flags", integer, kSet, "ed_EdgeFlag of the edge"},
    {"start_x", real, kNull, "where the edge begins, at its first segment"},
    {"start_y", real, kNull, "likewise"},
    {"a_x", real, kNull, "start tangent, control point, or radii of an ellipse"},
    {"a_y", real, kNull, "likewise"},
    {"b_x", real, kNull, "end tangent, or in x the angle of an ellipse in radians"},
    {"b_y", real, kNull, "likewise"},
    {"end_x", real, kNull, "end point, from the segment's start"},
    {"end_y", real, kNull, "likewise"},
};

constexpr Column kBytes[] = {
    {"job", text, kSet, "the job's key: 32 digits of the SHA-256 of its log's text"},
    {"call", integer, kSet, "number of the call in the log, from 1; 0 ahead of the first"},
    {"item", integer, kSet, "number of the row in this table and job, from 1"},
    {"kind", text, kSet, "image, attribute, profile, table or glyph"},
    {"image", integer, kNull, "item of the image that they are of"},
    {"element", integer, kSet, "number of the element that they stand in, from 1"},
    {"offset", integer, kSet, "where in the element they begin"},
    {"size", integer, kSet, "bytes"},
    {"hex", text, kSet, "the bytes, in hexadecimal"},
};

constexpr std::array<TableForm, kTables> kForms = {{
    {"jobs", "a log", 1, kJobs, false},
    {"pages", "a page", 2, kPages, false},
    {"calls", "a call", 2, kCalls, false},
    {"operators", "an operator of a call", 3, kOperators, false},
    {"operands", "an operand of a call", 3, kOperands, false},
    {"colours", "a colour", 3, kColours, false},
    {"paths", "a path of a shape", 3, kPaths, false},
    {"shapes", "a shape of a call", 3, kShapes, false},
    {"clips", "a list of a clip", 3, kClips, false},
    {"images", "an image operand", 3, kImages, false},
    {"engines", "a font engine that a call brings", 3, kEngines, false},
    {"fonts", "the font of a text", 3, kFonts, false},
    {"texts", "a text", 3, kTexts, false},
    {"glyphs", "a glyph that an engine delivered", 3, kGlyphs, false},
    {"tickets", "a colour ticket that a call brings", 3, kTickets, false},
    {"warnings", "a warning of the logger", 3, kWarnings, false},
    {"damage", "a place where the log is damaged or ends early", 3, kDamage, false},
    {"segments", "a segment of a path", 3, kSegments, true},
    {"bytes", "a piece of the bytes of an image, a profile, a table or a glyph", 3, kBytes, true},
}};

}  // namespace

std::span<const TableForm> table_forms()
{
    return kForms;
}

std::string_view type_name(ColumnType type)
{
    constexpr std::array<std::string_view, 3> kNames = {"text", "integer", "real"};
    return kNames[static_cast<size_t>(type)];
}

std::string schema_json()
{
    using nlohmann::ordered_json;
    ordered_json object;
    object["version"] = kTablesVersion;
    object["tables"] = ordered_json::array();
    for (const TableForm& form : table_forms())
    {
        ordered_json columns = ordered_json::array();
        for (const Column& column : form.columns)
            columns.push_back({{"name", column.name},
                               {"type", type_name(column.type)},
                               {"null", column.may_be_null},
                               {"meaning", column.meaning}});
        ordered_json key = ordered_json::array();
        for (const Column& column : form.columns.first(form.key))
            key.push_back(column.name);
        object["tables"].push_back({{"name", form.name},
                                    {"meaning", form.meaning},
                                    {"key", key},
                                    {"content", form.of_content},
                                    {"columns", columns}});
    }
    return object.dump(2);
}

}  // namespace orvlog::inspect
