#include "reader/look/elliptical-arc.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>

namespace orvlog::reader
{

EllipticalArc::EllipticalArc(const Element& segment) : end_(read_vector(segment, "es_EndPoint"))
{
    const double x_radius = read_double(segment, "es_XRadius");
    const double y_radius = read_double(segment, "es_YRadius");
    const double angle = read_double(segment, "es_AngleToXAxis");
    x_radius_ = std::abs(x_radius);
    y_radius_ = std::abs(y_radius);
    cosine_ = std::cos(angle);
    sine_ = std::sin(angle);
    const double dx = (end_.gvf_X * cosine_ + end_.gvf_Y * sine_) / x_radius_;
    const double dy = (end_.gvf_Y * cosine_ - end_.gvf_X * sine_) / y_radius_;
    const double half = std::hypot(dx, dy) / 2;
    line_ = !std::isfinite(half) || half == 0;
    if (line_)
        return;
    radius_ = std::max(half, 1.0);
    const double off = std::sqrt(std::max(radius_ * radius_ - half * half, 0.0)) / (2 * half);
    const double turn = x_radius * y_radius > 0 ? 1 : -1;
    middle_ = {dx / 2 - turn * dy * off, dy / 2 + turn * dx * off};
    from_ = std::atan2(-middle_.gvf_Y, -middle_.gvf_X);
    sweep_ = turn * 2 * std::asin(std::min(half / radius_, 1.0));
}

GGO_Vector EllipticalArc::at(double part) const
{
    const double t = from_ + sweep_ * part;
    const double x = (middle_.gvf_X + radius_ * std::cos(t)) * x_radius_;
    const double y = (middle_.gvf_Y + radius_ * std::sin(t)) * y_radius_;
    return {x * cosine_ - y * sine_, x * sine_ + y * cosine_};
}

}  // namespace orvlog::reader
