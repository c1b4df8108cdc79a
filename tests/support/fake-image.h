// An image of a client's: it delivers given bytes a row at a time, records each call it gets, and can be told to
// misbehave.

#pragma once

#include "orvlog/interface/gop-image.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvlog::test
{

class FakeImage
{
public:
    // Gray, 8 bits, chunky, delivered by callbacks; ready for changes.
    FakeImage(uint32_t width, uint32_t height);
    FakeImage(const FakeImage&) = delete;
    FakeImage& operator=(const FakeImage&) = delete;

    GOP_OperandImagePointer* get()
    {
        return &record;
    }
    GOP_OperandPointer* operand()
    {
        return reinterpret_cast<GOP_OperandPointer*>(&record);
    }
    // The calls since the last time, with a blank behind each.
    std::string take_calls();

    GOP_OperandImage image = {};
    GOP_OperandImagePointer record = {};
    std::vector<uint8_t> bytes;       // all rows
    std::vector<uint8_t> attributes;  // one byte a pixel

    uint32_t prepare_result = 1;
    uint32_t read_result = 1;
    uint32_t finish_result = 1;
    uint32_t reset_result = 1;
    uint32_t keep_result = 1;
    GOP_OperandImagePointer* replacement = nullptr;  // what a prepare puts in the record's place
    int64_t fail_read = -1;                          // the read that fails, counted from 0
    int64_t claim = INT64_MAX;                       // what reads say they have returned, if not the truth
    bool endless = false;
    bool changes_in_place = false;
    std::function<void()> on_call;  // from within each; may be empty
    int64_t* fuse = nullptr;        // counts down with each call; the one that brings it to 0 fails

private:
    static FakeImage* of(const GOP_OperandImagePointer* record)
    {
        return static_cast<FakeImage*>(record->imp_Context);
    }
    void note(const std::string& call);
    uint32_t answer(uint32_t result);
    uint32_t read(uint8_t* buffer, uint32_t size, int32_t* returned, uint8_t* attr, uint32_t attr_size,
                  int32_t* attr_returned);

    std::string calls_;
    size_t position_ = 0;
    size_t attr_position_ = 0;
    int64_t reads_ = 0;
};

}  // namespace orvlog::test
