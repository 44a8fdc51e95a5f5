// panelkit forms: the General page: device name and language.
#pragma once

#include "forms/Base.h"
#include "web/widgets/Select.h"
#include "web/widgets/Submit.h"
#include "web/widgets/Text.h"

namespace panelkit::forms {

/// The device name (1 to 64 characters) and the language.
class General : public Base {
public:
    General();
    /// The device (host) name.
    web::widgets::Text deviceName;
    /// The language; one option, English.
    web::widgets::Select language;
    /// The save button.
    web::widgets::Submit save;
};

}  // namespace panelkit::forms
