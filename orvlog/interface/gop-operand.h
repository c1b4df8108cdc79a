/// \file
/// GOP and GBC: what is painted (operands and colours) and how it combines (operators).
///
/// A call passes a pointer record, which carries the operand record by pointer with all that it refers to.
/// The kind of an operand, and so of its pointer record, is go_OpType of its head.

#ifndef ORVLOG_INTERFACE_GOP_OPERAND_H
#define ORVLOG_INTERFACE_GOP_OPERAND_H

#include "holv-core/ggo/ggo-records.h"
#include "orvlog/interface/gcm-csd.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Kinds of operands.
enum
{
    GOP_OPERAND_FLAT,            ///< one colour
    GOP_OPERAND_GRAD_2PT,        ///< a gradient between two points
    GOP_OPERAND_GRAD_MULTISTOP,  ///< the same with stops between
    GOP_OPERAND_GRAD_3PT,        ///< a triangle with a colour at each corner
    GOP_OPERAND_GRAD_RADIAL,     ///< a gradient between two circles
    GOP_OPERAND_IMAGE,           ///< an image
    GOP_OPERAND_IMAGE_TILE       ///< an image that repeats
};

/// Bits 0 and 1 of go_ColorInfo.
enum
{
    GOP_OCS_INPUT,   ///< the input space of a family, go_ColorSpaceFamily
    GOP_OCS_RENDER,  ///< the space that is rendered in
    GOP_OCS_OTHER    ///< the definition in the pointer record
};

/// Bits 6 and 7 of go_ColorInfo.
enum
{
    GCM_CF_BLACK,  ///< black
    GCM_CF_GREY,   ///< gray
    GCM_CF_OTHER   ///< anything
};

/// go_ColorInfo of a GOP_OCS_* value and a GCM_CF_* value.
#define GOP_COLOR_INFO(space, flag) ((uint8_t)(((flag) << 6) | (space)))
/// The GOP_OCS_* value of a go_ColorInfo.
#define GOP_COLOR_INFO_SPACE(info) (0x3U & (uint32_t)(info))
/// The GCM_CF_* value of a go_ColorInfo.
#define GOP_COLOR_INFO_FLAG(info) (((uint32_t)(info) >> 6) & 0x3U)

/// Flags of go_Hints.
enum
{
    GOP_OPD_HINT_NONE = 0x0,                  ///< no hint
    GOP_OPD_HINT_IS_OPAQUE = 0x1,             ///< opaque everywhere
    GOP_OPD_HINT_ONE_TIME_USE = 0x4,          ///< isn't used by another call
    GOP_OPD_HINT_IMAGE_TRANSLATE_ONLY = 0x8,  ///< the image is only moved
    GOP_OPD_HINT_IMAGE_MAX_2_COLORS = 0x10,   ///< at most 2 colours in the image
    GOP_OPD_HINT_IMAGE_MAX_4_COLORS = 0x20,   ///< at most 4
    GOP_OPD_HINT_IMAGE_MAX_16_COLORS = 0x40,  ///< at most 16
    GOP_OPD_HINT_IMAGE_MAX_256_COLORS = 0x80  ///< at most 256
};

/// Families of operators. docs/data-model.md tells the operations of each.
enum
{
    GOP_ROP_ROP2_GDI,          ///< raster operations of two operands, 1 to 16
    GOP_ROP_ROP3,              ///< raster operations of three operands
    GOP_ROP_ROP4,              ///< two of these, for the two values of a mask
    GOP_ROP_PORTER_DUFF,       ///< Porter and Duff's, 0 to 12
    GOP_ROP_PDF_SEPARABLE,     ///< blend modes by channel, 0 to 11
    GOP_ROP_PDF_NONSEPARABLE,  ///< blend modes of whole colours, 0 to 3
    GOP_ROP_ARITHMETIC,        ///< arithmetic
    GOP_ROP_IMAGE_PROCESSING,  ///< image processing
    GOP_ROP_USER_DEFINED       ///< the client's own
};

/// What operand 2 does as a mask.
enum
{
    GOP_MASK_NONE,      ///< there is no mask
    GOP_MASK_IN,        ///< multiplies by operand 2
    GOP_MASK_OUT,       ///< multiplies by one minus operand 2
    GOP_ATTRIBUTE_MASK  ///< masks attributes
};

/// What of a raster operation may be transparent.
enum
{
    GOP_TRANS_NONE,                        ///< nothing
    GOP_TRANS_SOURCE,                      ///< the source
    GOP_TRANS_PATTERN,                     ///< the pattern
    GOP_TRANS_SOURCE_AND_PATTERN,          ///< both
    GOP_TRANS_SOURCE_BY_CHANNEL,           ///< each channel of the source for itself
    GOP_TRANS_GREY_TO_ALPHA,               ///< gray is taken as alpha
    GOP_TRANS_SOURCE_BY_CHANNEL_INCL_ZERO  ///< each channel for itself, channels of 0 too
};

/// Flags of op_TransparencyFlags.
enum
{
    GOP_TRANS_FLAG_NONE = 0x0,            ///< no flag
    GOP_TRANS_FLAG_ALPHA_IS_SHAPE = 0x1,  ///< alpha and masks are shape, not opacity
    GOP_TRANS_FLAG_NO_KNOCKOUT = 0x2      ///< combines with what a knockout group holds already
};

/// Flags of op_OperatorHints.
enum
{
    GOP_OP_HINT_NONE = 0x0,                 ///< no hint
    GOP_OP_HINT_NEEDS_BACKGROUND = 0x1,     ///< the result depends on what lies below
    GOP_OP_HINT_NO_BACKGROUND_NEEDED = 0x2  ///< it doesn't
};

/// Channel values follow empty_chans in place, alpha first: 32-bit floats when bit_depth is 32, otherwise
/// unsigned 16 bits each.
typedef struct GBC_Color
{
    uint16_t num_chans;    ///< alpha included
    uint8_t bit_depth;     ///< 32: float channels; anything else: 16-bit channels
    uint8_t has_alpha;     ///< non-zero when channel 0 is alpha; without channels nothing is read
    uint32_t empty_chans;  ///< bit N set: channel N+1 is empty
    union
    {
        float as_float[1];
        uint16_t as_uint16[1];
    } channels;  ///< num_chans values in place
} GBC_Color;

/// The head of every operand.
typedef struct GOP_Operand
{
    uint8_t go_OpType;             ///< GOP_OPERAND_*
    uint8_t go_ColorInfo;          ///< GOP_OCS_* in bits 0 and 1, GCM_CF_* in bits 6 and 7
    uint16_t go_Count;             ///< stops of a gradient; depth code of an image (GNC_BMP_DEPTH_*)
    uint16_t go_Hints;             ///< GOP_OPD_HINT_*
    uint16_t go_ColorSpaceFamily;  ///< GCM_CSF_*, when the colour space is GOP_OCS_INPUT
} GOP_Operand;

/// One colour everywhere.
typedef struct GOP_OperandFlat
{
    GOP_Operand fl_Operand;  ///< the head
    GBC_Color fl_Color;      ///< the colour, with its channels behind it
} GOP_OperandFlat;

/// A gradient from a point to another. Its colours stand in GOP_OperandGrad2PtPointer.
typedef struct GOP_OperandGrad2Pt
{
    GOP_Operand g2_Operand;           ///< the head
    GGO_Matrix g2_Transform;          ///< the gradient's space to the content space
    GGO_Point g2_Pt1;                 ///< position 0, in the gradient's space
    GGO_Point g2_Pt2;                 ///< position 1
    uint8_t g2_UseInterpColorSpace;   ///< boolean: interpolated in the space of the definition
    uint8_t g2_GradientExtendMode;    ///< 1: before the start, 2: beyond the end, 3: both
    uint8_t g2_GradientRoundingMode;  ///< how positions are rounded to steps
} GOP_OperandGrad2Pt;

/// A triangle with a colour at each corner.
typedef struct GOP_OperandGrad3Pt
{
    GOP_Operand g3_Operand;   ///< the head
    GGO_Matrix g3_Transform;  ///< the gradient's space to the content space
    GGO_Point g3_Pt1;         ///< first corner, in the gradient's space
    GGO_Point g3_Pt2;         ///< second corner
    GGO_Point g3_Pt3;         ///< third corner
} GOP_OperandGrad3Pt;

/// A gradient from a point to another, by stops.
typedef struct GOP_OperandGradMultistop
{
    GOP_Operand gm_Operand;           ///< the head; go_Count stops
    GGO_Matrix gm_Transform;          ///< the gradient's space to the content space
    GGO_Point gm_Pt1;                 ///< position 0, in the gradient's space
    GGO_Point gm_Pt2;                 ///< position 1
    uint8_t gm_UseInterpColorSpace;   ///< as g2_UseInterpColorSpace
    uint8_t gm_GradientExtendMode;    ///< as g2_GradientExtendMode
    uint8_t gm_GradientRoundingMode;  ///< as g2_GradientRoundingMode
} GOP_OperandGradMultistop;

/// A gradient from a circle to another, by stops.
typedef struct GOP_OperandGradRadial
{
    GOP_Operand gr_Operand;           ///< the head; go_Count stops
    GGO_Matrix gr_Transform;          ///< the gradient's space to the content space
    GGO_Point gr_Center1;             ///< centre of position 0, in the gradient's space
    double gr_Radius1;                ///< radius of position 0
    GGO_Point gr_Center2;             ///< centre of position 1
    double gr_Radius2;                ///< radius of position 1
    uint8_t gr_UseInterpColorSpace;   ///< as g2_UseInterpColorSpace
    uint8_t gr_GradientExtendMode;    ///< as g2_GradientExtendMode
    uint8_t gr_GradientRoundingMode;  ///< as g2_GradientRoundingMode
    GBC_Color gr_Color;               ///< not used
} GOP_OperandGradRadial;

/// A stop of a gradient.
typedef struct GOP_GradStop
{
    double gs_StopPosn;      ///< 0 to 1, rising; two stops at one position make a step
    GBC_Color gs_StopColor;  ///< the colour, with its channels behind it
} GOP_GradStop;

/// How an image repeats.
typedef struct GOP_TilingParameters
{
    double it_XRepetitionInterval;  ///< image space; 0 is the image's width
    double it_YRepetitionInterval;  ///< image space; 0 is the image's height
    uint16_t it_XFlip;              ///< boolean: every second column is mirrored left to right
    uint16_t it_YFlip;              ///< boolean: every second row is mirrored top to bottom
} GOP_TilingParameters;

/// The common head of the pointer records of flat colours and gradients. A call's operand argument is a
/// pointer to this head or to a GOP_OperandImagePointer, whose first two fields are the same.
typedef struct GOP_OperandPointer
{
    const GOP_Operand* op_Operand;  ///< null: there is no operand
    uint32_t op_UniqueId;           ///< chosen by the caller; equal numbers say that two calls use the same operand
    GCM_CsdPointer op_Csd;          ///< used when the colour space is GOP_OCS_OTHER
} GOP_OperandPointer;

/// The pointer record of a GOP_OperandFlat.
typedef struct GOP_OperandFlatPointer
{
    GOP_OperandPointer flp_Pointer;  ///< the head
} GOP_OperandFlatPointer;

/// The pointer record of a GOP_OperandGrad2Pt.
typedef struct GOP_OperandGrad2PtPointer
{
    GOP_OperandPointer g2p_Pointer;  ///< the head
    const GBC_Color* g2p_Color1;     ///< the colour of position 0
    const GBC_Color* g2p_Color2;     ///< the colour of position 1
} GOP_OperandGrad2PtPointer;

/// The pointer record of a GOP_OperandGrad3Pt.
typedef struct GOP_OperandGrad3PtPointer
{
    GOP_OperandPointer g3p_Pointer;  ///< the head
    const GBC_Color* g3p_Color[3];   ///< the colours of the three corners
} GOP_OperandGrad3PtPointer;

/// The pointer record of a GOP_OperandGradMultistop.
typedef struct GOP_OperandGradMultistopPointer
{
    GOP_OperandPointer gmp_Pointer;       ///< the head
    const GOP_GradStop* gmp_GradStop[1];  ///< go_Count entries
} GOP_OperandGradMultistopPointer;

/// The pointer record of a GOP_OperandGradRadial.
typedef struct GOP_OperandGradRadialPointer
{
    GOP_OperandPointer grp_Pointer;       ///< the head
    const GOP_GradStop* grp_GradStop[1];  ///< go_Count entries
} GOP_OperandGradRadialPointer;

/// A transfer function. The logger says that there is one and doesn't call it.
typedef void (*GOP_TransferFn)(void);

/// How a paint combines with what lies below.
typedef struct GOP_Operator
{
    uint32_t op_OperatorType;            ///< GOP_ROP_*
    uint16_t op_Operator;                ///< the operation within its family
    uint8_t op_TransparencyType;         ///< GOP_TRANS_*
    uint8_t op_TransparencyFlags;        ///< GOP_TRANS_FLAG_*
    uint32_t op_MaskMode;                ///< GOP_MASK_*
    uint32_t op_OperatorHints;           ///< GOP_OP_HINT_*
    GOP_TransferFn op_BitmapTransferFn;  ///< may be null
    GOP_TransferFn op_ColorTransferFn;   ///< may be null
} GOP_Operator;

#ifdef __cplusplus
}
#endif

#endif
