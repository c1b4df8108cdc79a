// The state of a log that is being played.

#pragma once

#include "clients/replay/as-logged.h"
#include "clients/replay/call-stream.h"
#include "clients/replay/replay-fonts.h"
#include "clients/replay/replay-image.h"
#include "clients/replay/replay.h"
#include "reader/records/records.h"

#include <functional>
#include <istream>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::replay
{

// Pixels to the inch of such a transform, by its area; 0 if that is not finite.
double resolution(const GGO_Matrix& inch_to_pixels);

// What a call was made with. Kept images need it longer than the call, and a group's mask until the group ends.
struct CallMemory
{
    CallMemory() : records(arena) {}
    ~CallMemory();
    CallMemory(const CallMemory&) = delete;
    CallMemory& operator=(const CallMemory&) = delete;

    reader::Arena arena;
    reader::RecordReader records;
    std::vector<std::unique_ptr<ReplayImage>> images;
    std::map<uint32_t, ReplayImage*> by_id;
    uint64_t unknown_before = 0;
    ScriptedRenderer* renderer = nullptr;  // that may hold images of this
    std::list<ScriptedClient::Image> scripted;
};

class Player
{
public:
    Player(const ORV_Interface* table, ReplayTickets& tickets, const Options& options, CallStream& calls);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // False once the call of up_to has been made.
    bool play(const reader::Element& call);
    // Finishes what is open.
    void finish_all();

    const Outcome& outcome() const
    {
        return outcome_;
    }

    // What images need that a renderer still keeps; it may release them as late as at its own end. As logged, too,
    // where the logs of kept images have been put in; null where that renderer does nothing behind the log.
    std::shared_ptr<void> still_kept() const;

private:
    struct GroupScope
    {
        std::optional<uint32_t> engine;
        uint64_t byte = 0;  // where the call stands that began it
        std::shared_ptr<CallMemory> memory;
    };

    struct Drawing
    {
        ORV_DrawingInterface table{};
        bool open = false;
        bool skipped = false;
        uint32_t groups = 0;
        // What the open groups came with; as logged, the numbers of the engines of the drawing and of these groups,
        // too.
        std::optional<uint32_t> engine;
        std::vector<GroupScope> scopes;
    };

    void start_document(const reader::Element& call);
    void finish_document(const reader::Element& call);
    void start_face(const reader::Element& call);
    void start_resource(const reader::Element& call);
    void start_memory_context(const reader::Element& call);
    void destroy_resource(const reader::Element& call);
    void start_group(const reader::Element& call, Drawing& drawing);
    void finish_group(const reader::Element& call, Drawing& drawing);
    void paint(const reader::Element& call, Drawing& drawing);
    void paint_and_stroke(const reader::Element& call, Drawing& drawing);
    void paint_resource(const reader::Element& call, Drawing& drawing);
    void end_drawing(Drawing& drawing, bool discard);
    void drawing_call(const reader::Element& call);

    void collect(const reader::Element& element);
    void collect_image(const reader::Element& callback);
    void read_kept(const reader::Element& keep, const std::function<void(const reader::Element&)>& on_callback);
    std::vector<uint8_t> side_file(std::string_view name, uint64_t begin, uint64_t count);
    void on_image(GOP_OperandImagePointer* image, const reader::Element& element);
    void* document(const reader::Element& call);
    const ORV_DrawingInterface* parent(const reader::Element& call);
    void scale(ORV_FaceProperties* face) const;
    void set_tasks();
    void make(const reader::Element& call);
    void play_within(const reader::Element& call);
    const reader::Element* next_between();
    const GFI_FontEngineTable* engine(const reader::Element& call);
    std::optional<uint32_t> engine_number(const reader::Element& call) const;
    void forget_engine(const std::optional<uint32_t>& number);
    void end_scopes(Drawing& drawing, size_t left);
    void begin_scope(const reader::Element& call, Drawing& drawing);
    void begin_call(const reader::Element& call);
    void begin_call_as_logged(const reader::Element& call);
    void on_text(const GSH_ShapePointer& shape, const reader::Element& element);
    void follow_keep(const reader::Element& keep);
    void new_memory();
    void make_scripted(GOP_OperandImagePointer* image, const reader::Element& element);
    void end_call();
    bool has_kept(const CallMemory& memory) const;
    void hold(const std::shared_ptr<CallMemory>& memory);
    void drop_released();
    bool note(uint32_t result);
    void complain(const std::string& line) const;

    const ORV_Interface* table_;
    ReplayTickets& tickets_;
    const Options& options_;
    Outcome outcome_;
    std::shared_ptr<CallMemory> memory_;
    // Of calls that kept images came with, the last one behind; images may be kept beyond their drawing.
    std::vector<std::shared_ptr<CallMemory>> kept_;
    ReplayFonts fonts_;
    CallStream& calls_;
    uint32_t depth_ = 0;
    std::map<uint32_t, std::optional<uint32_t>> document_engines_;
    bool collecting_ = false;
    std::map<uint32_t, void*> documents_;
    std::map<uint32_t, Drawing> drawings_;
    std::map<uint32_t, uint32_t> resources_;
    std::string side_file_name_;
    std::unique_ptr<std::istream> side_file_;
};

}  // namespace orvlog::replay
