#include "tests/renderers/cairo/image-records.h"

#include <algorithm>
#include <cstring>

namespace orvlog::records
{

ImageSource::ImageSource(uint16_t family, uint32_t width, uint32_t height, std::vector<uint8_t> bytes)
    : bytes_(std::move(bytes))
{
    image.im_Operand = {GOP_OPERAND_IMAGE, GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_OTHER), GNC_BMP_DEPTH_8, 0, family};
    image.im_Flags = GOP_OP_FLAGS_HAS_COLOR_DATA;
    image.im_ImageWidthPixels = width;
    image.im_ImageHeightPixels = height;
    image.im_Transform = {{1, 0, 0, 1, 1, 1}};
    pointer.imp_Image = &image;
    pointer.imp_Context = this;
    pointer.imp_ImagePrepareFn = prepare;
    pointer.imp_ImageReadFn = read;
    pointer.imp_ImageFinishFn = finish;
    pointer.imp_ImageKeepFn = keep;
    pointer.imp_ImageReleaseFn = release;
}

ImageSource& ImageSource::direct()
{
    pointer.imp_DirectImage = bytes_.data();
    return *this;
}

ImageSource& ImageSource::depth(uint16_t code)
{
    image.im_Operand.go_Count = code;
    return *this;
}

ImageSource& ImageSource::flags(uint32_t more)
{
    image.im_Flags |= more;
    return *this;
}

ImageSource& ImageSource::place(double x, double y, double pixel)
{
    image.im_Transform = {{pixel, 0, 0, pixel, x, y}};
    return *this;
}

ImageSource& ImageSource::tile(double x_step, double y_step, bool x_flip, bool y_flip)
{
    image.im_Operand.go_OpType = GOP_OPERAND_IMAGE_TILE;
    tiling = {x_step, y_step, static_cast<uint16_t>(x_flip ? 1 : 0), static_cast<uint16_t>(y_flip ? 1 : 0)};
    pointer.imp_TilingParameters = &tiling;
    return *this;
}

GOP_OperandPointer* ImageSource::record()
{
    void* record = &pointer;
    return static_cast<GOP_OperandPointer*>(record);
}

ImageSource& ImageSource::of(const GOP_OperandImagePointer* record)
{
    return *static_cast<ImageSource*>(record->imp_Context);
}

uint32_t ImageSource::prepare(GOP_OperandImagePointer** operand, uint32_t, uint32_t, uint32_t, float, float, float,
                              float, uint32_t, uint32_t, uint32_t)
{
    ImageSource& self = of(*operand);
    self.diary.emplace_back("prepare");
    self.at_ = 0;
    if (self.exchanged_for != nullptr)
        *operand = &self.exchanged_for->pointer;
    return self.fail_prepare ? 0 : 1;
}

uint32_t ImageSource::read(GOP_OperandImagePointer* operand, void* context, uint32_t, uint8_t* buffer, uint32_t size,
                           int32_t, int32_t* returned, uint8_t*, uint32_t, int32_t, int32_t*)
{
    ImageSource& self = of(operand);
    *returned = 0;
    if (context != &self || ++self.reads_ == self.fail_read)
    {
        self.diary.emplace_back("read failed");
        return 0;
    }
    size_t count = std::min<size_t>(size, self.bytes_.size() - self.at_);
    if (self.bytes_a_read != 0)
        count = std::min<size_t>(count, self.bytes_a_read);
    std::memcpy(buffer, self.bytes_.data() + self.at_, count);
    self.at_ += count;
    *returned = self.lie != 0 ? self.lie : static_cast<int32_t>(count);
    self.diary.push_back("read " + std::to_string(*returned));
    return 1;
}

uint32_t ImageSource::finish(GOP_OperandImagePointer* operand, void* context)
{
    of(operand).diary.emplace_back(context == &of(operand) ? "finish" : "finish elsewhere");
    return 1;
}

uint32_t ImageSource::keep(GOP_OperandImagePointer* operand)
{
    of(operand).diary.emplace_back("keep");
    return of(operand).refuse_keep ? 0 : 1;
}

void* ImageSource::release(GOP_OperandImagePointer* operand)
{
    of(operand).diary.emplace_back("release");
    return nullptr;
}

}  // namespace orvlog::records
