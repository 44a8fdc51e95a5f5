// panelkit data: the one result message a page shows after a request.
#include "data/Message.h"

namespace panelkit::data {

Message::Message(ResultClass result, std::string text, bool persistent)
    : result_(result), text_(std::move(text)), persistent_(persistent)
{
}

void Message::SetCssClass(const std::string& css)
{
    css_ = css;
    result_ = ResultClass::Custom;
}

Message Message::OK(const std::string& text, bool persistent)
{
    return Message(ResultClass::OK, text, persistent);
}

Message Message::Error(const std::string& text, bool persistent)
{
    return Message(ResultClass::Error, text, persistent);
}

Message Message::Custom(const std::string& text, const std::string& css, bool persistent)
{
    Message message(ResultClass::Custom, text, persistent);
    message.css_ = css;
    return message;
}

Message Message::SaveOK()
{
    return OK("Success: The form values were saved.");
}

Message Message::SaveError()
{
    return Error("Save error: The form values were not saved.");
}

Message Message::ValidationError()
{
    return Error("Invalid values: The form values were not saved.");
}

}  // namespace panelkit::data
