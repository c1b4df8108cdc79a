/// \file
/// A renderer as a shared library, which a program loads when it runs: `orvlog replay --renderer FILE.so`.
///
/// The library has one function, of the type ORVLOG_renderer_fn and by the name ORVLOG_RENDERER_SYMBOL, if its user is
/// not told another one. It makes a renderer and fills its record. A library in C is built from this header and those
/// that it includes; it links nothing of this project.
///
///     ORVLOG_RENDERER_EXPORT uint32_t orvlog_renderer(const ORVLOG_RendererHost* host, const char* options,
///                                                     ORVLOG_Renderer* renderer)
///
/// All functions are called by one thread, one at a time. None may let an exception pass.

#ifndef ORVLOG_INTERFACE_ORVLOG_RENDERER_H
#define ORVLOG_INTERFACE_ORVLOG_RENDERER_H

#include "orvlog/interface/orv-interface.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Of the records below. A library that was built for another version must give 0.
#define ORVLOG_RENDERER_VERSION 1

#define ORVLOG_RENDERER_SYMBOL "orvlog_renderer"

#ifdef __cplusplus
#define ORVLOG_RENDERER_LINKAGE extern "C"
#else
#define ORVLOG_RENDERER_LINKAGE
#endif

/// Stands in front of the library's function.
#ifdef _WIN32
#define ORVLOG_RENDERER_EXPORT ORVLOG_RENDERER_LINKAGE __declspec(dllexport)
#else
#define ORVLOG_RENDERER_EXPORT ORVLOG_RENDERER_LINKAGE __attribute__((visibility("default")))
#endif

/// A page as pixels, or some rows of it.
typedef struct ORVLOG_RendererPage
{
    uint32_t face_seq_number;  ///< as given to ORV_face_start
    uint32_t width;            ///< pixels of the page, 1 to 65535
    uint32_t height;           ///< the same
    uint32_t first_row;        ///< the first row of the page that stands in `pixels`, from 0
    uint32_t rows;             ///< how many rows do, from 1 to height - first_row
    uint32_t row_pixels;       ///< pixels from the beginning of a row to that of the next one, width at least
    const uint32_t* pixels;    ///< rows from the top down, each pixel 0x00RRGGBB; the highest byte isn't looked at
} ORVLOG_RendererPage;

/// What the program offers to the renderer. It lives until the renderer has been ended. No entry is null.
typedef struct ORVLOG_RendererHost
{
    uint32_t version;  ///< ORVLOG_RENDERER_VERSION of the program
    void* context;     ///< for the functions below

    /// Takes a page that is finished: one call with all of it or, of a large page, several one after the other, with
    /// its rows from the first to the last. To be called before ORV_drawing_finish of the page returns. Nothing of the
    /// record is kept. A renderer that makes no pixels doesn't call it. Gives 0 if the page could not be taken, or the
    /// record makes no sense; ORV_drawing_finish should then give 0.
    uint32_t (*take_page)(void* context, const ORVLOG_RendererPage* page);

    /// Takes a line for the user, in UTF-8 without a line end: what could not be painted, or is painted otherwise.
    void (*complain)(void* context, const char* line);
} ORVLOG_RendererHost;

/// What the renderer is. The program fills the record with zeros first.
typedef struct ORVLOG_Renderer
{
    uint32_t version;  ///< ORVLOG_RENDERER_VERSION of the library
    void* context;     ///< for the functions below; may be null

    /// To draw with, until `end`. An entry of `base` is 0; every other one has a function.
    ORV_Interface table;

    /// Ends the renderer and gives all back that it holds. Called once, behind the last call of the drawing. Gives 0 if
    /// something that it was to make isn't whole, after a line to `complain`. May be null.
    uint32_t (*end)(void* context);

    /// Gives the pixels of the open page as it is now, by one or several calls of take_page of the host that is given
    /// here. Called between two drawing calls. Gives 0 if there are none. Drawing must go on as if it had not been
    /// called. May be null.
    uint32_t (*look)(void* context, const ORVLOG_RendererHost* host);
} ORVLOG_Renderer;

/// Makes a renderer. `options` is a text for the library alone, as its user gave it, in UTF-8; null if he gave none.
/// Gives 1 with the record filled; or 0, after a line to `complain` that says why, with nothing held.
typedef uint32_t (*ORVLOG_renderer_fn)(const ORVLOG_RendererHost* host, const char* options, ORVLOG_Renderer* renderer);

#ifdef __cplusplus
}
#endif

#endif
