// The way of an elliptical segment of a path.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

namespace orvlog::reader
{

// At most half an ellipse. On the circle that the ellipse is an image of, the way goes around the centre; radii that
// are too small for the end to be reached are made larger.
class EllipticalArc
{
public:
    // `segment` is a GPA_EllipticalSegment.
    explicit EllipticalArc(const Element& segment);

    // No ellipse goes through both ends: the way is a line.
    bool is_line() const
    {
        return line_;
    }
    GGO_Vector end() const
    {
        return end_;
    }
    // From the start, where `part` is 0, to the end, where it is 1.
    GGO_Vector at(double part) const;

private:
    GGO_Vector end_;
    double x_radius_;
    double y_radius_;
    double cosine_;
    double sine_;
    bool line_;
    // On the circle.
    GGO_Vector middle_{};
    double radius_ = 0;
    double from_ = 0;
    double sweep_ = 0;
};

}  // namespace orvlog::reader
