// Logs of a few calls, put together from their text.

#pragma once

#include <string>

namespace orvlog::test
{

// "x0 y0 x1 y1" of a rectangle, in units of the drawing.
struct Rectangle
{
    double x0;
    double y0;
    double x1;
    double y1;
};

// What a paint or group is made with beside its shape.
struct With
{
    std::string clip;                       // clip_of(), or nothing
    std::string op = "3";                   // of Porter and Duff
    std::string mask;                       // of the operator: how much of 1 it lets through; empty: none
    std::string retransform;                // of groups and resources
    std::string tiling;                     // the attributes of a repetition, likewise
    std::string type = "ORV_GROUP_SIMPLE";  // likewise
    bool knockout = false;
};

std::string clip_of(const Rectangle& rectangle, bool inside = true);
// A filled rectangle; `colour` is "1 0 0", with `alpha` behind it if that isn't empty.
std::string paint_of(int id, const Rectangle& rectangle, const std::string& colour, const With& with = {},
                     const std::string& alpha = "", int drawing = 0);
// The same rectangle filled and stroked, with a line as wide as `width`.
std::string fill_and_stroke(int id, const Rectangle& rectangle, const std::string& colour, const std::string& stroke,
                            double width, const std::string& mask = "", bool knockout = false);
std::string group_start(const With& with = {}, int drawing = 0);
std::string group_finish(int drawing = 0);
// A resource in a drawing of its own.
std::string resource_of(int id, int drawing, const Rectangle& box, const std::string& content);
std::string resource_paint(int id, const With& with = {});
// A document with one page, a pixel to each unit.
std::string page_of(int width, int height, const std::string& calls);

}  // namespace orvlog::test
