/// \file
/// GOP: image operands and the callbacks by which a renderer pulls their pixels.

#ifndef ORVLOG_INTERFACE_GOP_IMAGE_H
#define ORVLOG_INTERFACE_GOP_IMAGE_H

#include "orvlog/interface/gop-operand.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// What a renderer may do with an image.
enum
{
    GOP_QUAL_HIGHEST_QUALITY,           ///< nothing that changes it
    GOP_QUAL_COMPRESS_OK,               ///< compress it with loss
    GOP_QUAL_RESAMPLE_OK,               ///< resample it
    GOP_QUAL_COMPRESS_AND_RESAMPLE_OK,  ///< both
    GOP_QUAL_SAME_AS_PREVIOUS,          ///< as the image before it
    GOP_QUAL_AVOID_LOSSY,               ///< no loss if it can be avoided
    GOP_QUAL_DEFAULT,                   ///< as it likes
    GOP_QUAL_LOSSY_OK                   ///< with loss
};

/// What is known of an image's being gray.
enum
{
    GOP_GDS_OFF,         ///< isn't looked for
    GOP_GDS_ON_UNKNOWN,  ///< isn't known yet
    GOP_GDS_ON_IS_GRAY,  ///< all pixels are gray
    GOP_GDS_ON_IS_COLOR  ///< some pixel isn't gray
};

/// Depth codes.
enum
{
    GNC_BMP_DEPTH_1,     ///< 1 bit
    GNC_BMP_DEPTH_2,     ///< 2 bits
    GNC_BMP_DEPTH_4,     ///< 4 bits
    GNC_BMP_DEPTH_8,     ///< 8 bits
    GNC_BMP_DEPTH_16,    ///< 16 bits
    GNC_BMP_DEPTH_32_FL  ///< floats, 0 to 1
};

/// Values of im_ImageEncoding; anything above is a compressed stream of unknown size.
enum
{
    GOP_ENCODING_CHUNKY = 0,  ///< the channels side by side in a row
    GOP_ENCODING_PLANAR = 1   ///< one row for each channel
};

/// Flags of im_Flags.
enum
{
    GOP_OP_FLAGS_HAS_COLOR_DATA = 0x1,                ///< there are colour channels
    GOP_OP_FLAGS_IS_INDEXED_COLOR = 0x2,              ///< a sample picks an entry of imp_IndexColorTable
    GOP_OP_FLAGS_HAS_ALPHA = 0x4,                     ///< the first channel is alpha
    GOP_OP_FLAGS_HAS_STANDARD_ATTRIBUTES = 0x8,       ///< attribute data has the standard form
    GOP_OP_FLAGS_IS_PREMULTIPLIED = 0x10,             ///< colours hold alpha already
    GOP_OP_FLAGS_HAS_CONSTANT_ALPHA = 0x40,           ///< im_Alpha counts
    GOP_OP_FLAGS_TRANSFORM_FROM_UNIT_SQUARE = 0x100,  ///< image space goes from 0 to 1
    GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA = 0x200,          ///< a read can give attributes too
    GOP_OP_FLAGS_SMOOTH = 0x400,                      ///< interpolate at any enlargement
    GOP_OP_FLAGS_HALFTONED = 0x800,                   ///< is halftoned already
    GOP_OP_FLAGS_REPLICATE_ALL_CHANS = 0x1000,        ///< its one channel stands for all
    GOP_OP_FLAGS_ASYNCH_ACCESS = 0x2000,              ///< may be kept beyond the call
    GOP_OP_FLAGS_ENDIAN_LITTLE = 0x4000,              ///< samples of 16 bits have the low byte first
    GOP_OP_FLAGS_ENDIAN_BIG = 0x8000                  ///< samples of 16 bits have the high byte first
};

/// Flags of the object type passed to a prepare callback.
enum
{
    GCM_OBJ_TEXT = 0x1,      ///< text
    GCM_OBJ_LINE = 0x2,      ///< lines
    GCM_OBJ_GRAPHICS = 0x4,  ///< areas
    GCM_OBJ_IMAGE = 0x8      ///< images
};

/// go_Count of the head is the depth code of the pixels.
typedef struct GOP_OperandImage
{
    GOP_Operand im_Operand;         ///< the head
    uint8_t im_ImageEncoding;       ///< GOP_ENCODING_*
    uint8_t im_IndexColorDepth;     ///< depth code of an entry of the colour table
    uint8_t im_QualitySetting;      ///< GOP_QUAL_*
    uint8_t im_NumNonalphaChans;    ///< channels but for alpha
    uint32_t im_Flags;              ///< GOP_OP_FLAGS_*
    float im_Alpha;                 ///< constant alpha
    uint32_t im_ImageWidthPixels;   ///< pixels
    uint32_t im_ImageHeightPixels;  ///< pixels
    GGO_Matrix im_Transform;        ///< image space to page space
} GOP_OperandImage;

/// The pointer record of an image.
typedef struct GOP_OperandImagePointer GOP_OperandImagePointer;

// Callbacks give a 32-bit boolean.

/// Makes the image ready to be read. The record pointer may be exchanged for another one; in `decompress`
/// requests the rescale bounds and the colour and depth wishes are not looked at.
typedef uint32_t (*GOP_ImagePrepareFn)(GOP_OperandImagePointer** operand_p, uint32_t object_type, uint32_t decompress,
                                       uint32_t rescale, float max_width_rescale, float min_width_rescale,
                                       float max_height_rescale, float min_height_rescale,
                                       uint32_t use_render_color_space, uint32_t req_bit_depth, uint32_t need_attr);

/// Reads on into `image_buffer` of `image_size` bytes. `img_returned` receives the bytes delivered; 0 with a
/// true result ends the image. The attribute buffer may be null, and then its outputs are not looked at.
typedef uint32_t (*GOP_ImageReadFn)(GOP_OperandImagePointer* operand_p, void* context, uint32_t skip_pixels,
                                    uint8_t* image_buffer, uint32_t image_size, int32_t img_row_step,
                                    int32_t* img_returned, uint8_t* attr_buffer, uint32_t attr_size,
                                    int32_t attr_row_step, int32_t* attr_returned);

/// Ends the reading. `context` is the record's imp_Context, as in a read.
typedef uint32_t (*GOP_ImageFinishFn)(GOP_OperandImagePointer* operand_p, void* context);

/// Starts over at the first row.
typedef uint32_t (*GOP_ImageResetFn)(GOP_OperandImagePointer* operand_p, void* context);

/// Says that the image is going to be used after the paint call has returned, until the release.
typedef uint32_t (*GOP_ImageKeepFn)(GOP_OperandImagePointer* operand_p);
/// The result is not looked at.
typedef void* (*GOP_ImageReleaseFn)(GOP_OperandImagePointer* operand_p);

/// The pointer record of an image.
struct GOP_OperandImagePointer
{
    const GOP_OperandImage* imp_Image;  ///< the image
    uint32_t op_UniqueId;               ///< as of GOP_OperandPointer
    const uint8_t* imp_DirectImage;     ///< the bytes in memory, or null when the callbacks deliver them
    uint32_t imp_RowStep;               ///< bytes from row to row of a direct image
    GCM_CsdPointer imp_Csd;             ///< used when the colour space is GOP_OCS_OTHER
    const uint8_t*
        imp_IndexColorTable;  ///< entries of the colour space's channels, alpha first, without gaps; may be null
    uint32_t imp_CompressedStreamLength;               ///< bytes of a compressed stream; 0 where it is unknown
    const GOP_TilingParameters* imp_TilingParameters;  ///< of a GOP_OPERAND_IMAGE_TILE; may be null
    GOP_ImagePrepareFn imp_ImagePrepareFn;             ///< makes it ready
    GOP_ImageReadFn imp_ImageReadFn;                   ///< delivers rows
    GOP_ImageFinishFn imp_ImageFinishFn;               ///< ends the reading
    GOP_ImageResetFn imp_ImageResetFn;                 ///< may be null
    GOP_ImageKeepFn imp_ImageKeepFn;                   ///< valid only with GOP_OP_FLAGS_ASYNCH_ACCESS
    GOP_ImageReleaseFn imp_ImageReleaseFn;             ///< valid only with GOP_OP_FLAGS_ASYNCH_ACCESS
    void* imp_Context;                                 ///< the owner's own data for the callbacks
    uint32_t imp_GrayscaleDetectStatus;                ///< GOP_GDS_*
};

#ifdef __cplusplus
}
#endif

#endif
