// Renderers that are shared libraries, by orvlog-renderer.h.

#pragma once

#include "orvlog/interface/orvlog-renderer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace orvlog::renderer_library
{

// What is given to a renderer. Both may be empty.
struct Host
{
    // Takes a page that is finished, or a band of it; it makes sense, in itself and behind the band before it. False if
    // it could not be taken.
    std::function<bool(const ORVLOG_RendererPage& page)> take_page;
    // Takes a line of the renderer's for the user, at most 1000 bytes of it.
    std::function<void(const std::string& line)> complain;
};

// FILE or FILE:SYMBOL, taken apart. A file that has the whole text as its name goes first.
struct LibraryName
{
    std::string file;
    std::string symbol;
};
LibraryName split_name(const std::string& text);

class LoadedFile;

class RendererLibrary
{
public:
    explicit RendererLibrary(Host host);
    // Ends the renderer, if that has not been done, and unloads the library.
    ~RendererLibrary();
    RendererLibrary(const RendererLibrary&) = delete;
    RendererLibrary& operator=(const RendererLibrary&) = delete;

    // Loads FILE or FILE:SYMBOL and makes its renderer. `options` may be null. False with the reason in `why`, without
    // the name.
    bool open(const std::string& name, const char* options, std::string* why);
    // The table, valid until the end; null if there is no renderer.
    const ORV_Interface* interface() const;
    bool can_look() const;
    // Hands the pixels of the open page, as they are now, to `take_page`. False if the renderer has none.
    bool look(std::function<bool(const ORVLOG_RendererPage& page)> take_page);
    // Ends the renderer. False if it says that something isn't whole.
    bool end();

    struct Pages;

private:
    bool make_renderer(ORVLOG_renderer_fn function, const char* options, std::string* why);

    std::unique_ptr<Pages> pages_;
    ORVLOG_RendererHost host_{};
    ORVLOG_Renderer renderer_{};
    std::unique_ptr<LoadedFile> file_;
    bool open_ = false;
};

}  // namespace orvlog::renderer_library
