// panelkit views: the Port Forwarding page: the preset and user rule tables, a post form per user row.
#include "views/PortForwarding.h"

#include "page/Page.h"
#include "web/widgets/BaseWidget.h"

#include <sstream>

namespace panelkit::views {

namespace {

const char* const kRuleFields[] = {"protocol", "sourcePort", "destinationIP", "destinationPort"};

std::string FormId(Json::ArrayIndex index)
{
    return "row_" + std::to_string(index) + "_form";
}

}  // namespace

PortForwarding::PortForwarding(std::ostream& out, page::Content& content, const web::Application& app)
    : PageView(out, content, app)
{
}

void PortForwarding::render_headings(bool buttons)
{
    out_ << "<tr><th>Protocol</th><th>Source Port</th><th></th><th>Dest IP Address</th><th>Dest Port</th>"
         << (buttons ? "<th></th>" : "") << "</tr>";
}

void PortForwarding::render_text_cells(const std::string& protocol, const std::string& port)
{
    out_ << "<td>" << (protocol == "udp" ? "UDP" : "TCP") << "</td><td>";
    Esc(port);
    out_ << "</td><td>:</td>";
}

void PortForwarding::render_hidden(const std::string& name, const std::string& value)
{
    out_ << "<input type=\"hidden\" name=\"";
    Esc(name);
    out_ << "\" value=\"";
    Esc(value);
    out_ << "\" />";
}

// Every row form carries the token and the editing state.
void PortForwarding::render_state(Json::ArrayIndex index, bool editing)
{
    render_csrf_field();
    render_hidden("rowId", std::to_string(index));
    render_hidden("editing", editing ? "true" : "false");
}

// A widget placed in its column, posted with the row's form.
void PortForwarding::render_cell(const web::widgets::BaseWidget& widget, const std::string& form)
{
    std::ostringstream input;
    widget.render_input(input);
    std::string html = input.str();
    const auto space = html.find(' ');
    html.insert(space == std::string::npos ? html.size() : space, " form=\"" + form + "\"");
    out_ << "<td" << (widget.valid() ? "" : " class=\"cppcms_error_msg\"") << ">" << html;
    if (!widget.valid()) {
        out_ << "<span class=\"cppcms_error_msg\">";
        Esc(widget.error_message());
        out_ << "</span>";
    }
    out_ << "</td>";
}

void PortForwarding::render_user_row(const Json::Value& rule, Json::ArrayIndex index, bool editing)
{
    page::Form& edit = *page_.forms[1];
    const std::string form = FormId(index);
    out_ << "<tr id=\"row_" << index << "\" class=\"forwarding_form_row\">";
    if (editing)
        render_text_cells(edit.Value("protocol"), edit.Value("sourcePort"));
    else
        render_text_cells(rule["protocol"].asString(), rule["sourcePort"].asString());
    if (editing) {
        render_cell(edit["destinationIP"], form);
        render_cell(edit["destinationPort"], form);
    } else {
        out_ << "<td>";
        Esc(rule["destinationIP"].asString());
        out_ << "</td><td>";
        Esc(rule["destinationPort"].asString());
        out_ << "</td>";
    }
    out_ << "<td><form id=\"" << form << "\" method=\"post\" action=\"\">";
    render_state(index, editing);
    if (editing) {
        render_hidden("protocol", edit.Value("protocol"));
        render_hidden("sourcePort", edit.Value("sourcePort"));
        for (const char* name : kRuleFields)
            render_hidden(std::string(name) + "Old", edit.Value(std::string(name) + "Old"));
        edit["save"].render_input(out_);
        edit["cancel"].render_input(out_);
    } else {
        for (const char* name : kRuleFields)
            render_hidden(name, rule[name].asString());
        out_ << "<input type=\"submit\" name=\"edit\" value=\"Edit\" /><input type=\"submit\" name=\"delete\" "
                "value=\"Delete\" data-confirm=\"Delete this rule?\" />";
    }
    out_ << "</form></td></tr>\n";
}

void PortForwarding::render_add_row(Json::ArrayIndex index)
{
    page::Form& add = *page_.forms[0];
    const std::string form = "add_rule_form";
    out_ << "<tr id=\"row_add\" class=\"forwarding_form_row\">";
    render_cell(add["protocol"], form);
    render_cell(add["sourcePort"], form);
    out_ << "<td>:</td>";
    render_cell(add["destinationIP"], form);
    render_cell(add["destinationPort"], form);
    out_ << "<td><form id=\"" << form << "\" method=\"post\" action=\"\">";
    render_state(index, page_.values["editing"].asBool());
    add["add"].render_input(out_);
    out_ << "</form></td></tr>\n";
}

void PortForwarding::render_config_tab(std::size_t)
{
    out_ << "<div id=\"forwarding_form\"><div class=\"forwarding_form_table\"><h3>Preset Rules</h3>"
            "<table class=\"form_table\">";
    render_headings(false);
    for (const auto& rule : page_.values["preset"]) {
        out_ << "<tr class=\"forwarding_form_row\">";
        render_text_cells(rule["protocol"].asString(), rule["sourcePort"].asString());
        out_ << "<td>";
        Esc(rule["destinationIP"].asString());
        out_ << "</td><td>";
        Esc(rule["destinationPort"].asString());
        out_ << "</td></tr>\n";
    }
    out_ << "</table></div><div class=\"forwarding_form_table\"><h3>User Rules</h3><table class=\"form_table\">";
    render_headings(true);
    const Json::Value& user = page_.values["user"];
    const bool editing = page_.values["editing"].asBool();
    const auto rowId = page_.values["rowId"].asInt64();
    for (Json::ArrayIndex i = 0; i < user.size(); ++i)
        render_user_row(user[i], i, editing && static_cast<Json::Int64>(i) == rowId);
    render_add_row(user.size());
    out_ << "</table></div></div>";
}

void PortForwarding::render_scripts()
{
    PageView::render_scripts();
    AddScript("/js/portforwarding.js");
}

}  // namespace panelkit::views
