#include "renderers/cairo/cie-space.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr cmsCIEXYZ kD50{0.9642, 1.0, 0.8249};
constexpr cmsCIEXYZ kD65{0.95047, 1.0, 1.08883};
constexpr uint32_t kGreatestDecodeDepth = 16;

double clamp01(double value)
{
    return value > 0.0 ? std::min(value, 1.0) : 0.0;
}

double srgb_curve(double linear)
{
    const double value = clamp01(linear);
    return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1.0 / 2.4) - 0.055;
}

struct LinearRgb : ColourSpace
{
    uint32_t channels() const override
    {
        return 3;
    }
    Rgb convert(const float* values) const override
    {
        return {srgb_curve(values[0]), srgb_curve(values[1]), srgb_curve(values[2])};
    }
};

// XYZ under a white point to the screen, where that white is white.
class ToScreen
{
public:
    explicit ToScreen(const cmsCIEXYZ& white)
    {
        const std::array<cmsCIEXYZ, 3> units{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
        for (size_t i = 0; i < 3; ++i)
            if (cmsAdaptToIlluminant(&columns_[i], &white, &kD65, &units[i]) == 0)
                columns_[i] = units[i];
    }

    Rgb convert(double x, double y, double z) const
    {
        const double xn = columns_[0].X * x + columns_[1].X * y + columns_[2].X * z;
        const double yn = columns_[0].Y * x + columns_[1].Y * y + columns_[2].Y * z;
        const double zn = columns_[0].Z * x + columns_[1].Z * y + columns_[2].Z * z;
        return {srgb_curve(3.2404542 * xn - 1.5371385 * yn - 0.4985314 * zn),
                srgb_curve(-0.9692660 * xn + 1.8760108 * yn + 0.0415560 * zn),
                srgb_curve(0.0556434 * xn - 0.2040259 * yn + 1.0572252 * zn)};
    }

private:
    std::array<cmsCIEXYZ, 3> columns_{};
};

cmsCIEXYZ white_of(float x, float y, float z)
{
    if (x > 0.0F && y > 0.0F && z > 0.0F)
        return {x, y, z};
    return kD50;
}

cmsCIEXYZ white_of(const GCM_AnalyticalColorSpace& space)
{
    return white_of(space.acs_WhitePointX, space.acs_WhitePointY, space.acs_WhitePointZ);
}

struct Xyz : ColourSpace
{
    explicit Xyz(const cmsCIEXYZ& white) : screen(white) {}
    uint32_t channels() const override
    {
        return 3;
    }
    Rgb convert(const float* values) const override
    {
        return screen.convert(values[0], values[1], values[2]);
    }
    ToScreen screen;
};

struct Lab : ColourSpace
{
    explicit Lab(const cmsCIEXYZ& white_point) : white(white_point), screen(white_point) {}
    uint32_t channels() const override
    {
        return 3;
    }
    Rgb convert(const float* values) const override
    {
        const double l = clamp01(values[0]) * 100.0;
        const double a = a_min + clamp01(values[1]) * (a_max - a_min);
        const double b = b_min + clamp01(values[2]) * (b_max - b_min);
        const double fy = (l + 16.0) / 116.0;
        return screen.convert(white.X * decode(fy + a / 500.0), white.Y * decode(fy), white.Z * decode(fy - b / 200.0));
    }
    static double decode(double f)
    {
        return f >= 6.0 / 29.0 ? f * f * f : 108.0 / 841.0 * (f - 4.0 / 29.0);
    }
    cmsCIEXYZ white;
    ToScreen screen;
    double a_min = -128.0;
    double a_max = 127.0;
    double b_min = -128.0;
    double b_max = 127.0;
};

class Table
{
public:
    Table(const float* entries, uint32_t depth) : entries_(entries, entries + (size_t{1} << depth)) {}

    double at(double share) const
    {
        const double place = clamp01(share) * static_cast<double>(entries_.size() - 1);
        const auto low = static_cast<size_t>(place);
        const size_t high = std::min(low + 1, entries_.size() - 1);
        const double rest = place - static_cast<double>(low);
        return entries_[low] * (1.0 - rest) + entries_[high] * rest;
    }

private:
    std::vector<float> entries_;
};

struct CalibratedGray : ColourSpace
{
    CalibratedGray(const cmsCIEXYZ& white_point, Table table)
        : white(white_point), screen(white_point), decode(std::move(table))
    {
    }
    uint32_t channels() const override
    {
        return 1;
    }
    Rgb convert(const float* values) const override
    {
        const double level = decode.at(values[0]);
        return screen.convert(white.X * level, white.Y * level, white.Z * level);
    }
    cmsCIEXYZ white;
    ToScreen screen;
    Table decode;
};

struct CalibratedRgb : ColourSpace
{
    CalibratedRgb(const cmsCIEXYZ& white, std::array<Table, 3> tables, const float* abc)
        : screen(white), decode(std::move(tables))
    {
        std::copy_n(abc, matrix.size(), matrix.begin());
    }
    uint32_t channels() const override
    {
        return 3;
    }
    Rgb convert(const float* values) const override
    {
        std::array<double, 3> xyz{};
        for (size_t channel = 0; channel < 3; ++channel)
        {
            const double level = decode[channel].at(values[channel]);
            for (size_t i = 0; i < 3; ++i)
                xyz[i] += matrix[3 * channel + i] * level;
        }
        return screen.convert(xyz[0], xyz[1], xyz[2]);
    }
    ToScreen screen;
    std::array<Table, 3> decode;
    std::array<double, 9> matrix{};
};

}  // namespace

std::shared_ptr<const ColourSpace> linear_rgb_space()
{
    return std::make_shared<LinearRgb>();
}

std::shared_ptr<const ColourSpace> xyz_space(const GCM_AnalyticalColorSpace& space)
{
    return std::make_shared<Xyz>(white_of(space));
}

std::shared_ptr<const ColourSpace> lab_space(const GCM_AnalyticalColorSpace& space)
{
    auto lab = std::make_shared<Lab>(white_of(space));
    if (space.acs_LabAMax > space.acs_LabAMin && space.acs_LabBMax > space.acs_LabBMin)
    {
        lab->a_min = space.acs_LabAMin;
        lab->a_max = space.acs_LabAMax;
        lab->b_min = space.acs_LabBMin;
        lab->b_max = space.acs_LabBMax;
    }
    return lab;
}

std::shared_ptr<const ColourSpace> calibrated_space(uint32_t family, const GCM_CieLutsPointer* tables)
{
    if (tables == nullptr || tables->clp_CieLuts == nullptr || tables->clp_DecodeABC_A == nullptr)
        return nullptr;
    const GCM_CieLuts& luts = *tables->clp_CieLuts;
    const uint32_t depth = luts.cl_DecodeBitDepth;
    if (depth > kGreatestDecodeDepth)
        return nullptr;
    const cmsCIEXYZ white = white_of(luts.cl_WhitePoint[0], luts.cl_WhitePoint[1], luts.cl_WhitePoint[2]);
    if (family == GCM_CIE_FAMILY_CALGRAY)
        return std::make_shared<CalibratedGray>(white, Table(tables->clp_DecodeABC_A, depth));
    if (family != GCM_CIE_FAMILY_CALRGB || tables->clp_DecodeABC_B == nullptr || tables->clp_DecodeABC_C == nullptr)
        return nullptr;
    return std::make_shared<CalibratedRgb>(white,
                                           std::array<Table, 3>{Table(tables->clp_DecodeABC_A, depth),
                                                                Table(tables->clp_DecodeABC_B, depth),
                                                                Table(tables->clp_DecodeABC_C, depth)},
                                           luts.cl_MatrixABC);
}

}  // namespace orvlog::cairo_renderer
