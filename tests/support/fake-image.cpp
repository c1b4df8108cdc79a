#include "tests/support/fake-image.h"

#include <algorithm>
#include <cstring>

namespace orvlog::test
{

FakeImage::FakeImage(uint32_t width, uint32_t height)
{
    image.im_Operand = {GOP_OPERAND_IMAGE, 0, GNC_BMP_DEPTH_8, 0, GCM_CSF_GRAY};
    image.im_NumNonalphaChans = 1;
    image.im_Flags = GOP_OP_FLAGS_HAS_COLOR_DATA;
    image.im_Alpha = 1;
    image.im_ImageWidthPixels = width;
    image.im_ImageHeightPixels = height;
    image.im_Transform = {{1, 0, 0, 1, 0, 0}};
    record.imp_Image = &image;
    record.op_UniqueId = 3;
    record.imp_Context = this;
    for (uint32_t i = 0; i < width * height; ++i)
    {
        bytes.push_back(static_cast<uint8_t>(i + 1));
        attributes.push_back(static_cast<uint8_t>(0xA0 + i));
    }
    record.imp_ImagePrepareFn = [](GOP_OperandImagePointer** operand_p, uint32_t object_type, uint32_t, uint32_t, float,
                                   float, float, float, uint32_t, uint32_t depth, uint32_t attr) -> uint32_t
    {
        FakeImage* self = of(*operand_p);
        self->note("prepare(" + std::to_string(object_type) + "," + std::to_string(depth) + "," + std::to_string(attr) +
                   ") ");
        self->position_ = 0;
        self->attr_position_ = 0;
        if (self->changes_in_place)
        {
            self->record.op_UniqueId = 99;
            self->record.imp_ImagePrepareFn = nullptr;
            self->image.im_ImageHeightPixels = 1;
        }
        if (self->replacement != nullptr)
            *operand_p = self->replacement;
        return self->answer(self->prepare_result);
    };
    record.imp_ImageReadFn = [](GOP_OperandImagePointer* operand_p, void* context, uint32_t, uint8_t* buffer,
                                uint32_t size, int32_t, int32_t* returned, uint8_t* attr, uint32_t attr_size, int32_t,
                                int32_t* attr_returned) -> uint32_t
    {
        FakeImage* self = of(operand_p);
        self->note(context == self ? "read " : "read(!) ");
        return self->read(buffer, size, returned, attr, attr_size, attr_returned);
    };
    record.imp_ImageFinishFn = [](GOP_OperandImagePointer* operand_p, void*) -> uint32_t
    {
        of(operand_p)->note("finish ");
        return of(operand_p)->answer(of(operand_p)->finish_result);
    };
    record.imp_ImageResetFn = [](GOP_OperandImagePointer* operand_p, void*) -> uint32_t
    {
        of(operand_p)->note("reset ");
        of(operand_p)->position_ = 0;
        return of(operand_p)->answer(of(operand_p)->reset_result);
    };
    record.imp_ImageKeepFn = [](GOP_OperandImagePointer* operand_p) -> uint32_t
    {
        of(operand_p)->note("keep ");
        return of(operand_p)->answer(of(operand_p)->keep_result);
    };
    record.imp_ImageReleaseFn = [](GOP_OperandImagePointer* operand_p) -> void*
    {
        of(operand_p)->note("release ");
        return nullptr;
    };
}

void FakeImage::note(const std::string& call)
{
    calls_ += call;
    if (on_call)
        on_call();
}

std::string FakeImage::take_calls()
{
    std::string result = calls_;
    calls_.clear();
    return result;
}

uint32_t FakeImage::answer(uint32_t result)
{
    return fuse != nullptr && --*fuse == 0 ? 0 : result;
}

uint32_t FakeImage::read(uint8_t* buffer, uint32_t size, int32_t* returned, uint8_t* attr, uint32_t attr_size,
                         int32_t* attr_returned)
{
    const size_t count = std::min<size_t>(size, bytes.size() - position_);
    std::memcpy(buffer, bytes.data() + position_, count);
    position_ = endless ? 0 : position_ + count;
    *returned = static_cast<int32_t>(claim != INT64_MAX ? claim : static_cast<int64_t>(count));
    if (attr != nullptr)
    {
        const size_t attr_count = std::min<size_t>(attr_size, attributes.size() - attr_position_);
        std::memcpy(attr, attributes.data() + attr_position_, attr_count);
        attr_position_ += attr_count;
        *attr_returned = static_cast<int32_t>(claim != INT64_MAX ? claim : static_cast<int64_t>(attr_count));
    }
    return reads_++ == fail_read ? 0 : answer(read_result);
}

}  // namespace orvlog::test
