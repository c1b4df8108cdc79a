// A log that is read more than once.

#pragma once

#include "tools/shared/source.h"

#include <istream>
#include <memory>
#include <sstream>
#include <string>

namespace tool
{

class LogAgain
{
public:
    // A path, "-" or a URL; what can be read only once, or is far away, is held in memory. Check `open`; `why` has one
    // line of reason.
    explicit LogAgain(const std::string& name);

    bool open() const
    {
        return source_->open();
    }
    const std::string& why() const
    {
        return source_->why();
    }
    uint64_t size() const
    {
        return source_->size();
    }
    // The log from its beginning. What was given before is closed.
    std::istream& from_start();

private:
    std::string name_;
    std::unique_ptr<Source> source_;
    std::unique_ptr<std::stringstream> held_;
    bool fresh_ = true;
};

}  // namespace tool
