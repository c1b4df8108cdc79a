// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/password.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kLongest = 4096;

volatile std::sig_atomic_t caught = 0;

void note_signal(int number)
{
    caught = number;
}

// Signals that would end the process come through only while it waits, and are only noted, for as long as the terminal
// shows nothing.
class SignalsNoted
{
public:
    SignalsNoted()
    {
        caught = 0;
        struct sigaction action = {};
        action.sa_handler = note_signal;
        sigset_t all;
        sigemptyset(&all);
        for (size_t i = 0; i < kNumbers.size(); ++i)
        {
            sigaction(kNumbers[i], &action, &before_[i]);
            sigaddset(&all, kNumbers[i]);
        }
        sigprocmask(SIG_BLOCK, &all, &mask_before_);
    }
    SignalsNoted(const SignalsNoted&) = delete;
    SignalsNoted& operator=(const SignalsNoted&) = delete;

    ~SignalsNoted()
    {
        for (size_t i = 0; i < kNumbers.size(); ++i)
            sigaction(kNumbers[i], &before_[i], nullptr);
        if (caught != 0)
            std::raise(caught);
        sigprocmask(SIG_SETMASK, &mask_before_, nullptr);
    }

    // False if a signal came.
    bool wait_for(int input) const
    {
        pollfd waited = {input, POLLIN, 0};
        return ppoll(&waited, 1, nullptr, &mask_before_) >= 0 || caught == 0;
    }

private:
    static constexpr std::array kNumbers = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    std::array<struct sigaction, kNumbers.size()> before_{};
    sigset_t mask_before_{};
};

// A line without its end; nothing if the input ended before one began, a signal came, or the line is too long.
std::optional<std::string> read_line(int descriptor, const SignalsNoted* noted = nullptr)
{
    std::string line;
    while (line.size() <= kLongest)
    {
        if (noted != nullptr && !noted->wait_for(descriptor))
            return std::nullopt;
        char byte = 0;
        const ssize_t got = read(descriptor, &byte, 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 || (got == 0 && line.empty()))
            return std::nullopt;
        if (got == 0 || byte == '\n')
        {
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            return line;
        }
        line.push_back(byte);
    }
    errno = EMSGSIZE;
    return std::nullopt;
}

void write_all(int descriptor, const std::string& text)
{
    for (size_t done = 0; done < text.size();)
    {
        const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
        if (count <= 0)
            return;
        done += static_cast<size_t>(count);
    }
}

std::optional<std::string> ask_on(int input, int output, const std::string& document)
{
    const SignalsNoted noted;
    termios before = {};
    if (tcgetattr(input, &before) != 0)
        return std::nullopt;
    termios silent = before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ICANON | ISIG;
    tcsetattr(input, TCSAFLUSH, &silent);
    write_all(output, "Password for " + document + ": ");
    std::optional<std::string> line = read_line(input, &noted);
    write_all(output, "\n");
    tcsetattr(input, TCSAFLUSH, &before);
    return line;
}

}  // namespace

std::optional<std::string> read_password(const std::string& file, std::string& error)
{
    const bool standard = file == "-";
    const int input = standard ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC);
    errno = input < 0 ? errno : 0;
    std::optional<std::string> line;
    if (input >= 0)
        line = read_line(input);
    if (!line)
    {
        const std::string name = standard ? "standard input" : file;
        error = errno == 0          ? name + " holds no password"
                : errno == EMSGSIZE ? name + " holds no password, but a longer line"
                                    : name + ": " + std::strerror(errno);
    }
    if (input >= 0 && !standard)
        close(input);
    return line;
}

std::optional<std::string> ask_password(const std::string& document)
{
    if (isatty(STDIN_FILENO) == 0 && isatty(STDERR_FILENO) == 0)
        return std::nullopt;
    const int terminal = open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0)
        return isatty(STDIN_FILENO) != 0 ? ask_on(STDIN_FILENO, STDERR_FILENO, document) : std::nullopt;
    std::optional<std::string> line = ask_on(terminal, terminal, document);
    close(terminal);
    return line;
}

}  // namespace orvlog::pdf_client
