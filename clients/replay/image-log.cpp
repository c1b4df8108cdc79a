#include "clients/replay/image-log.h"

#include "clients/replay/script.h"
#include "reader/tree/values.h"

namespace orvlog::replay
{

std::string read_image_log(const reader::Element& keep, const reader::LogFiles& files, uint64_t* damage,
                           const std::function<void(const reader::Element&)>& on_callback)
{
    const std::string name = reader::to_text(keep.value("async_img_log_file_name"));
    const reader::LogFile file = files.open(name, reader::LogFileKind::image_log);
    if (file.stream == nullptr)
        return "the log " + name + " of a kept image " + file.why;
    reader::ElementReader own(*file.stream, reader::LogForm::fragment);
    own.on_damage = [damage](const reader::Damage&) { ++*damage; };
    while (const reader::Element* element = own.next())
        if (is_image_callback(*element) && !element->has("async_img_log_file_name"))
            on_callback(*element);
    return {};
}

}  // namespace orvlog::replay
