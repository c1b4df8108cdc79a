#include "inspect/align/temporary-file.h"

#include "clients/system/system.h"

namespace orvlog::inspect
{

FilePtr make_temporary_file()
{
    return FilePtr(system::open_unnamed_file());
}

}  // namespace orvlog::inspect
