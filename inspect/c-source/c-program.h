// A log as a program in C that makes the same calls.

#pragma once

#include "clients/replay/replay-tickets.h"
#include "clients/replay/replay.h"
#include "inspect/c-source/c-records.h"
#include "inspect/c-source/c-steps.h"
#include "inspect/c-source/c-text.h"
#include "reader/text/log-files.h"
#include "reader/tree/element.h"

#include <array>
#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

struct CProgramOptions
{
    reader::LogFiles files = reader::LogFiles("-");
    std::string log;                             // what it is called, for the first comment
    std::string version;                         // of the program that writes it
    std::string stem;                            // what the names of the files beside the source begin with
    std::array<std::string, 3> data_files = {};  // by CDataKind
    CDataSink put;
    std::function<void(const std::string& line)> complain;  // told what can't be made again; may be empty
    std::function<void(uint64_t)> progress;  // told how many bytes of the log have been used; may be empty
};

struct CProgramOutcome
{
    bool is_log = false;
    bool cut = false;
    uint64_t calls = 0;     // of the program
    uint64_t not_made = 0;  // calls and callbacks that can't be made again
    uint64_t missing = 0;   // places where data is not there
    uint64_t damage = 0;    // places where the log is not as a log should be
};

class CProgram
{
public:
    // `kind` is what replay::examine said of the log.
    CProgram(const replay::LogKind& kind, const CProgramOptions& options);
    CProgram(const CProgram&) = delete;
    CProgram& operator=(const CProgram&) = delete;
    ~CProgram();

    // The calls, and what they need. `to` is written from its beginning to its end.
    void write_calls(std::istream& log, std::ostream& to);
    // Then: what stands in front of the calls, and behind them.
    std::string head() const;
    std::string tail() const;

    const CProgramOutcome& outcome() const
    {
        return outcome_;
    }

private:
    struct Call;
    struct Memory;
    struct Drawing
    {
        uint32_t place = 0;
        bool open = false;
        std::vector<uint64_t> scopes;   // of its groups, by the numbers of the calls that began them
        std::vector<uint32_t> engines;  // of it and of its groups, the last one last; 0 for a group without one
    };

    void call(const reader::Element& element, bool nested, Call* made);
    bool arguments(const reader::Element& element, Call& made);
    bool document_start(const reader::Element& element, Call& made);
    bool document_finish(const reader::Element& element, Call& made);
    bool resource_destroy(const reader::Element& element, Call& made);
    bool drawing_start(const reader::Element& element, Call& made);
    bool drawing_call(const reader::Element& element, Call& made);
    void group_start(const reader::Element& element, Call& made, CFields& fields);
    void end_groups(Drawing& drawing, size_t left);
    void group_finish(const reader::Element& element, Drawing& drawing, Call& made);
    void paint(const reader::Element& element, Call& made, CFields& fields);
    void paint_and_stroke(const reader::Element& element, Call& made, CFields& fields);
    void resource_paint(const reader::Element& element, Call& made, CFields& fields);

    void walk(const reader::Element& element, bool in_member, Call& made);
    void step(const reader::Element& callback, bool by_logger, Call& made);
    void follow_kept(const reader::Element& callback, Call& made);
    void nested_call(const reader::Element& element, bool by_logger, Call& made);
    void comments_before(uint64_t byte, bool by_logger, Call& made);
    void loose(const reader::Element& callback);
    void flush_pending();
    void write(const Call& made);
    void write_and_add(const Call& made);
    void add_to_job(const std::string& step);
    void end_part();

    std::string engine(const reader::Element& element, Call& made, uint32_t* id);
    std::string silent_engine(uint32_t context, Drawing& drawing, Call& made);
    std::string ticket(const reader::Element& element, Call& made);
    std::string document(const reader::Element& element) const;
    std::string parent(const reader::Element& element) const;
    std::string resource(uint32_t id) const;
    std::string operand(const reader::Element& element, const char* member, size_t slot, Call& made);
    std::string image(const reader::Element& element, const GOP_OperandImagePointer* record, const char* base,
                      Call& made);
    std::vector<uint8_t> side_file(std::string_view name, uint64_t begin, uint64_t count);
    std::vector<uint8_t> direct_bytes(const reader::Element& element);
    void note_prefix(std::string_view file);
    bool needs_options() const;
    std::string open_session() const;
    void complain(const std::string& line) const;

    const replay::LogKind& kind_;
    const CProgramOptions& options_;
    CProgramOutcome outcome_;
    replay::ReplayTickets tickets_;
    std::map<const void*, std::string> ticket_names_;
    CRecords records_;
    CSteps steps_;
    std::ostream* to_ = nullptr;
    std::vector<std::string> part_;
    uint64_t parts_ = 0;
    uint64_t number_ = 0;
    std::vector<reader::Comment> comments_;  // since the last call
    std::unique_ptr<Call> pending_;
    std::vector<std::string> behind_pending_;  // comments
    std::string loose_;                        // steps behind it, and what they need
    std::string loose_definitions_;
    std::string loose_loads_;
    std::unique_ptr<Memory> loose_memory_;
    std::map<uint32_t, uint32_t> documents_;
    std::map<uint32_t, uint32_t> document_engines_;
    std::map<uint32_t, Drawing> drawings_;
    std::map<uint32_t, uint32_t> resources_;
    std::vector<uint32_t> dying_engines_;  // whose scope the last call ended
    std::vector<uint64_t> dying_scopes_;   // these scopes
    uint32_t document_places_ = 0;
    uint32_t drawing_places_ = 0;
    uint32_t resource_places_ = 0;
    bool coded_ = false;
    bool has_tickets_ = false;
    bool has_comments_ = false;
    std::string prefix_;
    std::array<uint8_t, 16> session_{};
    std::string side_file_name_;
    std::unique_ptr<std::istream> side_file_;
};

}  // namespace orvlog::inspect
