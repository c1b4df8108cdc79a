// What a command writes: a file that appears only when it is whole, or the standard output.

#pragma once

#include "holv-core/gio/gio-stream.h"

#include <cstddef>
#include <cstdio>
#include <string>

namespace orvlog::tool
{

// Writes beside its name first and takes the name at the end, so that nothing half-written stays behind, not even when
// the user breaks off. What is no ordinary file, such as a device or a pipe, is written as it stands.
class Output
{
public:
    // "-" is the standard output. Check `open` before use.
    explicit Output(const std::string& name);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    bool open() const
    {
        return file_ != nullptr;
    }
    // False once a write has failed.
    bool write(const void* data, size_t size);
    // The same as a stream of the library; a failed write is remembered.
    GIO_Stream* stream()
    {
        return &handle_;
    }
    // The error number of the write that failed; 0 while none has.
    int reason() const
    {
        return reason_;
    }
    // Puts the file in place. False when anything failed; the reason is the error variable's.
    bool finish();

private:
    void discard();

    std::string name_;
    std::string part_;  // empty when the name itself is written
    std::FILE* file_;
    bool failed_ = false;
    int reason_ = 0;
    GIO_StreamOps ops_{};
    GIO_Stream handle_{};
};

}  // namespace orvlog::tool
