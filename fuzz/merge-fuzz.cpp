// The merge on bent temporary logs. The input is the log, but for some bytes that stand for what such logs are
// made of, so that long texts and elements come easily. All files are in a folder of the run's own, and no name
// leads out of it.

#include "fuzz/fuzz.h"
#include "holv-core/gio/gio-stream.h"
#include "orvlog/log/orvlog-merge.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace fs = std::filesystem;
using orvlog::fuzz::expect;

namespace
{

constexpr const char* kTempLog = "temp.tmp";
constexpr const char* kSideLog = "side.tmp";
const std::string side_text(20000, 's');

class Folder
{
public:
    Folder() : path_(fs::temp_directory_path() / ("orvlog-merge-fuzz-" + std::to_string(std::random_device()())))
    {
        fs::create_directories(path_);
        fs::current_path(path_);
    }
    ~Folder()
    {
        fs::current_path(fs::temp_directory_path());
        fs::remove_all(path_);
    }

private:
    fs::path path_;
};

// Takes what is written, up to some number of bytes.
struct Target
{
    std::string text;
    size_t room;
};

uint64_t take(const void* bytes, uint64_t size, uint64_t count, void* instance)
{
    auto* target = static_cast<Target*>(instance);
    const uint64_t taken = std::min<uint64_t>(size * count, target->room - target->text.size());
    target->text.append(static_cast<const char*>(bytes), taken);
    return taken / size;
}

std::string expand(const uint8_t* data, size_t size)
{
    std::string log;
    for (size_t i = 0; i < size; ++i)
    {
        switch (data[i])
        {
        case 1:
            log.append(static_cast<size_t>(i + 1 < size ? data[++i] : 0) * 65, 'x');
            break;
        case 2:
            log += "async_img_log_file_name=\"";
            break;
        case 3:
            log += "</GOP_ImageKeepFn>";
            break;
        case 4:
            log +=
                "<GOP_ImageKeepFn Id=\"1\" async_img_log_file_name=\"side.tmp\" return=\"TRUE\">\n</GOP_ImageKeepFn>";
            break;
        case 5:
            log += kSideLog;
            break;
        case '/':
        case '\\':
        case ':':
            log += '_';
            break;
        default:
            log += static_cast<char>(data[i]);
        }
    }
    return log;
}

void put_file(const char* name, const std::string& content)
{
    std::ofstream(name, std::ios::binary) << content;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const Folder folder;
    orvlog::fuzz::Choices choices(data, size);
    const uint32_t compress = choices.byte() % 2;
    const uint32_t has_async_images = choices.byte() % 4 != 0;
    const uint8_t room = choices.byte();
    const std::string log = expand(choices.rest(), choices.rest_size());
    put_file(kTempLog, log);
    put_file(kSideLog, side_text);

    Target target = {{}, room < 200 ? SIZE_MAX : size_t{room} * 37};
    GIO_StreamOps ops = {};
    ops.gio_Write = take;
    GIO_Stream stream = {&target, 0, &ops};
    const uint32_t result = ORVLOG_MergeLogs(orvlog::fuzz::heap(), kTempLog, &stream, compress, has_async_images);
    // A bent log can name itself; else it goes when all went well and stays when not.
    if (log.find(kTempLog) == std::string::npos)
        expect(fs::exists(kTempLog) == (result == 0), "the temporary log stays where the merge failed");
    if (result == 1 && compress == 0 && log.find("</GOP_ImageKeepFn>") == std::string::npos)
        expect(target.text == log, "a log without kept images is copied");
    return 0;
}
