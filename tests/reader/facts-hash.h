// SHA-256 over parts of a log.

#pragma once

#include "orvlog/interface/gfi-font.h"
#include "orvlog/interface/gpa-path.h"
#include "reader/tree/element.h"

#include <glib.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>

class Hash
{
public:
    void add(std::string_view bytes)
    {
        g_checksum_update(sum_.get(), reinterpret_cast<const guchar*>(bytes.data()), static_cast<gssize>(bytes.size()));
        bytes_ += bytes.size();
    }
    void add(std::span<const uint8_t> bytes)
    {
        add(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    template <typename Number> void add_numbers(std::initializer_list<Number> numbers)
    {
        add(std::string_view(reinterpret_cast<const char*>(numbers.begin()), numbers.size() * sizeof(Number)));
    }
    std::string sum() const
    {
        const std::unique_ptr<GChecksum, Free> copy(g_checksum_copy(sum_.get()));
        return g_checksum_get_string(copy.get());
    }
    nlohmann::json facts() const
    {
        return {{"bytes", bytes_}, {"sha256", sum()}};
    }

private:
    struct Free
    {
        void operator()(GChecksum* sum) const
        {
            g_checksum_free(sum);
        }
    };

    std::unique_ptr<GChecksum, Free> sum_{g_checksum_new(G_CHECKSUM_SHA256)};
    uint64_t bytes_ = 0;
};

// The doubles of a path in the order of the log, from its box on; the numbers of a staircase count as doubles.
void add_path(Hash& hash, const GPA_PathPointer& pointer);

// The payload of a glyph: the bytes that its element has, or the doubles of its path.
void add_glyph(Hash& hash, const orvlog::reader::Element& element, const GFI_GlyphDescPointer& glyph);
