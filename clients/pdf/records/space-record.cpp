// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/space-record.h"

#include <algorithm>
#include <cmath>

namespace orvlog::pdf_client
{

struct SpaceRecord::Tables
{
    GCM_Csd csd{};
    GCM_Csd alternate_csd{};
    GCM_CsdPointer alternate{};
    GCM_CieLuts luts{};
    GCM_CieLutsPointer luts_pointer{};
    std::vector<float> decode[3];
};

namespace
{

constexpr uint32_t kDecodeDepth = 8;

std::vector<float> gamma_curve(double gamma)
{
    std::vector<float> curve(size_t{1} << kDecodeDepth);
    for (size_t i = 0; i < curve.size(); ++i)
    {
        const double share = static_cast<double>(i) / static_cast<double>(curve.size() - 1);
        curve[i] = static_cast<float>(std::pow(share, gamma));
    }
    return curve;
}

void copy_floats(const double* from, size_t count, float* to)
{
    std::transform(from, from + count, to, [](double value) { return static_cast<float>(value); });
}

uint32_t device_format(uint16_t channels)
{
    switch (channels)
    {
    case 3:
        return GNC_FORMAT_RGB;
    case 4:
        return GNC_FORMAT_CMYK;
    default:
        return GNC_FORMAT_GRAY;
    }
}

}  // namespace

SpaceRecord::SpaceRecord(const ColourSpace& space) : space_(space)
{
    if (space_.definition == nullptr)
        return;
    const SpaceDefinition& definition = *space_.definition;
    tables_ = std::make_shared<Tables>();
    tables_->csd.csd_NumBaseChans = static_cast<uint8_t>(space_.channels);
    tables_->csd.csd_DefaultRenderIntent = GCM_RI_COLORIMETRIC_REL;
    tables_->alternate_csd = tables_->csd;
    tables_->alternate_csd.csd_Type = GCM_CSDTYPE_NONCOLORIMETRIC;
    tables_->alternate_csd.csd_Defn.NonColorimetric = device_format(space_.channels);
    tables_->alternate.cp_Csd = &tables_->alternate_csd;
    tables_->csd.csd_HasAlternateDefn = 1;
    pointer_.cp_Csd = &tables_->csd;
    pointer_.cp_AlternateDefn = &tables_->alternate;
    if (definition.kind == SpaceDefinition::Kind::icc_profile)
    {
        tables_->csd.csd_Type = GCM_CSDTYPE_PROFILE_BUFFER;
        tables_->csd.csd_Defn.ProfileBufferSize = static_cast<uint32_t>(definition.profile.size());
        pointer_.cp_ProfileBuffer = definition.profile.data();
        return;
    }
    fill_cie_tables(definition);
}

void SpaceRecord::fill_cie_tables(const SpaceDefinition& definition)
{
    const bool rgb = definition.kind == SpaceDefinition::Kind::calibrated_rgb;
    tables_->csd.csd_Type = GCM_CSDTYPE_CIELUT_DATA;
    tables_->csd.csd_Defn.CieBased = rgb ? GCM_CIE_FAMILY_CALRGB : GCM_CIE_FAMILY_CALGRAY;
    GCM_CieLuts& luts = tables_->luts;
    luts.cl_DecodeBitDepth = kDecodeDepth;
    copy_floats(definition.white, 3, luts.cl_WhitePoint);
    copy_floats(definition.black, 3, luts.cl_BlackPoint);
    copy_floats(definition.matrix, 9, luts.cl_MatrixABC);
    luts.cl_MatrixLMN[0] = luts.cl_MatrixLMN[4] = luts.cl_MatrixLMN[8] = 1;
    for (size_t i = 0; i < 3; ++i)
        tables_->decode[i] = gamma_curve(definition.gamma[rgb ? i : 0]);
    GCM_CieLutsPointer& pointer = tables_->luts_pointer;
    pointer.clp_CieLuts = &luts;
    pointer.clp_DecodeABC_A = tables_->decode[0].data();
    pointer.clp_DecodeABC_B = tables_->decode[1].data();
    pointer.clp_DecodeABC_C = tables_->decode[2].data();
    pointer_.cp_CieLuts = &pointer;
}

const GCM_CsdPointer& SpaceRecord::pointer() const
{
    return pointer_;
}

uint8_t SpaceRecord::colour_info() const
{
    return space_.definition != nullptr ? GOP_OCS_OTHER : GOP_OCS_INPUT;
}

uint16_t SpaceRecord::family() const
{
    switch (space_.channels)
    {
    case 3:
        return GCM_CSF_RGB;
    case 4:
        return GCM_CSF_CMYK;
    default:
        return GCM_CSF_GRAY;
    }
}

}  // namespace orvlog::pdf_client
