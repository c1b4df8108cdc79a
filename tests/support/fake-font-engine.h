// A font engine whose strings start well and have no glyphs, and which counts how often it is asked for its name.

#pragma once

#include "orvlog/interface/gfi-font.h"

#include <cstdint>

namespace orvlog::test
{

class FakeFontEngine
{
public:
    explicit FakeFontEngine(const char* id = nullptr);
    FakeFontEngine(const FakeFontEngine&) = delete;
    FakeFontEngine& operator=(const FakeFontEngine&) = delete;

    const GFI_FontEngineTable* get() const
    {
        return &table_;
    }
    GFI_FontEngineTable* table()
    {
        return &table_;
    }
    uint32_t asked_for_id() const
    {
        return asked_for_id_;
    }

private:
    GFI_FontEngineTable table_;
    const char* id_;
    uint32_t asked_for_id_ = 0;
};

}  // namespace orvlog::test
