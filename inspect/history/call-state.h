// What holds when a call of a log is made, from the log alone.

#pragma once

#include "inspect/history/call-descriptions.h"
#include "reader/look/call-address.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// The font engine that a call brought.
struct FontState
{
    std::string from;    // the address of the call
    std::string engine;  // its name, as the log has it
    std::optional<uint32_t> gfp_id;
};

// A colour frame: a drawing or a group begins one, with a ticket of its own or with that of the frame around it.
struct FrameState
{
    std::string from;                // the address of the call that began it
    std::optional<uint32_t> ticket;  // its id; nothing while none is known
    bool own = false;                // the call brought it
};

struct GroupState
{
    CallDescription call;
    std::string type;  // "ORV_GROUP_ISOLATED", as the log has it
    bool knockout = false;
    GGO_Matrix retransform{};
};

struct DocumentState
{
    std::string from;
    uint32_t context = 0;
    uint32_t id = 0;
};

struct DrawingState
{
    std::string from;
    std::string kind;  // "face", "resource", "memory_context"
    uint32_t context = 0;
    uint32_t page = 0;       // of a face, from 1
    uint32_t number = 0;     // the face's own, or the resource's id
    GGO_BoxFloat box{};      // of a face in pixels, of a resource in its units
    GGO_Matrix to_pixels{};  // of a face
    std::vector<GroupState> groups;
    std::vector<FrameState> frames;  // its own, then one for each group
    std::vector<FontState> fonts;    // the document's, its own, those of its groups: the last is in force
    uint64_t warnings_before = 0;    // of the log
};

struct ResourceState
{
    uint32_t id = 0;
    std::string from;
    GGO_BoxFloat box{};
    bool open = false;  // its drawing isn't finished
};

struct WarningState
{
    uint64_t line = 0;
    std::string text;
};

struct CallState
{
    bool is_log = false;
    bool found = false;
    uint64_t byte = 0;
    CallDescription call;
    std::optional<DocumentState> document;
    std::optional<DrawingState> drawing;  // of calls that are made on one
    GGO_Matrix to_pixels{};               // of the call's space
    bool on_page = false;
    std::vector<ResourceState> resources;  // by id
    uint64_t warnings = 0;                 // before the call
    std::vector<WarningState> last_warnings;
    uint64_t damage = 0;  // before the call
};

CallState state_at(std::istream& log, const reader::CallAddress& address,
                   const std::function<void(uint64_t)>& progress);

}  // namespace orvlog::inspect
