#include "reader/text/log-bytes.h"

#include "orvlog/log/ahc-coder.h"
#include "orvlog/log/orvlog-compressed-stream.h"
#include "reader/text/log-frames.h"
#include "reader/text/log-repeats.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kCodedPrefix(ORVLOG_CODED_PREFIX, ORVLOG_CODED_PREFIX_SIZE);
constexpr std::string_view kRootTag = "<ORV";
constexpr size_t kHeadSize = 64;
constexpr size_t kBlockSize = 65536;
// A whole coded log ends in no more zero bytes than fewer of these, since its last symbols differ.
constexpr uint64_t kFewestCodedZeros = 16;

// The first whole bytes of the coded form of a log's text.
std::string coded_root_tag()
{
    GMM_Allocator memory = {};
    memory.gmm_Alloc = [](GMM_Allocator*, uint64_t size, uint32_t) { return std::malloc(static_cast<size_t>(size)); };
    memory.gmm_Free = [](GMM_Allocator*, void* block) { std::free(block); };
    AdaptiveHuffmanCoder* coder = AHC_EncoderCreate(&memory);
    if (coder == nullptr)
        return {};
    uint8_t bytes[16];
    AHC_SetInput(coder, reinterpret_cast<const uint8_t*>(kRootTag.data()), static_cast<uint32_t>(kRootTag.size()));
    const int32_t count = AHC_Encode(coder, bytes, sizeof bytes);
    AHC_EncoderFinish(coder);
    return {reinterpret_cast<const char*>(bytes), static_cast<size_t>(std::max(count, 0))};
}

// How many zero bytes at the end are sure not to be the file's own.
uint64_t zeros_of_none(std::string_view head)
{
    if (!head.starts_with(kRootTag))
        return kRootTag.starts_with(head.substr(0, head.find_last_not_of('\0') + 1)) ? 1 : UINT64_MAX;
    if (!head.starts_with(kCodedPrefix))
        return 1;
    head.remove_prefix(kCodedPrefix.size());
    if (head.starts_with(kRootTag))
        return 1;
    static const std::string coded_root = coded_root_tag();
    return !coded_root.empty() && head.starts_with(coded_root) ? kFewestCodedZeros : UINT64_MAX;
}

}  // namespace

LogBytes::LogBytes(std::istream& source) : source_(source) {}

LogBytes::~LogBytes() = default;

bool LogBytes::is_damaged() const
{
    return frames_ != nullptr && frames_->is_damaged();
}

uint64_t LogBytes::bytes_used() const
{
    return frames_ != nullptr ? frames_->bytes_used() : source_read_;
}

void LogBytes::start()
{
    started_ = true;
    const auto take_head = [this]
    {
        std::string head(kHeadSize, '\0');
        head.resize(read_text(head.data(), head.size()));
        return head;
    };
    std::string head = take_head();
    if (Frames::begin_with(head))
    {
        head_ = std::move(head);
        frames_ = std::make_unique<Frames>([this](char* bytes, size_t size) { return read_source(bytes, size); },
                                           [this](uint64_t place, std::string_view frame)
                                           { return read_repeat(place, frame); });
        head = take_head();
        fewest_zeros_ = zeros_of_none(head);
        behind_ = std::move(head);
        return;
    }
    fewest_zeros_ = zeros_of_none(head);
    head_ = std::move(head);
}

// The file from its first byte.
size_t LogBytes::read_source(char* bytes, size_t size)
{
    const size_t from_head = std::min(size, head_.size() - head_next_);
    std::copy_n(head_.data() + head_next_, from_head, bytes);
    head_next_ += from_head;
    source_.read(bytes + from_head, static_cast<std::streamsize>(size - from_head));
    const auto count = static_cast<size_t>(source_.gcount());
    source_read_ += count;
    return from_head + count;
}

// What stands before in the file, which is no pipe then.
std::optional<std::string> LogBytes::read_repeat(uint64_t place, std::string_view frame)
{
    source_.clear();
    const auto present = source_.tellg();
    if (present < 0)
        return std::nullopt;
    std::optional<std::string> text = repeat_text(source_, place, frame);
    source_.clear();
    source_.seekg(present);
    return text;
}

size_t LogBytes::read_text(char* bytes, size_t size)
{
    return frames_ != nullptr ? frames_->read(bytes, size) : read_source(bytes, size);
}

size_t LogBytes::read(char* bytes, size_t size)
{
    if (!started_)
        start();
    size_t done = 0;
    while (done < size)
        if (zeros_due_ > 0)
        {
            const auto count = static_cast<size_t>(std::min<uint64_t>(zeros_due_, size - done));
            std::memset(bytes + done, 0, count);
            zeros_due_ -= count;
            done += count;
        }
        else if (behind_next_ < behind_.size())
        {
            const size_t count = std::min(behind_.size() - behind_next_, size - done);
            std::copy_n(behind_.data() + behind_next_, count, bytes + done);
            behind_next_ += count;
            done += count;
        }
        else if (!at_end_)
            done += take(bytes + done, size - done);
        else
            break;
    return done;
}

// Holds back zero bytes until it shows whether something follows.
size_t LogBytes::take(char* bytes, size_t size)
{
    const size_t count = read_text(bytes, size);
    if (count == 0)
    {
        at_end_ = true;
        zeros_due_ = zeros_ < fewest_zeros_ ? zeros_ : 0;
        return 0;
    }
    size_t sure = count;
    while (sure > 0 && bytes[sure - 1] == '\0')
        --sure;
    if (sure == 0)
    {
        zeros_ += count;
        return 0;
    }
    const uint64_t before = zeros_;
    zeros_ = count - sure;
    if (before == 0)
        return sure;
    zeros_due_ = before;
    behind_.assign(bytes, sure);
    behind_next_ = 0;
    return 0;
}

std::streamsize LogBytes::xsgetn(char* bytes, std::streamsize size)
{
    const auto wanted = static_cast<size_t>(size);
    const size_t seen = std::min(wanted, static_cast<size_t>(egptr() - gptr()));
    std::copy_n(gptr(), seen, bytes);
    gbump(static_cast<int>(seen));
    return static_cast<std::streamsize>(seen + read(bytes + seen, wanted - seen));
}

LogBytes::int_type LogBytes::underflow()
{
    if (gptr() == egptr())
    {
        block_.resize(kBlockSize);
        const size_t count = read(block_.data(), block_.size());
        setg(block_.data(), block_.data(), block_.data() + count);
    }
    return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

}  // namespace orvlog::reader
