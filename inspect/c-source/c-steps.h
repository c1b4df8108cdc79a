// The callbacks of a call as a list of steps in C source: what is asked and what is answered, in the order of the log.

#pragma once

#include "inspect/c-source/c-records.h"
#include "reader/records/records.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvlog::inspect
{

// Gives a piece of a file beside the log by the name that the log has for it: at most `count` bytes from `begin` on.
using CSideFile = std::function<std::vector<uint8_t>(std::string_view name, uint64_t begin, uint64_t count)>;

class CSteps
{
public:
    // `glyphs` makes the glyphs that are handed out.
    CSteps(CRecords& records, CDataSink put, CSideFile side_file)
        : records_(records), put_(std::move(put)), side_file_(std::move(side_file))
    {
    }
    CSteps(const CSteps&) = delete;
    CSteps& operator=(const CSteps&) = delete;

    // The images of earlier calls are gone, unless the call stands in another one or they are held.
    void start_call(bool nested);
    // Those of the present call are held until that scope is dropped, which has a number of its own.
    void hold_images(uint64_t scope);
    void drop_images(uint64_t scope);
    // An image that the call brings: its element, and its record in the log. Gives the number by which the program
    // knows what the renderer gets; 0 for one whose callbacks aren't logged.
    uint32_t bring_image(const reader::Element& element, const GOP_OperandImagePointer* record);
    // A record as the log tells it, without its bytes; "NULL" for one that can't be made.
    std::string image_record(const reader::Element& told, const GOP_OperandImagePointer* record, const char* base);
    // A text shape of the call.
    void bring_text(uint32_t font_id, uint32_t string_id, std::string font, std::string string);
    // The engine of the number GfpId; gives the number by which the program knows it.
    uint32_t bring_engine(uint32_t id);
    void end_engine(uint32_t id)
    {
        engines_.erase(id);
    }

    // A callback, asked by the logger itself or by the renderer; a line of a list of steps. Empty, and counted, for one
    // that can't be asked.
    std::string step(const reader::Element& callback, bool by_logger, reader::RecordReader& reader);
    // What is left of a run of equal reads; to be put behind the last step.
    std::string finish_run();

    uint32_t most_images() const
    {
        return most_images_;
    }
    uint32_t most_engines() const
    {
        return engine_count_;
    }
    uint64_t not_made() const
    {
        return not_made_;
    }
    uint64_t missing() const
    {
        return missing_;
    }
    bool has_fonts() const
    {
        return engine_count_ > 0;
    }

private:
    // A record that the client has for an image, as the log last told it.
    struct Image
    {
        uint32_t number = 0;           // 0: the renderer hasn't got it
        const void* client = nullptr;  // tells the client's records apart
        std::string told;
        bool direct = false;
        uint64_t scope = 0;  // until which it is held; 0: until the call ends
    };

    // Reads that follow one another and are alike.
    struct Run
    {
        uint32_t times = 0;
        std::string fields;
        uint64_t from = 0;  // of the first one
        uint64_t size = 0;
    };

    std::string string_start(const reader::Element& callback);
    std::string glyph_index(const reader::Element& callback);
    std::string glyph(const reader::Element& callback, bool fixed, reader::RecordReader& reader);
    std::string prepare(const reader::Element& callback, bool by_logger, reader::RecordReader& reader);
    std::string read(const reader::Element& callback);
    std::string finish(const reader::Element& callback, reader::RecordReader& reader);
    std::string plain(const char* kind, const reader::Element& callback, bool has_result);
    std::optional<std::string> engine(const reader::Element& callback);
    Image* image(const reader::Element& callback);
    std::vector<uint8_t> bytes_of(const reader::Element& read, std::string_view holder, std::string_view file,
                                  int32_t returned, bool* known);
    std::string lack();

    CRecords& records_;
    CDataSink put_;
    CSideFile side_file_;
    std::map<uint32_t, Image> images_;  // by Id
    std::map<std::string, uint64_t, std::less<>> file_places_;
    std::map<std::pair<uint32_t, uint32_t>, std::pair<std::string, std::string>> texts_;
    std::map<uint32_t, uint32_t> engines_;  // by GfpId
    uint32_t engine_count_ = 0;
    uint32_t image_count_ = 0;
    uint32_t most_images_ = 0;
    uint64_t not_made_ = 0;
    uint64_t missing_ = 0;
    Run run_;
};

}  // namespace orvlog::inspect
