// Makes the calls of a log again. Images answer with the bytes, fonts with the glyphs, and tickets with the text that
// the log has.
//
// What a log doesn't tell is not played: operands that an operator doesn't use, the parameters of a memory context and
// what is drawn in it. Calls that a client made from within a callback are played as logged only.

#pragma once

#include "clients/replay/replay-tickets.h"
#include "clients/replay/script-facts.h"
#include "orvlog/interface/orvlog.h"
#include "reader/look/call-address.h"
#include "reader/text/log-files.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::replay
{

struct AsLogged;

struct Options
{
    // Not null: images and fonts answer each callback as the log says, and its renderer makes each as the log says.
    AsLogged* as_logged = nullptr;
    reader::LogFiles files = reader::LogFiles("-");  // side files, the logs of kept images
    uint32_t first_page = 1;                         // pages are faces, counted from 1
    uint32_t last_page = UINT32_MAX;
    std::function<bool(uint32_t page)> wants_page;  // of these; all of them if it is empty
    double dpi = 0;                                 // above 0: pages of this resolution instead of their own
    std::optional<reader::CallAddress> up_to;       // the last call to make; all that is open then is finished
    // Told of what could not be made again, a line each; may be empty.
    std::function<void(const std::string& line)> complain;
    // As logged: told of each callback or call that could not be made as it was; may be empty.
    std::function<void(const std::string& line)> differ;
    // Told of each comment of the client's between two calls, as it stands, and as logged of those within calls; may be
    // empty.
    std::function<void(const std::string& text)> comment;
    // Told of each face that is about to be begun: its place in the log, counted from 1, and its own number,
    // face_seq_number; may be empty.
    std::function<void(uint32_t page, uint32_t number)> page_begins;
    // Told of each call of the log before it is made, or passed over; false ends the replay before it. May be empty.
    std::function<bool(const reader::Element& call)> before_call;
    // Told how many bytes of the file have been used; may be empty.
    std::function<void(uint64_t)> progress;
};

struct Outcome
{
    bool is_log = false;
    bool cut = false;
    bool reached = true;  // the call of up_to
    uint64_t calls = 0;   // made
    uint64_t failed = 0;  // of them, those that gave 0
    uint32_t faces = 0;   // in the log, as far as it was played
    uint32_t pages = 0;   // of them, those that were begun
    uint32_t pages_refused = 0;
    uint64_t missing = 0;      // places where data is not there, neither in the log nor beside it
    uint64_t damage = 0;       // places where the log is not as a log should be
    uint64_t unknown = 0;      // elements that no record could be made from
    uint64_t not_played = 0;   // calls that cannot be made again
    uint64_t differences = 0;  // as logged: what could not be made as it was
    // What images need that the renderer still keeps. Must live until the renderer has ended.
    std::shared_ptr<void> kept;
};

// What has to be known of a log before it is played: how its session was opened.
struct LogKind
{
    ScriptFacts script;
    bool is_log = false;
    bool base_mode = false;      // the root says so
    bool base_content = false;   // the logger has pulled images or glyphs
    bool fixed_formats = false;  // glyphs in all three forms
    bool image_attributes = false;
    bool names_unknown_families = false;  // of colour tickets: in their element, and with a warning
    bool side_files = false;
    bool rendered = false;  // a renderer has pulled images or glyphs
    bool kept_images = false;
    // How the renderer has asked for glyphs: whether some of them in a fixed form, and (bit N) whether a glyph was
    // first asked for in any other way as the type N, GFI_GDT_*.
    bool rendered_fixed = false;
    uint32_t rendered_first = 0;
    uint64_t faces = 0;
    bool numbered = true;  // the faces' own numbers rise from face to face, from 1 at least
    double dpi = 0;        // of the first face; 0 if there is none
    uint32_t glyph_get_type = GFI_GDT_BITMAP;
};
LogKind examine(std::istream& log);

// The same call by call, for one who reads the log for other things as well.
class Examination
{
public:
    Examination() = default;
    Examination(const Examination&) = delete;
    Examination& operator=(const Examination&) = delete;

    // In the order of the log.
    void add(const reader::Element& call);
    void add(const reader::Comment& one);
    // Once it has ended.
    LogKind finish(bool is_log, const reader::Element& root);

private:
    LogKind kind_;
    FactFinder facts_{kind_.script};
    uint32_t last_number_ = 0;
};

// What is known of a log, as numbers, for the index of a repacked one. Of parts of it `examine` gives what these tell.
std::vector<uint64_t> facts_of(const LogKind& kind);

// Plays `log` on `table`. The tickets must live as long as the table's session.
Outcome play(std::istream& log, const ORV_Interface* table, ReplayTickets& tickets, const Options& options);

}  // namespace orvlog::replay
