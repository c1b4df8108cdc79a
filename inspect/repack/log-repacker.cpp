#include "inspect/repack/log-repacker.h"

#include "clients/system/system.h"
#include "inspect/repack/data-runs.h"
#include "inspect/repack/index-builder.h"
#include "inspect/repack/passing-text.h"
#include "reader/text/log-frames.h"
#include "reader/text/log-repeats.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace orvlog::inspect
{

namespace
{

using reader::Element;
using reader::LogIndex;

constexpr size_t kFrameText = size_t{1} << 20;
constexpr size_t kPageText = size_t{1} << 18;  // a page doesn't begin a frame if the one before would be shorter
constexpr size_t kMostText = size_t{1} << 23;  // of a frame; a longer call takes several
constexpr size_t kMostRepeated = size_t{1} << 20;

// Frames of data that may come again, outside memory.
class Copies
{
public:
    uint64_t add(const std::string& bytes)
    {
        if (file_ == nullptr)
            file_.reset(system::open_unnamed_file());
        const uint64_t place = end_;
        const bool good = file_ != nullptr && system::seek(file_.get(), 0, SEEK_END) &&
                          std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
        if (!good)
            throw std::system_error(errno, std::generic_category(), "a temporary file");
        end_ += bytes.size();
        return place;
    }
    std::string read(uint64_t place, size_t size)
    {
        std::string bytes(size, '\0');
        const bool good = system::seek(file_.get(), static_cast<int64_t>(place), SEEK_SET) &&
                          std::fread(bytes.data(), 1, size, file_.get()) == size;
        if (!good)
            throw std::system_error(errno, std::generic_category(), "a temporary file");
        return bytes;
    }

private:
    struct Close
    {
        void operator()(std::FILE* file) const
        {
            std::fclose(file);
        }
    };

    std::unique_ptr<std::FILE, Close> file_;
    uint64_t end_ = 0;
};

struct Known
{
    reader::RepeatedFrame frame;
    uint64_t copy = 0;
};

class Repacker
{
public:
    Repacker(std::istream& log, const RepackOptions& options)
        : options_(options), kept_(log),
          builder_([this](uint64_t begin, uint64_t end) { return kept_.find(begin, end); })
    {
    }

    RepackOutcome run()
    {
        std::istream text(&kept_);
        reader::ElementReader elements(text, reader::LogForm::log, reader::Data::skip);
        elements.on_damage = [this](const reader::Damage& damage)
        {
            ++outcome_.damage;
            builder_.add(damage);
        };
        elements.on_comment = [this](const reader::Comment& comment) { builder_.add(comment); };
        while (const Element* element = outcome_.written ? elements.next() : nullptr)
        {
            add(*element);
            if (options_.progress)
                options_.progress(kept_.input().bytes_used());
        }
        kept_.read_rest();
        outcome_.is_log = elements.events().is_log();
        outcome_.ending = kept_.input().ending();
        outcome_.text_bytes = kept_.end();
        if (!outcome_.is_log || !outcome_.written)
            return outcome_;
        builder_.finish(kept_.end(), elements.root());
        cut(kept_.end());
        finish();
        return outcome_;
    }

private:
    void add(const Element& element)
    {
        const uint64_t begin = element.place.byte;
        const bool page = element.name == "ORV_face_start";
        const bool torn = frame_.within && begin - cut_ >= kPageText / 4;
        const bool ends = begin - cut_ >= (page ? kPageText : kFrameText) || torn;
        calls_ = builder_.index().calls;
        builder_.add(element);
        const LogIndex& index = builder_.index();
        const bool is_call = reader::is_call_name(element.name);
        if (ends || begin == cut_)
        {
            cut(begin);
            begin_frame(false);
        }
        calls_ = index.calls;
        if (is_call && element.has("id") && frame_.first_id == reader::kNoNumber && !frame_.within)
            frame_.first_id = std::strtoull(std::string(element.value("id")).c_str(), nullptr, 10);
        if (options_.dedupe && !builder_.keeps_last())
            fold(element);
    }

    void begin_frame(bool within)
    {
        frame_.calls = calls_;
        frame_.within = within;
        frame_.first_id = reader::kNoNumber;
    }

    // Data that stands before becomes a repeat of it.
    void fold(const Element& element)
    {
        const auto text = [this](uint64_t begin, uint64_t end) { return kept_.text(begin, end); };
        for (const DataRun& run : data_runs(element, text))
        {
            cut(run.begin);
            begin_frame(true);
            const auto known = known_.find(run.hash);
            if (known != known_.end())
                put_repeat(known->second, run.end);
            else
                put_first(run);
            begin_frame(true);
        }
    }

    void put_first(const DataRun& run)
    {
        const std::string_view text = kept_.text(run.begin, run.end);
        if (text.size() > reader::kLargestFrameText || known_.size() >= kMostRepeated)
        {
            cut(run.end);
            return;
        }
        const std::string bytes = reader::compressed_frame(text, options_.level);
        const auto size = static_cast<uint32_t>(text.size());
        known_[run.hash] = {{outcome_.file_bytes, static_cast<uint32_t>(bytes.size()), size}, copies_.add(bytes)};
        put_frame(bytes, text, false);
    }

    void put_repeat(const Known& known, uint64_t end)
    {
        ++outcome_.repeats;
        const std::string_view text = kept_.text(cut_, end);
        const reader::RepeatedFrame& earlier = known.frame;
        const std::string bytes = copies_.read(known.copy, earlier.file_size);
        const std::optional<std::string> before = reader::frame_text(bytes, earlier.text_size);
        if (!before)
            throw std::runtime_error("a temporary file can't be read");
        put_frame(reader::repeat_frame(text, options_.level, earlier, *before), text, true);
    }

    // Puts what there is up to `end` into frames.
    void cut(uint64_t end)
    {
        while (cut_ < end && outcome_.written)
        {
            const std::string_view text = kept_.text(cut_, std::min(end, cut_ + kMostText));
            put_frame(reader::compressed_frame(text, options_.level), text, false);
            begin_frame(true);
        }
    }

    void put_frame(const std::string& bytes, std::string_view text, bool repeated)
    {
        frame_.place = outcome_.file_bytes;
        frame_.file_size = static_cast<uint32_t>(bytes.size());
        frame_.text_size = static_cast<uint32_t>(text.size());
        frame_.repeated = repeated;
        frame_.byte = cut_;
        frame_.checksum = 0;
        for (size_t i = 0; i < 4 && bytes.size() >= 4; ++i)
            frame_.checksum |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[bytes.size() - 4 + i])) << 8 * i;
        builder_.index().frames.push_back(frame_);
        frame_.line += static_cast<uint64_t>(std::ranges::count(text, '\n'));
        cut_ += text.size();
        kept_.drop(cut_);
        write(bytes);
    }

    void write(const std::string& bytes)
    {
        outcome_.written = outcome_.written && !bytes.empty() && options_.write(bytes.data(), bytes.size());
        outcome_.file_bytes += bytes.size();
    }

    void finish()
    {
        const LogIndex& index = builder_.index();
        const std::string packed = reader::write_log_index(index);
        if (!packed.empty())
            write(packed);
        write(reader::write_seek_table(index, static_cast<uint32_t>(packed.size())));
        outcome_.has_pages = index.has_pages;
    }

    const RepackOptions& options_;
    PassingText kept_;
    IndexBuilder builder_;
    RepackOutcome outcome_;
    LogIndex::Frame frame_;  // that is being filled
    uint64_t cut_ = 0;       // text up to there is in frames
    uint64_t calls_ = 0;     // that begin before what is being put into frames ends
    std::map<uint64_t, Known> known_;
    Copies copies_;
};

}  // namespace

RepackOutcome repack(std::istream& log, const RepackOptions& options)
{
    return Repacker(log, options).run();
}

}  // namespace orvlog::inspect
