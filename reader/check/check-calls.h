// The part of a check that looks at the order of calls: documents, drawings, groups, resources, and their numbers.

#pragma once

#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace orvlog::reader
{

class CheckCalls
{
public:
    using Report = std::function<void(Place, std::string)>;
    // `note` is told of what a sound log may have, too.
    CheckCalls(Report report, Report note) : report_(std::move(report)), note_(std::move(note)) {}

    void call(const Element& call);
    // What is open at the end of the log.
    void finish();
    // A callback of a font engine, wherever it stands.
    void font_callback(const Element& callback);

private:
    struct Drawing
    {
        Place place;
        uint64_t groups = 0;
        uint32_t document = 0;
        bool has_document = false;
    };

    void number(const Element& call, std::string_view attribute, uint64_t& next);
    void document_of(const Element& call);
    void start_drawing(const Element& call);
    void engine(const Element& call);
    void ticket(const Element& call);
    void resource(const Element& call);
    void in_drawing(const Element& call);

    Report report_;
    Report note_;
    uint64_t next_document_ = 0;
    uint64_t next_drawing_ = 0;
    uint64_t next_resource_ = 0;
    uint64_t next_paint_ = 0;
    uint64_t next_engine_ = 0;
    uint64_t hidden_engines_ = 0;  // that may have been brought by memory contexts
    uint64_t next_ticket_ = 1;
    std::map<uint32_t, Place> documents_;
    std::map<uint32_t, Drawing> drawings_;
    std::map<uint32_t, Place> resources_;
    bool forgot_ = false;  // more was open than is remembered
};

}  // namespace orvlog::reader
