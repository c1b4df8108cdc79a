#include "tools/minimise/trial-runner.h"

#include "clients/system/system.h"
#include "tools/minimise/replay-check.h"
#include "tools/shared/command.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;

constexpr size_t kKeySize = 32;
constexpr long kLookAgain = 200;  // milliseconds

// Two hashes of 64 bits, side by side: what was tried once is not tried again.
std::string hash_of(const std::string& text)
{
    uint64_t one = 0xcbf29ce484222325;
    uint64_t two = 0x9e3779b97f4a7c15;
    for (const char c : text)
    {
        one = (one ^ static_cast<uint8_t>(c)) * 0x100000001b3;
        two = (two + static_cast<uint8_t>(c) + 1) * 0xff51afd7ed558ccd;
        two ^= two >> 29;
    }
    std::array<char, 40> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx%016llx", static_cast<unsigned long long>(one),
                  static_cast<unsigned long long>(two));
    return digits.data();
}

std::string command_line(const std::string& command, const std::string& path)
{
    std::string result = command;
    size_t at = result.find("{}");
    if (at == std::string::npos)
        return command + " " + system::shell_word(path);
    for (; at != std::string::npos; at = result.find("{}", at + system::shell_word(path).size()))
        result.replace(at, 2, system::shell_word(path));
    return result;
}

// What is thrown here would end the command's own work, in the new process: it would take the folders away.
bool replays(const std::string& log) noexcept
{
    try
    {
        return check_replay(log).good;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

}  // namespace

TrialRunner::TrialRunner(TrialOptions options) : options_(std::move(options)) {}

TrialRunner::~TrialRunner()
{
    if (state_ != nullptr)
        std::fclose(state_);
}

// With a sum, so that a line that was changed or broken off isn't believed.
std::string TrialRunner::line_of(const std::string& key, bool good) const
{
    const std::string line = key + (good ? " 1" : " 0");
    return line + " " + hash_of(header_ + '\n' + line).substr(0, 8);
}

bool TrialRunner::read_state()
{
    std::ifstream file(options_.state, std::ios::binary);
    std::string line;
    if (!std::getline(file, line))
        return true;
    if (line != header_)
    {
        why_ = options_.state + ": is of another log or command; remove it to begin anew";
        return false;
    }
    while (std::getline(file, line))
        for (const bool good : {false, true})
            if (line == line_of(line.substr(0, kKeySize), good))
                known_[line.substr(0, kKeySize)] = good;
    return true;
}

// Of two that would write to the same place the second gives way.
bool TrialRunner::lock_state()
{
    state_ = system::open_alone(options_.state);
    if (state_ == nullptr)
        why_ = options_.state + ": " +
               (errno == EWOULDBLOCK ? "another orvlog minimise is at work on it" : std::strerror(errno));
    return state_ != nullptr;
}

bool TrialRunner::open(const std::string& log)
{
    if (options_.state.empty())
        return true;
    header_ = "orvlog-minimise 2 " + hash_of(log + '\n' + options_.command + '\n' + std::to_string(options_.timeout));
    // A pipe would be waited for.
    std::error_code none;
    const fs::file_status status = fs::status(options_.state, none);
    if (fs::exists(status) && !fs::is_regular_file(status))
    {
        why_ = options_.state + ": is no ordinary file";
        return false;
    }
    if (!lock_state() || !read_state())
        return false;
    const bool fresh = fs::file_size(options_.state, none) == 0;
    // A line that was broken off is none.
    std::fputs(fresh ? (header_ + "\n").c_str() : "\n", state_);
    std::fflush(state_);
    return true;
}

void TrialRunner::remember(const std::string& key, bool good)
{
    known_[key] = good;
    if (state_ == nullptr)
        return;
    const std::string line = line_of(key, good) + "\n";
    const bool written = std::fwrite(line.data(), 1, line.size(), state_) == line.size() && std::fflush(state_) == 0;
    if (written || over_)
        return;
    why_ = options_.state + ": " + std::strerror(errno);
    over_ = true;
}

void TrialRunner::forget()
{
    if (state_ != nullptr)
        std::fclose(state_);
    else
        return;
    state_ = nullptr;
    std::error_code none;
    fs::remove(options_.state, none);
}

bool TrialRunner::start(const std::string& log, Trial& trial, bool show_errors)
{
    trial.folder = folder_.path(std::to_string(folders_++));
    std::error_code error;
    fs::create_directory(trial.folder, error);
    const std::string path = (fs::path(trial.folder) / options_.name).string();
    std::ofstream file(path, std::ios::binary);
    file << log;
    file.close();
    if (!file.good())
    {
        why_ = path + ": " + std::strerror(errno);
        over_ = true;
        return false;
    }
    trial.due = options_.timeout > 0 ? Clock::now() + std::chrono::seconds(options_.timeout) : Clock::time_point::max();
    if (trial.run.start(
            command_line(options_.command, path), show_errors, [&log] { return replays(log); }, signals_))
        return true;
    why_ = std::string("no process for a run: ") + std::strerror(errno);
    over_ = true;
    return false;
}

// True if the command has ended.
bool TrialRunner::collect(Trial& trial)
{
    if (trial.status >= 0)
        return true;
    if (!trial.run.has_ended() && Clock::now() < trial.due)
        return false;
    stop(trial);
    return true;
}

void TrialRunner::stop(Trial& trial)
{
    if (trial.status >= 0 || trial.folder.empty())
        return;
    trial.run.stop();
    trial.status = trial.run.status();
    std::error_code none;
    fs::remove_all(trial.folder, none);
}

// Until the first good one is known: all before it have failed.
void TrialRunner::wait(std::vector<Trial>& trials)
{
    while (signals_.received() == 0)
    {
        bool waits = false;
        for (Trial& trial : trials)
        {
            waits = !collect(trial) || waits;
            if (!waits && trial.status == 0)
                break;
        }
        if (!waits)
            break;
        signals_.wait(kLookAgain);
    }
    for (Trial& trial : trials)
        stop(trial);
}

std::optional<size_t> TrialRunner::first_good(const std::vector<std::string>& logs)
{
    std::vector<std::string> keys;
    std::vector<Trial> trials(logs.size());
    size_t count = 0;
    for (; count < logs.size() && !is_over(); ++count)
    {
        keys.push_back(hash_of(logs[count]));
        const auto known = known_.find(keys.back());
        if (known == known_.end() && runs_ + count >= options_.limit)
        {
            over_ = count == 0;
            break;
        }
        if (known != known_.end())
            trials[count].status = known->second ? 0 : 1;
        else if (!start(logs[count], trials[count], false))
            break;
        if (known != known_.end() && known->second)
        {
            ++count;
            break;
        }
    }
    trials.resize(count);
    wait(trials);
    if (signals_.received() != 0)
        return std::nullopt;
    for (size_t i = 0; i < trials.size(); ++i)
    {
        const bool fresh = !known_.contains(keys[i]);
        runs_ += fresh ? 1 : 0;
        if (fresh)
            remember(keys[i], trials[i].status == 0);
        if (trials[i].status == 0)
            return i;
    }
    over_ = over_ || count < logs.size();
    return std::nullopt;
}

int TrialRunner::run_first(const std::string& log)
{
    const std::string key = hash_of(log);
    if (const auto known = known_.find(key); known != known_.end())
        return known->second ? EXIT_DONE : EXIT_FAILED;
    std::vector<Trial> trials(1);
    if (!start(log, trials[0], true))
        return EXIT_FAILED;
    wait(trials);
    if (signals_.received() == 0)
        remember(key, trials[0].status == 0);
    return trials[0].status;
}

}  // namespace orvlog::tool
