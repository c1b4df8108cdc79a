#include "inspect/export/export-run.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <new>
#include <thread>

namespace orvlog::inspect
{

namespace
{

struct Staged
{
    ExportResult result;
    std::unique_ptr<StagedRows> rows;  // null if there is nothing to be added
};

class Run
{
public:
    Run(const std::vector<ExportInput>& inputs, TableStore& store, const ExportPlan& plan)
        : inputs_(inputs), store_(store), plan_(plan), threads_(std::max(1U, plan.threads))
    {
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run()
    {
        stop();
    }

    void run()
    {
        for (size_t i = 0; i < std::min<size_t>(threads_, inputs_.size()); ++i)
            workers_.emplace_back([this] { work(); });
        bool on = true;
        for (size_t i = 0; on && i < inputs_.size(); ++i)
        {
            Staged staged = wait_for(i);
            add(staged);
            on = !plan_.on_result || plan_.on_result(i, staged.result);
        }
        stop();
        const std::lock_guard lock(store_mutex_);
        store_.flush();
    }

private:
    void work()
    {
        for (;;)
        {
            size_t input = 0;
            {
                std::unique_lock lock(mutex_);
                // No farther ahead of what is added than keeps everybody busy.
                changed_.wait(lock,
                              [this] { return stopped_ || next_ >= inputs_.size() || next_ < added_ + 2 * threads_; });
                if (stopped_ || next_ >= inputs_.size())
                    return;
                input = next_++;
            }
            Staged staged;
            try
            {
                staged = stage(inputs_[input]);
            }
            catch (const std::bad_alloc&)
            {
                staged.result.why = "out of memory";
            }
            catch (const std::exception& error)
            {
                staged.result.why = error.what();
            }
            const std::lock_guard lock(mutex_);
            done_.emplace(input, std::move(staged));
            changed_.notify_all();
        }
    }

    Staged stage(const ExportInput& input)
    {
        Staged staged;
        ExportResult& result = staged.result;
        std::unique_ptr<std::istream> log = input.open(result.why);
        if (log == nullptr)
            return staged;
        const LogKey key = read_log_key(*log);
        result.key = key.key;
        result.kind = ExportResult::Kind::no_log;
        if (!key.is_log)
            return staged;
        result.kind = ExportResult::Kind::unfinished;
        if (!key.is_whole && !input.may_be_cut)
            return staged;
        result.kind = ExportResult::Kind::known;
        if (is_known(key.key))
            return staged;
        log = input.open(result.why);
        result.kind = ExportResult::Kind::failed;
        if (log == nullptr)
            return staged;
        auto rows = std::make_unique<StagedRows>();
        const std::unique_ptr<RowWriter> writer = store_.writer(*rows);
        const RowsOutcome outcome = write_log_rows(*log, key, input.origin, plan_.options, *writer, {});
        result.kind = ExportResult::Kind::changed;
        if (!outcome.is_log || outcome.text_bytes != key.text_bytes)
            return staged;
        result.kind = ExportResult::Kind::added;
        result.state = outcome.state;
        result.damage = outcome.damage;
        result.rows = rows->count();
        store_.prepare(*rows);
        staged.rows = std::move(rows);
        return staged;
    }

    bool is_known(const std::string& key)
    {
        const std::lock_guard lock(store_mutex_);
        return store_.has(key);
    }

    Staged wait_for(size_t input)
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this, input] { return done_.contains(input); });
        Staged staged = std::move(done_.at(input));
        done_.erase(input);
        return staged;
    }

    void add(Staged& staged)
    {
        if (staged.rows != nullptr)
        {
            const std::lock_guard lock(store_mutex_);
            if (!store_.add(staged.result.key, *staged.rows))
                staged.result.kind = ExportResult::Kind::known;
        }
        if (staged.result.kind != ExportResult::Kind::added)
            staged.result.rows = 0;
        const std::lock_guard lock(mutex_);
        ++added_;
        changed_.notify_all();
    }

    void stop()
    {
        {
            const std::lock_guard lock(mutex_);
            stopped_ = true;
            changed_.notify_all();
        }
        for (std::thread& worker : workers_)
            worker.join();
        workers_.clear();
    }

    const std::vector<ExportInput>& inputs_;
    TableStore& store_;
    const ExportPlan& plan_;
    const size_t threads_;
    std::vector<std::thread> workers_;
    std::mutex mutex_;
    std::mutex store_mutex_;
    std::condition_variable changed_;
    std::map<size_t, Staged> done_;
    size_t next_ = 0;
    size_t added_ = 0;
    bool stopped_ = false;
};

}  // namespace

void run_export(const std::vector<ExportInput>& inputs, TableStore& store, const ExportPlan& plan)
{
    Run run(inputs, store, plan);
    run.run();
}

}  // namespace orvlog::inspect
