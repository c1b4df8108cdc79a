#include "tools/shared/clips-text.h"

#include "tools/shared/look.h"

namespace orvlog::tool
{

using nlohmann::ordered_json;
using orvlog::inspect::ClipEntry;

ordered_json clips_json(const std::vector<ClipEntry>& clips)
{
    ordered_json list = ordered_json::array();
    for (const ClipEntry& clip : clips)
    {
        ordered_json one;
        one["inside"] = clip.inside;
        one["shape"] = clip.shape;
        one["winding"] = clip.winding.empty() ? ordered_json(nullptr) : ordered_json(clip.winding);
        one["parts"] = clip.parts;
        one["box"] = box_json(clip.box);
        one["unique_id"] = clip.unique_id ? ordered_json(*clip.unique_id) : ordered_json(nullptr);
        one["collection"] = clip.collection;
        list.push_back(one);
    }
    return list;
}

}  // namespace orvlog::tool
