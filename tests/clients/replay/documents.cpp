#include "tests/clients/replay/documents.h"

#include "tests/clients/pdf/small-document.h"

#include <functional>
#include <initializer_list>
#include <map>

namespace orvlog::test
{

namespace
{

using namespace orvlog::small_document;

std::string together(std::initializer_list<std::string> parts)
{
    std::string all;
    for (const std::string& part : parts)
        all.append(part);
    return all;
}

// Each of the sixteen, in a square of its own over a stripe.
std::string blend_modes()
{
    const char* const modes[] = {"Normal",     "Multiply",  "Screen",     "Overlay",   "Darken", "Lighten",
                                 "ColorDodge", "ColorBurn", "HardLight",  "SoftLight", "Hue",    "Difference",
                                 "Exclusion",  "Color",     "Saturation", "Luminosity"};
    std::string content = "0.2 0.6 0.9 rg 0 0 100 12 re 0 25 100 12 re 0 50 100 12 re 0 75 100 12 re f\n";
    std::string states;
    for (int i = 0; i < 16; ++i)
    {
        const std::string name = together({"/B", std::to_string(i)});
        const std::string x = std::to_string(i % 4 * 25 + 2);
        const std::string y = std::to_string(i / 4 * 25 + 2);
        states += together({name, " << /BM /", modes[i], " /ca 0.8 >> "});
        content += together({name, " gs 0.9 0.", std::to_string(i % 10), " 0.3 rg ", x, " ", y, " 20 20 re f\n"});
    }
    return page(content, together({"/ExtGState << ", states, ">>"}));
}

// Two overlapping squares of half opacity in a group of each kind.
std::string knockout_group()
{
    const std::string squares = "/H gs 1 0 0 rg 0 0 30 30 re f 0 0 1 rg 15 15 30 30 re f";
    std::vector<std::string> groups;
    std::string content = "0.8 1 0.4 rg 20 20 60 60 re f\n";
    for (int i = 0; i < 4; ++i)
    {
        const std::string x = std::to_string(i % 2 * 50 + 2);
        const std::string y = std::to_string(i / 2 * 50 + 2);
        groups.push_back(
            stream(together({"/Type /XObject /Subtype /Form /BBox [0 0 45 45] /Group << /S /Transparency /K ",
                             i % 2 == 0 ? "true" : "false", " /I ", i / 2 == 0 ? "true" : "false",
                             " >> /Resources << /ExtGState << /H << /ca 0.5 >> >> >>"}),
                   squares));
        content += together({"q 1 0 0 1 ", x, " ", y, " cm /G", std::to_string(i), " Do Q\n"});
    }
    return page(content, "/XObject << /G0 5 0 R /G1 6 0 R /G2 7 0 R /G3 8 0 R >>", groups);
}

std::string gradients()
{
    const std::string function = "<< /FunctionType 2 /Domain [0 1] /C0 [1 0.9 0] /C1 [0 0.2 0.8] /N 1.5 >>";
    const std::string several = "<< /FunctionType 3 /Domain [0 1] /Bounds [0.3] /Encode [0 1 1 0] /Functions [" +
                                function + " " + function + "] >>";
    return page("q 5 5 40 90 re W n /A sh Q q 50 50 45 45 re W n /R sh Q /Pattern cs /P scn 50 5 45 40 re f",
                "/Shading << /A 5 0 R /R 6 0 R >> /Pattern << /P 7 0 R >>",
                {"<< /ShadingType 2 /ColorSpace /DeviceRGB /Coords [5 5 45 95] /Extend [true false] /Function " +
                     several + " >>",
                 "<< /ShadingType 3 /ColorSpace /DeviceRGB /Coords [65 65 5 75 75 20] /Extend [true true] /Function " +
                     function + " >>",
                 "<< /PatternType 2 /Matrix [1 0 0.2 1 0 0] /Shading << /ShadingType 3 /ColorSpace /DeviceRGB "
                 "/Coords [70 25 0 70 25 20] /Function " +
                     several + " >> >>"});
}

// One with colours of its own, one without, whose cells leave room, and one cut by its box.
std::string tiling_patterns()
{
    const std::string cell = "/Type /Pattern /PatternType 1 /TilingType 1 /Resources << >> ";
    return page(
        "/Pattern cs /A scn 0 0 50 100 re f /U cs 0.2 0.7 0.3 /B scn 50 50 50 50 re f /Pattern cs /C scn 50 0 50 "
        "50 re f",
        "/Pattern << /A 5 0 R /B 6 0 R /C 7 0 R >> /ColorSpace << /U [/Pattern /DeviceRGB] >>",
        {stream(cell + "/PaintType 1 /BBox [0 0 10 10] /XStep 10 /YStep 10",
                "1 0 0 rg 0 0 5 5 re f 0 0 1 rg 5 5 5 5 re f"),
         stream(cell + "/PaintType 2 /BBox [0 0 6 6] /XStep 9 /YStep 8 /Matrix [0.9 0.3 -0.3 0.9 0 0]", "0 0 4 4 re f"),
         stream(cell + "/PaintType 1 /BBox [2 2 8 8] /XStep 5 /YStep 7", "0.6 g 0 0 10 10 re f 0 G 0 0 m 10 10 l S")});
}

// More bytes than are held in memory, once with a soft mask.
std::string cmyk_image()
{
    std::string pixels;
    for (int i = 0; i < 40 * 40 * 4; ++i)
        pixels.push_back(static_cast<char>(i * 37 % 256));
    const std::string size = "/Type /XObject /Subtype /Image /Width 40 /Height 40 /BitsPerComponent 8 ";
    return page("q 45 0 0 45 2 2 cm /I Do Q q 40 10 -10 40 55 50 cm /J Do Q", "/XObject << /I 5 0 R /J 6 0 R >>",
                {stream(size + "/ColorSpace /DeviceCMYK", pixels),
                 stream(size + "/ColorSpace /DeviceCMYK /SMask 7 0 R", pixels),
                 stream(size + "/ColorSpace /DeviceGray", pixels.substr(0, 1600))});
}

std::string true_type_text()
{
    return page("BT /F 12 Tf 10 80 Td (AAAA A) Tj 0 -20 Td [(A) -500 (AA)] TJ ET "
                "BT /F 10 Tf 0.8 0.6 -0.6 0.8 40 10 Tm 3 Tc 50 Tz (AAA) Tj 1 Tr (A) Tj ET",
                "/Font << /F 5 0 R >>", square_font(5));
}

const std::map<std::string, std::function<std::string()>>& makers()
{
    static const std::map<std::string, std::function<std::string()>> all = {
        {"blend-modes", blend_modes},       {"cmyk-image", cmyk_image},           {"gradients", gradients},
        {"knockout-group", knockout_group}, {"tiling-patterns", tiling_patterns}, {"true-type-text", true_type_text}};
    return all;
}

}  // namespace

const std::vector<std::string>& made_documents()
{
    static const std::vector<std::string> names = []
    {
        std::vector<std::string> found;
        for (const auto& [name, make] : makers())
            found.push_back(name);
        return found;
    }();
    return names;
}

std::string made_document(const std::string& name)
{
    return makers().at(name)();
}

}  // namespace orvlog::test
