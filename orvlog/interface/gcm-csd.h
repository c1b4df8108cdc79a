/// \file
/// GCM: colour space definitions as they travel in operands.

#ifndef ORVLOG_INTERFACE_GCM_CSD_H
#define ORVLOG_INTERFACE_GCM_CSD_H

#include "holv-core/gio/gio-stream.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Kinds of colour space definitions.
enum
{
    GCM_CSDTYPE_FILE,             ///< a profile in a file, cp_Filename
    GCM_CSDTYPE_CALLBACK,         ///< a profile in a stream, cp_CallbackStream
    GCM_CSDTYPE_PROFILE_BUFFER,   ///< a profile in memory, cp_ProfileBuffer
    GCM_CSDTYPE_ANALYTICAL,       ///< a space by formula, csd_Defn.Analytical
    GCM_CSDTYPE_NONCOLORIMETRIC,  ///< channels without a meaning as colour, csd_Defn.NonColorimetric
    GCM_CSDTYPE_CIELUT_DATA,      ///< tables of a CIE based space, cp_CieLuts
    GCM_CSDTYPE_NO_BASE_CHANS,    ///< named channels alone
    GCM_CSDTYPE_POST_RENDER_LUT,  ///< a table that is applied after rendering, cp_PostRenderLut
    GCM_CSDTYPE_INPUT             ///< the input space of a family, csd_Defn.Input
};

/// Rendering intents.
enum
{
    GCM_RI_PERCEPTUAL,        ///< perceptual
    GCM_RI_SATURATION,        ///< saturation
    GCM_RI_COLORIMETRIC_ABS,  ///< absolute colorimetric
    GCM_RI_COLORIMETRIC_REL,  ///< relative colorimetric
    GCM_RI_USER_DEFINED_1     ///< the client's own
};

/// Analytical colour spaces.
enum
{
    GCM_ACS_XYZ,          ///< CIE XYZ
    GCM_ACS_LAB,          ///< CIE L*a*b*
    GCM_ACS_ADOBE_RGB,    ///< a wide RGB space with a gamma of 2.2
    GCM_ACS_LINEAR_SRGB,  ///< sRGB without its transfer curve
    GCM_ACS_SRGB,         ///< sRGB
    GCM_ACS_SCRGB,        ///< scRGB in floats
    GCM_ACS_SCRGB16,      ///< scRGB in 16 bits
    GCM_ACS_HVN_RGB       ///< the system's own RGB space
};

/// Families of CIE based spaces.
enum
{
    GCM_CIE_FAMILY_ABC,     ///< three components
    GCM_CIE_FAMILY_A,       ///< one component
    GCM_CIE_FAMILY_DEF,     ///< three components through a table
    GCM_CIE_FAMILY_DEFG,    ///< four components through a table
    GCM_CIE_FAMILY_CALRGB,  ///< calibrated RGB
    GCM_CIE_FAMILY_CALGRAY  ///< calibrated gray
};

/// Families of input spaces.
enum
{
    GCM_CSF_GRAY,  ///< one channel, 0 black, 1 white
    GCM_CSF_RGB,   ///< red, green, blue
    GCM_CSF_CMYK,  ///< cyan, magenta, yellow, black; 0 is no ink
    GCM_CSF_NAMED  ///< tints of named inks; 1 is full ink
};

/// How the channels of a space mix, in colour tickets.
enum
{
    GCM_CST_ADDITIVE,     ///< of light
    GCM_CST_SUBTRACTIVE,  ///< of ink
    GCM_CST_OTHER         ///< neither
};

/// White points, in colour tickets.
enum
{
    GCM_WHITEPOINT_D65,  ///< daylight at 6500 K
    GCM_WHITEPOINT_D50   ///< daylight at 5000 K
};

/// Channels that aren't colorimetric, in order.
enum
{
    GNC_FORMAT_RGB,   ///< red, green, blue
    GNC_FORMAT_BGR,   ///< blue, green, red
    GNC_FORMAT_GRAY,  ///< gray, 0 is black
    GNC_FORMAT_CMYK,  ///< cyan, magenta, yellow, black
    GNC_FORMAT_YMCK,  ///< yellow, magenta, cyan, black
    GNC_FORMAT_K,     ///< black ink
    GNC_FORMAT_NONE   ///< no format
};

/// A colour space that is given by formula.
typedef struct GCM_AnalyticalColorSpace
{
    uint32_t acs_ColorSpace;  ///< GCM_ACS_*
    float acs_WhitePointX;    ///< white point, CIE X; 1 is the Y of white
    float acs_WhitePointY;    ///< CIE Y
    float acs_WhitePointZ;    ///< CIE Z
    float acs_BlackPointX;    ///< black point, CIE X
    float acs_BlackPointY;    ///< CIE Y
    float acs_BlackPointZ;    ///< CIE Z
    float acs_LabAMin;        ///< GCM_ACS_LAB: the a* of a channel's 0
    float acs_LabAMax;        ///< the a* of a channel's 1
    float acs_LabBMin;        ///< the b* of a channel's 0
    float acs_LabBMax;        ///< the b* of a channel's 1
} GCM_AnalyticalColorSpace;

/// A colour space definition. What it refers to stands in its GCM_CsdPointer.
typedef struct GCM_Csd
{
    uint32_t csd_Type;                 ///< GCM_CSDTYPE_*
    uint8_t csd_NumBaseChans;          ///< channels of the base space
    uint8_t csd_NumNamedChans;         ///< channels of named inks besides, at most 8 with names in place
    uint8_t csd_HasSecondaryProfile;   ///< boolean
    uint8_t csd_HasAlternateDefn;      ///< boolean
    uint32_t csd_DefaultRenderIntent;  ///< GCM_RI_*
    uint8_t csd_UseIlluminantInfo;     ///< boolean
    uint8_t csd_IsDeviceLinkProfile;   ///< boolean
    union
    {
        uint32_t CallbackBufferSize;          ///< GCM_CSDTYPE_CALLBACK
        uint32_t ProfileBufferSize;           ///< GCM_CSDTYPE_PROFILE_BUFFER: bytes
        GCM_AnalyticalColorSpace Analytical;  ///< GCM_CSDTYPE_ANALYTICAL
        uint32_t NonColorimetric;             ///< GCM_CSDTYPE_NONCOLORIMETRIC: GNC_FORMAT_*
        uint32_t CieBased;                    ///< GCM_CSDTYPE_CIELUT_DATA: GCM_CIE_FAMILY_*
        uint32_t Input;                       ///< GCM_CSDTYPE_INPUT: GCM_CSF_*
    } csd_Defn;                               ///< what the kind needs
} GCM_Csd;

/// The numbers of a CIE based space.
typedef struct GCM_CieLuts
{
    uint32_t cl_DecodeBitDepth;    ///< the decode tables have 2 to this power entries
    float cl_WhitePoint[3];        ///< CIE X, Y, Z
    float cl_BlackPoint[3];        ///< CIE X, Y, Z
    float cl_MatrixABC[9];         ///< behind the tables ABC
    float cl_MatrixLMN[9];         ///< behind the tables LMN
    uint8_t cl_HIJKDimensions[4];  ///< entries of the table along each of its dimensions
    float cl_HIJKRange[8];         ///< least and greatest value of each dimension
} GCM_CieLuts;

/// A CIE based space with its tables.
typedef struct GCM_CieLutsPointer
{
    const GCM_CieLuts* clp_CieLuts;  ///< the numbers
    const float* clp_DecodeABC_A;    ///< 2 to the cl_DecodeBitDepth entries, as the next five; each may be null
    const float* clp_DecodeABC_B;    ///< of the second component
    const float* clp_DecodeABC_C;    ///< of the third component
    const float* clp_DecodeLMN_L;    ///< of the first component
    const float* clp_DecodeLMN_M;    ///< of the second component
    const float* clp_DecodeLMN_N;    ///< of the third component
    const void* clp_Unused[4];       ///< not read
    const uint8_t* clp_HIJKTable;    ///< three bytes for each entry; may be null
} GCM_CieLutsPointer;

/// A table that is applied after rendering.
typedef struct GCM_PostRenderLut
{
    uint8_t prl_LutDimensions;   ///< its dimensions
    uint8_t prl_LutSize;         ///< entries along each of them
    uint8_t prl_OutputBitDepth;  ///< bits of an output value
    const uint8_t* prl_Table;    ///< the entries
} GCM_PostRenderLut;

/// A colour space definition with what it refers to.
typedef struct GCM_CsdPointer GCM_CsdPointer;

/// A colour space definition with what it refers to.
struct GCM_CsdPointer
{
    const GCM_Csd* cp_Csd;            ///< null: no definition
    const char* cp_NamedChans[8];     ///< names of the named channels; the first is null when there are none in place
    const char* cp_Filename;          ///< GCM_CSDTYPE_FILE
    const void* cp_Unused1;           ///< not read
    GIO_Stream* cp_CallbackStream;    ///< GCM_CSDTYPE_CALLBACK: holds the profile
    const uint8_t* cp_ProfileBuffer;  ///< GCM_CSDTYPE_PROFILE_BUFFER
    const GCM_CieLutsPointer* cp_CieLuts;           ///< GCM_CSDTYPE_CIELUT_DATA
    const GCM_PostRenderLut* cp_PostRenderLut;      ///< GCM_CSDTYPE_POST_RENDER_LUT
    const void* cp_Unused2[3];                      ///< not read
    const GCM_CsdPointer* cp_AlternateDefn;         ///< valid if csd_HasAlternateDefn is set
    const GCM_CsdPointer* cp_TintTransformAltDefn;  ///< valid if there are named channels but no names in place
};

#ifdef __cplusplus
}
#endif

#endif
