#include "tests/holv-core/gio/file-names.h"

namespace
{

using orvlog::test::FileNames;

TEST_F(FileNames, LoseTheFirstCharacterOfThePath)
{
    make("orvlog-url-a b");
    expect_found("file:///orvlog-url-a%20b");
    expect_found("FILE://localhost/orvlog-url-%61%20b");
    // Any beginning of "localhost" is as good.
    expect_found("file://local/orvlog-url-a%20b");
    expect_found("x/../orvlog-url-a%20b", "file:///y");
    expect_found("file:///x/../orvlog-url-a%20b#part");
}

TEST_F(FileNames, AQueryCutsOrStretchesThePath)
{
    make("orvlog-url");
    expect_found("file:///orvlog-url-longer?1234567890a");
    GIO_Stream* stream = nullptr;
    EXPECT_EQ(gio_OpenUrlOrPath("file:///orvlog-url?12345678901234", GIO_PATH_URL, nullptr, GIO_PATH_URL,
                                allocator_.get(), &stream),
              38);
}

}  // namespace
