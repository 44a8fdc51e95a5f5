// panelkit forms: the base of every page form: all widgets are checked and every failing one is marked.
#pragma once

#include "web/Form.h"

namespace panelkit::forms {

/// A page form whose check marks each failing widget with the class "cppcms_error_msg".
class Base : public web::Form {
public:
    /// Checks every widget (no early stop); true only when all pass.
    bool validate() override;
};

}  // namespace panelkit::forms
