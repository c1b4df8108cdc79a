#include "tools/report/report-frame.h"

#include "inspect/report/file-hash.h"
#include "tools/report/report-page.h"

namespace orvlog::tool
{

namespace
{

// What a policy knows a script or a style by.
std::string source_hash(std::string_view source)
{
    const orvlog::inspect::Sha256 hash = orvlog::inspect::sha256_of(source);
    return "'sha256-" + orvlog::inspect::base64({reinterpret_cast<const char*>(hash.data()), hash.size()}) + "'";
}

std::string policy()
{
    return "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data: blob:; "
           "script-src " +
           source_hash(kReportScript) + "; style-src " + source_hash(kReportStyle) +
           "; base-uri 'none'; form-action 'none'\">";
}

}  // namespace

std::string markup_text(std::string_view text)
{
    std::string safe;
    for (const char c : text)
        if (c == '<')
            safe += "&lt;";
        else if (c == '>')
            safe += "&gt;";
        else if (c == '&')
            safe += "&amp;";
        else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            safe += ' ';
        else
            safe += c;
    return safe;
}

ReportFrame::ReportFrame(Output& output)
    : output_(output), blocks_(
                           [this](std::string_view text)
                           {
                               put(text);
                               return good_;
                           }),
      rest_(kReportPage)
{
}

void ReportFrame::put(std::string_view text)
{
    good_ = good_ && output_.write(text.data(), text.size());
}

void ReportFrame::begin(std::string_view title)
{
    const auto up_to = [this](std::string_view mark)
    {
        const size_t at = rest_.find(mark);
        put(rest_.substr(0, at));
        rest_.remove_prefix(at == std::string_view::npos ? rest_.size() : at + mark.size());
    };
    up_to("<!--policy-->");
    put(policy());
    up_to("<!--title-->");
    put("<title>" + markup_text(title) + "</title>");
    up_to("<!--style-->");
    put("<style>");
    put(kReportStyle);
    put("</style>");
    up_to("<!--data-->");
}

bool ReportFrame::end(std::string_view index)
{
    put("<script type=\"application/json\" id=\"index\">");
    put(index);
    put("</script>");
    constexpr std::string_view kScript = "<!--script-->";
    const size_t at = rest_.find(kScript);
    put(rest_.substr(0, at));
    put("<script>");
    put(kReportScript);
    put("</script>");
    put(at == std::string_view::npos ? "" : rest_.substr(at + kScript.size()));
    return good_;
}

}  // namespace orvlog::tool
