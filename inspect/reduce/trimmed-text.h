// The text of a log of which calls are left out. What stays stands as it stood, but for its numbers, which count again
// without gaps; the text of a ticket moves to the first call that stays and refers to it; logs of kept images are put
// in, as a merge does it; and the files of image data are renamed or put in, too.

#pragma once

#include "inspect/reduce/keep-plan.h"
#include "inspect/reduce/log-scan.h"
#include "inspect/reduce/renumber.h"
#include "reader/text/log-files.h"

#include <cstdio>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

struct TrimOptions
{
    const KeepPlan* plan = nullptr;  // of this log; without one all stays
    // The files that the log names; without a function there are none.
    std::function<reader::LogFile(const std::string& name, reader::LogFileKind kind)> open_file;
    // Takes a file of image data to where the new log has it and gives its new name; empty if it could not be read.
    // `kind` is "dir", "img" or "attr", `number` what the logger would have counted. Without a function the bytes are
    // put into the log.
    std::function<std::string(const std::string& name, const std::string& kind, uint64_t number)> take_file;
    // Told of each file that is missing; may be empty.
    std::function<void(const std::string& line)> complain;
};

class TrimmedText : public std::streambuf
{
public:
    // `log` must be in binary mode; it lives as long as this, as does the plan.
    TrimmedText(std::istream& log, TrimOptions options);
    ~TrimmedText() override;
    TrimmedText(const TrimmedText&) = delete;
    TrimmedText& operator=(const TrimmedText&) = delete;

    // What follows tells something once all has been read.
    bool is_log() const
    {
        return scan_.is_log();
    }
    bool is_cut() const
    {
        return scan_.is_cut();
    }
    uint64_t damage() const
    {
        return scan_.damage();
    }
    // Files that are missing, too short, or not to be read.
    uint64_t missing() const
    {
        return missing_;
    }
    uint64_t bytes_used() const
    {
        return scan_.bytes_used();
    }

private:
    class Insert;
    class TextInsert;
    class BytesInsert;
    class FragmentInsert;

    // A call, or a callback that stands in none.
    struct Unit
    {
        size_t depth = 0;
        bool keep = true;
        bool is_call = false;
    };

    // An element of a ticket's number whose text may have to be brought here.
    struct Ticket
    {
        uint32_t id = 0;
        size_t depth = 0;  // 0: there is none
        bool keep = true;
        bool first = false;  // of those that stay
        bool has_text = false;
        int64_t begin = 0;  // in tickets_
    };

    // Where the text of a ticket lies in the file of those that were left out.
    struct Spooled
    {
        int64_t begin = 0;
        int64_t end = 0;
    };

    int_type underflow() override;
    bool step();
    bool keeps_here() const
    {
        return units_.empty() || units_.back().keep;
    }
    void begin_unit(const reader::Event& event);
    bool keeps_stray(const reader::Event& event) const;
    void open(const reader::Event& event, std::string_view before, std::string_view text);
    void close(const reader::Event& event, std::string_view before, std::string_view text);
    void comment(const reader::Event& event, std::string_view before, std::string_view text);
    void begin_ticket(const reader::Event& event);
    void ticket_text(std::string_view text);
    void end_ticket();
    void edit_files(const reader::Event& event, TagEdit& tag, std::string_view text);
    void edit_direct(const reader::Event& event, TagEdit& tag, std::string_view text);
    void edit_read(const reader::Event& event, TagEdit& tag, std::string_view text);
    bool take(const reader::Event& event, const char* attribute_name, const char* kind, TagEdit& tag);
    std::unique_ptr<Insert> bytes_of(const std::string& name, std::string_view indent, uint64_t begin, uint64_t count);
    void begin_keep(const reader::Event& event, TagEdit& tag);
    void miss(const std::string& line);

    TrimOptions options_;
    LogScan scan_;
    Renumber numbers_;
    std::string out_;
    std::vector<std::unique_ptr<Insert>> inserts_;  // what comes ahead of the rest of the log, the next one last
    std::vector<Unit> units_;
    std::vector<bool> in_callback_;  // for each open element
    uint64_t calls_ = 0;
    bool kept_last_ = true;
    std::string held_;  // comments that stay if the next call does
    Ticket ticket_;
    std::FILE* tickets_ = nullptr;
    std::map<uint32_t, Spooled> spooled_;
    std::map<std::string, uint64_t> offsets_;      // of the call: how far its files have been read
    std::map<std::string, std::string> renamed_;   // of the call
    std::unique_ptr<reader::LogFile> kept_image_;  // to be put in behind the element that names it
    size_t kept_image_depth_ = 0;
    bool in_fragment_ = false;  // what is read is the log of a kept image
    uint64_t missing_ = 0;
    bool ended_ = false;
};

}  // namespace orvlog::inspect
