// The texts of ICC profiles.

#include "inspect/redact/stand-ins.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orvlog::inspect
{

namespace
{

using Bytes = std::vector<uint8_t>;

constexpr size_t kHeader = 128;
constexpr size_t kTagEntry = 12;

uint32_t read_u32(const Bytes& bytes, size_t at)
{
    if (at + 4 > bytes.size())
        return 0;
    return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

std::string_view signature(const Bytes& bytes, size_t at)
{
    return at + 4 <= bytes.size() ? std::string_view(reinterpret_cast<const char*>(bytes.data()) + at, 4) : "";
}

struct Tag
{
    size_t begin;
    size_t size;
};

// Tags may share their data, but not a part of it: what is a number for one could be text of another.
bool overlap(std::vector<Tag> tags)
{
    std::sort(tags.begin(), tags.end(),
              [](const Tag& a, const Tag& b) { return a.begin != b.begin ? a.begin < b.begin : a.size < b.size; });
    for (size_t i = 1; i < tags.size(); ++i)
    {
        const Tag& before = tags[i - 1];
        const bool same = before.begin == tags[i].begin && before.size == tags[i].size;
        if (!same && before.begin + before.size > tags[i].begin)
            return true;
    }
    return false;
}

// A new profile that takes over from the old one what may be told.
class Redaction
{
public:
    explicit Redaction(const Bytes& before) : before_(before), after_(before.size()) {}

    bool run();
    Bytes& result()
    {
        return after_;
    }
    uint64_t texts() const
    {
        return texts_;
    }

private:
    void take(size_t begin, size_t size)
    {
        const size_t end = std::min(before_.size(), begin + size);
        for (size_t at = begin; at < end; ++at)
            after_[at] = before_[at];
    }
    // An x for each character ahead of the first zero, within these bounds.
    void mask(size_t begin, size_t size)
    {
        const size_t end = std::min(before_.size(), begin + size);
        for (size_t at = begin; at < end && before_[at] != 0; ++at)
            after_[at] = 'x';
        ++texts_;
    }
    void tag(const Tag& tag);
    void description(const Tag& tag);
    bool has_table(const Tag& tag, size_t count) const;
    void translations(const Tag& tag);
    void names(const Tag& tag, size_t head, size_t first, size_t entry);

    const Bytes& before_;
    Bytes after_;
    uint64_t texts_ = 0;
};

// False if the parts of the profile can't be told.
bool Redaction::run()
{
    const size_t size = before_.size();
    const uint32_t tags = read_u32(before_, kHeader);
    if (size < kHeader + 4 || read_u32(before_, 0) != size || signature(before_, 36) != "acsp" ||
        tags > (size - kHeader - 4) / kTagEntry)
        return false;
    std::vector<Tag> found;
    for (size_t i = 0; i < tags; ++i)
    {
        const size_t entry = kHeader + 4 + i * kTagEntry;
        found.push_back({read_u32(before_, entry + 4), read_u32(before_, entry + 8)});
        if (found.back().begin > size || found.back().size > size - found.back().begin || found.back().size < 8 ||
            found.back().begin < kHeader + 4 + tags * kTagEntry)
            return false;
    }
    if (overlap(found))
        return false;
    take(0, kHeader);
    // The maker, the day, the model, the program that made it, a number of its content that no longer fits, and what
    // has no meaning.
    constexpr std::array<Tag, 6> kHidden = {{{4, 4}, {24, 12}, {48, 8}, {80, 4}, {84, 16}, {100, 28}}};
    for (const Tag& part : kHidden)
        std::fill_n(after_.begin() + static_cast<std::ptrdiff_t>(part.begin), part.size, uint8_t{0});
    take(kHeader, 4 + tags * kTagEntry);
    for (const Tag& one : found)
        tag(one);
    return true;
}

void Redaction::tag(const Tag& tag)
{
    // Bytes and whole numbers, which no conversion asks for, may be text, and a day tells of the profile's maker.
    static constexpr std::array<std::string_view, 12> kNumbers = {"curv", "para", "XYZ ", "mft1", "mft2", "mAB ",
                                                                  "mBA ", "sf32", "chrm", "view", "meas", "sig "};
    const std::string_view type = signature(before_, tag.begin);
    take(tag.begin, 8);
    if (std::find(kNumbers.begin(), kNumbers.end(), type) != kNumbers.end())
        take(tag.begin, tag.size);
    else if (type == "text")
        mask(tag.begin + 8, tag.size - 8);
    else if (type == "desc")
        description(tag);
    else if (type == "mluc")
        translations(tag);
    else if (type == "ncl2")
        names(tag, 84, 32, 38 + 2 * std::min<size_t>(read_u32(before_, tag.begin + 16), 15));
    else if (type == "clrt")
        names(tag, 12, 32, 38);
    else
        ++texts_;
}

void Redaction::description(const Tag& tag)
{
    take(tag.begin + 8, std::min<size_t>(4, tag.size - 8));
    const size_t count = read_u32(before_, tag.begin + 8);
    if (tag.size > 12)
        mask(tag.begin + 12, std::min(count, tag.size - 12));
}

// Whether the texts of a mluc lie behind its table.
bool Redaction::has_table(const Tag& tag, size_t count) const
{
    if (count > (tag.size - 16) / 12)
        return false;
    for (size_t i = 0; i < count; ++i)
    {
        const size_t size = read_u32(before_, tag.begin + 20 + 12 * i);
        const size_t begin = read_u32(before_, tag.begin + 24 + 12 * i);
        if (begin < 16 + 12 * count || begin + size > tag.size)
            return false;
    }
    return true;
}

void Redaction::translations(const Tag& tag)
{
    const size_t count = read_u32(before_, tag.begin + 8);
    // A table that doesn't fit would take texts for its own numbers.
    const bool fits = tag.size >= 16 && read_u32(before_, tag.begin + 12) == 12 && has_table(tag, count);
    const size_t table = fits ? count * 12 : 0;
    take(tag.begin + 8, std::min(tag.size - 8, 8 + table));
    for (size_t at = 16 + table; at + 1 < tag.size; at += 2)
    {
        after_[tag.begin + at] = 0;
        after_[tag.begin + at + 1] = 'x';
    }
    ++texts_;
}

// Entries that begin with a name of 32 bytes, behind a head that has names itself in an ncl2.
void Redaction::names(const Tag& tag, size_t head, size_t first, size_t entry)
{
    if (tag.size < head)
        return;
    take(tag.begin + 8, head == 84 ? 12 : 4);
    if (head == 84)
    {
        mask(tag.begin + 20, 32);
        mask(tag.begin + 52, 32);
    }
    for (size_t at = head; at + entry <= tag.size; at += entry)
    {
        mask(tag.begin + at, first);
        take(tag.begin + at + first, entry - first);
    }
}

}  // namespace

uint64_t redact_profile(std::vector<uint8_t>& profile)
{
    Redaction redaction(profile);
    if (redaction.run())
        profile = std::move(redaction.result());
    else
        std::fill(profile.begin(), profile.end(), uint8_t{0});
    return std::max<uint64_t>(redaction.texts(), 1);
}

}  // namespace orvlog::inspect
