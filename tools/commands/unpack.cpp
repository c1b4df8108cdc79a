// orvlog unpack: a coded log as plain text. A plain log comes out as it is.

#include "reader/text/coded-input.h"
#include "reader/text/log-events.h"
#include "tools/shared/command.h"
#include "tools/shared/output.h"
#include "tools/shared/source.h"

#include <cerrno>
#include <cstring>
#include <istream>
#include <memory>
#include <streambuf>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

constexpr size_t kPiece = 1 << 16;
constexpr uint64_t kShortest = 5;  // "<ORV " is where a log begins

struct UnpackOptions
{
    std::string file;
    std::string output;
};

// The text of a log, written out as it is read.
class WrittenText : public std::streambuf
{
public:
    WrittenText(Source& source, const std::string& output)
        : log_(source.stream()), progress_(source.size()), name_(output), piece_(kPiece)
    {
    }

    const orvlog::reader::CodedInput& log() const
    {
        return log_;
    }
    // Null as long as there is no text: the first bytes tell whether it is a log, and nothing is written before.
    std::unique_ptr<Output>& output()
    {
        return output_;
    }
    bool failed() const
    {
        return failed_;
    }
    // The error number of the failure.
    int reason() const
    {
        return reason_;
    }

private:
    int_type underflow() override
    {
        const size_t count = failed_ ? 0 : log_.read(piece_.data(), piece_.size());
        if (count > 0 && output_ == nullptr)
            output_ = std::make_unique<Output>(name_);
        failed_ = failed_ || (count > 0 && (!output_->open() || !output_->write(piece_.data(), count)));
        reason_ = failed_ && reason_ == 0 ? errno : reason_;
        progress_.show(log_.bytes_used());
        setg(piece_.data(), piece_.data(), piece_.data() + count);
        return count == 0 || failed_ ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

    orvlog::reader::CodedInput log_;
    Progress progress_;
    std::string name_;
    std::vector<char> piece_;
    std::unique_ptr<Output> output_;
    bool failed_ = false;
    int reason_ = 0;
};

void take_rest(std::streambuf& text)
{
    std::vector<char> piece(kPiece);
    while (text.sgetn(piece.data(), kPiece) > 0)
    {
    }
}

// Takes all of the text. Whether it has lines that no log has, and no end.
bool is_garbled(std::streambuf& text)
{
    std::istream stream(&text);
    orvlog::reader::LogEvents events(stream);
    for (orvlog::reader::Event event; events.next(event);)
    {
    }
    take_rest(text);
    return events.is_garbled();
}

int unpack(const UnpackOptions& options)
{
    Source source(options.file);
    if (!source.open())
        return fail(options.file + ": " + source.why());
    WrittenText written(source, options.output);
    const bool garbled = written.log().is_coded() && is_garbled(written);
    take_rest(written);
    if (written.failed())
        return fail(options.output + ": " + std::strerror(written.reason()));
    using orvlog::reader::Ending;
    const Ending ending = written.log().ending();
    if (ending == Ending::not_a_log || written.log().bytes_given() < kShortest)
        return fail(options.file + ": not a log");
    std::unique_ptr<Output>& output = written.output();
    if (output == nullptr)
        output = std::make_unique<Output>(options.output);
    if (!output->open() || !output->finish())
        return fail(options.output + ": " + std::strerror(errno));
    const std::string given = std::to_string(written.log().bytes_given()) + " bytes of text are in " + options.output;
    if (ending == Ending::damaged || (ending == Ending::cut && garbled))
        return fail(options.file + ": the coded stream is damaged; " + given);
    if (ending == Ending::cut)
        return fail(options.file + ": the log is cut short; " + given);
    return EXIT_DONE;
}

}  // namespace

Run declare_unpack(CLI::App& app)
{
    auto options = std::make_shared<UnpackOptions>();
    app.footer("A coded log comes out as the text that was logged, with the colour tickets that stand in it as text; a "
               "plain log "
               "comes out as it is. Of a log that is cut short or damaged it gives what is whole, one line that says "
               "so, and the "
               "exit status 1. What is no log leaves no file.");
    app.add_option("CODED", options->file, "a log, coded or plain: a path, a URL, or - for standard input")->required();
    app.add_option("-o,--output", options->output, "the log as plain text, or - for standard output")
        ->type_name("LOG")
        ->required();
    return [options] { return unpack(*options); };
}

}  // namespace orvlog::tool
