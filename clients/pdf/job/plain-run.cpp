// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job/plain-run.h"

#include "clients/pdf/null-renderer.h"

#include <algorithm>

namespace orvlog::pdf_client
{

PlainRun::PlainRun(JobState& state) : state_(state), document_(state.open_document())
{
    if (document_ == nullptr)
        return;
    const TimeSpent start = TimeSpent::now();
    if (state.options.renderer)
        renderer_ = state.make_renderer(state.check.second(), false);
    painter_ = std::make_unique<Painter>(renderer_ != nullptr ? renderer_->interface() : null_renderer(), state.sink(),
                                         state.loss_sink());
    run_.colours = &colours_;
    painter_->tell(state.options.check ? &calls_ : nullptr);
    begun_ = painter_->begin_document(1);
    note_time(start);
}

PlainRun::~PlainRun()
{
    const TimeSpent start = TimeSpent::now();
    if (begun_)
    {
        painter_->end_document();
        note_time(start);
        state_.result.summary.time_without_logger = time_;
    }
}

bool PlainRun::page(int number)
{
    const TimeSpent start = TimeSpent::now();
    calls_.clear();
    const bool whole = begun_ && paint_page(state_, *document_, number, *painter_, run_);
    note_time(start);
    return whole;
}

CallDigest& PlainRun::calls()
{
    return calls_;
}

int PlainRun::pages() const
{
    return begun_ ? std::min(state_.options.last_page, document_->page_count()) : 0;
}

const TimeSpent& PlainRun::time() const
{
    return time_;
}

void PlainRun::note_time(const TimeSpent& start)
{
    time_ += TimeSpent::now() - start;
}

}  // namespace orvlog::pdf_client
