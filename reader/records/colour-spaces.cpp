#include "reader/records/colour-spaces.h"

#include "holv-core/gio/gio-memory.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace orvlog::reader
{

namespace
{

constexpr uint32_t kMostLevels = 1000;
constexpr size_t kMostNames = 8;
constexpr uint64_t kMostTable = uint64_t{1} << 26;

void read_numbers(const Element& element, std::string_view name, std::span<float> to)
{
    const std::vector<float> values = to_floats(element.value(name));
    std::copy_n(values.begin(), std::min(values.size(), to.size()), to.begin());
}

uint64_t lut_bytes(const GCM_PostRenderLut& lut, uint8_t base_channels)
{
    uint64_t bytes = uint64_t{lut.prl_OutputBitDepth} / 8 * base_channels;
    for (uint8_t i = 0; i < lut.prl_LutDimensions && bytes <= kMostTable; ++i)
        bytes *= lut.prl_LutSize;
    return bytes;
}

GMM_Allocator* stream_memory()
{
    static GMM_Allocator allocator = []
    {
        GMM_Allocator made = {};
        made.gmm_Alloc = [](GMM_Allocator*, uint64_t size, uint32_t) -> void*
        { return ::operator new(static_cast<size_t>(size), std::nothrow); };
        made.gmm_Free = [](GMM_Allocator*, void* block) { ::operator delete(block); };
        return made;
    }();
    return &allocator;
}

// A copy with zeros behind it up to `size`; null if that is out of reason.
const uint8_t* padded(Arena& arena, std::span<const uint8_t> told, uint64_t size)
{
    if (size > std::max<uint64_t>(kMostTable, 2 * told.size()))
        return nullptr;
    const std::span<uint8_t> copy = arena.make_array<uint8_t>(std::max<size_t>(size, told.size()));
    std::ranges::copy(told, copy.begin());
    return copy.data();
}

const char* text(Arena& arena, std::string_view value)
{
    const std::string told = to_text(value);
    auto* copy = static_cast<char*>(arena.take(told.size() + 1));
    std::memcpy(copy, told.data(), told.size());
    return copy;
}

// The floats of a table, and zeros where it has fewer than `count`.
const float* float_table(Arena& arena, const Element* holder, size_t count)
{
    const Element* buffer = holder != nullptr ? holder->child("BufferFloat") : nullptr;
    if (buffer == nullptr)
        return nullptr;
    const std::vector<float> values = to_floats(buffer->rows);
    if (values.empty())
        return nullptr;
    const std::span<float> copy = arena.make_array<float>(count);
    std::copy_n(values.begin(), std::min(values.size(), copy.size()), copy.begin());
    return copy.data();
}

const GCM_CieLutsPointer* cie_luts(Arena& arena, const Element& element)
{
    auto* pointer = arena.make<GCM_CieLutsPointer>();
    const Element* told = element.child("GCM_CieLuts");
    if (told == nullptr)
        return pointer;
    auto* luts = arena.make<GCM_CieLuts>();
    luts->cl_DecodeBitDepth = read_uint(*told, "cl_DecodeBitDepth");
    read_numbers(*told, "cl_WhitePoint", luts->cl_WhitePoint);
    read_numbers(*told, "cl_BlackPoint", luts->cl_BlackPoint);
    read_numbers(*told, "cl_MatrixABC", luts->cl_MatrixABC);
    read_numbers(*told, "cl_MatrixLMN", luts->cl_MatrixLMN);
    read_numbers(*told, "cl_HIJKRange", luts->cl_HIJKRange);
    const std::string dimensions = "0x" + std::string(told->value("cl_HIJKDimensions"));
    size_t to = 0;
    for (size_t at = 2; at + 1 < dimensions.size() && to < 4; at += 3)
        luts->cl_HIJKDimensions[to++] = static_cast<uint8_t>(to_flags("[0x" + dimensions.substr(at, 2)));
    pointer->clp_CieLuts = luts;
    if (luts->cl_DecodeBitDepth > 22)
    {
        // Tables of this size have never been told; damage.
        luts->cl_DecodeBitDepth = 31;
        return pointer;
    }
    const size_t entries = size_t{1} << luts->cl_DecodeBitDepth;
    pointer->clp_DecodeABC_A = float_table(arena, element.child("clp_DecodeABC_A"), entries);
    pointer->clp_DecodeABC_B = float_table(arena, element.child("clp_DecodeABC_B"), entries);
    pointer->clp_DecodeABC_C = float_table(arena, element.child("clp_DecodeABC_C"), entries);
    pointer->clp_DecodeLMN_L = float_table(arena, element.child("clp_DecodeLMN_L"), entries);
    pointer->clp_DecodeLMN_M = float_table(arena, element.child("clp_DecodeLMN_M"), entries);
    pointer->clp_DecodeLMN_N = float_table(arena, element.child("clp_DecodeLMN_N"), entries);
    const Element* table = element.child("clp_HIJKTable");
    const Element* buffer = table != nullptr ? table->child("BufferUInt8") : nullptr;
    const uint8_t* sizes = luts->cl_HIJKDimensions;
    const uint64_t size = uint64_t{sizes[0]} * sizes[1] * sizes[2] * std::max<uint64_t>(sizes[3], 1);
    if (buffer != nullptr)
        pointer->clp_HIJKTable = padded(arena, buffer->bytes, size);
    if (buffer != nullptr && pointer->clp_HIJKTable == nullptr)
        luts->cl_HIJKDimensions[0] = 0;
    return pointer;
}

const GCM_PostRenderLut* post_render_lut(Arena& arena, const Element& element, uint8_t base_channels)
{
    auto* lut = arena.make<GCM_PostRenderLut>();
    lut->prl_LutDimensions = static_cast<uint8_t>(read_uint(element, "prl_LutDimensions"));
    lut->prl_LutSize = static_cast<uint8_t>(read_uint(element, "prl_LutSize"));
    lut->prl_OutputBitDepth = static_cast<uint8_t>(read_uint(element, "prl_OutputBitDepth"));
    const Element* buffer = element.child("BufferUInt8");
    if (buffer != nullptr)
        lut->prl_Table = padded(arena, buffer->bytes, lut_bytes(*lut, base_channels));
    return lut;
}

const GCM_Csd* csd_head(Arena& arena, const Element& element, bool callback)
{
    auto* csd = arena.make<GCM_Csd>();
    csd->csd_Type = callback ? uint32_t{GCM_CSDTYPE_CALLBACK} : read_enum(element, "csd_Type");
    csd->csd_NumBaseChans = static_cast<uint8_t>(read_uint(element, "csd_NumBaseChans"));
    csd->csd_NumNamedChans = static_cast<uint8_t>(read_uint(element, "csd_NumNamedChans"));
    csd->csd_HasSecondaryProfile = static_cast<uint8_t>(read_bool(element, "csd_HasSecondaryProfile"));
    csd->csd_HasAlternateDefn = static_cast<uint8_t>(read_bool(element, "csd_HasAlternateDefn"));
    csd->csd_DefaultRenderIntent = read_enum(element, "csd_DefaultRenderIntent");
    csd->csd_UseIlluminantInfo = static_cast<uint8_t>(read_bool(element, "csd_UseIlluminantInfo"));
    csd->csd_IsDeviceLinkProfile = static_cast<uint8_t>(read_bool(element, "csd_IsDeviceLinkProfile"));
    const Element* told = element.child("GCM_AnalyticalColorSpace");
    if (csd->csd_Type == GCM_CSDTYPE_PROFILE_BUFFER)
        csd->csd_Defn.ProfileBufferSize = read_uint(element, "csd_Defn.ProfileBufferSize");
    else if (csd->csd_Type == GCM_CSDTYPE_NONCOLORIMETRIC)
        csd->csd_Defn.NonColorimetric = read_enum(element, "csd_Defn.NonColorimetric");
    else if (csd->csd_Type == GCM_CSDTYPE_CIELUT_DATA)
        csd->csd_Defn.CieBased = read_enum(element, "csd_Defn.CieBased");
    else if (csd->csd_Type == GCM_CSDTYPE_INPUT)
        csd->csd_Defn.Input = read_enum(element, "csd_Defn.Input");
    else if (csd->csd_Type == GCM_CSDTYPE_ANALYTICAL && told != nullptr)
    {
        GCM_AnalyticalColorSpace& space = csd->csd_Defn.Analytical;
        space.acs_ColorSpace = read_enum(*told, "acs_ColorSpace");
        space.acs_WhitePointX = read_float(*told, "acs_WhitePointX");
        space.acs_WhitePointY = read_float(*told, "acs_WhitePointY");
        space.acs_WhitePointZ = read_float(*told, "acs_WhitePointZ");
        space.acs_BlackPointX = read_float(*told, "acs_BlackPointX");
        space.acs_BlackPointY = read_float(*told, "acs_BlackPointY");
        space.acs_BlackPointZ = read_float(*told, "acs_BlackPointZ");
        space.acs_LabAMin = read_float(*told, "acs_LabAMin");
        space.acs_LabAMax = read_float(*told, "acs_LabAMax");
        space.acs_LabBMin = read_float(*told, "acs_LabBMin");
        space.acs_LabBMax = read_float(*told, "acs_LabBMax");
    }
    return csd;
}

}  // namespace

void ColourSpaceReader::CloseStream::operator()(GIO_Stream* stream) const
{
    stream->ops->gio_Close(stream->instance);
}

// The bytes of a profile that came by a stream.
GIO_Stream* ColourSpaceReader::profile_stream(const Element& element)
{
    size_t size = 0;
    for (const Element& child : Children(element))
        size += child.bytes.size();
    const std::span<uint8_t> profile = arena_.make_array<uint8_t>(size);
    size_t to = 0;
    for (const Element& child : Children(element))
    {
        std::ranges::copy(child.bytes, profile.begin() + static_cast<ptrdiff_t>(to));
        to += child.bytes.size();
    }
    GIO_Stream* stream = nullptr;
    if (GIO_OpenMemory(profile.data(), profile.size(), stream_memory(), &stream) != 0)
        return nullptr;
    return streams_.emplace_back(stream).get();
}

void ColourSpaceReader::read_levels(const Element& element, GCM_CsdPointer* pointer, uint32_t levels)
{
    const Element* told = element.child("GCM_Csd");
    if (told == nullptr)
        return;
    const bool callback = read_bool(element, "GCM_CsdPointer_callback_dumped_as_profile_buffer") != 0;
    const auto* csd = csd_head(arena_, *told, callback);
    pointer->cp_Csd = csd;
    if (element.has("cp_Filename"))
        pointer->cp_Filename = text(arena_, element.value("cp_Filename"));
    if (callback)
        pointer->cp_CallbackStream = profile_stream(element);
    const Element* buffer = element.child("BufferUInt8");
    if (csd->csd_Type == GCM_CSDTYPE_PROFILE_BUFFER && buffer != nullptr)
        pointer->cp_ProfileBuffer = padded(arena_, buffer->bytes, csd->csd_Defn.ProfileBufferSize);
    const Element* luts = element.child("GCM_CieLutsPointer");
    if (csd->csd_Type == GCM_CSDTYPE_CIELUT_DATA && luts != nullptr)
        pointer->cp_CieLuts = cie_luts(arena_, *luts);
    const Element* lut = element.child("GCM_PostRenderLut");
    if (csd->csd_Type == GCM_CSDTYPE_POST_RENDER_LUT && lut != nullptr)
        pointer->cp_PostRenderLut = post_render_lut(arena_, *lut, csd->csd_NumBaseChans);
    const Element* names = element.member("cp_NamedChans");
    size_t count = 0;
    for (const Element* one = names != nullptr ? names->first : nullptr; one != nullptr && count < kMostNames;
         one = one->next)
        pointer->cp_NamedChans[count++] = text(arena_, one->value("val"));
    for (const Element& wrapper : Children(element))
    {
        const Element* held = wrapper.name == "ORVLOG_WRAPPER" ? wrapper.child("GCM_CsdPointer") : nullptr;
        if (held == nullptr || levels == 0)
            continue;
        auto* inner = arena_.make<GCM_CsdPointer>();
        read_levels(*held, inner, levels - 1);
        const bool alternate = wrapper.value("name") == "cp_AlternateDefn";
        (alternate ? pointer->cp_AlternateDefn : pointer->cp_TintTransformAltDefn) = inner;
    }
}

const GCM_CsdPointer* ColourSpaceReader::read(const Element* element)
{
    if (element == nullptr || element->name != "GCM_CsdPointer")
        return nullptr;
    auto* pointer = arena_.make<GCM_CsdPointer>();
    read_levels(*element, pointer, kMostLevels);
    return pointer;
}

void ColourSpaceReader::clear()
{
    streams_.clear();
}

}  // namespace orvlog::reader
