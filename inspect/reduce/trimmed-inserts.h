// What is put into a log among what stood there: text, bytes of files as rows, logs of kept images.

#pragma once

#include "inspect/reduce/trimmed-text.h"

namespace orvlog::inspect
{

class TrimmedText::Insert
{
public:
    virtual ~Insert() = default;
    // Appends some more; false when there is none.
    virtual bool step(TrimmedText& owner) = 0;
};

class TrimmedText::TextInsert : public Insert
{
public:
    explicit TextInsert(std::string text) : text_(std::move(text)) {}
    bool step(TrimmedText& owner) override;

private:
    std::string text_;
};

// A BufferUInt8 with bytes of a file; nothing for no bytes.
class TrimmedText::BytesInsert : public Insert
{
public:
    BytesInsert(std::unique_ptr<std::istream> file, uint64_t count, std::string indent)
        : file_(std::move(file)), count_(count), left_(count), indent_(std::move(indent))
    {
    }
    bool step(TrimmedText& owner) override;

private:
    std::unique_ptr<std::istream> file_;
    uint64_t count_;
    uint64_t left_;
    std::string indent_;
    bool begun_ = false;
};

// The log of a kept image.
class TrimmedText::FragmentInsert : public Insert
{
public:
    explicit FragmentInsert(reader::LogFile file)
        : file_(std::move(file)), scan_(*file_.stream, reader::LogForm::fragment)
    {
    }
    bool step(TrimmedText& owner) override;

private:
    reader::LogFile file_;
    LogScan scan_;
};

}  // namespace orvlog::inspect
