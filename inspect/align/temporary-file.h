// Records of one kind in a temporary file that nobody else sees, so that memory doesn't grow with their number.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <type_traits>
#include <vector>

namespace orvlog::inspect
{

struct CloseFile
{
    void operator()(std::FILE* file) const
    {
        std::fclose(file);
    }
};

using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

// A file without a name in the folder for temporary files; null if there can be none.
FilePtr make_temporary_file();

template <typename Record> class RecordFile
{
    static_assert(std::is_trivially_copyable_v<Record>);

public:
    // False if there is no room for it.
    bool add(const Record& record)
    {
        good_ = good_ && std::fwrite(&record, sizeof record, 1, file_.get()) == 1;
        size_ += good_ ? 1 : 0;
        return good_;
    }
    // Before the first read.
    bool rewind()
    {
        good_ = good_ && std::fflush(file_.get()) == 0 && std::fseek(file_.get(), 0, SEEK_SET) == 0;
        return good_;
    }
    // Up to `count` further ones; fewer at the end, and where they cannot be read.
    size_t read(std::vector<Record>& records, size_t count)
    {
        const size_t before = records.size();
        records.resize(before + count);
        const size_t got = good_ ? std::fread(&records[before], sizeof(Record), count, file_.get()) : 0;
        records.resize(before + got);
        return got;
    }
    bool read(Record& record)
    {
        return good_ && std::fread(&record, sizeof record, 1, file_.get()) == 1;
    }
    bool good() const
    {
        return good_;
    }
    uint64_t size() const
    {
        return size_;
    }

private:
    FilePtr file_ = make_temporary_file();
    uint64_t size_ = 0;
    bool good_ = file_ != nullptr;
};

}  // namespace orvlog::inspect
