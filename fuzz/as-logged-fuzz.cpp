// Logs that are played as they were logged, whatever they say: nothing is called that isn't there any more, and all
// memory is given back. Behind a line "====" comes what the logs of kept images hold.

#include "clients/replay/replay.h"
#include "clients/stream/file-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "fuzz/fuzz.h"
#include "tests/clients/replay/session-as-logged.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

using orvlog::fuzz::expect;
using namespace orvlog;

namespace
{

namespace fs = std::filesystem;

constexpr const char* kImageLog = "orvlog-0f0e0d0c-0b0a0908-07060504-03020100-async-image-0000000012.tmp";
constexpr std::string_view kBehindLog = "\n====\n";

// The session's own files go into a folder of this run's, which is the present one from then on; what the log names is
// looked for beside it.
class Folder
{
public:
    Folder() : place_(fs::temp_directory_path() / ("as-logged-fuzz-" + std::to_string(getpid())))
    {
        fs::create_directories(place_ / "new");
        fs::create_directories(place_ / "beside");
        fs::current_path(place_ / "new");
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code none;
        fs::current_path(place_.parent_path(), none);
        fs::remove_all(place_, none);
    }

    std::string log() const
    {
        return (place_ / "beside" / "log.xml").string();
    }
    void put_beside(const std::string& text) const
    {
        std::ofstream(place_ / "beside" / kImageLog, std::ios::binary) << text;
    }

private:
    const fs::path place_;
};

constexpr std::array<uint8_t, 16> kNumber = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const Folder folder;
    std::string text(reinterpret_cast<const char*>(data), size);
    const size_t end = text.find(kBehindLog);
    folder.put_beside(end != std::string::npos ? text.substr(end + kBehindLog.size()) : "");
    text.resize(std::min(text.size(), end));
    std::istringstream log(text);
    replay::LogKind kind = replay::examine(log);
    // Behind such a session everything is released.
    kind.script.merged = true;
    client_stream::MallocAllocator memory;
    {
        replay::AsLogged as_logged(kind.script);
        replay::ReplayTickets tickets;
        const auto stream = client_stream::FileStream::open("/dev/null", "wb");
        const client_stream::RandomIdentity identity(kNumber);
        ORV_Interface table{};
        test::Comments comments;
        ORVLOG_SessionOptions session = test::session_as_logged(kind, &as_logged, &table, &comments);
        session.allocator = memory.allocator();
        session.identity = identity.source();
        session.log_stream = stream->stream();
        if (orvlog_create_session_with(&session) == 0)
            return 0;
        replay::Options options;
        options.files = reader::LogFiles(folder.log());
        options.as_logged = &as_logged;
        options.comment = [&comments](const std::string& line) { comments.print("%s", line.c_str()); };
        log.clear();
        log.seekg(0);
        const replay::Outcome outcome = replay::play(log, &table, tickets, options);
        ORVLOG_DLL_shutdown(table.document_start.context);
    }
    expect(memory.bytes_in_use() == 0, "all memory is given back");
    return 0;
}
