// A log that is read more than once.

#pragma once

#include "tools/shared/indexed-log.h"
#include "tools/shared/temporary-folder.h"

#include <cstdint>
#include <istream>
#include <memory>
#include <string>

namespace orvlog::tool
{

class LogAgain
{
public:
    // A path, "-" for the standard input, or a URL. What can't be read twice is held in a temporary file.
    explicit LogAgain(const std::string& name) : name_(name) {}

    // False with the reason in why().
    bool open();
    const std::string& why() const
    {
        return why_;
    }
    // From now on passes read this page, with what it needs, if the log has an index.
    void keep_to_page(uint32_t page)
    {
        page_ = page;
    }
    // Bytes of the file; 0 when the size is not known.
    uint64_t size() const
    {
        return size_;
    }
    // Where its bytes stand while this is there.
    const std::string& path() const
    {
        return path_;
    }
    // The log from its beginning; null with the reason in why(). What it reads from lives as long as this.
    std::unique_ptr<std::istream> pass();
    // The same, kept here: good until the next call. Throws std::system_error if it can't be opened again.
    std::istream& from_start();

private:
    bool hold();
    std::unique_ptr<std::istream> page_alone();

    std::string name_;
    std::string path_;
    std::string why_;
    uint64_t size_ = 0;
    uint32_t page_ = 0;  // 0: all
    std::unique_ptr<IndexedLog> indexed_;
    std::unique_ptr<TemporaryFolder> folder_;
    std::unique_ptr<std::istream> stream_;
};

}  // namespace orvlog::tool
