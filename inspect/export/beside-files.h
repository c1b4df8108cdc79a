// The bytes of images that went into files beside a log, as far as these are there.

#pragma once

#include "reader/text/log-files.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

// Whatever a log says, no byte of a file is read twice. Memory goes with the files, of which 65536 are followed.
class BesideFiles
{
public:
    using Take = std::function<void(std::span<const uint8_t>)>;

    // Without files nothing is there.
    explicit BesideFiles(std::optional<reader::LogFiles> files) : files_(std::move(files)) {}

    // The next bytes of the file that the reads of an image went into, piece by piece; without `take` they are passed
    // over. False if they aren't all there.
    bool next(std::string_view name, uint64_t count, const Take& take);
    // All bytes of the file of a direct image. False if they aren't there, or were had before.
    bool all(std::string_view name, const Take& take);
    // The log of a kept image; null likewise.
    std::unique_ptr<std::istream> kept_log(std::string_view name);

private:
    std::unique_ptr<std::istream> open_once(std::string_view name, reader::LogFileKind kind);

    std::optional<reader::LogFiles> files_;
    std::set<std::string> had_;               // by where they stand: one file may have many names
    std::map<std::string, uint64_t> places_;  // so far files have been read, likewise
    std::string present_name_;
    reader::LogFile present_;
};

}  // namespace orvlog::inspect
