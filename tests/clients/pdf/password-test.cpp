// SPDX-License-Identifier: GPL-2.0-or-later
//
// Protected documents, opened with passwords from the command line, from files and from a terminal.

#include "tests/clients/pdf/small-document.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace
{

using orvlog::small_document::from_hex;
using orvlog::test::TempFolder;

// A page of red; the passwords are the owner's "owner" and a user's.
std::string protected_page(const std::string& owner_entry, const std::string& user_entry, const std::string& content)
{
    std::string document("%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
                         "2 0 obj\n<< /Type /Pages /Count 1 /Kids [3 0 R] >>\nendobj\n"
                         "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 100 100] /Contents 4 0 R >>\nendobj\n"
                         "4 0 obj\n");
    document.append(orvlog::small_document::stream("", from_hex(content)))
        .append("\nendobj\n5 0 obj\n<< /Filter /Standard ");
    document.append("/V 1 /R 2 /P -4 /O <").append(owner_entry).append("> /U <").append(user_entry);
    document.append("> >>\nendobj\ntrailer\n<< /Size 6 /Root 1 0 R /Encrypt 5 0 R /ID [");
    document.append("<000102030405060708090a0b0c0d0e0f> <000102030405060708090a0b0c0d0e0f>] >>\n%%EOF\n");
    return document;
}

// The user's password is "user".
std::string plain_page()
{
    return protected_page("94e8094419662a774442fb072e3d9f19e9d130ec09a4d0061e78fe920f7ab62f",
                          "56a39de58f86fa456642db1674c3060f327a4e038275843997dccfd58ea7900e",
                          "911da6f7411a8590d24e239ece610b9340dd721b30fcdc3d057e");
}

// The user's password is "schlüssel", in the encoding of old documents.
std::string page_with_a_letter_beyond_ascii()
{
    return protected_page("92f8045acdaa174c661fce081473a4c5574f31aa71752ab1c63eee1296a677ef",
                          "9804a6717369f7870a96e89770cbf75e9509f21c659382b42a356963d4152216",
                          "09ec9de8d3b5cb06b13fe95118df909a17d6ec1f0d12c5fcf2ec");
}

struct Outcome
{
    int status = -1;
    std::string errors;
};

class PasswordTest : public testing::Test
{
protected:
    PasswordTest()
    {
        write("page.pdf", plain_page());
        write("letter.pdf", page_with_a_letter_beyond_ascii());
    }

    static void write(const std::string& name, const std::string& content)
    {
        std::ofstream(name, std::ios::binary) << content;
    }

    // Without a terminal.
    Outcome record(const std::string& arguments) const
    {
        const std::string command = "setsid -w " ORVLOG_RECORD_PROGRAM " -o log.xml " + arguments + " 2> errors";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, folder.read("errors")};
    }

    bool painted() const
    {
        return folder.read("log.xml").find("<ORV_object_paint ") != std::string::npos;
    }

    const TempFolder folder;
};

TEST_F(PasswordTest, OfTheOwnerAndOfTheUserOpen)
{
    for (const char* password : {"user", "owner"})
    {
        EXPECT_EQ(record("page.pdf --check --password " + std::string(password) + " < /dev/null").status, 0);
        EXPECT_TRUE(painted());
        EXPECT_EQ(folder.read("log.xml").find(password), std::string::npos);
        std::filesystem::remove("log.xml");
    }
    EXPECT_EQ(record("letter.pdf --password schlüssel < /dev/null").status, 0);
    EXPECT_TRUE(painted());
}

TEST_F(PasswordTest, ThatIsWrongOrMissingIsSaid)
{
    const Outcome wrong = record("page.pdf --password other < /dev/null");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_EQ(wrong.errors, "orvlog-record: page.pdf is protected by a password, and this one is wrong\n");
    const Outcome missing = record("page.pdf < /dev/null");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.errors, "orvlog-record: page.pdf is protected by a password\n");
    EXPECT_EQ(folder.read("log.xml"), "(absent)");
}

TEST_F(PasswordTest, IsTheFirstLineOfAFile)
{
    write("password", "user\r\nmore\n");
    EXPECT_EQ(record("page.pdf --password-file password < /dev/null").status, 0);
    EXPECT_TRUE(painted());
    EXPECT_EQ(record("page.pdf --password-file - < password").status, 0);
    write("password", "user");
    EXPECT_EQ(record("page.pdf --password-file password < /dev/null").status, 0);
}

TEST_F(PasswordTest, FileThatIsNoneIsSaid)
{
    write("empty", "");
    write("long", std::string(5000, 'a'));
    EXPECT_EQ(record("page.pdf --password-file none").errors, "orvlog-record: none: No such file or directory\n");
    EXPECT_EQ(record("page.pdf --password-file .").errors, "orvlog-record: .: Is a directory\n");
    EXPECT_EQ(record("page.pdf --password-file empty").errors, "orvlog-record: empty holds no password\n");
    EXPECT_EQ(record("page.pdf --password-file long").errors,
              "orvlog-record: long holds no password, but a longer line\n");
    EXPECT_EQ(record("page.pdf --password-file - < empty").errors, "orvlog-record: standard input holds no password\n");
    EXPECT_NE(record("page.pdf --password user --password-file empty").status, 0);
}

struct Asked
{
    std::string shown;
    bool echoed = true;  // while it waited
    int status = 0;      // as wait gives it
};

// Runs the program on a terminal of its own, and types.
Asked ask(const std::string& typed)
{
    Asked asked;
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0)
    {
        execl(ORVLOG_RECORD_PROGRAM, "orvlog-record", "page.pdf", "-o", "log.xml", nullptr);
        _exit(127);
    }
    char piece[256];
    for (ssize_t got = 0; (got = read(terminal, piece, sizeof piece)) > 0;)
    {
        const bool asked_before = asked.shown.find(": ") != std::string::npos;
        asked.shown.append(piece, static_cast<size_t>(got));
        if (!asked_before && asked.shown.find(": ") != std::string::npos)
        {
            termios mode = {};
            tcgetattr(terminal, &mode);
            asked.echoed = (mode.c_lflag & static_cast<tcflag_t>(ECHO)) != 0;
            EXPECT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
        }
    }
    waitpid(child, &asked.status, 0);
    close(terminal);
    return asked;
}

TEST_F(PasswordTest, IsAskedForOnATerminal)
{
    const Asked good = ask("user\n");
    EXPECT_EQ(good.shown, "Password for page.pdf: \r\n");
    EXPECT_FALSE(good.echoed);
    EXPECT_EQ(good.status, 0);
    EXPECT_TRUE(painted());
    const Asked wrong = ask("other\n");
    EXPECT_EQ(wrong.shown, "Password for page.pdf: \r\n"
                           "orvlog-record: page.pdf is protected by a password, and this one is wrong\r\n");
    EXPECT_EQ(WEXITSTATUS(wrong.status), 1);
    const Asked ended = ask("\x04");
    EXPECT_EQ(WEXITSTATUS(ended.status), 1);
    const Asked interrupted = ask("us\x03");
    EXPECT_EQ(interrupted.shown, "Password for page.pdf: \r\n"
                                 "orvlog-record: interrupted before the document was open\r\n");
    EXPECT_TRUE(WIFEXITED(interrupted.status));
    EXPECT_EQ(WEXITSTATUS(interrupted.status), 128 + SIGINT);
}

}  // namespace
