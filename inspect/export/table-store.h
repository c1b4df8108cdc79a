// Where the rows of logs go. Each log goes there once, all of it or nothing, whenever the process ends.

#pragma once

#include "inspect/export/staged-rows.h"

#include <functional>
#include <memory>
#include <string>

namespace orvlog::inspect
{

class TableStore
{
public:
    virtual ~TableStore() = default;

    // A writer of rows in the form that add() takes.
    virtual std::unique_ptr<RowWriter> writer(StagedRows& staged) const = 0;
    // What add() wants done to rows that are complete; may be called by several threads.
    virtual void prepare(StagedRows& staged) const
    {
        (void)staged;
    }
    // Whether a log is there.
    virtual bool has(const std::string& key) = 0;
    // False if the log is there already. What was added is sure to stay once flush() has returned. Both throw
    // std::runtime_error with the name of what failed.
    virtual bool add(const std::string& key, StagedRows& staged) = 0;
    virtual void flush() {}
};

}  // namespace orvlog::inspect
