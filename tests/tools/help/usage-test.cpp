// Help, manual page and completions of a command that has one of everything.

#include "tools/help/usage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

// What the parser writes to; nothing is parsed here.
struct Everything
{
    std::vector<std::string> files;
    std::string text;
    std::string kind;
    unsigned count = 3;
    double scale = 0;
    bool flag = false;
    bool other = false;
    bool hidden = false;
};

Run declare_sift(CLI::App& app)
{
    auto options = std::make_shared<Everything>();
    app.footer("It takes what's there.\n\nA second paragraph tells of .hidden files and C:\\paths.");
    app.add_option("KIND", options->kind, "kind of sieve")->check(CLI::IsMember({"fine", "coarse"}))->required();
    app.add_option("FILE", options->files, "what to sift");
    app.add_option("-n,--count", options->count, "how often")->check(CLI::Range(1U, 9U))->capture_default_str();
    app.add_option("--scale", options->scale, "mesh [mm]: 'd'")->required();
    app.add_option("--into", options->text, "folder for the rest")->type_name("DIR");
    app.add_option("-l,--log", options->text, "tell it all")->type_name("MYLOG");
    app.add_option("--label", options->files, "any number of labels")->type_name("TEXT")->group("Labels");
    app.add_flag("--unseen", options->hidden, "not for everybody")->group("");
    CLI::App* shaking = app.add_option_group("Shaking");
    shaking->add_flag("-s,--shake", options->flag, "shake it");
    shaking->add_flag("--stir", options->other, "stir it");
    return [options] { return 0; };
}

constexpr Command kSift[] = {{"sift", "sift what is there", "orvlog sift fine --scale 2 - > 'rest'", declare_sift}};

}  // namespace

std::span<const Command> commands()
{
    return kSift;
}

namespace
{

TEST(Usage, IsReadOffTheParser)
{
    const Usage usage = usage_of(commands()[0]);
    EXPECT_EQ(usage.name, "sift");
    EXPECT_EQ(usage.details, "It takes what's there.\n\nA second paragraph tells of .hidden files and C:\\paths.");
    ASSERT_EQ(usage.arguments.size(), 2U);
    EXPECT_EQ(usage.arguments[0].choices, (std::vector<std::string>{"fine", "coarse"}));
    EXPECT_EQ(usage.arguments[0].offer, Offer::choices);
    EXPECT_FALSE(usage.arguments[0].repeated);
    EXPECT_EQ(usage.arguments[1].offer, Offer::files);
    EXPECT_TRUE(usage.arguments[1].repeated);
    ASSERT_EQ(usage.options.size(), 8U);
    EXPECT_EQ(usage.options[1].names, (std::vector<std::string>{"-n", "--count"}));
    EXPECT_EQ(usage.options[1].offer, Offer::nothing);
    EXPECT_EQ(usage.options[3].offer, Offer::folders);
    EXPECT_EQ(usage.options[4].offer, Offer::files);
    EXPECT_EQ(usage.options[7].names, std::vector<std::string>{"--stir"});
    EXPECT_EQ(usage.options[7].value, "");
}

TEST(HelpText, ShowsEverything)
{
    EXPECT_EQ(help_text(usage_of(commands()[0])), R"(Usage: orvlog sift [OPTION]... KIND [FILE]... --scale N

sift what is there

It takes what's there.

A second paragraph tells of .hidden files and C:\paths.

Arguments:
  KIND                  kind of sieve: fine, coarse
  FILE                  what to sift

Options:
  -h, --help            show this text
  -n, --count N         how often, from 1 to 9 (default 3)
  --scale N             mesh [mm]: 'd'
  --into DIR            folder for the rest
  -l, --log MYLOG       tell it all

Labels:
  --label TEXT          any number of labels

Shaking:
  -s, --shake           shake it
  --stir                stir it

Example: orvlog sift fine --scale 2 - > 'rest'

Exit status:
  0  done
  1  failed, with one line on standard error
  2  bad command line
)");
}

TEST(HelpText, IsWrappedAtEightyCharacters)
{
    EXPECT_EQ(wrapped("", "a bb ccc", 2), "  a bb ccc\n");
    EXPECT_EQ(wrapped("  --x", "word", 8), "  --x   word\n");
    const std::string whole(38, 'x');
    EXPECT_EQ(wrapped("", whole + " " + whole + " y z", 1), " " + whole + " " + whole + " y\n z\n");
    EXPECT_EQ(wrapped("", whole + " " + whole + "y z", 1), " " + whole + " " + whole + "y\n z\n");
    EXPECT_EQ(wrapped("", whole + " " + whole + "yyy", 1), " " + whole + "\n " + whole + "yyy\n");
    const std::string wide(90, 'w');
    EXPECT_EQ(wrapped("", wide + " " + wide, 4), "    " + wide + "\n    " + wide + "\n");
}

TEST(ManualPage, ShowsEverything)
{
    EXPECT_EQ(manual_page(usage_of(commands()[0])), R"(.TH ORVLOG\-SIFT 1 2001-02-03 "orvlog 7.8.9" "orvlog manual"
.SH NAME
orvlog\-sift \- sift what is there
.SH SYNOPSIS
\fBorvlog sift\fR [\fIOPTION\fR]... \fIKIND\fR [\fIFILE\fR]... \fB\-\-scale\fR \fIN\fR
.SH DESCRIPTION
Sift what is there.
.PP
It takes what\(aqs there.
.PP
A second paragraph tells of \&.hidden files and C:\(rspaths.
.SH ARGUMENTS
.TP
\fIKIND\fR
kind of sieve: fine, coarse
.TP
\fIFILE\fR
what to sift
.SH OPTIONS
.TP
\fB\-h\fR, \fB\-\-help\fR
show this text
.TP
\fB\-n\fR, \fB\-\-count\fR \fIN\fR
how often, from 1 to 9 (default 3)
.TP
\fB\-\-scale\fR \fIN\fR
mesh [mm]: \(aqd\(aq
.TP
\fB\-\-into\fR \fIDIR\fR
folder for the rest
.TP
\fB\-l\fR, \fB\-\-log\fR \fIMYLOG\fR
tell it all
.SS Labels
.TP
\fB\-\-label\fR \fITEXT\fR
any number of labels
.SS Shaking
.TP
\fB\-s\fR, \fB\-\-shake\fR
shake it
.TP
\fB\-\-stir\fR
stir it
.SH EXIT STATUS
.TP
\fB0\fR
done
.TP
\fB1\fR
failed, with one line on standard error
.TP
\fB2\fR
bad command line
.SH EXAMPLES
.EX
orvlog sift fine \-\-scale 2 \- > \(aqrest\(aq
.EE
.SH SEE ALSO
\fBorvlog\fR(1)
)");
}

TEST(BashCompletion, KnowsEverything)
{
    const std::string script = bash_completion();
    EXPECT_NE(script.find("\n    taken='sift -h --help --version'\n"), std::string::npos);
    EXPECT_NE(script.find("\n    sift) taken='-h --help -n --count --scale --into -l --log --label -s --shake --stir' "
                          ";;\n"),
              std::string::npos);
    EXPECT_NE(script.find("\n    sift:-n | sift:--count) taken='@text' ;;\n"
                          "    sift:--scale) taken='@text' ;;\n"
                          "    sift:--into) taken='@folders' ;;\n"
                          "    sift:-l | sift:--log) taken='@files' ;;\n"
                          "    sift:--label) taken='@text' ;;\n"
                          "    sift:1) taken='fine coarse' ;;\n"
                          "    sift:more) taken='@files' ;;\n"
                          "    esac\n"),
              std::string::npos);
}

TEST(ZshCompletion, KnowsEverything)
{
    EXPECT_NE(zsh_completion().find(R"(
    sift)
        _arguments \
            '(- : *)'{-h,--help}'[show this text]' \
            '(-n --count)'{-n+,--count=}'[how often, from 1 to 9 (default 3)]:N: ' \
            '(--scale)'--scale='[mesh \[mm\]\: '\''d'\'']:N: ' \
            '(--into)'--into='[folder for the rest]:DIR:_files -/' \
            '(-l --log)'{-l+,--log=}'[tell it all]:MYLOG:_files' \
            '*'--label='[any number of labels]:TEXT: ' \
            '(-s --shake)'{-s,--shake}'[shake it]' \
            '(--stir)'--stir'[stir it]' \
            '1:KIND:(fine coarse)' \
            '*:FILE:_files'
        ;;
)"),
              std::string::npos);
}

}  // namespace

}  // namespace orvlog::tool
