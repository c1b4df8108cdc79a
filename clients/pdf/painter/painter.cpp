// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/painter.h"

#include "clients/pdf/painter/mask-operand.h"
#include "clients/pdf/records/blend-operator.h"
#include "clients/pdf/records/shape-records.h"

namespace orvlog::pdf_client
{

Painter::Painter(const ORV_Interface* table, std::function<void(const std::string&)> complain,
                 std::function<void(const std::string&)> lose)
    : complain_(std::move(complain)), lose_(lose ? std::move(lose) : complain_)
{
    main_.table = table;
    main_.counted = true;
}

Painter::~Painter() = default;

void Painter::count(const Server& server, Call call, uint32_t result)
{
    if (server.counted)
    {
        ++counts_.made[static_cast<size_t>(call)];
        counts_.refused += result == 0 ? 1 : 0;
    }
}

void Painter::tell(CallDigest* digest)
{
    digest_ = digest;
}

uint32_t Painter::next_id()
{
    return ++last_id_;
}

const CallCounts& Painter::counts() const
{
    return counts_;
}

bool Painter::begin_document(uint32_t document_id)
{
    const uint32_t result = main_.table->document_start.fn(nullptr, main_.table, &main_.document, document_id,
                                                           font_engine_.table(), nullptr);
    count(main_, Call::document_start, result);
    return result != 0;
}

void Painter::end_document()
{
    for (const auto& [key, id] : main_.resources)
    {
        count(main_, Call::resource_destroy,
              main_.table->resource_destroy.fn(nullptr, main_.table, main_.document, nullptr, id));
    }
    main_.resources.clear();
    count(main_, Call::document_finish, main_.table->document_finish.fn(main_.table, main_.document));
    main_.document = nullptr;
}

bool Painter::begin_page(const PageGeometry& page)
{
    Layer layer;
    layer.content_to_pixels = scaling(page.pixels_per_inch, page.pixels_per_inch);
    layer.width = page.width;
    layer.height = page.height;
    ORV_FaceProperties face = face_of(layer);
    face.fp_MediaSize = {page.inches_wide, page.inches_high};
    face.fp_TrimBox = {0, 0, page.inches_wide, page.inches_high};
    Drawing drawing;
    drawing.server = &main_;
    const uint32_t result =
        main_.table->face_start.fn(nullptr, main_.table, main_.document, &drawing.calls, nullptr, page.number, &face,
                                   page.colour_ticket, GPA_PP_ORIENTATION_0_DEG, GPA_PLACEMENT_PS);
    count(main_, Call::face_start, result);
    if (result == 0)
        return false;
    layer.drawings.push_back(drawing);
    layers_.push_back(std::move(layer));
    return true;
}

void Painter::end_page()
{
    while (!layers_.empty())
        close_layer();
}

Clip Painter::narrow(const Clip& clip, const Path& path, Winding winding)
{
    digest(Call::count, path, static_cast<uint64_t>(winding));
    return std::make_shared<const ClipNode>(std::make_shared<const FilledShape>(path, winding), next_id(), clip);
}

Clip Painter::narrow(const Clip& clip, const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style)
{
    digest(Call::count, path, to_content, style);
    return std::make_shared<const ClipNode>(std::make_shared<const StrokedShape>(path, to_content, style), next_id(),
                                            clip);
}

uint32_t Painter::clip_hint(const Clip& clip)
{
    Layer& layer = layers_.back();
    const bool unchanged = clip != nullptr && clip == layer.last_clip;
    layer.last_clip = clip;
    return unchanged ? ORV_OBJ_HINT_UNCHANGED_CLIP : ORV_OBJ_HINT_NONE;
}

void Painter::begin_group(const Group& group)
{
    if (layers_.empty())
        return;
    digest(Call::group_start, group.bounds, uint64_t{group.isolated}, uint64_t{group.knockout}, group.state);
    const MaskOperand mask(group.state, true, next_id());
    const GOP_Operator op = blend_operator(group.state.blend, mask.mode);
    const uint32_t type = group.isolated ? ORV_GROUP_SIMPLE : ORV_GROUP_NON_ISOLATED;
    const uint32_t id = next_id();
    layers_.back().last_clip = nullptr;
    ++layers_.back().open_groups;
    for_each_drawing(Call::group_start,
                     [&](Drawing& drawing)
                     {
                         uint32_t group_out = 0;
                         return drawing.calls.group_start.fn(
                             &drawing.calls, id, &group_out, nullptr, ORV_GRP_HINT_NONE, type, group.knockout ? 1 : 0,
                             0, nullptr, GPA_PP_ORIENTATION_0_DEG, 0, GPA_PLACEMENT_PS, nullptr, &op, mask.operand,
                             clip_list(group.state.clip), ORV_GROUP_TILE_NONE, 0, 0, nullptr, nullptr, &group.bounds);
                     });
}

void Painter::end_group()
{
    if (layers_.empty() || layers_.back().open_groups == 0)
        return;
    digest(Call::group_finish);
    --layers_.back().open_groups;
    layers_.back().last_clip = nullptr;
    for_each_drawing(Call::group_finish,
                     [](Drawing& drawing)
                     {
                         uint32_t replay = 0;
                         return drawing.calls.group_finish.fn(&drawing.calls, &replay);
                     });
}

double Painter::pixels_per_unit() const
{
    return layers_.empty() ? 0 : mean_scale(layers_.back().content_to_pixels);
}

}  // namespace orvlog::pdf_client
