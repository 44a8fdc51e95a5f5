// panelkit views: the Port Forwarding page: the preset and user rule tables, a post form per user row.
#pragma once

#include "views/PageView.h"

#include <json/value.h>

namespace panelkit::views {

/// The rule tables of the Port Forwarding page.
class PortForwarding : public PageView {
public:
    PortForwarding(std::ostream& out, page::Content& content, const web::Application& app);
    void render_config_tab(std::size_t index) override;
    void render_scripts() override;

private:
    void render_headings(bool buttons);
    void render_text_cells(const std::string& protocol, const std::string& port);
    void render_user_row(const Json::Value& rule, Json::ArrayIndex index, bool editing);
    void render_add_row(Json::ArrayIndex index);
    void render_hidden(const std::string& name, const std::string& value);
    void render_state(Json::ArrayIndex index, bool editing);
    void render_cell(const web::widgets::BaseWidget& widget, const std::string& form);
};

}  // namespace panelkit::views
