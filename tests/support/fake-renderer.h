// A renderer that draws nothing: it records each call it gets with its arguments, answers what it is told to,
// and can fail the Nth call. It serves as second receiver, too.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvlog::test
{

class FakeRenderer
{
public:
    explicit FakeRenderer(std::string name = "renderer");
    FakeRenderer(const FakeRenderer&) = delete;
    FakeRenderer& operator=(const FakeRenderer&) = delete;

    const ORV_Interface* get() const
    {
        return &table_;
    }
    ORV_Interface* table()
    {
        return &table_;
    }

    // "face_start err=.. seq=1 ..." in the order of arrival.
    const std::vector<std::string>& calls() const
    {
        return calls_;
    }
    uint32_t count(const std::string& call) const;
    std::string last() const
    {
        return calls_.empty() ? "" : calls_.back();
    }

    // What calls answer: `result`, or 0 for call number n from now (the first is 1) if `fail(n)` was said.
    void set_result(uint32_t result)
    {
        result_ = result;
    }
    void fail(uint64_t n)
    {
        fail_at_ = n == 0 ? 0 : arrivals_ + n;
    }
    uint64_t failed() const
    {
        return failed_;
    }
    void set_replay(uint32_t replay)
    {
        replay_ = replay;
    }
    void set_group(uint32_t group)
    {
        group_ = group;
    }
    void set_next_resource(uint32_t resource)
    {
        next_resource_ = resource;
    }
    // Runs in the middle of every drawing call.
    void on_draw(std::function<void(const char* call)> hook)
    {
        hook_ = std::move(hook);
    }

    // Arguments of the latest call that had them, as they came.
    const GFI_FontEngineTable* last_engine = nullptr;
    GOP_OperandPointer* last_operands[6] = {};
    const GSH_ShapePointer* last_shape = nullptr;
    const GSH_ShapeList* last_clip = nullptr;
    const GOP_Operator* last_op = nullptr;
    const void* last_table = nullptr;
    const void* last_parent = nullptr;
    void* last_ticket = nullptr;
    GGO_Point* last_end_point = nullptr;
    uintptr_t last_words[13] = {};

private:
    static FakeRenderer* of(void* context)
    {
        return static_cast<FakeRenderer*>(context);
    }
    uint32_t arrive(const char* call, const std::string& arguments);
    void fill_drawing(ORV_DrawingInterface* drawing);

    std::string name_;
    ORV_Interface table_;
    std::vector<std::string> calls_;
    uint32_t result_ = 1;
    uint64_t arrivals_ = 0;
    uint64_t fail_at_ = 0;
    uint64_t failed_ = 0;
    uint32_t replay_ = 0;
    uint32_t group_ = 77;
    uint32_t next_resource_ = 500;
    std::function<void(const char*)> hook_;
};

}  // namespace orvlog::test
