#include "tests/holv-core/gio/file-names.h"

namespace
{

using orvlog::test::FileNames;

TEST_F(FileNames, TurnSeparators)
{
    make("orvlog\\url");
    expect_found("file:///orvlog/url");
    make("c:\\orvlog-url-x");
    expect_found("file:///c:/orvlog-url-x");
    expect_found("c:\\orvlog-url-x", nullptr, GIO_PATH_LOCAL);
    make("\\\\server\\c$\\orvlog-url-x");
    expect_found("file://server/c:/orvlog-url-x");
    make("\\\\LOCALHOST\\orvlog-url-x");
    expect_found("file://LOCALHOST/orvlog-url-x");
    make("\\\\localhost$80\\orvlog-url-x");
    expect_found("file://localhost:80/orvlog-url-x");
    make("orvlog-url-\xC3\xA9");
    expect_found("file:///orvlog-url-%C3%A9");
}

}  // namespace
