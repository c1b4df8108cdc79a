// The numbers of a log of which calls are left out: documents, drawings, resources, paints, font engines, tickets,
// images, fonts and strings count again without gaps, as the logger counts them.

#pragma once

#include "inspect/reduce/tag-edit.h"
#include "reader/text/log-events.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvlog::inspect
{

// Numbers that come in rising order, mostly, and what stands for them.
class NumberMap
{
public:
    void set(uint32_t number, uint32_t stands);
    std::optional<uint32_t> find(uint32_t number) const;
    // The highest number that is not above this one.
    std::optional<std::pair<uint32_t, uint32_t>> at_or_below(uint32_t number) const;
    void clear();

private:
    std::vector<std::pair<uint32_t, uint32_t>> rising_;
    std::map<uint32_t, uint32_t> others_;
};

class Renumber
{
public:
    // An image operand's number in the log and here, by any of its numbers in the log.
    struct Image
    {
        uint32_t before = 0;
        uint32_t now = 0;  // 0: it is left out
    };

    // A tag of what stays.
    void keep(const reader::Event& event, bool in_callback, TagEdit& tag);
    // A tag of what is left out.
    void leave_out(const reader::Event& event, bool in_callback);
    // Behind the end of a call that stays.
    void end_call(std::string_view name);

    // Whether a ticket with this number in the log has come among what stays.
    bool has_ticket(uint32_t id) const
    {
        return tickets_.find(id).has_value();
    }
    Image image(uint32_t id) const;
    bool has_engine(uint32_t id) const
    {
        return engines_.find(id).has_value();
    }

private:
    void reference(const reader::Event& event, const char* name, const NumberMap& numbers, TagEdit& tag) const;
    void start(const reader::Event& event, const char* name, NumberMap& numbers, uint32_t& next, TagEdit& tag);
    void call(const reader::Event& event, TagEdit& tag);
    void engine(const reader::Event& event, TagEdit& tag);
    void engine_of_callback(const reader::Event& event, TagEdit& tag);
    void image_number(const reader::Event& event, bool is_operand, TagEdit& tag);
    void text_ids(const reader::Event& event, TagEdit& tag);

    NumberMap documents_;
    NumberMap drawings_;
    NumberMap resources_;
    NumberMap engines_;
    NumberMap tickets_;
    NumberMap images_;
    NumberMap fonts_;
    NumberMap strings_;
    uint32_t next_document_ = 0;
    uint32_t next_drawing_ = 0;
    uint32_t next_resource_ = 0;
    uint32_t next_paint_ = 0;
    uint32_t next_engine_ = 0;
    uint32_t next_engine_before_ = 0;  // in the log
    uint32_t hidden_engines_ = 0;      // that memory contexts among what stays may have brought since
    uint32_t next_ticket_ = 1;
    uint32_t last_image_ = 0;
    uint32_t next_font_ = 0;
    uint32_t next_string_ = 0;
};

}  // namespace orvlog::inspect
