#include "reader/text/log-files.h"

#include "reader/text/log-frames.h"
#include "reader/text/log-journal.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <vector>

namespace orvlog::reader
{

namespace
{

// The beginning of a file and then some bytes.
class JoinedBytes : public std::streambuf
{
public:
    JoinedBytes(std::unique_ptr<std::ifstream> file, uint64_t size, std::string last)
        : file_(std::move(file)), size_(size), left_(size), last_(std::move(last))
    {
    }

private:
    int_type underflow() override
    {
        const size_t wanted = static_cast<size_t>(std::min<uint64_t>(left_, block_.size()));
        file_->read(block_.data(), static_cast<std::streamsize>(wanted));
        const auto count = wanted > 0 ? file_->gcount() : 0;
        left_ -= static_cast<uint64_t>(count);
        if (count > 0)
            setg(block_.data(), block_.data(), block_.data() + count);
        else if (!last_given_)
            setg(last_.data(), last_.data(), last_.data() + last_.size());
        last_given_ = last_given_ || count == 0;
        return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

    // To the beginning only.
    pos_type seekoff(off_type offset, std::ios::seekdir origin, std::ios::openmode) override
    {
        if (offset != 0 || origin != std::ios::beg)
            return pos_type(off_type(-1));
        file_->clear();
        file_->seekg(0);
        left_ = size_;
        last_given_ = false;
        setg(nullptr, nullptr, nullptr);
        return pos_type(0);
    }
    pos_type seekpos(pos_type place, std::ios::openmode which) override
    {
        return seekoff(off_type(place), std::ios::beg, which);
    }

    std::unique_ptr<std::ifstream> file_;
    uint64_t size_;
    uint64_t left_;
    std::string last_;
    std::vector<char> block_ = std::vector<char>(65536);
    bool last_given_ = false;
};

class JoinedFile : public std::istream
{
public:
    JoinedFile(std::unique_ptr<std::ifstream> file, uint64_t size, std::string last)
        : std::istream(nullptr), bytes_(std::move(file), size, std::move(last))
    {
        rdbuf(&bytes_);
    }

private:
    JoinedBytes bytes_;
};

// An ordinary file that is empty or consists of frames.
bool may_have_journal(const std::string& log)
{
    std::error_code none;
    if (!std::filesystem::is_regular_file(log, none))
        return false;
    char head[4];
    std::ifstream file(log, std::ios::binary);
    file.read(head, sizeof head);
    const auto count = static_cast<size_t>(file.gcount());
    return count == 0 || Frames::begin_with({head, count});
}

}  // namespace

std::unique_ptr<std::istream> open_log(const std::string& log, bool* foreign_journal)
{
    errno = 0;
    auto file = std::make_unique<std::ifstream>(log, std::ios::binary);
    if (!*file)
    {
        errno = errno != 0 ? errno : ENOENT;
        return nullptr;
    }
    Journal journal;
    JournalState state = JournalState::none;
    if (may_have_journal(log))
        state = read_journal(log, journal);
    if (foreign_journal != nullptr)
        *foreign_journal = state == JournalState::foreign;
    if (state != JournalState::belongs)
        return file;
    return std::make_unique<JoinedFile>(std::move(file), journal.frames_end, stored_frame(journal.text));
}

}  // namespace orvlog::reader
