// A call of the program while it is put together. For the files of this room alone.

#pragma once

#include "inspect/c-source/c-program.h"
#include "reader/records/records.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace orvlog::inspect
{

struct CProgram::Memory
{
    static constexpr size_t kMost = size_t{64} << 20;

    Memory() : records(arena) {}

    reader::Arena arena;
    reader::RecordReader records;
};

struct CProgram::Call
{
    uint64_t number = 0;
    std::string name;
    std::string address;
    std::string definitions;
    std::string logger_steps;
    std::string renderer_steps;
    std::string loads;
    std::string fields;  // of the record that tells of it
    std::string asked;   // its arguments; empty for a call that can't be made again
    std::shared_ptr<Memory> memory;

    std::string& steps(bool by_logger)
    {
        return by_logger ? logger_steps : renderer_steps;
    }
};

}  // namespace orvlog::inspect
