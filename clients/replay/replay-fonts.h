// The font engines of a log: they answer with what the log says that the client's engines answered.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "reader/records/records.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvlog::replay
{

class ReplayFonts
{
public:
    ReplayFonts() = default;
    ReplayFonts(const ReplayFonts&) = delete;
    ReplayFonts& operator=(const ReplayFonts&) = delete;

    // The engine that a call brings, by its attributes; null if it brings none. Lives as long as this.
    const GFI_FontEngineTable* engine(const reader::Element& call);

    // Forgets the strings of the last call. `records` makes the glyphs of the next one.
    void start_call(reader::RecordReader& records);
    // A text shape of the present call.
    void add_string(const GFI_StringDescPointer* string, uint32_t font_id, uint32_t string_id);
    // A font callback of the present call, in the order of the log. Elements live until the next start_call().
    void add_callback(const reader::Element& callback);

private:
    struct Step
    {
        const reader::Element* index = nullptr;
        std::vector<const reader::Element*> gets;
    };

    // All that was asked of a string from its start to its end.
    struct Pull
    {
        const reader::Element* start = nullptr;
        std::vector<Step> steps;
        bool used = false;
    };

    using Key = std::pair<uint32_t, uint32_t>;

    struct Engine
    {
        ReplayFonts* owner;
        GFI_FontEngineTable table;
        std::optional<std::string> id;
    };

    struct Functions;

    Pull* choose(std::vector<Pull>& pulls, const GGO_Matrix& matrix) const;
    const reader::Element* find_get(uint32_t type, bool fixed);
    const reader::Element* delivered(const Step& step, uint32_t type, bool any) const;
    void hand_out(const reader::Element& get, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                  GFI_GlyphDescPointer** glyph);
    GGO_Matrix as_asked(const GGO_Matrix& to_pixels) const;

    reader::RecordReader* records_ = nullptr;
    GFI_GlyphDescPointer given_{};
    std::vector<std::unique_ptr<Engine>> engines_;
    std::map<const GFI_StringDescPointer*, Key> strings_;
    std::map<Key, std::vector<Pull>> pulls_;
    std::map<uint32_t, std::pair<Key, size_t>> last_pull_;  // by GfpId
    std::vector<Pull>* all_ = nullptr;                      // of the present string
    Pull* pull_ = nullptr;                                  // the present one
    size_t step_ = 0;                                       // one behind the present glyph
    size_t get_ = 0;
    GGO_Matrix asked_{};  // string to pixels, as asked for now and as logged
    GGO_Matrix logged_{};
};

}  // namespace orvlog::replay
