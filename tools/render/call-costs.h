// What the calls of a job cost a renderer: a table in front of the renderer's, which looks at the clocks and the heap
// before and behind each call, and takes off what the client's callbacks took meanwhile.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

struct Cost
{
    int64_t wall = 0;       // nanoseconds
    int64_t processor = 0;  // of this process
    int64_t memory = 0;     // bytes of the heap that are in use behind it and weren't before

    void add(const Cost& other);
    void take_off(const Cost& other);
};

// What is there now.
Cost cost_now();

// The callbacks of images and fonts, in the order of their names below.
constexpr const char* kCallbackNames[] = {
    "GFI_StringStartFn", "GFI_GlyphIndexGetFn", "GFI_GlyphGetFixedFormatFn", "GFI_GlyphGetFn",  "GOP_ImagePrepareFn",
    "GOP_ImageReadFn",   "GOP_ImageFinishFn",   "GOP_ImageResetFn",          "GOP_ImageKeepFn", "GOP_ImageReleaseFn"};
constexpr size_t kCallbackCount = std::size(kCallbackNames);

struct CallCost
{
    uint64_t line = 0;
    std::string address;  // "17" or "line:812"
    std::string kind;     // "ORV_object_paint"
    uint32_t page = 0;    // 0: on none
    Cost own;             // without its callbacks
    int64_t begin = 0;    // nanoseconds from the beginning of the run
    int64_t end = 0;      // with its callbacks
    uint64_t callbacks = 0;
};

struct CallbackCost
{
    uint64_t count = 0;
    uint64_t bytes = 0;  // that reads have brought
    Cost all;            // what the replay took to answer
};

struct CallbackEvent
{
    uint32_t kind = 0;
    int64_t begin = 0;
    int64_t end = 0;
};

class CallCosts
{
public:
    // In front of `renderer`, which lives as long as this. With `events` each callback is noted.
    CallCosts(const ORV_Interface& renderer, bool events);
    CallCosts(const CallCosts&) = delete;
    CallCosts& operator=(const CallCosts&) = delete;
    ~CallCosts();

    const ORV_Interface* table() const
    {
        return &table_;
    }
    // The call that comes next.
    void begin_call(CallCost call);

    const std::vector<CallCost>& calls() const
    {
        return calls_;
    }
    const std::vector<CallbackCost>& callbacks() const
    {
        return callbacks_;
    }
    const std::vector<CallbackEvent>& events() const
    {
        return events_;
    }
    int64_t wall() const;

    struct Functions;
    struct Image;
    struct Engine;
    struct Drawing;

private:
    const GFI_FontEngineTable* wrap(const GFI_FontEngineTable* engine);
    GOP_OperandPointer* wrap(GOP_OperandPointer* operand);
    void wrap(ORV_DrawingInterface* drawing);
    void end_call();
    void add(uint32_t callback, const Cost& before, uint64_t bytes);

    const ORV_Interface& renderer_;
    ORV_Interface table_{};
    bool keep_events_;
    int64_t start_ = 0;
    std::vector<CallCost> calls_;
    std::vector<CallbackCost> callbacks_;
    std::vector<CallbackEvent> events_;
    Cost in_callbacks_;  // of the present call
    std::deque<std::unique_ptr<Image>> images_;
    std::deque<std::unique_ptr<Engine>> engines_;
    std::deque<std::unique_ptr<Drawing>> drawings_;
    bool kept_ = false;  // one of the images since the call before
};

}  // namespace orvlog::tool
