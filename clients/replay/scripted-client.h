// A client whose images and font engines answer each callback as the log says, whoever makes it.

#pragma once

#include "clients/replay/script.h"
#include "orvlog/interface/orvlog.h"
#include "reader/records/records.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::replay
{

class ScriptedClient
{
public:
    explicit ScriptedClient(Script& script) : script_(script) {}
    ScriptedClient(const ScriptedClient&) = delete;
    ScriptedClient& operator=(const ScriptedClient&) = delete;

    // An image of a client's. It lives as long as the records that `records` makes.
    struct Image
    {
        ScriptedClient* client = nullptr;
        reader::RecordReader* records = nullptr;
    };
    // Fills in the callbacks that `element` says the client's record had.
    static void fill_callbacks(GOP_OperandImagePointer* record, const reader::Element& element, Image* image);

    // The font engine that a call brings, by its attributes; lives as long as this.
    const GFI_FontEngineTable* engine(const reader::Element& call);
    // While the record is made that a prepare leaves.
    bool is_leaving() const
    {
        return leaving_;
    }
    // One that a call brought which doesn't tell of it.
    const GFI_FontEngineTable* silent_engine();

    // The bytes of a read: those that the log has, or a file beside it. `size` is what a buffer must have held for the
    // log to be as it is.
    struct Delivery
    {
        std::vector<uint8_t> bytes;
        uint32_t size = 0;
    };
    Delivery delivery(const reader::Element& read, std::string_view holder, std::string_view file,
                      std::string_view returned);

private:
    struct ImageFunctions;
    struct FontFunctions;

    struct Engine
    {
        ScriptedClient* client;
        GFI_FontEngineTable table;
        std::optional<std::string> id;
    };

    // Where the next read of a side file begins.
    struct FilePlace
    {
        std::string name;
        uint64_t begin;
    };

    uint64_t advance(const std::string& name, uint64_t count);
    void deliver(const reader::Element& read);
    void hand_out(const reader::Element& get, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                  GFI_GlyphDescPointer** glyph);

    Script& script_;
    std::list<Engine> engines_;
    std::list<FilePlace> places_;  // the last ones, the present one first
    reader::Arena glyph_arena_;
    reader::RecordReader glyph_records_{glyph_arena_};
    GFI_GlyphDescPointer glyph_{};
    Delivery image_bytes_;  // of the read that is being made
    Delivery attr_bytes_;
    const reader::Element* read_ = nullptr;
    bool leaving_ = false;
    friend class ScriptedRenderer;
};

}  // namespace orvlog::replay
