#include "inspect/align/call-names.h"

#include "inspect/align/hash.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvlog::inspect
{

namespace
{

constexpr size_t kMostKnown = 65536;

constexpr std::array<std::pair<std::string_view, NameSpace>, 19> kNamed = {{
    {"AttrFileName", NameSpace::file},
    {"GfpId", NameSpace::engine},
    {"Id", NameSpace::image},
    {"ImageFileName", NameSpace::file},
    {"async_img_log_file_name", NameSpace::file},
    {"document_context", NameSpace::document},
    {"document_id", NameSpace::document_id},
    {"drawing_context", NameSpace::drawing},
    {"face_seq_number", NameSpace::face},
    {"group_unique_id", NameSpace::group},
    {"id", NameSpace::counter},
    {"imp_DirectImageFileName", NameSpace::file},
    {"op_UniqueId", NameSpace::operand},
    {"orvlog_font_spec_id", NameSpace::font},
    {"orvlog_string_desc_id", NameSpace::string},
    {"parent_drawing", NameSpace::drawing},
    {"resource_id", NameSpace::resource},
    {"sl_UniqueId", NameSpace::clip_list},
    {"unique_font_id", NameSpace::unique_font},
}};

constexpr std::array<std::string_view, 80> kMeasures = {
    "acs_BlackPointX",
    "acs_BlackPointY",
    "acs_BlackPointZ",
    "acs_LabAMax",
    "acs_LabAMin",
    "acs_LabBMax",
    "acs_LabBMin",
    "acs_WhitePointX",
    "acs_WhitePointY",
    "acs_WhitePointZ",
    "advance_vector",
    "alpha",
    "base_n",
    "bounding_box_hint",
    "bs_EndPoint",
    "bs_EndTangent",
    "bs_StartTangent",
    "cl_BlackPoint",
    "cl_HIJKRange",
    "cl_MatrixABC",
    "cl_MatrixLMN",
    "cl_WhitePoint",
    "es_AngleToXAxis",
    "es_EndPoint",
    "es_XRadius",
    "es_YRadius",
    "fp_ClipBox",
    "fp_FaceInchToPixels",
    "fp_MediaSize",
    "fp_TrimBox",
    "g2_Pt1",
    "g2_Pt2",
    "g2_Transform",
    "g3_Pt1",
    "g3_Pt2",
    "g3_Pt3",
    "g3_Transform",
    "gd_Offset",
    "ggs_AdvanceOverride",
    "ggs_OffsetX",
    "ggs_OffsetY",
    "glyphdesc_to_face_pixel",
    "gm_Pt1",
    "gm_Pt2",
    "gm_Transform",
    "gpf_X",
    "gpf_Y",
    "gr_Center1",
    "gr_Center2",
    "gr_Radius1",
    "gr_Radius2",
    "gr_Transform",
    "gs_StopPosn",
    "gvf_X",
    "gvf_Y",
    "im_Alpha",
    "im_Transform",
    "it_XRepetitionInterval",
    "it_YRepetitionInterval",
    "max_height_rescale",
    "max_width_rescale",
    "min_height_rescale",
    "min_width_rescale",
    "pa_EnclosingBox",
    "psp_DashStart",
    "psp_MiterLimit",
    "psp_StrokeWidth",
    "qs_ControlPoint",
    "qs_EndPoint",
    "quick_bounding_box",
    "retransform",
    "rp_Enclosing_box",
    "rp_MaxRescale",
    "sgs_StrokingTransform",
    "sh_Transform",
    "stringdesc_to_face_pixel",
    "stroking_transform",
    "ufs_FontSize",
    "x_repetition_interval",
    "y_repetition_interval",
};
static_assert(std::ranges::is_sorted(kMeasures));

void add_text(const reader::Element& element, Hash& hash)
{
    hash.add(element.rows);
    for (const reader::Element& child : reader::Children(element))
        add_text(child, hash);
}

}  // namespace

NameSpace name_space_of(std::string_view element, std::string_view attribute)
{
    const auto* found = std::ranges::lower_bound(kNamed, attribute, {}, &std::pair<std::string_view, NameSpace>::first);
    if (found == kNamed.end() || found->first != attribute)
        return NameSpace::none;
    if (found->second == NameSpace::counter && element == "GCM_ColorTicket")
        return NameSpace::ticket;
    return found->second;
}

bool is_measure(std::string_view attribute)
{
    return std::ranges::binary_search(kMeasures, attribute);
}

void NamePairs::forget(Table& table, const std::string& a)
{
    const auto known = table.to_b.find(a);
    if (known == table.to_b.end())
        return;
    const auto back = table.to_a.find(known->second);
    if (back != table.to_a.end() && back->second == a)
        table.to_a.erase(back);
    table.to_b.erase(known);
}

bool NamePairs::agree(NameSpace space, std::string_view a, std::string_view b)
{
    Table& table = tables_[static_cast<size_t>(space)];
    const std::string one(a);
    const std::string other(b);
    const auto known_a = table.to_b.find(one);
    const auto known_b = table.to_a.find(other);
    const bool new_a = known_a == table.to_b.end();
    const bool new_b = known_b == table.to_a.end();
    if (!new_a && known_a->second == other && !new_b && known_b->second == one)
        return true;
    const bool free = new_a && new_b;
    if (!new_b)
        forget(table, std::string(known_b->second));
    forget(table, one);
    if (table.order.size() < kMostKnown)
        table.order.push_back(one);
    else
    {
        forget(table, table.order[table.next]);
        table.order[table.next] = one;
        table.next = (table.next + 1) % kMostKnown;
    }
    table.to_b[one] = other;
    table.to_a[other] = one;
    return free;
}

void NamePairs::start_call()
{
    for (const NameSpace space : {NameSpace::font, NameSpace::string})
        if (!tables_[static_cast<size_t>(space)].order.empty())
            tables_[static_cast<size_t>(space)] = {};
}

uint64_t TicketTexts::text_hash(const reader::Element& ticket)
{
    const uint32_t id = reader::read_uint(ticket, "id");
    const auto known = hashes_.find(id);
    if (ticket.first == nullptr && ticket.rows.empty())
        return known != hashes_.end() ? known->second : 0;
    Hash hash;
    add_text(ticket, hash);
    if (id == 0)
        return hash.value();
    if (known != hashes_.end())
        return known->second = hash.value();
    if (order_.size() < kMostKnown)
        order_.push_back(id);
    else
    {
        hashes_.erase(order_[next_]);
        order_[next_] = id;
        next_ = (next_ + 1) % kMostKnown;
    }
    hashes_[id] = hash.value();
    return hash.value();
}

}  // namespace orvlog::inspect
