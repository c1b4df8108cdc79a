// Runs a command of the user's on logs, some side by side, each in a folder of its own, and remembers what came of it.

#pragma once

#include "clients/system/processes.h"
#include "clients/system/waited-signals.h"
#include "inspect/reduce/minimiser.h"
#include "tools/shared/temporary-folder.h"

#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace orvlog::tool
{

struct TrialOptions
{
    std::string command;  // for the shell; {} stands for the log, which is added if there is none
    std::string name;     // of the log's file
    std::string state;    // the file that remembers; empty for none
    size_t jobs = 1;
    uint64_t limit = UINT64_MAX;  // runs
    unsigned timeout = 0;         // seconds for one; 0: as long as it takes
};

class TrialRunner : public orvlog::inspect::LogTrials
{
public:
    explicit TrialRunner(TrialOptions options);
    TrialRunner(const TrialRunner&) = delete;
    TrialRunner& operator=(const TrialRunner&) = delete;
    ~TrialRunner() override;

    // Begins, or goes on where `state` ends. False with the reason in why().
    bool open(const std::string& log);
    const std::string& why() const
    {
        return why_;
    }
    // The log as it is, with what the command says on standard error shown. Gives its exit status.
    int run_first(const std::string& log);

    size_t at_once() const override
    {
        return options_.jobs;
    }
    std::optional<size_t> first_good(const std::vector<std::string>& logs) override;
    bool is_over() const override
    {
        return over_ || signals_.received() != 0;
    }

    // The signal that broke the work off; 0 if none did.
    int signal_received() const
    {
        return signals_.received();
    }
    bool limit_reached() const
    {
        return over_ && signals_.received() == 0 && why_.empty();
    }
    uint64_t runs() const
    {
        return runs_;
    }
    // All is done: what was remembered goes.
    void forget();

private:
    using Clock = std::chrono::steady_clock;

    struct Trial
    {
        system::ShellRun run;
        std::string folder;  // the log's; empty if nothing runs
        Clock::time_point due;
        int status = -1;  // known when it is not negative
    };

    std::string key_of(const std::string& log) const;
    bool start(const std::string& log, Trial& trial, bool show_errors);
    void wait(std::vector<Trial>& trials);
    bool collect(Trial& trial);
    static void stop(Trial& trial);
    void remember(const std::string& key, bool good);
    std::string line_of(const std::string& key, bool good) const;
    bool lock_state();
    bool read_state();

    TrialOptions options_;
    system::WaitedSignals signals_;
    TemporaryFolder folder_;
    std::map<std::string, bool> known_;
    std::FILE* state_ = nullptr;
    std::string header_;  // its first line
    std::string why_;
    uint64_t runs_ = 0;
    uint64_t folders_ = 0;
    bool over_ = false;
};

}  // namespace orvlog::tool
