// The part of the package that is the reader and the replay: elements as plain objects of Python, pages as bytes. What
// is made of them stands in the package's Python files.

#include "clients/replay/replay-tickets.h"
#include "clients/replay/replay.h"
#include "inspect/drawing/glyph-form.h"
#include "reader/look/call-summary.h"
#include "reader/look/call-text.h"
#include "reader/text/log-files.h"
#include "reader/text/log-frames.h"
#include "reader/text/log-pieces.h"
#include "renderers/cairo/cairo-renderer.h"

#include <pybind11/pybind11.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace orvlog::python
{

namespace
{

namespace py = pybind11;
using reader::Element;

// What is no log, or can't be read.
class LogError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

[[noreturn]] void fail(const std::string& path, const std::string& why)
{
    throw LogError(path + ": " + why);
}

// Names and values are ASCII in a sound log; other bytes come as lone surrogates.
py::str text_of(std::string_view text)
{
    PyObject* made = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
    if (made == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<py::str>(made);
}

// A log from its beginning, or some pages of one that has an index.
std::unique_ptr<std::istream> open(const std::string& path, uint32_t first, uint32_t last, reader::Resources resources)
{
    std::error_code none;
    if (std::filesystem::is_directory(path, none))
        fail(path, std::strerror(EISDIR));
    const bool some = first > 1 || last < UINT32_MAX;
    if (some && std::filesystem::is_regular_file(path, none))
    {
        auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
        std::string why;
        std::optional<reader::LogIndex> index = reader::read_log_index(*file, why);
        if (index && index->has_pages && first <= index->pages)
        {
            auto shared = std::make_shared<const reader::LogIndex>(*std::move(index));
            auto pieces = pieces_of_pages(*shared, first, last, resources);
            auto log = std::make_unique<reader::LogPieces>(std::move(file), std::move(shared), std::move(pieces));
            if (log->fit())
                return log;
        }
    }
    std::unique_ptr<std::istream> log = reader::open_log(path);
    if (log == nullptr)
        fail(path, std::strerror(errno));
    return log;
}

// (name, line, byte, attributes, bytes, rows, whole, children)
py::tuple tree_of(const Element& element)
{
    py::dict attributes;
    for (const reader::Attribute& attribute : element.attributes)
        attributes[text_of(attribute.name)] = text_of(attribute.value);
    py::object bytes = py::none();
    if (element.name == "BufferUInt8")
        bytes = py::bytes(reinterpret_cast<const char*>(element.bytes.data()), element.bytes.size());
    py::list children;
    for (const Element& child : reader::Children(element))
        children.append(tree_of(child));
    return py::make_tuple(text_of(element.name), element.place.line, element.place.byte, attributes, bytes,
                          text_of(element.rows), !element.implied_end, children);
}

class Reader
{
public:
    Reader(const std::string& path, uint32_t first, uint32_t last, bool with_data)
        : log_(open(path, first, last, reader::Resources::none)),
          elements_(*log_, reader::LogForm::log, with_data ? reader::Data::keep : reader::Data::skip), path_(path)
    {
        elements_.on_damage = [this](const reader::Damage& damage)
        { damage_.append(py::make_tuple(damage.place.line, damage.place.byte, text_of(damage.text))); };
        elements_.on_comment = [this](const reader::Comment& comment)
        { comments_.append(py::make_tuple(comment.place.line, text_of(comment.text), comment.warning)); };
    }

    // (tree, page, box, operator, colour, text) of the next call or callback; None at the end.
    py::object next()
    {
        const Element* element = elements_.next();
        if (!elements_.events().is_log())
            fail(path_, "not a log");
        if (element == nullptr)
            return py::none();
        if (!reader::is_call_name(element->name))
            return py::make_tuple(tree_of(*element), 0, py::none(), "", "", "");
        const reader::CallSummary summary = summaries_.next(*element);
        py::object box = py::none();
        if (summary.box)
            box = py::make_tuple(summary.box->gbf_MinX, summary.box->gbf_MinY, summary.box->gbf_MaxX,
                                 summary.box->gbf_MaxY);
        return py::make_tuple(tree_of(*element), summary.page, box, text_of(summary.op), text_of(summary.colour),
                              text_of(reader::text_of(*element)));
    }

    py::tuple root() const
    {
        return tree_of(elements_.root());
    }
    bool is_cut() const
    {
        return elements_.events().is_cut();
    }
    py::list damage() const
    {
        return damage_;
    }
    py::list comments() const
    {
        return comments_;
    }

private:
    std::unique_ptr<std::istream> log_;
    reader::ElementReader elements_;
    reader::CallSummaries summaries_;
    std::string path_;
    py::list damage_;
    py::list comments_;
};

// The bytes of a file beside the log, as far as its job can have left it.
py::bytes side_file(const std::string& path, const std::string& name)
{
    const reader::LogFile file = reader::LogFiles(path).open(name, reader::LogFileKind::image_data);
    if (file.stream == nullptr)
        fail(path, "the file " + name + " " + file.why);
    std::string bytes(std::istreambuf_iterator<char>(*file.stream), {});
    return py::bytes(bytes);
}

// (width, height, bytes, lines): rows of red, green, blue; what could not be made again.
py::tuple replay_page(const std::string& path, uint32_t page, double dpi)
{
    std::unique_ptr<std::istream> log = open(path, page, page, reader::Resources::painted);
    const replay::LogKind kind = replay::examine(*log);
    if (!kind.is_log)
        fail(path, "not a log");
    if (page == 0 || page > kind.faces)
        fail(path, "has no page " + std::to_string(page) + ", but " + std::to_string(kind.faces) + " in all");
    // A log behind a journal goes back to its beginning only by being opened again.
    log = open(path, page, page, reader::Resources::painted);
    py::list lines;
    const auto complain = [&lines](const std::string& line)
    {
        if (lines.size() < 1000)
            lines.append(text_of(line));
    };
    cairo_renderer::PageCollector collector;
    cairo_renderer::Options drawing;
    drawing.page_sink = collector.sink();
    drawing.keep_images = kind.kept_images;
    drawing.glyph_form = inspect::glyph_form(kind);
    drawing.complaint_sink = complain;
    cairo_renderer::Renderer renderer(std::move(drawing));
    replay::Options options;
    options.files = reader::LogFiles(path);
    options.first_page = options.last_page = page;
    options.dpi = dpi;
    options.complain = complain;
    replay::ReplayTickets tickets;
    const replay::Outcome outcome = replay::play(*log, renderer.interface(), tickets, options);
    if (outcome.pages == 0 || collector.pages().empty())
        fail(path, "page " + std::to_string(page) + " can't be drawn");
    const cairo_renderer::PagePixels& pixels = collector.pages().front();
    std::string bytes;
    bytes.reserve(3 * pixels.pixels.size());
    for (const uint32_t pixel : pixels.pixels)
        for (const int shift : {16, 8, 0})
            bytes += static_cast<char>(pixel >> shift);
    return py::make_tuple(pixels.width, pixels.height, py::bytes(bytes), lines);
}

}  // namespace

PYBIND11_MODULE(_native, module)
{
    py::register_exception<LogError>(module, "LogError", PyExc_ValueError);
    py::class_<Reader>(module, "Reader")
        .def(py::init<const std::string&, uint32_t, uint32_t, bool>(), py::arg("path"), py::arg("first"),
             py::arg("last"), py::arg("with_data"))
        .def("next", &Reader::next)
        .def("root", &Reader::root)
        .def("is_cut", &Reader::is_cut)
        .def("damage", &Reader::damage)
        .def("comments", &Reader::comments);
    module.def("side_file", &side_file, py::arg("path"), py::arg("name"));
    module.def("replay_page", &replay_page, py::arg("path"), py::arg("page"), py::arg("dpi"));
}

}  // namespace orvlog::python
