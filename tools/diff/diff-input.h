// A log that is read more than once.

#pragma once

#include "inspect/align/log-alignment.h"
#include "tools/shared/temporary-folder.h"

#include <memory>
#include <string>

namespace orvlog::tool
{

class DiffInput
{
public:
    // A path, "-" for the standard input, which is kept in a temporary file, or a URL. Check `open`; `why` has the
    // reason.
    explicit DiffInput(std::string name);

    bool open() const
    {
        return why_.empty();
    }
    const std::string& why() const
    {
        return why_;
    }
    const std::string& name() const
    {
        return name_;
    }
    // Of the file; 0 if it isn't known.
    uint64_t size() const
    {
        return size_;
    }
    orvlog::inspect::OpenLog opener() const;

private:
    std::string name_;
    std::string path_;
    std::string why_;
    uint64_t size_ = 0;
    std::unique_ptr<TemporaryFolder> kept_;
};

}  // namespace orvlog::tool
