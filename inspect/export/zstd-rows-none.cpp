#include "inspect/export/zstd-rows.h"

#include <stdexcept>

namespace orvlog::inspect
{

Spill to_zstd(Spill& /*rows*/)
{
    throw std::runtime_error("this build has no Zstandard, which these rows are compressed with");
}

}  // namespace orvlog::inspect
