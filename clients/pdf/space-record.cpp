// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/orv-records.h"

namespace pdf_client
{

struct SpaceRecord::Tables
{
    GCM_Csd csd{};
    GCM_Csd alternate_csd{};
    GCM_CsdPointer alternate{};
};

namespace
{

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
    {
        return;
    }
    const SpaceDefinition& definition = *space_.definition;
    tables_ = std::make_shared<Tables>();
    tables_->csd.csd_NumBaseChans = static_cast<uint8_t>(space_.channels);
    tables_->csd.csd_DefaultRenderIntent = GCM_RI_COLORIMETRIC_REL;
    tables_->alternate_csd = tables_->csd;
    tables_->alternate_csd.csd_Type = GCM_CSDTYPE_NONCOLORIMETRIC;
    tables_->alternate_csd.csd_Defn.NonColorimetric = device_format(space_.channels);
    tables_->alternate.cp_Csd = &tables_->alternate_csd;
    pointer_.cp_Csd = &tables_->csd;
    if (definition.kind == SpaceDefinition::Kind::icc_profile)
    {
        tables_->csd.csd_Type = GCM_CSDTYPE_PROFILE_BUFFER;
        tables_->csd.csd_Defn.ProfileBufferSize = static_cast<uint32_t>(definition.profile.size());
        tables_->csd.csd_HasAlternateDefn = 1;
        pointer_.cp_ProfileBuffer = definition.profile.data();
        pointer_.cp_AlternateDefn = &tables_->alternate;
    }
    else
    {
        tables_->csd = tables_->alternate_csd;
    }
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

}  // namespace pdf_client
