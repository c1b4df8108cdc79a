// Image operands for tests: their bytes lie in memory, or come through callbacks that keep a diary.

#pragma once

#include "orvlog/interface/gop-image.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::records
{

class ImageSource
{
public:
    // 8-bit chunky pixels of `family`, drawn on a rectangle of `width` by `height` inches at (1, 1).
    ImageSource(uint16_t family, uint32_t width, uint32_t height, std::vector<uint8_t> bytes);
    ImageSource(const ImageSource&) = delete;
    ImageSource& operator=(const ImageSource&) = delete;

    // Bytes in memory, or callbacks: the default is callbacks.
    ImageSource& direct();
    ImageSource& depth(uint16_t code);
    ImageSource& flags(uint32_t more);
    // Where it lies: from (x, y), with `pixel` inches for each pixel.
    ImageSource& place(double x, double y, double pixel);
    ImageSource& tile(double x_step, double y_step, bool x_flip, bool y_flip);

    GOP_OperandPointer* record();

    GOP_OperandImage image{};
    GOP_OperandImagePointer pointer{};
    GOP_TilingParameters tiling{};

    // What was called, in order: "prepare", "read 12", "finish", "keep", "release".
    std::vector<std::string> diary;
    uint32_t bytes_a_read = 0;  // at most so many at a time; 0: as many as fit
    uint32_t fail_read = 0;     // this read, counted from 1, fails
    bool fail_prepare = false;
    bool refuse_keep = false;
    int32_t lie = 0;                       // claimed in place of the true number, unless 0
    ImageSource* exchanged_for = nullptr;  // prepare puts the record of this one in place

private:
    static ImageSource& of(const GOP_OperandImagePointer* record);
    static uint32_t prepare(GOP_OperandImagePointer** operand, uint32_t, uint32_t, uint32_t, float, float, float, float,
                            uint32_t, uint32_t, uint32_t);
    static uint32_t read(GOP_OperandImagePointer* operand, void* context, uint32_t, uint8_t* buffer, uint32_t size,
                         int32_t, int32_t* returned, uint8_t*, uint32_t, int32_t, int32_t*);
    static uint32_t finish(GOP_OperandImagePointer* operand, void* context);
    static uint32_t keep(GOP_OperandImagePointer* operand);
    static void* release(GOP_OperandImagePointer* operand);

    std::vector<uint8_t> bytes_;
    size_t at_ = 0;
    uint32_t reads_ = 0;
};

}  // namespace orvlog::records
