// GCM: colour space definitions as they travel in operands.

#ifndef ORVLOG_INTERFACE_GCM_CSD_H
#define ORVLOG_INTERFACE_GCM_CSD_H

#include "holv-core/gio/gio-stream.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GCM_CSDTYPE_FILE,
    GCM_CSDTYPE_CALLBACK,
    GCM_CSDTYPE_PROFILE_BUFFER,
    GCM_CSDTYPE_ANALYTICAL,
    GCM_CSDTYPE_NONCOLORIMETRIC,
    GCM_CSDTYPE_CIELUT_DATA,
    GCM_CSDTYPE_NO_BASE_CHANS,
    GCM_CSDTYPE_POST_RENDER_LUT,
    GCM_CSDTYPE_INPUT
};

enum
{
    GCM_RI_PERCEPTUAL,
    GCM_RI_SATURATION,
    GCM_RI_COLORIMETRIC_ABS,
    GCM_RI_COLORIMETRIC_REL,
    GCM_RI_USER_DEFINED_1
};

enum
{
    GCM_ACS_XYZ,
    GCM_ACS_LAB,
    GCM_ACS_ADOBE_RGB,
    GCM_ACS_LINEAR_SRGB,
    GCM_ACS_SRGB,
    GCM_ACS_SCRGB,
    GCM_ACS_SCRGB16,
    GCM_ACS_HVN_RGB
};

enum
{
    GCM_CIE_FAMILY_ABC,
    GCM_CIE_FAMILY_A,
    GCM_CIE_FAMILY_DEF,
    GCM_CIE_FAMILY_DEFG,
    GCM_CIE_FAMILY_CALRGB,
    GCM_CIE_FAMILY_CALGRAY
};

enum
{
    GCM_CSF_GRAY,
    GCM_CSF_RGB,
    GCM_CSF_CMYK,
    GCM_CSF_NAMED
};

enum
{
    GCM_CST_ADDITIVE,
    GCM_CST_SUBTRACTIVE,
    GCM_CST_OTHER
};

enum
{
    GCM_WHITEPOINT_D65,
    GCM_WHITEPOINT_D50
};

enum
{
    GNC_FORMAT_RGB,
    GNC_FORMAT_BGR,
    GNC_FORMAT_GRAY,
    GNC_FORMAT_CMYK,
    GNC_FORMAT_YMCK,
    GNC_FORMAT_K,
    GNC_FORMAT_NONE
};

typedef struct GCM_AnalyticalColorSpace
{
    uint32_t acs_ColorSpace;  // GCM_ACS_*
    float acs_WhitePointX;
    float acs_WhitePointY;
    float acs_WhitePointZ;
    float acs_BlackPointX;
    float acs_BlackPointY;
    float acs_BlackPointZ;
    float acs_LabAMin;
    float acs_LabAMax;
    float acs_LabBMin;
    float acs_LabBMax;
} GCM_AnalyticalColorSpace;

typedef struct GCM_Csd
{
    uint32_t csd_Type;  // GCM_CSDTYPE_*
    uint8_t csd_NumBaseChans;
    uint8_t csd_NumNamedChans;
    uint8_t csd_HasSecondaryProfile;   // boolean
    uint8_t csd_HasAlternateDefn;      // boolean
    uint32_t csd_DefaultRenderIntent;  // GCM_RI_*
    uint8_t csd_UseIlluminantInfo;     // boolean
    uint8_t csd_IsDeviceLinkProfile;   // boolean
    union
    {
        uint32_t CallbackBufferSize;          // GCM_CSDTYPE_CALLBACK
        uint32_t ProfileBufferSize;           // GCM_CSDTYPE_PROFILE_BUFFER: bytes
        GCM_AnalyticalColorSpace Analytical;  // GCM_CSDTYPE_ANALYTICAL
        uint32_t NonColorimetric;             // GCM_CSDTYPE_NONCOLORIMETRIC: GNC_FORMAT_*
        uint32_t CieBased;                    // GCM_CSDTYPE_CIELUT_DATA: GCM_CIE_FAMILY_*
        uint32_t Input;                       // GCM_CSDTYPE_INPUT: GCM_CSF_*
    } csd_Defn;
} GCM_Csd;

typedef struct GCM_CieLuts
{
    uint32_t cl_DecodeBitDepth;  // the decode tables have 2 to this power entries
    float cl_WhitePoint[3];
    float cl_BlackPoint[3];
    float cl_MatrixABC[9];
    float cl_MatrixLMN[9];
    uint8_t cl_HIJKDimensions[4];
    float cl_HIJKRange[8];
} GCM_CieLuts;

typedef struct GCM_CieLutsPointer
{
    const GCM_CieLuts* clp_CieLuts;
    const float* clp_DecodeABC_A;
    const float* clp_DecodeABC_B;
    const float* clp_DecodeABC_C;
    const float* clp_DecodeLMN_L;
    const float* clp_DecodeLMN_M;
    const float* clp_DecodeLMN_N;
    const void* clp_Unused[4];
    const uint8_t* clp_HIJKTable;
} GCM_CieLutsPointer;

typedef struct GCM_PostRenderLut
{
    uint8_t prl_LutDimensions;
    uint8_t prl_LutSize;
    uint8_t prl_OutputBitDepth;
    const uint8_t* prl_Table;
} GCM_PostRenderLut;

typedef struct GCM_CsdPointer GCM_CsdPointer;

struct GCM_CsdPointer
{
    const GCM_Csd* cp_Csd;         // null: no definition
    const char* cp_NamedChans[8];  // names of the named channels; the first is null when there are none in place
    const char* cp_Filename;       // GCM_CSDTYPE_FILE
    const void* cp_Unused1;
    GIO_Stream* cp_CallbackStream;              // GCM_CSDTYPE_CALLBACK: holds the profile
    const uint8_t* cp_ProfileBuffer;            // GCM_CSDTYPE_PROFILE_BUFFER
    const GCM_CieLutsPointer* cp_CieLuts;       // GCM_CSDTYPE_CIELUT_DATA
    const GCM_PostRenderLut* cp_PostRenderLut;  // GCM_CSDTYPE_POST_RENDER_LUT
    const void* cp_Unused2[3];
    const GCM_CsdPointer* cp_AlternateDefn;         // valid if csd_HasAlternateDefn is set
    const GCM_CsdPointer* cp_TintTransformAltDefn;  // valid if there are named channels but no names in place
};

#ifdef __cplusplus
}
#endif

#endif
