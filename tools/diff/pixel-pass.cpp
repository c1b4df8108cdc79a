#include "tools/diff/pixel-pass.h"

#include "inspect/pixels/pixel-diff.h"
#include "reader/text/log-files.h"
#include "tools/diff/pixel-report.h"
#include "tools/shared/command.h"
#include "tools/shared/look.h"

namespace orvlog::tool
{

namespace
{

using namespace orvlog::inspect;

class CairoPass : public PixelPass
{
public:
    explicit CairoPass(const PixelPassOptions& options) : options_(options), report_(options.pictures, options.a.name())
    {
    }

    // Calls that belong together get the same number.
    void number(const Step& step) override
    {
        const uint64_t side = step.b == nullptr                ? CallNumber::kInA
                              : step.a == nullptr              ? CallNumber::kInB
                              : step.kind == StepKind::changed ? CallNumber::kChanged
                                                               : CallNumber::kSame;
        const uint64_t number = 4 * ++calls_ + side;
        if (step.a != nullptr)
            numbers_a_.add({step.a->place.byte, number});
        if (step.b != nullptr)
            numbers_b_.add({step.b->place.byte, number});
    }

    void draw(std::vector<std::string>& lacks) override
    {
        PixelSide a;
        PixelSide b;
        if (!make_side(options_.a, a, lacks) || !make_side(options_.b, b, lacks))
            return;
        const PixelDiffOutcome outcome = compare_pages(a, numbers_a_, b, numbers_b_, options_.dpi,
                                                       [&](const PageDifference& page)
                                                       {
                                                           const std::string why = report_.add(page);
                                                           if (!why.empty())
                                                               lacks.push_back(why);
                                                           if (!options_.json)
                                                               put(report_.lines().back() + "\n");
                                                       });
        if (outcome.no_room)
            lacks.emplace_back("no room for a temporary file with what each step draws");
        if (!options_.json && !outcome.no_room && report_.lines().empty())
            put(std::to_string(outcome.a.pages) + " pages, no pixel differs\n");
        add_lacks(options_.a.name(), outcome.a, lacks);
        add_lacks(options_.b.name(), outcome.b, lacks);
    }

    bool differ() const override
    {
        return !report_.lines().empty();
    }

    const nlohmann::ordered_json& json() const override
    {
        return report_.json();
    }

private:
    bool make_side(const DiffInput& input, PixelSide& side, std::vector<std::string>& lacks) const
    {
        side.open = input.opener();
        side.files = orvlog::reader::LogFiles(input.name(), options_.folders);
        const auto log = side.open();
        if (!side.files.why().empty() || log == nullptr)
        {
            lacks.push_back(side.files.why().empty() ? input.name() + ": can't be read" : side.files.why());
            return false;
        }
        side.kind = orvlog::replay::examine(*log);
        return true;
    }

    static void add_lacks(const std::string& name, const orvlog::replay::Outcome& outcome,
                          std::vector<std::string>& lacks)
    {
        if (outcome.pages_refused > 0)
            lacks.push_back(name + ": " + std::to_string(outcome.pages_refused) + " pages could not be drawn");
        if (outcome.missing > 0)
            lacks.push_back(name + ": lacks data in " + std::to_string(outcome.missing) +
                            " places; what could be found is drawn");
    }

    const PixelPassOptions options_;
    PixelReport report_;
    NumberFile numbers_a_;
    NumberFile numbers_b_;
    uint64_t calls_ = 0;
};

}  // namespace

std::unique_ptr<PixelPass> make_pixel_pass(const PixelPassOptions& options)
{
    return std::make_unique<CairoPass>(options);
}

}  // namespace orvlog::tool
