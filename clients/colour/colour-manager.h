// A small colour manager for clients: it makes colour tickets from a document's profiles, and gives the tables by
// which the logger and a renderer look at them.
//
// A ticket says in which space a renderer works, how each input family (gray, RGB, CMYK) is defined, and what the
// pages are made for. Profiles are read with Little CMS; what it cannot read is left out with a complaint.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::colour
{

using Bytes = std::vector<uint8_t>;

enum class Family
{
    gray,
    rgb,
    cmyk
};

// 1, 3 or 4.
uint8_t channels_of(Family family);

// An ICC profile of the document: of an ICC based space, or of a default space.
struct InputProfile
{
    std::string name;  // stands in the ticket; empty: the description inside the profile
    Family family = Family::rgb;
    Bytes icc;
};

// Rendering intents, GCM_RI_*, by kind of object.
struct Intents
{
    uint32_t text = GCM_RI_PERCEPTUAL;
    uint32_t line = GCM_RI_PERCEPTUAL;
    uint32_t graphics = GCM_RI_PERCEPTUAL;
    uint32_t image = GCM_RI_PERCEPTUAL;
};

struct TicketDescription
{
    Family render = Family::rgb;  // the space that the renderer works in, a page group's space for example
    uint32_t render_bit_depth = 8;
    bool render_has_alpha = false;
    Intents intents;
    std::vector<InputProfile> inputs;
    // Which of `inputs` stands for a device family; none: a plain definition of the family.
    std::optional<size_t> default_gray;
    std::optional<size_t> default_rgb;
    std::optional<size_t> default_cmyk;
    Bytes output_intent;  // an ICC profile; empty: the pages are made for the render space
};

// What is known of tickets in use; at the end of a job the first two are equal.
struct TicketCounts
{
    uint64_t retained = 0;  // references given out, those of make_ticket counted
    uint64_t released = 0;
    uint64_t serialised = 0;
};

// Owns all tickets that it makes, until its own end. One thread at a time.
class ColourManager
{
public:
    ColourManager();
    ~ColourManager();
    ColourManager(const ColourManager&) = delete;
    ColourManager& operator=(const ColourManager&) = delete;

    // A ticket with one reference, which the caller gives back by `release`. Equal descriptions give the same
    // ticket. What could not be used is told in `complaints`, a line each, and left out.
    void* make_ticket(const TicketDescription& description, std::vector<std::string>* complaints);
    static void retain(void* ticket);
    static void release(void* ticket);

    // The tables that a logger is opened with. Of each, the entries that the interface names are there, and the
    // others are null. The serialiser writes a ticket and cuts the stream behind it.
    static const ORVLOG_TicketFunctions* ticket_functions();
    static const ORVLOG_TicketSerialFunctions* ticket_serial_functions();

    // The number by which a ticket is known, and its serialised form.
    static uint32_t key_of(const void* ticket);
    static const Bytes& serialised(const void* ticket);

    // All tickets made so far, in order.
    std::vector<const void*> tickets() const;
    const TicketCounts& counts() const;

    struct Ticket;

private:
    Ticket* find(const Bytes& serialised) const;

    std::vector<std::unique_ptr<Ticket>> tickets_;
    TicketCounts counts_;
};

}  // namespace orvlog::colour
