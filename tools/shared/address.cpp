#include "tools/shared/address.h"

namespace orvlog::tool
{

namespace
{

std::string check_address(const std::string& text)
{
    const bool good = orvlog::reader::parse_call_address(text).has_value();
    return good ? "" : "calls are named by the ID of a paint, line:N or byte:N";
}

}  // namespace

CLI::Option* add_address(CLI::App& app, const std::string& name, std::optional<orvlog::reader::CallAddress>& address,
                         const std::string& description)
{
    return app
        .add_option_function<std::string>(
            name, [&address](const std::string& text) { address = orvlog::reader::parse_call_address(text); },
            description)
        ->type_name("ADDRESS")
        ->check(check_address);
}

}  // namespace orvlog::tool
