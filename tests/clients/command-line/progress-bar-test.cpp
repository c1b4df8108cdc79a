// The bar on a terminal.

#include "clients/command-line/progress-bar.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace orvlog::command_line;

enum class Place
{
    terminal,
    pipe,
    file
};

int open_output(Place place, int terminal)
{
    int ends[2] = {-1, -1};
    if (place == Place::terminal)
        return dup(terminal);
    if (place == Place::file)
        return open("/dev/null", O_WRONLY);
    return pipe(ends) == 0 ? ends[1] : -1;
}

// What stands on the terminal when a program has run whose standard error it is, and whose output goes elsewhere.
std::string on_terminal(Place output, const std::function<void()>& program)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    grantpt(terminal);
    unlockpt(terminal);
    const int inner = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    const pid_t child = fork();
    if (child == 0)
    {
        dup2(open_output(output, inner), STDOUT_FILENO);
        dup2(inner, STDERR_FILENO);
        program();
        std::fflush(stdout);
        _exit(0);
    }
    EXPECT_GT(child, 0);
    waitpid(child, nullptr, 0);
    fcntl(terminal, F_SETFL, O_NONBLOCK);
    std::string text;
    char piece[4096];
    for (ssize_t count; (count = read(terminal, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<size_t>(count));
    close(inner);
    close(terminal);
    return text;
}

const std::string kHalf = "\r[####################                    ]  50%";
const std::string kGone = "\r" + std::string(48, ' ') + "\r";

void go_half_way()
{
    ProgressBar bar(1000);
    bar.show(100);
    usleep(1100000);
    bar.show(500);
}

TEST(ProgressBar, IsShownOnATerminalAndGoesAtTheEnd)
{
    EXPECT_EQ(on_terminal(Place::terminal, go_half_way), kHalf + kGone);
    EXPECT_EQ(on_terminal(Place::file, go_half_way), kHalf + kGone);
}

TEST(ProgressBar, StaysAwayFromAPager)
{
    EXPECT_EQ(on_terminal(Place::pipe, go_half_way), "");
}

TEST(ProgressBar, MakesWayForOutputOnTheSameTerminal)
{
    const auto program = []
    {
        ProgressBar bar(2);
        usleep(1100000);
        bar.show(1);
        ProgressBar::make_way_for_output();
        std::printf("line\r");
        std::fflush(stdout);
        usleep(200000);
        bar.show(2);
    };
    EXPECT_EQ(on_terminal(Place::terminal, program), kHalf + kGone + "line\r");
    EXPECT_EQ(on_terminal(Place::file, program), kHalf + "\r[########################################] 100%" + kGone);
}

TEST(ProgressBar, IsNotForWhatHasNoKnownSize)
{
    EXPECT_EQ(on_terminal(Place::terminal,
                          []
                          {
                              ProgressBar bar(0);
                              usleep(1100000);
                              bar.show(500);
                          }),
              "");
}

}  // namespace
