#include "inspect/reduce/minimiser.h"

#include "inspect/reduce/log-parts.h"

#include <algorithm>

namespace orvlog::inspect
{

uint64_t count_calls(const std::string& log)
{
    return find_calls(log).size();
}

// Tries to leave out `chunk` parts at a time, one chunk after the other. Those that are tried side by side are so on
// the chance that the ones before them are needed; what is found doesn't depend on how many these are. True if
// something could be left out.
bool Minimiser::reduce_round(size_t chunk, std::vector<size_t>& left, std::vector<bool>& out, const Make& make,
                             size_t halved_at)
{
    bool less = false;
    size_t at = 0;
    while (at < left.size() && !trials_.is_over() && log_.size() > halved_at)
    {
        std::vector<std::string> logs;
        for (size_t begin = at; begin < left.size() && logs.size() < trials_.at_once(); begin += chunk)
        {
            std::vector<bool> tried = out;
            for (size_t i = begin; i < std::min(begin + chunk, left.size()); ++i)
                tried[left[i]] = true;
            logs.push_back(make(tried));
        }
        const std::optional<size_t> good = trials_.first_good(logs);
        if (!good)
        {
            at += logs.size() * chunk;
            continue;
        }
        at += *good * chunk;
        const auto begin = left.begin() + static_cast<std::ptrdiff_t>(at);
        const auto end = left.begin() + static_cast<std::ptrdiff_t>(std::min(at + chunk, left.size()));
        std::for_each(begin, end, [&out](size_t part) { out[part] = true; });
        left.erase(begin, end);
        less = less || logs[*good].size() < log_.size();
        log_ = std::move(logs[*good]);
        if (on_smaller)
            on_smaller(log_);
    }
    return less;
}

Minimiser::Ending Minimiser::reduce(size_t parts, const Make& make)
{
    std::vector<bool> out(parts);
    std::vector<size_t> left(parts);
    for (size_t i = 0; i < parts; ++i)
        left[i] = i;
    const size_t halved_at = log_.size() / 2;
    for (size_t chunk = std::max<size_t>(parts / 2, 1); !left.empty(); chunk = std::max<size_t>(chunk / 2, 1))
    {
        const bool less = reduce_round(chunk, left, out, make, halved_at);
        if (trials_.is_over())
            return Ending::done;
        if (log_.size() <= halved_at)
            return Ending::halved;
        if (chunk == 1 && !less)
            return Ending::done;
    }
    return Ending::done;
}

Minimiser::Ending Minimiser::reduce_pages()
{
    const std::string log = log_;
    const std::vector<CallPart> calls = find_calls(log);
    uint32_t pages = 0;
    for (const CallPart& call : calls)
        pages = std::max(pages, call.page);
    if (pages < 2)
        return Ending::done;
    return reduce(pages,
                  [&](const std::vector<bool>& out)
                  {
                      std::vector<bool> wanted(calls.size());
                      for (size_t i = 0; i < calls.size(); ++i)
                          wanted[i] = !calls[i].is_end && (calls[i].page == 0 || !out[calls[i].page - 1]);
                      return with_calls(log, wanted, {});
                  });
}

Minimiser::Ending Minimiser::reduce_calls()
{
    const std::string log = log_;
    std::vector<CallPart> calls = find_calls(log);
    const size_t all = calls.size();
    std::erase_if(calls, [](const CallPart& call) { return call.is_end; });
    return reduce(calls.size(),
                  [&](const std::vector<bool>& out)
                  {
                      std::vector<bool> wanted(all);
                      for (size_t i = 0; i < calls.size(); ++i)
                          wanted[calls[i].ordinal] = !out[i];
                      return with_calls(log, wanted, {});
                  });
}

// Leaves out the starts and ends of groups, and not what is in them.
Minimiser::Ending Minimiser::reduce_groups()
{
    const std::string log = log_;
    std::vector<CallPart> groups = find_calls(log);
    const std::vector<bool> all(groups.size(), true);
    std::erase_if(groups, [](const CallPart& call) { return call.group.empty(); });
    return reduce(groups.size(),
                  [&](const std::vector<bool>& out)
                  {
                      std::vector<uint64_t> dropped;
                      for (size_t i = 0; i < groups.size(); ++i)
                          if (out[i])
                              dropped.insert(dropped.end(), groups[i].group.begin(), groups[i].group.end());
                      return with_calls(log, all, dropped);
                  });
}

template <typename Find> Minimiser::Ending Minimiser::reduce_parts(Find find)
{
    Ending ending = Ending::halved;
    while (ending == Ending::halved && !trials_.is_over())
    {
        const std::string log = log_;
        const std::vector<Part> parts = find(log);
        ending = reduce(parts.size(), [&](const std::vector<bool>& out) { return without_parts(log, parts, out); });
    }
    return ending;
}

void Minimiser::repeat(Ending (Minimiser::*phase)())
{
    while (!trials_.is_over() && (this->*phase)() == Ending::halved)
        continue;
}

void Minimiser::run()
{
    size_t before = 0;
    do
    {
        before = log_.size();
        repeat(&Minimiser::reduce_pages);
        repeat(&Minimiser::reduce_calls);
        repeat(&Minimiser::reduce_groups);
        reduce_parts(find_clips);
        reduce_parts(find_edges);
        reduce_parts(find_segments);
        reduce_parts(find_image_areas);
    } while (log_.size() < before && !trials_.is_over());
}

}  // namespace orvlog::inspect
