// orvlog profile: what the calls of a log cost a renderer.

#include "clients/renderer-library/renderer-library.h"
#include "clients/replay/replay-tickets.h"
#include "clients/replay/replay.h"
#include "reader/look/call-address.h"
#include "reader/text/log-files.h"
#include "tools/render/call-costs.h"
#include "tools/replay/watched-child.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;

struct ProfileCommand
{
    std::string log;
    std::string renderer;
    std::optional<std::string> renderer_options;
    std::string trace;
    std::vector<std::string> folders;
    unsigned runs = 3;
    unsigned seconds = 300;
    unsigned top = 20;
    bool json = false;
};

std::string number(double value, int width)
{
    char text[64];
    std::snprintf(text, sizeof text, "%*.3f", width, value);
    return text;
}

std::string padded(const std::string& text, size_t width)
{
    return std::string(width > text.size() ? width - text.size() : 0, ' ') + text;
}

double milliseconds(int64_t nanoseconds)
{
    return static_cast<double>(nanoseconds) / 1e6;
}

// Several costs under one name.
struct Sum
{
    std::string name;
    uint64_t count = 0;
    Cost cost;
};

class ProfileJob
{
public:
    ProfileJob(const ProfileCommand& command, WorkPlace& place) : command_(command), log_(command.log), place_(place) {}

    int run()
    {
        const orvlog::reader::LogFiles files(command_.log, command_.folders);
        if (!files.why().empty())
            return fail(files.why());
        if (!log_.open())
            return fail(command_.log + ": " + log_.why());
        if (!orvlog::replay::examine(log_.from_start()).is_log)
            return fail(command_.log + ": not a log");
        for (unsigned i = 0; i < command_.runs; ++i)
            if (std::string why; !play(files, &why))
                return fail(printable(command_.renderer + ": " + why));
        if (!command_.trace.empty() && !write_trace())
            return fail(command_.trace + ": " + std::strerror(errno));
        command_.json ? tell_json() : tell();
        return finish_output(wrong_ ? EXIT_FAILED : EXIT_DONE);
    }

private:
    // One run, with a renderer of its own.
    bool play(const orvlog::reader::LogFiles& files, std::string* why)
    {
        renderer_library::Host host;
        host.take_page = [](const ORVLOG_RendererPage&) { return true; };
        host.complain = [this](const std::string& line)
        {
            if (runs_done_ == 0)
                say(printable(command_.renderer + ": " + line));
        };
        renderer_library::RendererLibrary library(std::move(host));
        const char* options = command_.renderer_options ? command_.renderer_options->c_str() : nullptr;
        if (!library.open(command_.renderer, options, why))
            return false;
        CallCosts costs(*library.interface(), !command_.trace.empty());
        orvlog::replay::Options play;
        play.files = files;
        uint32_t page = 0;
        std::string face;
        play.before_call = [&](const orvlog::reader::Element& call)
        {
            note(call, costs, &page, &face);
            return true;
        };
        orvlog::replay::ReplayTickets tickets;
        const orvlog::replay::Outcome outcome = orvlog::replay::play(log_.from_start(), costs.table(), tickets, play);
        place_.leave_calls();
        const bool whole = library.end();
        if (runs_done_++ == 0)
            judge(outcome, whole);
        take(costs);
        return true;
    }

    void note(const orvlog::reader::Element& call, CallCosts& costs, uint32_t* page, std::string* face)
    {
        if (!orvlog::reader::is_call_name(call.name))
            return;
        CallCost cost;
        cost.line = call.place.line;
        cost.address = orvlog::reader::call_address_text(call);
        cost.kind = std::string(call.name);
        if (call.name == "ORV_face_start")
        {
            ++*page;
            *face = std::string(call.value("drawing_context"));
            open_ = true;
        }
        cost.page = open_ ? *page : 0;
        const bool ends = call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard";
        if (ends && call.value("drawing_context") == *face)
            open_ = false;
        place_.enter_call(cost.kind, cost.line);
        costs.begin_call(std::move(cost));
    }

    void judge(const orvlog::replay::Outcome& outcome, bool whole)
    {
        const auto lack = [this](const std::string& line)
        {
            wrong_ = true;
            fail(line);
        };
        if (!whole)
            lack(printable(command_.renderer + ": the renderer could not make all"));
        if (outcome.missing > 0)
            lack(command_.log + ": lacks data in " + std::to_string(outcome.missing) + " places");
        if (outcome.cut)
            lack(command_.log + ": is cut short; what it has is played");
        else if (outcome.damage > 0)
            lack(command_.log + ": is damaged in " + std::to_string(outcome.damage) + " places");
    }

    // The least of all runs, for each call and each kind of callback.
    void take(const CallCosts& costs)
    {
        if (runs_done_ == 1)
        {
            calls_ = costs.calls();
            callbacks_ = costs.callbacks();
        }
        const auto least = [](Cost& one, const Cost& other)
        {
            one.wall = std::min(one.wall, other.wall);
            one.processor = std::min(one.processor, other.processor);
            one.memory = std::min(one.memory, other.memory);
        };
        for (size_t i = 0; i < std::min(calls_.size(), costs.calls().size()); ++i)
            least(calls_[i].own, costs.calls()[i].own);
        for (size_t i = 0; i < callbacks_.size(); ++i)
            least(callbacks_[i].all, costs.callbacks()[i].all);
        if (least_wall_ && *least_wall_ <= costs.wall())
            return;
        least_wall_ = costs.wall();
        if (!command_.trace.empty())
        {
            traced_ = costs.calls();
            traced_events_ = costs.events();
        }
    }

    template <typename NameOf> std::vector<Sum> sums(NameOf name_of, bool by_cost) const
    {
        std::vector<Sum> result;
        std::map<std::string, size_t> places;
        for (const CallCost& call : calls_)
        {
            const std::string name = name_of(call);
            if (name.empty())
                continue;
            const auto place = places.try_emplace(name, result.size());
            if (place.second)
                result.push_back({name, 0, {}});
            ++result[place.first->second].count;
            result[place.first->second].cost.add(call.own);
        }
        if (by_cost)
            std::ranges::stable_sort(result, [](const Sum& a, const Sum& b) { return a.cost.wall > b.cost.wall; });
        return result;
    }
    std::vector<Sum> pages() const
    {
        return sums([](const CallCost& call) { return call.page > 0 ? std::to_string(call.page) : std::string(); },
                    false);
    }
    std::vector<Sum> kinds() const
    {
        return sums([](const CallCost& call) { return call.kind; }, true);
    }
    std::vector<CallCost> dearest() const
    {
        std::vector<CallCost> result;
        for (const CallCost& call : calls_)
            if (!call.kind.empty())
                result.push_back(call);
        std::ranges::stable_sort(result, [](const CallCost& a, const CallCost& b) { return a.own.wall > b.own.wall; });
        result.resize(std::min<size_t>(result.size(), command_.top));
        return result;
    }
    Cost total() const
    {
        Cost all;
        for (const CallCost& call : calls_)
            all.add(call.own);
        return all;
    }

    static std::string columns(const Cost& cost)
    {
        return number(milliseconds(cost.wall), 12) + number(milliseconds(cost.processor), 12) +
               padded(std::to_string(cost.memory), 14);
    }

    void tell() const
    {
        static const char* const kHead = "     wall ms      cpu ms        memory";
        put("least of " + std::to_string(command_.runs) + (command_.runs == 1 ? " run\n" : " runs\n"));
        put(std::string(kHead) + "   calls\n" + columns(total()) + padded(std::to_string(calls_.size() - 1), 8) +
            "\n\n");
        put(std::string(kHead) + "   calls  page\n");
        for (const Sum& page : pages())
            put(columns(page.cost) + padded(std::to_string(page.count), 8) + "  " + page.name + "\n");
        put("\n" + std::string(kHead) + "   calls  kind\n");
        for (const Sum& kind : kinds())
            put(columns(kind.cost) + padded(std::to_string(kind.count), 8) + "  " + printable(kind.name) + "\n");
        put("\n" + std::string(kHead) +
            "   times         bytes  callback, answered by the replay and not counted above\n");
        for (size_t i = 0; i < callbacks_.size(); ++i)
            if (callbacks_[i].count > 0)
                put(columns(callbacks_[i].all) + padded(std::to_string(callbacks_[i].count), 8) +
                    padded(std::to_string(callbacks_[i].bytes), 14) + "  " + kCallbackNames[i] + "\n");
        put("\n" + std::string(kHead) + "    page  call\n");
        for (const CallCost& call : dearest())
            put(columns(call.own) + padded(std::to_string(call.page), 8) + "  " + call.address + " " +
                printable(call.kind) + "\n");
    }

    static ordered_json cost_json(const Cost& cost)
    {
        return {{"wall_ns", cost.wall}, {"processor_ns", cost.processor}, {"memory", cost.memory}};
    }

    void tell_json() const
    {
        ordered_json all;
        all["runs"] = command_.runs;
        all["total"] = cost_json(total());
        const auto list = [](const std::vector<Sum>& sums, const char* name)
        {
            ordered_json result = ordered_json::array();
            for (const Sum& one : sums)
            {
                ordered_json entry = {{name, json_string(one.name)}, {"calls", one.count}};
                entry.update(cost_json(one.cost));
                result.push_back(entry);
            }
            return result;
        };
        all["pages"] = list(pages(), "page");
        all["kinds"] = list(kinds(), "kind");
        all["callbacks"] = ordered_json::array();
        for (size_t i = 0; i < callbacks_.size(); ++i)
        {
            if (callbacks_[i].count == 0)
                continue;
            ordered_json entry = {
                {"callback", kCallbackNames[i]}, {"count", callbacks_[i].count}, {"bytes", callbacks_[i].bytes}};
            entry.update(cost_json(callbacks_[i].all));
            all["callbacks"].push_back(entry);
        }
        all["calls"] = ordered_json::array();
        for (const CallCost& call : dearest())
        {
            ordered_json entry = {{"call", call.address},
                                  {"line", call.line},
                                  {"kind", call.kind},
                                  {"page", call.page},
                                  {"callbacks", call.callbacks}};
            entry.update(cost_json(call.own));
            all["calls"].push_back(entry);
        }
        put(json_text(all, 1) + "\n");
    }
    static std::string json_string(const std::string& text)
    {
        return text;
    }

    // The run that took least, in the form that timelines of browsers open.
    bool write_trace() const
    {
        Output output(command_.trace);
        if (!output.open())
            return false;
        std::string text = "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n";
        text += "{\"ph\":\"M\",\"name\":\"process_name\",\"pid\":1,\"tid\":1,\"args\":{\"name\":\"orvlog profile\"}}";
        const auto event = [&](const std::string& name, const char* category, int64_t begin, int64_t end,
                               const ordered_json& arguments)
        {
            ordered_json one = {{"ph", "X"},
                                {"name", name},
                                {"cat", category},
                                {"pid", 1},
                                {"tid", 1},
                                {"ts", static_cast<double>(begin) / 1e3},
                                {"dur", static_cast<double>(end - begin) / 1e3}};
            if (!arguments.empty())
                one["args"] = arguments;
            text += ",\n" + json_text(one);
            if (text.size() < kBlock)
                return;
            output.write(text.data(), text.size());
            text.clear();
        };
        std::map<uint32_t, std::pair<int64_t, int64_t>> pages;
        for (const CallCost& call : traced_)
        {
            if (call.page == 0 || call.end == 0)
                continue;
            const auto place = pages.try_emplace(call.page, call.begin, call.end);
            place.first->second.second = std::max(place.first->second.second, call.end);
        }
        for (const auto& [page, span] : pages)
            event("page " + std::to_string(page), "page", span.first, span.second, {});
        for (const CallCost& call : traced_)
            if (call.end > 0 && !call.kind.empty())
                event(call.kind, "call", call.begin, call.end,
                      {{"call", call.address},
                       {"line", call.line},
                       {"processor_ns", call.own.processor},
                       {"memory", call.own.memory}});
        for (const CallbackEvent& one : traced_events_)
            event(kCallbackNames[one.kind], "callback", one.begin, one.end, {});
        text += "\n]}\n";
        return output.write(text.data(), text.size()) && output.finish();
    }

    static constexpr size_t kBlock = 1U << 20;

    const ProfileCommand& command_;
    LogAgain log_;
    WorkPlace& place_;
    unsigned runs_done_ = 0;
    bool open_ = false;
    bool wrong_ = false;
    std::vector<CallCost> calls_;
    std::vector<CallbackCost> callbacks_;
    std::optional<int64_t> least_wall_;
    std::vector<CallCost> traced_;
    std::vector<CallbackEvent> traced_events_;
};

// In a process of its own, so that a renderer that crashes or hangs ends no more than that.
int profile(const ProfileCommand& command)
{
    std::string why;
    const int status = run_watched([&command](WorkPlace& place) { return ProfileJob(command, place).run(); },
                                   {.in_all = command.seconds}, &why);
    return why.empty() ? status : fail(printable(command.renderer + ": " + why));
}

}  // namespace

Run declare_profile(CLI::App& app)
{
    auto command = std::make_shared<ProfileCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded; a path, or - for standard input")->required();
    app.add_option("--renderer", command->renderer, "a shared library, FILE or FILE:SYMBOL")
        ->required()
        ->type_name("RENDERER");
    app.add_option("--renderer-options", command->renderer_options, "for the library")->type_name("TEXT");
    app.add_option("--runs", command->runs, "so many replays; the least of each cost is told")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1U, 1000U));
    app.add_option("--top", command->top, "so many of the dearest calls")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(0U, 1000000U));
    app.add_option("--time", command->seconds, "seconds that all replays together may take")
        ->type_name("S")
        ->capture_default_str()
        ->check(CLI::Range(1U, 86400U));
    app.add_option("--trace", command->trace, "a timeline of the run that took least, in the trace event form")
        ->type_name("FILE");
    app.add_flag("--json", command->json, "tell it as JSON");
    add_files_from(app, command->folders);
    app.footer("Plays a log into a renderer and tells what it took: wall time, processor time, and the bytes of the "
               "heap that are in use behind a call and weren't before, for pages, kinds of calls and the dearest "
               "calls. What the replay takes to read the log, and to answer callbacks, is taken off; callbacks are "
               "told on their own.");
    return [command] { return profile(*command); };
}

}  // namespace orvlog::tool
