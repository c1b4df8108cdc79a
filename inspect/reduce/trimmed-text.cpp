#include "inspect/reduce/trimmed-text.h"

#include "clients/system/system.h"
#include "inspect/reduce/trimmed-inserts.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <stdexcept>

namespace orvlog::inspect
{

namespace
{

using reader::Event;
using reader::EventKind;

constexpr std::string_view kWarning = "ORVLOG: WARNING: ";
constexpr std::string_view kAheadOfItsCall = "ORVLOG: WARNING: ORV_memory_context_start ";
constexpr size_t kMostHeld = size_t{1} << 24;

uint32_t number(const Event& event, std::string_view name)
{
    return static_cast<uint32_t>(reader::to_uint(attribute(event, name)));
}

}  // namespace

TrimmedText::TrimmedText(std::istream& log, TrimOptions options) : options_(std::move(options)), scan_(log) {}

TrimmedText::~TrimmedText()
{
    if (tickets_ != nullptr)
        std::fclose(tickets_);
}

TrimmedText::int_type TrimmedText::underflow()
{
    out_.clear();
    constexpr size_t kEnough = size_t{1} << 15;
    while (!ended_ && out_.size() < kEnough)
    {
        if (inserts_.empty())
        {
            ended_ = !step();
            continue;
        }
        // What is put in may ask for more to be put in ahead of what is left of it.
        std::unique_ptr<Insert> insert = std::move(inserts_.back());
        inserts_.pop_back();
        const size_t place = inserts_.size();
        if (insert->step(*this))
            inserts_.insert(inserts_.begin() + static_cast<std::ptrdiff_t>(place), std::move(insert));
    }
    setg(out_.data(), out_.data(), out_.data() + out_.size());
    return out_.empty() ? traits_type::eof() : traits_type::to_int_type(out_[0]);
}

bool TrimmedText::step()
{
    Event event;
    if (!scan_.next(event))
    {
        out_ += held_;
        held_.clear();
        return false;
    }
    switch (event.kind)
    {
    case EventKind::open:
        open(event, scan_.before(), scan_.text());
        break;
    case EventKind::close:
        close(event, scan_.before(), scan_.text());
        break;
    case EventKind::row:
        if (ticket_.depth != 0)
            ticket_text(scan_.text());
        if (keeps_here())
            out_.append(scan_.before()).append(scan_.text());
        break;
    case EventKind::comment:
        comment(event, scan_.before(), scan_.text());
        break;
    case EventKind::damage:
        if (keeps_here())
            out_ += scan_.before();
        break;
    }
    return true;
}

// An image's callbacks stay with its operand; those of a font engine with the call ahead of them.
bool TrimmedText::keeps_stray(const Event& event) const
{
    if (event.name.starts_with("GOP_Image"))
        return numbers_.image(number(event, "Id")).now != 0;
    if (is_callback_name(event.name))
        return kept_last_ && numbers_.has_engine(number(event, "GfpId"));
    return kept_last_;
}

void TrimmedText::begin_unit(const Event& event)
{
    const size_t depth = in_callback_.size();
    const bool is_call = reader::is_call_name(event.name);
    if (!is_call && (!units_.empty() || depth != 2))
        return;
    const bool outermost = units_.empty();
    const bool keep = options_.plan == nullptr || (is_call ? options_.plan->keeps(calls_) : keeps_stray(event));
    units_.push_back({depth, keep, is_call});
    calls_ += is_call ? 1 : 0;
    if (!outermost)
        return;
    offsets_.clear();
    renamed_.clear();
    if (!is_call)
        return;
    // What the client has said ahead of its first call is about the job.
    if (keep || calls_ == 1)
        out_ += held_;
    held_.clear();
    kept_last_ = keep;
}

void TrimmedText::open(const Event& event, std::string_view before, std::string_view text)
{
    in_callback_.push_back((!in_callback_.empty() && in_callback_.back()) || is_callback_name(event.name));
    const bool in_callback = in_callback_.size() > 1 && in_callback_[in_callback_.size() - 2];
    begin_unit(event);
    if (event.name == "GCM_ColorTicket")
        begin_ticket(event);
    if (!keeps_here())
    {
        numbers_.leave_out(event, in_callback);
        return;
    }
    out_ += before;
    if (text.empty())
        return;
    TagEdit tag(text);
    numbers_.keep(event, in_callback, tag);
    const size_t at = inserts_.size();
    edit_files(event, tag, text);
    std::reverse(inserts_.begin() + static_cast<std::ptrdiff_t>(at), inserts_.end());
    out_ += tag.result();
}

void TrimmedText::close(const Event& event, std::string_view before, std::string_view text)
{
    const size_t depth = in_callback_.size();
    if (ticket_.depth == depth && depth != 0)
        end_ticket();
    if (keeps_here())
        out_.append(before).append(text);
    if (kept_image_ != nullptr && kept_image_depth_ == depth)
    {
        inserts_.push_back(std::make_unique<FragmentInsert>(std::move(*kept_image_)));
        kept_image_.reset();
    }
    if (!units_.empty() && units_.back().depth == depth)
    {
        if (units_.back().is_call && units_.back().keep)
            numbers_.end_call(event.name);
        units_.pop_back();
    }
    if (!in_callback_.empty())
        in_callback_.pop_back();
}

// A comment of the client's between two calls goes with the call behind it, a warning with what it stands behind.
void TrimmedText::comment(const Event& event, std::string_view before, std::string_view text)
{
    const bool ahead = !event.text.starts_with(kWarning) || event.text.starts_with(kAheadOfItsCall);
    if (options_.plan == nullptr || !units_.empty())
    {
        if (keeps_here())
            out_.append(before).append(text);
        return;
    }
    if (ahead && held_.size() + text.size() < kMostHeld)
        held_.append(before).append(text);
    else if (!ahead && kept_last_)
        out_.append(before).append(text);
}

void TrimmedText::begin_ticket(const Event& event)
{
    if (ticket_.depth != 0)
        return;
    ticket_ = {};
    ticket_.id = number(event, "id");
    ticket_.depth = in_callback_.size();
    ticket_.keep = keeps_here();
    ticket_.first = ticket_.keep && ticket_.id != 0 && !numbers_.has_ticket(ticket_.id);
    if (ticket_.keep || ticket_.id == 0)
        return;
    if (tickets_ == nullptr)
        tickets_ = system::open_unnamed_file();
    if (tickets_ == nullptr || !system::seek(tickets_, 0, SEEK_END))
        throw std::runtime_error("no temporary file for the tickets of what is left out");
    ticket_.begin = system::tell(tickets_);
}

void TrimmedText::ticket_text(std::string_view text)
{
    ticket_.has_text = true;
    if (ticket_.keep || ticket_.id == 0)
        return;
    if (std::fwrite(text.data(), 1, text.size(), tickets_) != text.size())
        throw std::runtime_error("no room for the tickets of what is left out");
}

void TrimmedText::end_ticket()
{
    if (ticket_.keep && ticket_.first && !ticket_.has_text)
    {
        const auto known = spooled_.find(ticket_.id);
        if (known != spooled_.end() && system::seek(tickets_, known->second.begin, SEEK_SET))
        {
            const auto size = static_cast<size_t>(known->second.end - known->second.begin);
            const size_t at = out_.size();
            out_.resize(at + size);
            out_.resize(at + std::fread(out_.data() + at, 1, size, tickets_));
        }
    }
    else if (!ticket_.keep && ticket_.id != 0 && ticket_.has_text)
        spooled_.try_emplace(ticket_.id, Spooled{ticket_.begin, system::tell(tickets_)});
    ticket_ = {};
}

}  // namespace orvlog::inspect
