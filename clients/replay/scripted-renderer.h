// A renderer that does what the log says the job's renderer did: each callback in its turn with its arguments, within
// the call in which it was made, or between two calls. It draws nothing.

#pragma once

#include "clients/replay/script-facts.h"
#include "clients/replay/script.h"
#include "clients/replay/scripted-client.h"
#include "orvlog/interface/orvlog.h"
#include "reader/records/records.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvlog::replay
{

class ScriptedRenderer
{
public:
    ScriptedRenderer(Script& script, ScriptedClient& client, const ScriptFacts& facts);
    ScriptedRenderer(const ScriptedRenderer&) = delete;
    ScriptedRenderer& operator=(const ScriptedRenderer&) = delete;

    const ORV_Interface* interface() const
    {
        return &table_;
    }

    // Makes a callback of the log.
    void perform(const reader::Element& callback);
    // Makes what the present call has left over, since the logger didn't pass it on.
    void run_rest();

    // A text of the calls that come, by the numbers that the log has for its font and its string; good until
    // forget_texts().
    void note_text(uint32_t font_id, uint32_t string_id, const GFI_FontSpecPointer* font,
                   const GFI_StringDescPointer* string);
    void forget_texts();

    // What the call that follows brings isn't there beyond `owner`, by which it is forgotten: images that were not
    // kept.
    void set_owner(const void* owner)
    {
        owner_ = owner;
    }
    void forget_images(const void* owner);
    // Whether one of them has been kept and not released.
    bool has_kept(const void* owner) const;
    // Behind the last call: releases what has been put off.
    void finish_releases();

    // Of a scope that has ended.
    void forget_engine(uint32_t number);
    // The mask of a group that has ended, by the place of the call that began it.
    void forget_mask(uint64_t byte);

private:
    struct Calls;

    // A record that the renderer holds: a copy, by which the logger knows the image as well. A prepare may make
    // several of one image.
    struct Live
    {
        uint32_t id = 0;
        uint32_t next_id = 0;  // that the image gives, to a record that a prepare leaves and to its own log
        uint64_t indent = 0;   // of what it logs
        bool kept = false;
        uint64_t refusal = 0;  // the number of the keep that the client refused; 0 without one
        uint64_t image = 0;
        std::optional<uint64_t> group;  // of a mask: where the group was begun
        const void* owner = nullptr;
        GOP_OperandImagePointer record{};
        std::string file;         // the side file of its reads
        bool file_ended = false;  // by a finish; what is read then goes nowhere
        uint64_t number = 0;
    };

    void keep(const reader::Element& callback, Live& live);
    void release(Live& live);
    void make_release(Live live);
    void make_put_off(const Live& live);
    bool is_held(const Live& live) const;
    void end_call();
    bool is_gone(const Live& live) const;
    uint32_t likeness(const Live& live, const reader::Element& callback) const;

    void perform_between();
    void note_operand(std::string_view member, const GOP_OperandPointer* operand);
    void note_mask(const GOP_OperandPointer* operand);
    void note_engine(const GFI_FontEngineTable* engine);
    Live* find(const reader::Element& callback);

    void image(const reader::Element& callback);
    void prepare(const reader::Element& callback, Live& live);
    void read(const reader::Element& callback, Live& live);
    void finish(const reader::Element& callback, Live& live);
    void font(const reader::Element& callback);
    void start_string(const reader::Element& callback, const GFI_FontEngineTable* engine);
    void get_index(const reader::Element& callback, const GFI_FontEngineTable* engine);
    void get_glyph(const reader::Element& callback, const GFI_FontEngineTable* engine);
    void fill(ORV_DrawingInterface* drawing);

    Script& script_;
    ScriptedClient& client_;
    const ScriptFacts& facts_;
    ORV_Interface table_{};
    const void* owner_ = nullptr;
    std::vector<Live> images_;
    std::vector<Live> put_off_;  // images that are to be released, the first one first
    uint64_t image_count_ = 0;
    uint64_t record_count_ = 0;
    uint64_t followed_ = 0;  // the image whose own log is being played, or what a merge put behind its keep
    uint64_t refusals_ = 0;
    uint32_t calls_ = 0;                                      // one within the other
    std::map<uint32_t, const GFI_FontEngineTable*> engines_;  // by GfpId
    std::map<std::pair<uint32_t, uint32_t>, std::pair<const GFI_FontSpecPointer*, const GFI_StringDescPointer*>> texts_;
    reader::Arena finish_arena_;
    reader::RecordReader finish_records_{finish_arena_};
};

}  // namespace orvlog::replay
