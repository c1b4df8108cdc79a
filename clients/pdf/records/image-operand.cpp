// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/image-operand.h"

#include <algorithm>
#include <cstring>

namespace orvlog::pdf_client
{

namespace
{

constexpr uint64_t kGreatestRow = 64U << 20;
constexpr uint64_t kGreatestHeldImage = 256U << 20;
constexpr uint64_t kSmallImage = 4096;

uint16_t depth_code(uint8_t bits)
{
    switch (bits)
    {
    case 1:
        return GNC_BMP_DEPTH_1;
    case 2:
        return GNC_BMP_DEPTH_2;
    case 4:
        return GNC_BMP_DEPTH_4;
    case 16:
        return GNC_BMP_DEPTH_16;
    default:
        return GNC_BMP_DEPTH_8;
    }
}

class MaskRows : public ImageRows
{
public:
    explicit MaskRows(std::shared_ptr<const MaskImage> mask) : mask_(std::move(mask)) {}

    bool restart() override
    {
        row_ = 0;
        return true;
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        if (row_ >= mask_->height)
            return 0;
        const size_t count = std::min<size_t>(size, mask_->width);
        std::memcpy(row, mask_->samples.data() + static_cast<size_t>(row_) * mask_->width, count);
        ++row_;
        return count;
    }

private:
    std::shared_ptr<const MaskImage> mask_;
    uint32_t row_ = 0;
};

class PulledImage : public ImageOperand, public std::enable_shared_from_this<PulledImage>
{
public:
    PulledImage(const Image& image, const GGO_Matrix& pixels_to_content, double alpha, uint32_t unique_id)
        : source_(image), space_(image.space)
    {
        GOP_Operand& head = record_.im_Operand;
        head.go_OpType = GOP_OPERAND_IMAGE;
        head.go_ColorInfo = static_cast<uint8_t>(space_.colour_info() | (GCM_CF_OTHER << 6));
        head.go_Count = depth_code(image.bits);
        head.go_ColorSpaceFamily = space_.family();
        head.go_Hints = size_hints(image, alpha);
        record_.im_ImageEncoding = GOP_ENCODING_CHUNKY;
        record_.im_QualitySetting = GOP_QUAL_DEFAULT;
        record_.im_NumNonalphaChans = static_cast<uint8_t>(image.space.channels);
        record_.im_Flags = flags_of(image, alpha);
        record_.im_Alpha = static_cast<float>(alpha);
        record_.im_ImageWidthPixels = image.width;
        record_.im_ImageHeightPixels = image.height;
        record_.im_Transform = pixels_to_content;
        if (!image.index_table.empty())
        {
            record_.im_IndexColorDepth = GNC_BMP_DEPTH_8;
            pointer_.imp_IndexColorTable = source_.index_table.data();
        }
        pointer_.imp_Image = &record_;
        pointer_.op_UniqueId = unique_id;
        pointer_.imp_RowStep = static_cast<uint32_t>(image.row_bytes());
        pointer_.imp_Csd = space_.pointer();
        pointer_.imp_Context = this;
        pointer_.imp_ImagePrepareFn = prepare;
        pointer_.imp_ImageReadFn = read;
        pointer_.imp_ImageFinishFn = finish;
        pointer_.imp_ImageResetFn = reset;
        pointer_.imp_ImageKeepFn = keep;
        pointer_.imp_ImageReleaseFn = release;
    }

    // A direct image has all its bytes: one whose data ends early is held too, but hands out what there is.
    void hold_in_memory()
    {
        const size_t row = source_.row_bytes();
        is_held_ = true;
        bool whole = source_.rows != nullptr && source_.rows->restart();
        for (uint32_t y = 0; whole && y < source_.height; ++y)
        {
            const size_t before = held_.size();
            held_.resize(before + row);
            const size_t came = source_.rows->read_row(held_.data() + before, row);
            held_.resize(before + came);
            whole = came == row;
        }
        if (whole)
            pointer_.imp_DirectImage = held_.data();
    }

    GOP_OperandPointer* get() override
    {
        return reinterpret_cast<GOP_OperandPointer*>(&pointer_);
    }

    bool is_direct() const override
    {
        return pointer_.imp_DirectImage != nullptr;
    }

private:
    static uint16_t size_hints(const Image& image, double alpha)
    {
        uint32_t hints = alpha < 1 || image.alpha_first ? GOP_OPD_HINT_NONE : GOP_OPD_HINT_IS_OPAQUE;
        if (!image.index_table.empty() || image.space.channels == 1)
        {
            hints |= image.bits == 1   ? GOP_OPD_HINT_IMAGE_MAX_2_COLORS
                     : image.bits == 2 ? GOP_OPD_HINT_IMAGE_MAX_4_COLORS
                     : image.bits == 4 ? GOP_OPD_HINT_IMAGE_MAX_16_COLORS
                     : image.bits == 8 ? GOP_OPD_HINT_IMAGE_MAX_256_COLORS
                                       : GOP_OPD_HINT_NONE;
        }
        return static_cast<uint16_t>(hints);
    }

    static uint32_t flags_of(const Image& image, double alpha)
    {
        const auto when = [](bool holds, uint32_t flag) { return holds ? flag : 0U; };
        uint32_t flags = GOP_OP_FLAGS_HAS_COLOR_DATA;
        flags |= when(!image.index_table.empty(), GOP_OP_FLAGS_IS_INDEXED_COLOR);
        flags |= when(image.alpha_first, GOP_OP_FLAGS_HAS_ALPHA);
        flags |= when(image.interpolate, GOP_OP_FLAGS_SMOOTH);
        flags |= when(image.bits == 16, GOP_OP_FLAGS_ENDIAN_BIG);
        flags |= when(image.restartable, GOP_OP_FLAGS_ASYNCH_ACCESS);
        flags |= when(alpha < 1, GOP_OP_FLAGS_HAS_CONSTANT_ALPHA);
        return flags;
    }

    static PulledImage* self(void* context)
    {
        return static_cast<PulledImage*>(context);
    }

    bool start_over()
    {
        row_ = 0;
        ended_ = false;
        return is_held_ || (source_.rows != nullptr && source_.rows->restart());
    }

    // Gives how many bytes of the row there are. With the first row that isn't whole the image ends.
    size_t next_row(uint8_t* row, size_t size)
    {
        size_t came = 0;
        if (is_held_)
        {
            const size_t begin = std::min(static_cast<size_t>(row_) * size, held_.size());
            came = std::min(size, held_.size() - begin);
            std::copy_n(held_.begin() + static_cast<std::ptrdiff_t>(begin), came, row);
        }
        else
        {
            came = source_.rows->read_row(row, size);
        }
        ended_ = came < size;
        ++row_;
        return came;
    }

    bool has_more() const
    {
        return !ended_ && row_ < source_.height;
    }

    uint32_t skip_rows(uint32_t skip_pixels)
    {
        std::vector<uint8_t> row(source_.row_bytes());
        const uint32_t count = source_.width > 0 ? skip_pixels / source_.width : 0;
        for (uint32_t i = 0; i < count && has_more(); ++i)
            next_row(row.data(), row.size());
        return count;
    }

    static uint32_t prepare(GOP_OperandImagePointer** operand_p, uint32_t, uint32_t, uint32_t, float, float, float,
                            float, uint32_t, uint32_t, uint32_t)
    {
        return self((*operand_p)->imp_Context)->start_over() ? 1 : 0;
    }

    static uint32_t read(GOP_OperandImagePointer*, void* context, uint32_t skip_pixels, uint8_t* image_buffer,
                         uint32_t image_size, int32_t img_row_step, int32_t* img_returned, uint8_t*, uint32_t, int32_t,
                         int32_t* attr_returned)
    {
        PulledImage* image = self(context);
        const size_t row = image->source_.row_bytes();
        const size_t step = img_row_step > 0 ? std::max<size_t>(row, static_cast<size_t>(img_row_step)) : row;
        *img_returned = 0;
        if (attr_returned != nullptr)
            *attr_returned = 0;
        if (row > image_size)
            return 0;
        image->skip_rows(skip_pixels);
        size_t offset = 0;
        while (image->has_more() && offset + row <= image_size && offset + row <= INT32_MAX)
        {
            const size_t came = image->next_row(image_buffer + offset, row);
            offset += came < row ? came : step;
        }
        *img_returned = static_cast<int32_t>(std::min<size_t>(offset, image_size));
        return 1;
    }

    static uint32_t finish(GOP_OperandImagePointer*, void*)
    {
        return 1;
    }

    static uint32_t reset(GOP_OperandImagePointer*, void* context)
    {
        return self(context)->start_over() ? 1 : 0;
    }

    static uint32_t keep(GOP_OperandImagePointer* operand)
    {
        PulledImage* image = self(operand->imp_Context);
        image->kept_ = image->shared_from_this();
        return 1;
    }

    static void* release(GOP_OperandImagePointer* operand)
    {
        const std::shared_ptr<PulledImage> last = std::move(self(operand->imp_Context)->kept_);
        return nullptr;
    }

    Image source_;
    SpaceRecord space_;
    GOP_OperandImage record_{};
    GOP_OperandImagePointer pointer_{};
    std::vector<uint8_t> held_;
    bool is_held_ = false;
    std::shared_ptr<PulledImage> kept_;
    uint32_t row_ = 0;
    bool ended_ = false;
};

}  // namespace

std::shared_ptr<ImageOperand> ImageOperand::make(const Image& image, const GGO_Matrix& pixels_to_content, double alpha,
                                                 uint32_t unique_id)
{
    const uint64_t row = image.row_bytes();
    const uint64_t total = row * image.height;
    if (row == 0 || image.height == 0 || row > kGreatestRow || (!image.restartable && total > kGreatestHeldImage))
        return nullptr;
    const auto operand = std::make_shared<PulledImage>(image, pixels_to_content, alpha, unique_id);
    if (!image.restartable || total <= kSmallImage)
        operand->hold_in_memory();
    return operand;
}

std::shared_ptr<ImageOperand> ImageOperand::make(const std::shared_ptr<const MaskImage>& mask, double alpha,
                                                 uint32_t unique_id)
{
    Image image;
    image.width = mask->width;
    image.height = mask->height;
    image.rows = std::make_shared<MaskRows>(mask);
    return make(image, mask->pixels_to_content, alpha, unique_id);
}

}  // namespace orvlog::pdf_client
