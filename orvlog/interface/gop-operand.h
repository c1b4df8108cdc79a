// GOP and GBC: what is painted (operands and colours) and how it combines (operators).
//
// A call passes a pointer record, which carries the operand record by pointer with all that it refers to.
// The kind of an operand, and so of its pointer record, is go_OpType of its head.

#ifndef ORVLOG_INTERFACE_GOP_OPERAND_H
#define ORVLOG_INTERFACE_GOP_OPERAND_H

#include "holv-core/ggo/ggo-records.h"
#include "orvlog/interface/gcm-csd.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GOP_OPERAND_FLAT,
    GOP_OPERAND_GRAD_2PT,
    GOP_OPERAND_GRAD_MULTISTOP,
    GOP_OPERAND_GRAD_3PT,
    GOP_OPERAND_GRAD_RADIAL,
    GOP_OPERAND_IMAGE,
    GOP_OPERAND_IMAGE_TILE
};

// Bits 0 and 1 of go_ColorInfo.
enum
{
    GOP_OCS_INPUT,
    GOP_OCS_RENDER,
    GOP_OCS_OTHER
};

// Bits 6 and 7 of go_ColorInfo.
enum
{
    GCM_CF_BLACK,
    GCM_CF_GREY,
    GCM_CF_OTHER
};

#define GOP_COLOR_INFO(space, flag) ((uint8_t)(((flag) << 6) | (space)))
#define GOP_COLOR_INFO_SPACE(info) (0x3U & (uint32_t)(info))
#define GOP_COLOR_INFO_FLAG(info) (((uint32_t)(info) >> 6) & 0x3U)

// Flags of go_Hints.
enum
{
    GOP_OPD_HINT_NONE = 0x0,
    GOP_OPD_HINT_IS_OPAQUE = 0x1,
    GOP_OPD_HINT_ONE_TIME_USE = 0x4,
    GOP_OPD_HINT_IMAGE_TRANSLATE_ONLY = 0x8,
    GOP_OPD_HINT_IMAGE_MAX_2_COLORS = 0x10,
    GOP_OPD_HINT_IMAGE_MAX_4_COLORS = 0x20,
    GOP_OPD_HINT_IMAGE_MAX_16_COLORS = 0x40,
    GOP_OPD_HINT_IMAGE_MAX_256_COLORS = 0x80
};

enum
{
    GOP_ROP_ROP2_GDI,
    GOP_ROP_ROP3,
    GOP_ROP_ROP4,
    GOP_ROP_PORTER_DUFF,
    GOP_ROP_PDF_SEPARABLE,
    GOP_ROP_PDF_NONSEPARABLE,
    GOP_ROP_ARITHMETIC,
    GOP_ROP_IMAGE_PROCESSING,
    GOP_ROP_USER_DEFINED
};

enum
{
    GOP_MASK_NONE,
    GOP_MASK_IN,
    GOP_MASK_OUT,
    GOP_ATTRIBUTE_MASK
};

enum
{
    GOP_TRANS_NONE,
    GOP_TRANS_SOURCE,
    GOP_TRANS_PATTERN,
    GOP_TRANS_SOURCE_AND_PATTERN,
    GOP_TRANS_SOURCE_BY_CHANNEL,
    GOP_TRANS_GREY_TO_ALPHA,
    GOP_TRANS_SOURCE_BY_CHANNEL_INCL_ZERO
};

// Flags of op_TransparencyFlags.
enum
{
    GOP_TRANS_FLAG_NONE = 0x0,
    GOP_TRANS_FLAG_ALPHA_IS_SHAPE = 0x1,
    GOP_TRANS_FLAG_NO_KNOCKOUT = 0x2
};

// Flags of op_OperatorHints.
enum
{
    GOP_OP_HINT_NONE = 0x0,
    GOP_OP_HINT_NEEDS_BACKGROUND = 0x1,
    GOP_OP_HINT_NO_BACKGROUND_NEEDED = 0x2
};

// Channel values follow empty_chans in place, alpha first: 32-bit floats when bit_depth is 32, otherwise
// unsigned 16 bits each.
typedef struct GBC_Color
{
    uint16_t num_chans;    // alpha included
    uint8_t bit_depth;     // 32: float channels; anything else: 16-bit channels
    uint8_t has_alpha;     // non-zero when channel 0 is alpha; without channels nothing is read
    uint32_t empty_chans;  // bit N set: channel N+1 is empty
    union
    {
        float as_float[1];
        uint16_t as_uint16[1];
    } channels;
} GBC_Color;

// The head of every operand.
typedef struct GOP_Operand
{
    uint8_t go_OpType;             // GOP_OPERAND_*
    uint8_t go_ColorInfo;          // GOP_OCS_* in bits 0 and 1, GCM_CF_* in bits 6 and 7
    uint16_t go_Count;             // stops of a gradient; depth code of an image (GNC_BMP_DEPTH_*)
    uint16_t go_Hints;             // GOP_OPD_HINT_*
    uint16_t go_ColorSpaceFamily;  // GCM_CSF_*, when the colour space is GOP_OCS_INPUT
} GOP_Operand;

typedef struct GOP_OperandFlat
{
    GOP_Operand fl_Operand;
    GBC_Color fl_Color;
} GOP_OperandFlat;

typedef struct GOP_OperandGrad2Pt
{
    GOP_Operand g2_Operand;
    GGO_Matrix g2_Transform;
    GGO_Point g2_Pt1;
    GGO_Point g2_Pt2;
    uint8_t g2_UseInterpColorSpace;
    uint8_t g2_GradientExtendMode;
    uint8_t g2_GradientRoundingMode;
} GOP_OperandGrad2Pt;

typedef struct GOP_OperandGrad3Pt
{
    GOP_Operand g3_Operand;
    GGO_Matrix g3_Transform;
    GGO_Point g3_Pt1;
    GGO_Point g3_Pt2;
    GGO_Point g3_Pt3;
} GOP_OperandGrad3Pt;

typedef struct GOP_OperandGradMultistop
{
    GOP_Operand gm_Operand;
    GGO_Matrix gm_Transform;
    GGO_Point gm_Pt1;
    GGO_Point gm_Pt2;
    uint8_t gm_UseInterpColorSpace;
    uint8_t gm_GradientExtendMode;
    uint8_t gm_GradientRoundingMode;
} GOP_OperandGradMultistop;

typedef struct GOP_OperandGradRadial
{
    GOP_Operand gr_Operand;
    GGO_Matrix gr_Transform;
    GGO_Point gr_Center1;
    double gr_Radius1;
    GGO_Point gr_Center2;
    double gr_Radius2;
    uint8_t gr_UseInterpColorSpace;
    uint8_t gr_GradientExtendMode;
    uint8_t gr_GradientRoundingMode;
    GBC_Color gr_Color;
} GOP_OperandGradRadial;

typedef struct GOP_GradStop
{
    double gs_StopPosn;
    GBC_Color gs_StopColor;
} GOP_GradStop;

typedef struct GOP_TilingParameters
{
    double it_XRepetitionInterval;
    double it_YRepetitionInterval;
    uint16_t it_XFlip;
    uint16_t it_YFlip;
} GOP_TilingParameters;

// The common head of the pointer records of flat colours and gradients. A call's operand argument is a
// pointer to this head or to a GOP_OperandImagePointer, whose first two fields are the same.
typedef struct GOP_OperandPointer
{
    const GOP_Operand* op_Operand;
    uint32_t op_UniqueId;   // chosen by the caller; equal numbers say that two calls use the same operand
    GCM_CsdPointer op_Csd;  // used when the colour space is GOP_OCS_OTHER
} GOP_OperandPointer;

typedef struct GOP_OperandFlatPointer
{
    GOP_OperandPointer flp_Pointer;
} GOP_OperandFlatPointer;

typedef struct GOP_OperandGrad2PtPointer
{
    GOP_OperandPointer g2p_Pointer;
    const GBC_Color* g2p_Color1;
    const GBC_Color* g2p_Color2;
} GOP_OperandGrad2PtPointer;

typedef struct GOP_OperandGrad3PtPointer
{
    GOP_OperandPointer g3p_Pointer;
    const GBC_Color* g3p_Color[3];
} GOP_OperandGrad3PtPointer;

typedef struct GOP_OperandGradMultistopPointer
{
    GOP_OperandPointer gmp_Pointer;
    const GOP_GradStop* gmp_GradStop[1];  // go_Count entries
} GOP_OperandGradMultistopPointer;

typedef struct GOP_OperandGradRadialPointer
{
    GOP_OperandPointer grp_Pointer;
    const GOP_GradStop* grp_GradStop[1];  // go_Count entries
} GOP_OperandGradRadialPointer;

typedef void (*GOP_TransferFn)(void);

typedef struct GOP_Operator
{
    uint32_t op_OperatorType;            // GOP_ROP_*
    uint16_t op_Operator;                // the operation within its family
    uint8_t op_TransparencyType;         // GOP_TRANS_*
    uint8_t op_TransparencyFlags;        // GOP_TRANS_FLAG_*
    uint32_t op_MaskMode;                // GOP_MASK_*
    uint32_t op_OperatorHints;           // GOP_OP_HINT_*
    GOP_TransferFn op_BitmapTransferFn;  // may be null
    GOP_TransferFn op_ColorTransferFn;   // may be null
} GOP_Operator;

#ifdef __cplusplus
}
#endif

#endif
