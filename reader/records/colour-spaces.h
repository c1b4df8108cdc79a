// Colour definitions, made again from their elements.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "orvlog/interface/orvlog.h"
#include "reader/tree/element.h"

#include <memory>
#include <vector>

namespace orvlog::reader
{

class ColourSpaceReader
{
public:
    // The definitions lie in the arena, their profiles' streams here.
    explicit ColourSpaceReader(Arena& arena) : arena_(arena) {}

    // Null for null and for an element of another kind.
    const GCM_CsdPointer* read(const Element* element);

    // Closes the streams of the definitions that have been read.
    void clear();

private:
    struct CloseStream
    {
        void operator()(GIO_Stream* stream) const;
    };

    void read_levels(const Element& element, GCM_CsdPointer* csd, uint32_t levels);
    GIO_Stream* profile_stream(const Element& element);

    Arena& arena_;
    std::vector<std::unique_ptr<GIO_Stream, CloseStream>> streams_;
};

}  // namespace orvlog::reader
