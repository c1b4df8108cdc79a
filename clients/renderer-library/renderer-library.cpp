#include "clients/renderer-library/renderer-library.h"

#include "clients/renderer-library/loaded-file.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace orvlog::renderer_library
{

namespace
{

constexpr size_t kLongestLine = 1000;
constexpr uint32_t kGreatestSide = 65535;

bool is_name(std::string_view text)
{
    constexpr std::string_view kDigits = "0123456789";
    constexpr std::string_view kFirst = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
    const auto belongs = [&](char c) { return kFirst.find(c) != kFirst.npos || kDigits.find(c) != kDigits.npos; };
    return !text.empty() && kDigits.find(text[0]) == kDigits.npos && std::ranges::all_of(text, belongs);
}

bool is_file(const std::string& name)
{
    std::error_code none;
    return std::filesystem::exists(name, none);
}

bool makes_sense(const ORVLOG_RendererPage& page)
{
    return page.pixels != nullptr && page.width > 0 && page.width <= kGreatestSide && page.height > 0 &&
           page.height <= kGreatestSide && page.first_row < page.height && page.rows > 0 &&
           page.rows <= page.height - page.first_row && page.row_pixels >= page.width;
}

bool is_whole(const ORV_Interface& table)
{
    return table.document_start.fn != nullptr && table.document_finish.fn != nullptr &&
           table.resource_destroy.fn != nullptr && table.face_start.fn != nullptr &&
           table.resource_start.fn != nullptr && table.memory_context_start.fn != nullptr;
}

}  // namespace

LibraryName split_name(const std::string& text)
{
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || !is_name(std::string_view(text).substr(colon + 1)) || is_file(text))
        return {text, ORVLOG_RENDERER_SYMBOL};
    return {text.substr(0, colon), text.substr(colon + 1)};
}

// Where pages and lines go. What a library of others says is looked at before it's believed.
struct RendererLibrary::Pages
{
    explicit Pages(Host wanted) : host(std::move(wanted)) {}

    static uint32_t take_page(void* context, const ORVLOG_RendererPage* page)
    {
        return static_cast<Pages*>(context)->take(page) ? 1 : 0;
    }

    static void complain(void* context, const char* line)
    {
        auto* pages = static_cast<Pages*>(context);
        const std::string text = line != nullptr ? std::string(line, bounded_length(line)) : "";
        if (pages->first_complaint.empty())
            pages->first_complaint = text;
        if (pages->host.complain && pages->tells)
            pages->host.complain(text);
    }

    static size_t bounded_length(const char* line)
    {
        size_t length = 0;
        while (length < kLongestLine && line[length] != 0)
            ++length;
        return length;
    }

    // Rows come from the first to the last, none twice.
    bool take(const ORVLOG_RendererPage* page)
    {
        if (page == nullptr || !makes_sense(*page))
            return false;
        const bool next =
            page->first_row == 0 || (page->first_row == next_row && page->width == width && page->height == height);
        if (!next)
            return false;
        next_row = page->first_row + page->rows;
        width = page->width;
        height = page->height;
        return !host.take_page || host.take_page(*page);
    }

    Host host;
    bool tells = false;
    std::string first_complaint;
    uint32_t next_row = 0;
    uint32_t width = 0;
    uint32_t height = 0;
};

RendererLibrary::RendererLibrary(Host host) : pages_(std::make_unique<Pages>(std::move(host)))
{
    host_.version = ORVLOG_RENDERER_VERSION;
    host_.context = pages_.get();
    host_.take_page = Pages::take_page;
    host_.complain = Pages::complain;
}

RendererLibrary::~RendererLibrary()
{
    end();
}

bool RendererLibrary::make_renderer(ORVLOG_renderer_fn function, const char* options, std::string* why)
{
    // Why it can't be made is told by the caller.
    const bool made = function(&host_, options, &renderer_) != 0;
    pages_->tells = true;
    if (!made)
        *why = "makes no renderer" + (pages_->first_complaint.empty() ? "" : ": " + pages_->first_complaint);
    else if (renderer_.version != ORVLOG_RENDERER_VERSION)
        *why = "is of version " + std::to_string(renderer_.version) + " and not " +
               std::to_string(ORVLOG_RENDERER_VERSION);
    else if (!is_whole(renderer_.table))
        *why = "leaves a function of the table null";
    else
        open_ = true;
    return open_;
}

bool RendererLibrary::open(const std::string& name, const char* options, std::string* why)
{
    const LibraryName parts = split_name(name);
    file_ = LoadedFile::open(parts.file, why);
    if (file_ == nullptr)
        return false;
    const auto function = reinterpret_cast<ORVLOG_renderer_fn>(file_->function(parts.symbol));
    if (function == nullptr)
    {
        *why = "has no function " + parts.symbol;
        return false;
    }
    return make_renderer(function, options, why);
}

const ORV_Interface* RendererLibrary::interface() const
{
    return open_ ? &renderer_.table : nullptr;
}

bool RendererLibrary::can_look() const
{
    return open_ && renderer_.look != nullptr;
}

bool RendererLibrary::look(std::function<bool(const ORVLOG_RendererPage& page)> take_page)
{
    if (!can_look())
        return false;
    Pages taker(Host{std::move(take_page), pages_->host.complain});
    ORVLOG_RendererHost host = host_;
    host.context = &taker;
    return renderer_.look(renderer_.context, &host) != 0;
}

bool RendererLibrary::end()
{
    const bool wanted = open_ && renderer_.end != nullptr;
    open_ = false;
    return !wanted || renderer_.end(renderer_.context) != 0;
}

}  // namespace orvlog::renderer_library
