// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/page-resources.h"

#include "clients/pdf/poppler/colours.h"

#include <map>
#include <optional>
#include <set>
#include <string>

#include <PDFDoc.h>

namespace orvlog::pdf_client
{

namespace
{

// Looks through resources, and those of the forms and patterns in them, for a blend mode.
class BlendSearch
{
public:
    bool found_in(Dict* resources, int depth = 0)
    {
        constexpr int kGreatestDepth = 8;
        if (resources == nullptr || depth > kGreatestDepth)
            return false;
        return blends(resources->lookup("ExtGState")) || any_within(resources, "XObject", depth) ||
               any_within(resources, "Pattern", depth);
    }

private:
    static bool is_blend(const Object& mode)
    {
        return mode.isArray() || (mode.isName() && !mode.isName("Normal") && !mode.isName("Compatible"));
    }

    static bool blends(const Object& states)
    {
        for (int i = 0; states.isDict() && i < states.dictGetLength(); ++i)
        {
            const Object state = states.dictGetVal(i);
            if (state.isDict() && is_blend(state.dictLookup("BM")))
                return true;
        }
        return false;
    }

    bool any_within(Dict* resources, const char* kind, int depth)
    {
        const Object entries = resources->lookup(kind);
        for (int i = 0; entries.isDict() && i < entries.dictGetLength(); ++i)
        {
            const Object& reference = entries.dictGetValNF(i);
            if (reference.isRef() && !seen_.insert(reference.getRef().num).second)
                continue;
            const Object entry = entries.dictGetVal(i);
            if (!entry.isStream())
                continue;
            const Object inner = entry.streamGetDict()->lookup("Resources");
            if (inner.isDict() && found_in(inner.getDict(), depth + 1))
                return true;
        }
        return false;
    }

    std::set<int> seen_;
};

// Gathers the profiles that a page's resources name.
class ColourSearch
{
public:
    explicit ColourSearch(PageColours& colours) : colours_(colours) {}

    void look_through(Dict* resources, int depth = 0)
    {
        constexpr int kGreatestDepth = 4;
        if (resources == nullptr || depth > kGreatestDepth)
            return;
        const Object spaces = resources->lookup("ColorSpace");
        for (int i = 0; spaces.isDict() && i < spaces.dictGetLength(); ++i)
        {
            const std::optional<size_t> found = take(spaces.dictGetVal(i));
            const std::string name = spaces.dictGetKey(i);
            if (depth == 0 && found)
                note_default(name, *found);
        }
        const Object forms = resources->lookup("XObject");
        for (int i = 0; forms.isDict() && i < forms.dictGetLength(); ++i)
            look_into(forms.dictGetValNF(i), forms.dictGetVal(i), depth);
    }

private:
    static constexpr size_t kGreatestCount = 32;

    void look_into(const Object& reference, const Object& form, int depth)
    {
        if (!form.isStream() || (reference.isRef() && !seen_.insert(reference.getRef().num).second))
            return;
        take(form.streamGetDict()->lookup("ColorSpace"));
        const Object inner = form.streamGetDict()->lookup("Resources");
        if (inner.isDict())
            look_through(inner.getDict(), depth + 1);
    }

    void note_default(const std::string& name, size_t index)
    {
        if (name == "DefaultGray")
            colours_.default_gray = index;
        if (name == "DefaultRGB")
            colours_.default_rgb = index;
        if (name == "DefaultCMYK")
            colours_.default_cmyk = index;
    }

    std::optional<size_t> take(const Object& space)
    {
        if (!space.isArray() || space.arrayGetLength() < 2 || !space.arrayGet(0).isName("ICCBased"))
            return std::nullopt;
        const Object& reference = space.arrayGetNF(1);
        if (reference.isRef() && places_.count(reference.getRef().num) > 0)
            return places_[reference.getRef().num];
        const Object stream = space.arrayGet(1);
        const Object channels = stream.isStream() ? stream.streamGetDict()->lookup("N") : Object();
        if (!channels.isInt() || colours_.profiles.size() >= kGreatestCount)
            return std::nullopt;
        DocumentProfile profile = {static_cast<uint16_t>(channels.getInt()), read_profile(stream, channels.getInt())};
        if (profile.icc.empty())
            return std::nullopt;
        colours_.profiles.push_back(std::move(profile));
        if (reference.isRef())
            places_[reference.getRef().num] = colours_.profiles.size() - 1;
        return colours_.profiles.size() - 1;
    }

    PageColours& colours_;
    std::set<int> seen_;
    std::map<int, size_t> places_;
};

}  // namespace

bool blends_within(Dict* resources)
{
    return BlendSearch().found_in(resources);
}

void gather_profiles(Dict* resources, PageColours& colours)
{
    ColourSearch(colours).look_through(resources);
}

uint16_t channels_of_space(const Object& space)
{
    if (space.isArray() && space.arrayGetLength() >= 2 && space.arrayGet(0).isName("ICCBased"))
    {
        const Object stream = space.arrayGet(1);
        const Object channels = stream.isStream() ? stream.streamGetDict()->lookup("N") : Object();
        return channels.isInt() ? static_cast<uint16_t>(channels.getInt()) : uint16_t{0};
    }
    if (space.isName("DeviceGray"))
        return 1;
    if (space.isName("DeviceRGB"))
        return 3;
    return space.isName("DeviceCMYK") ? 4 : 0;
}

std::vector<uint8_t> output_intent_of(PDFDoc& document)
{
    const Object catalog = document.getXRef()->getCatalog();
    const Object intents = catalog.isDict() ? catalog.dictLookup("OutputIntents") : Object();
    for (int i = 0; intents.isArray() && i < intents.arrayGetLength(); ++i)
    {
        const Object intent = intents.arrayGet(i);
        const Object profile = intent.isDict() ? intent.dictLookup("DestOutputProfile") : Object();
        const Object channels = profile.isStream() ? profile.streamGetDict()->lookup("N") : Object();
        if (channels.isInt())
            return read_profile(profile, channels.getInt());
    }
    return {};
}

}  // namespace orvlog::pdf_client
