#include "inspect/align/alignment.h"

#include <algorithm>
#include <unordered_map>

namespace orvlog::inspect
{

namespace
{

constexpr size_t kMostCells = size_t{1} << 22;  // of a table
constexpr int kMostEdits = 256;                 // that a search by distance follows
constexpr int kDeepest = 24;
constexpr int kEqualScore = 64;  // more than any number of calls that resemble each other could bring
constexpr int kLeastResemblance = 4;
constexpr uint32_t kFarthestAhead = 64;

struct Range
{
    uint32_t a0;
    uint32_t a1;
    uint32_t b0;
    uint32_t b1;

    uint32_t a() const
    {
        return a1 - a0;
    }
    uint32_t b() const
    {
        return b1 - b0;
    }
    bool one_sided() const
    {
        return a() == 0 || b() == 0;
    }
};

struct Match
{
    uint32_t a;
    uint32_t b;
};

class Aligner
{
public:
    Aligner(std::span<const CallDigest> a, std::span<const CallDigest> b, double tolerance)
        : a_(a), b_(b), tolerance_(tolerance)
    {
    }

    std::vector<Edit> run()
    {
        align({0, static_cast<uint32_t>(a_.size()), 0, static_cast<uint32_t>(b_.size())}, 0);
        return std::move(edits_);
    }

private:
    bool equal(uint32_t a, uint32_t b) const
    {
        return may_be_equal(a_[a], b_[b], tolerance_);
    }
    // Alike enough to be the same call, changed.
    int likeness(uint32_t a, uint32_t b, bool alone) const
    {
        const int common = resemblance(a_[a], b_[b]);
        return common >= kLeastResemblance || (alone && common > 0) ? common : 0;
    }

    void pair(uint32_t a, uint32_t b, bool is_equal)
    {
        edits_.push_back({EditKind::pair, is_equal, false, a, b, Edit::kNowhere});
    }
    void missing(uint32_t from, uint32_t to)
    {
        for (; from < to; ++from)
            edits_.push_back({EditKind::missing, false, false, from, Edit::kNowhere, Edit::kNowhere});
    }
    void added(uint32_t from, uint32_t to)
    {
        for (; from < to; ++from)
            edits_.push_back({EditKind::added, false, false, Edit::kNowhere, from, Edit::kNowhere});
    }

    void align(Range range, int depth)
    {
        while (!range.one_sided() && equal(range.a0, range.b0))
            pair(range.a0++, range.b0++, true);
        uint32_t tail = 0;
        for (; !range.one_sided() && equal(range.a1 - 1, range.b1 - 1); ++tail)
        {
            --range.a1;
            --range.b1;
        }
        align_middle(range, depth);
        for (uint32_t i = 0; i < tail; ++i)
            pair(range.a1 + i, range.b1 + i, true);
    }

    // Neither the first nor the last calls are equal.
    void align_middle(const Range& range, int depth)
    {
        if (range.one_sided())
        {
            missing(range.a0, range.a1);
            return added(range.b0, range.b1);
        }
        if (uint64_t{range.a()} * range.b() <= kMostCells)
            return align_by_table(range);
        if (depth < kDeepest)
        {
            std::vector<Match> anchors = unique_matches(range);
            if (anchors.empty())
                anchors = matches_by_distance(range);
            if (!anchors.empty())
                return align_between(range, anchors, depth);
        }
        align_in_turn(range);
    }

    void align_between(const Range& range, const std::vector<Match>& anchors, int depth)
    {
        Range piece = range;
        for (const Match& anchor : anchors)
        {
            piece.a1 = anchor.a;
            piece.b1 = anchor.b;
            align(piece, depth + 1);
            pair(anchor.a, anchor.b, true);
            piece.a0 = anchor.a + 1;
            piece.b0 = anchor.b + 1;
        }
        piece.a1 = range.a1;
        piece.b1 = range.b1;
        align(piece, depth + 1);
    }

    // Calls that occur once in each log, as many of them as stand in the same order.
    std::vector<Match> unique_matches(const Range& range) const
    {
        struct Seen
        {
            uint32_t a = 0;
            uint32_t b = 0;
            uint8_t in_a = 0;
            uint8_t in_b = 0;
        };
        std::unordered_map<uint64_t, Seen> seen;
        for (uint32_t i = range.a0; i < range.a1; ++i)
        {
            Seen& one = seen[a_[i].whole];
            one.a = i;
            one.in_a = static_cast<uint8_t>(std::min(one.in_a + 1, 2));
        }
        for (uint32_t i = range.b0; i < range.b1; ++i)
        {
            const auto known = seen.find(b_[i].whole);
            if (known == seen.end())
                continue;
            known->second.b = i;
            known->second.in_b = static_cast<uint8_t>(std::min(known->second.in_b + 1, 2));
        }
        std::vector<Match> unique;
        for (uint32_t i = range.a0; i < range.a1; ++i)
        {
            const Seen& one = seen[a_[i].whole];
            if (one.in_a == 1 && one.in_b == 1)
                unique.push_back({i, one.b});
        }
        return longest_rising(unique);
    }

    // `matches` rise in A; the longest choice of them that rises in B, too.
    static std::vector<Match> longest_rising(const std::vector<Match>& matches)
    {
        std::vector<uint32_t> ends;  // of the best choice of each length: which match is its last
        std::vector<uint32_t> before(matches.size(), UINT32_MAX);
        for (uint32_t i = 0; i < matches.size(); ++i)
        {
            const auto place =
                std::ranges::lower_bound(ends, matches[i].b, {}, [&](uint32_t m) { return matches[m].b; });
            if (place != ends.begin())
                before[i] = *(place - 1);
            if (place == ends.end())
                ends.push_back(i);
            else
                *place = i;
        }
        std::vector<Match> chosen;
        for (uint32_t i = ends.empty() ? UINT32_MAX : ends.back(); i != UINT32_MAX; i = before[i])
            chosen.push_back(matches[i]);
        std::ranges::reverse(chosen);
        return chosen;
    }

    // The shortest way from one log to the other, if it has few edits: those calls that it keeps.
    std::vector<Match> matches_by_distance(const Range& range) const
    {
        const auto width = static_cast<int64_t>(range.a());
        const auto height = static_cast<int64_t>(range.b());
        std::vector<std::vector<int64_t>> traces;
        std::vector<int64_t> reach(2 * kMostEdits + 3, 0);  // by diagonal: how far along A
        for (int edits = 0; edits <= kMostEdits; ++edits)
        {
            for (int diagonal = -edits; diagonal <= edits; diagonal += 2)
            {
                int64_t& x = reach[static_cast<size_t>(diagonal) + kMostEdits + 1];
                const int64_t down = reach[static_cast<size_t>(diagonal) + kMostEdits + 2];
                const int64_t right = reach[static_cast<size_t>(diagonal) + kMostEdits] + 1;
                const bool goes_down = diagonal == -edits || (diagonal != edits && right - 1 < down);
                x = edits == 0 ? 0 : goes_down ? down : right;
                while (x < width && x - diagonal < height && x - diagonal >= 0 &&
                       equal(range.a0 + static_cast<uint32_t>(x), range.b0 + static_cast<uint32_t>(x - diagonal)))
                    ++x;
                if (x >= width && x - diagonal >= height)
                    return way_back(range, traces, edits);
            }
            traces.push_back(reach);
        }
        return {};
    }

    static std::vector<Match> way_back(const Range& range, const std::vector<std::vector<int64_t>>& traces, int edits)
    {
        std::vector<Match> matches;
        auto x = static_cast<int64_t>(range.a());
        auto y = static_cast<int64_t>(range.b());
        for (; edits > 0; --edits)
        {
            const std::vector<int64_t>& reach = traces[static_cast<size_t>(edits - 1)];
            const int64_t diagonal = x - y;
            const auto at = [&](int64_t d) { return reach[static_cast<size_t>(d + kMostEdits + 1)]; };
            const bool down = diagonal == -edits || (diagonal != edits && at(diagonal - 1) < at(diagonal + 1));
            const int64_t from = down ? diagonal + 1 : diagonal - 1;
            const int64_t before_x = at(from);
            const int64_t start = down ? before_x : before_x + 1;
            for (; x > start; --x, --y)
                matches.push_back({range.a0 + static_cast<uint32_t>(x - 1), range.b0 + static_cast<uint32_t>(y - 1)});
            x = before_x;
            y = before_x - from;
        }
        for (; x > 0 && y > 0; --x, --y)
            matches.push_back({range.a0 + static_cast<uint32_t>(x - 1), range.b0 + static_cast<uint32_t>(y - 1)});
        std::ranges::reverse(matches);
        return matches;
    }

    enum Step : uint8_t
    {
        skip_a,
        skip_b,
        both_equal,
        both_alike
    };

    int score(uint32_t a, uint32_t b, bool alone, Step* step) const
    {
        const bool is_equal = equal(a, b);
        *step = is_equal ? both_equal : both_alike;
        return is_equal ? kEqualScore : likeness(a, b, alone);
    }

    // The best of all ways. Filled from the end, so that it can be followed from the beginning.
    void align_by_table(const Range& range)
    {
        const size_t width = range.b() + size_t{1};
        std::vector<uint8_t> steps(range.a() * width, skip_a);
        std::vector<int> below(width, 0);
        std::vector<int> present(width, 0);
        const bool alone = range.a() == 1 && range.b() == 1;
        for (uint32_t i = range.a(); i-- > 0;)
        {
            present[range.b()] = 0;
            for (uint32_t j = range.b(); j-- > 0;)
            {
                Step step = both_alike;
                const int gain = score(range.a0 + i, range.b0 + j, alone, &step);
                const int both = gain > 0 ? gain + below[j + 1] : -1;
                int best = std::max(below[j], present[j + 1]);
                if (both < best)
                    step = below[j] >= present[j + 1] ? skip_a : skip_b;
                best = std::max(best, both);
                present[j] = best;
                steps[i * width + j] = step;
            }
            std::swap(below, present);
        }
        uint32_t i = 0;
        uint32_t j = 0;
        while (i < range.a() && j < range.b())
        {
            const uint8_t step = steps[i * width + j];
            if (step == skip_a)
                missing(range.a0 + i, range.a0 + i + 1);
            else if (step == skip_b)
                added(range.b0 + j, range.b0 + j + 1);
            else
                pair(range.a0 + i, range.b0 + j, step == both_equal);
            i += step == skip_b ? 0 : 1;
            j += step == skip_a ? 0 : 1;
        }
        missing(range.a0 + i, range.a1);
        added(range.b0 + j, range.b1);
    }

    // One after the other; what is alike a little farther ahead is taken up there.
    void align_in_turn(Range range)
    {
        while (!range.one_sided())
        {
            if (equal(range.a0, range.b0) || likeness(range.a0, range.b0, false) > 0)
            {
                pair(range.a0, range.b0, equal(range.a0, range.b0));
                ++range.a0;
                ++range.b0;
                continue;
            }
            uint32_t ahead_a = 1;
            uint32_t ahead_b = 1;
            while (ahead_a < range.a() && ahead_a < kFarthestAhead && !equal(range.a0 + ahead_a, range.b0))
                ++ahead_a;
            while (ahead_b < range.b() && ahead_b < kFarthestAhead && !equal(range.a0, range.b0 + ahead_b))
                ++ahead_b;
            const bool in_a = ahead_a < range.a() && ahead_a < kFarthestAhead;
            const bool in_b = ahead_b < range.b() && ahead_b < kFarthestAhead;
            const uint32_t leave_a = in_a && (!in_b || ahead_a <= ahead_b) ? ahead_a : in_b ? 0 : 1;
            const uint32_t leave_b = leave_a > 0 && in_a ? 0 : in_b ? ahead_b : 1;
            missing(range.a0, range.a0 + leave_a);
            added(range.b0, range.b0 + leave_b);
            range.a0 += leave_a;
            range.b0 += leave_b;
        }
        missing(range.a0, range.a1);
        added(range.b0, range.b1);
    }

    std::span<const CallDigest> a_;
    std::span<const CallDigest> b_;
    double tolerance_;
    std::vector<Edit> edits_;
};

// Calls that are missing here and added there were moved; what is added beside its like stands there twice.
void find_moved(std::vector<Edit>& edits, std::span<const CallDigest> a, std::span<const CallDigest> b,
                const CallDigest* before_b)
{
    std::unordered_multimap<uint64_t, size_t> missing;
    for (size_t i = edits.size(); i-- > 0;)
        if (edits[i].kind == EditKind::missing)
            missing.emplace(a[edits[i].a].whole, i);
    for (Edit& edit : edits)
    {
        if (edit.kind != EditKind::added)
            continue;
        const uint64_t whole = b[edit.b].whole;
        const auto found = missing.find(whole);
        if (found != missing.end())
        {
            Edit& other = edits[found->second];
            edit.partner = other.a;
            other.partner = edit.b;
            missing.erase(found);
            continue;
        }
        const CallDigest* before = edit.b > 0 ? &b[edit.b - 1] : before_b;
        const CallDigest* behind = edit.b + size_t{1} < b.size() ? &b[edit.b + 1] : nullptr;
        edit.twice = (before != nullptr && before->whole == whole) || (behind != nullptr && behind->whole == whole);
    }
}

}  // namespace

std::vector<Edit> align(std::span<const CallDigest> a, std::span<const CallDigest> b, double tolerance,
                        const CallDigest* before_b)
{
    std::vector<Edit> edits = Aligner(a, b, tolerance).run();
    find_moved(edits, a, b, before_b);
    return edits;
}

}  // namespace orvlog::inspect
