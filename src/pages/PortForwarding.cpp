// panelkit pages: the port forwarding page: preset and user rules, their editing, and the firewall status.
#include "pages/PortForwarding.h"

#include "apps/Base.h"
#include "page/Content.h"
#include "page/Form.h"
#include "page/Table.h"
#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Pardb.h"
#include "web/Log.h"
#include "web/widgets/Numeric.h"
#include "web/widgets/Select.h"
#include "web/widgets/Text.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

namespace panelkit::pages {

namespace {

using page::Call;
using page::Field;
using Number = web::widgets::Numeric<unsigned>;

const char* const kProtocols[] = {"tcp", "udp"};
const char* const kProtocolNames[] = {"TCP", "UDP"};
const char* const kRuleFields[] = {"protocol", "sourcePort", "destinationIP", "destinationPort"};

// Rules by protocol (0 TCP, 1 UDP), then source port: every TCP rule before every UDP rule, each group by port.
using Rules = std::map<std::pair<unsigned, unsigned>, Json::Value>;

std::string Prefix(unsigned protocol)
{
    return std::string("net/portfwd/") + kProtocols[protocol];
}

// The row of a source port: five digits, so that the store lists the rules in port order.
std::string Row(unsigned port)
{
    char row[16];
    std::snprintf(row, sizeof row, "%05u", port);
    return row;
}

// The rule of the key, made empty (no address, port 0) when missing.
Json::Value& Rule(Rules& rules, unsigned protocol, unsigned port, const std::string& ip = "", int destination = 0)
{
    Json::Value& rule = rules[{protocol, port}];
    if (rule.isNull()) {
        rule["protocol"] = kProtocols[protocol];
        rule["sourcePort"] = port;
        rule["destinationIP"] = ip;
        rule["destinationPort"] = destination;
    }
    return rule;
}

Rules Presets()
{
    Rules rules;
    if (util::Pardb::Exists("net/vnc/port")) {
        const int port = util::Pardb::GetInt("net/vnc/port");
        Rule(rules, 0, static_cast<unsigned>(port), util::Pardb::GetString("net/vnc/ipaddr"), port);
    } else {
        PK_WARNING() << "net/vnc parameters not set";
    }
    Rule(rules, 0, 8002, "192.168.0.100", 8002);
    Rule(rules, 0, 8003, "192.168.0.101", 8003);
    Rule(rules, 0, 8800, "192.168.0.20", 80);
    return rules;
}

// The stored rules; a key without a usable value is skipped, a rule missing one of its keys still shows.
Rules UserRules()
{
    Rules rules;
    for (unsigned protocol = 0; protocol < 2; ++protocol) {
        const std::string prefix = Prefix(protocol);
        for (const auto& name : util::Pardb::GetList(prefix)) {
            std::string value;
            PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
            util::Pardb::Get(name, value, type);
            if (value.empty() || (type == PARDB_PAR_INT && std::atoi(value.c_str()) == 0)) {
                PK_ERROR() << "PortForwarding load " << kProtocolNames[protocol] << " values: Bad PARDB parameter "
                           << name;
                continue;
            }
            const auto port = std::strtoul(name.substr(std::min(name.size(), prefix.size() + 1)).c_str(), nullptr, 10);
            if (name.find("/d_ip") != std::string::npos)
                Rule(rules, protocol, static_cast<unsigned>(port))["destinationIP"] = value;
            else if (name.find("/d_port") != std::string::npos)
                Rule(rules, protocol, static_cast<unsigned>(port))["destinationPort"] = std::atoi(value.c_str());
        }
    }
    return rules;
}

// The rules as the view and the checks read them, in map order.
Json::Value Listed(const Rules& rules)
{
    Json::Value list(Json::arrayValue);
    for (const auto& rule : rules)
        list.append(rule.second);
    return list;
}

long RowId(Call& call)
{
    return std::strtol(call.app.HttpPost("rowId").c_str(), nullptr, 10);
}

// Both tables and the editing state the request carries in its hidden fields.
void Show(Call& call)
{
    Json::Value& values = call.content.values;
    values["preset"] = Listed(Presets());
    values["user"] = Listed(UserRules());
    values["editing"] = call.app.HttpPost("editing") == "true";
    values["rowId"] = static_cast<Json::Int64>(RowId(call));
}

void Changed(Call& call)
{
    call.content.values["user"] = Listed(UserRules());
    util::RunStatus({util::DevicePath("/etc/nat_setup.sh"), "web_forwarding"});
}

bool Same(const Json::Value& rule, const std::string& protocol, unsigned port)
{
    return rule["protocol"].asString() == protocol && rule["sourcePort"].asUInt() == port;
}

// No two rules forward the same protocol and source port; the row being edited may keep its own.
bool Unique(Call& call)
{
    const std::string protocol = call.form.Value("protocol");
    const unsigned port = call.form.Get<Number>("sourcePort").value();
    for (const auto& rule : call.content.values["preset"]) {
        if (!Same(rule, protocol, port))
            continue;
        call.content.message = data::Message::Error(
            "Port forward rule not added. Preset rule exists with same protocol and source port.");
        return false;
    }
    const Json::Value& user = call.content.values["user"];
    for (Json::ArrayIndex index = 0; index < user.size(); ++index) {
        if (!Same(user[index], protocol, port) || static_cast<long>(index) == RowId(call))
            continue;
        call.content.message =
            data::Message::Error("Port forward rule not added. User rule exists with same protocol and source port.");
        return false;
    }
    return true;
}

void Forget(unsigned protocol, unsigned port)
{
    util::Pardb::Delete(Prefix(protocol) + "/" + Row(port) + "/d_ip");
    util::Pardb::Delete(Prefix(protocol) + "/" + Row(port) + "/d_port");
}

// Failed writes are logged by the store; the page reports the save regardless.
bool Write(Call& call)
{
    const unsigned protocol = call.form.Value("protocol") == "tcp" ? 0 : 1;
    const unsigned port = call.form.Get<Number>("sourcePort").value();
    if (call.content.posted == 1)
        Forget(protocol, port);
    page::Table(Prefix(protocol), {"d_ip", "d_port"})
        .Write(Row(port), {{"d_ip", call.form.Value("destinationIP")}, {"d_port", call.form.Value("destinationPort")}});
    return true;
}

void Added(Call& call)
{
    Changed(call);
    call.content.forms[0] = std::make_unique<page::Form>(call.content.page.Forms()[0].fields);
}

void Saved(Call& call)
{
    call.content.values["editing"] = false;
    Changed(call);
}

// The row shows its stored values again, the posted ones being refused.
void Restore(Call& call)
{
    PK_ERROR() << "PortForwarding row save failed validation";
    page::Form& form = call.form;
    form.Get<web::widgets::Select>("protocol").selected_id(form.Value("protocolOld"));
    form.Get<Number>("sourcePort").value(std::strtoul(form.Value("sourcePortOld").c_str(), nullptr, 10));
    form.Get<web::widgets::Text>("destinationIP").value(form.Value("destinationIPOld"));
    form.Get<Number>("destinationPort").value(std::strtoul(form.Value("destinationPortOld").c_str(), nullptr, 10));
}

// The posted row becomes the edited one, its values also kept as the stored ones.
bool Edit(Call& call)
{
    call.content.values["editing"] = true;
    call.form.load(call.app.request());
    for (const char* name : kRuleFields)
        call.form.Get<web::widgets::Text>(std::string(name) + "Old").value(call.app.HttpPost(name));
    return false;
}

bool Delete(Call& call)
{
    call.content.values["editing"] = false;
    const Json::Value& user = call.content.values["user"];
    const long rowId = RowId(call);
    if (rowId >= 0 && rowId < static_cast<long>(user.size())) {
        const Json::Value& rule = user[static_cast<Json::ArrayIndex>(rowId)];
        Forget(rule["protocol"].asString() == "tcp" ? 0 : 1, rule["sourcePort"].asUInt());
    }
    Changed(call);
    return false;
}

bool Cancel(Call& call)
{
    call.content.values["editing"] = false;
    return false;
}

// The fields of a rule's row; the edit row also carries the stored values (the fields ending in Old).
void AddRuleFields(page::Page& page, const std::string& prefix, bool old)
{
    const char* const ids[] = {old ? "protocol" : "proto", "src_port", "dest_ip", "dest_port"};
    for (int i = 0; i < 4; ++i) {
        const std::string name = kRuleFields[i], id = prefix + ids[i];
        page.Add(i == 0   ? Field::Select(name, id, "", {{"TCP", "tcp"}, {"UDP", "udp"}}).Required()
                 : i == 2 ? Field::Ip(name, id, "").Required()
                          : Field::Unsigned(name, id, "").Required().Range(1, 65535));
        if (old)
            page.Add(Field::Hidden(name + "Old", id + "_old"));
    }
}

}  // namespace

page::Page PortForwarding()
{
    page::Page pfw("port_forwarding", "Port Forwarding");
    pfw.Menu("Port Forwarding").View("PortForwarding").Prepare(Show).Form("forwarding_form", "", "add", "Add Row");
    AddRuleFields(pfw, "cfg_pfwadd_", false);
    pfw.Add(Field::Submit("add", "cfg_pfwadd_add", "Add Row"))
        .Invalid([](Call&) { PK_ERROR() << "PortForwarding row add failed validation"; })
        .Also(Unique)
        .SaveWith(Write)
        .After(Added);
    pfw.Part("save", "Save");
    AddRuleFields(pfw, "cfg_pfw_", true);
    pfw.Add(Field::Submit("save", "cfg_pfw_save", "Save"))
        .Add(Field::Submit("cancel", "cfg_pfw_cancel", "Cancel"))
        .Invalid(Restore)
        .Also(Unique)
        .SaveWith(Write)
        .After(Saved);
    pfw.On("edit", "Edit", Edit).On("delete", "Delete", Delete).On("cancel", "Cancel", Cancel);
    pfw.Status("port_forwarding_status",
               {page::Output::Command("filtering", "Filtering", {"iptables", "-n", "-L", "-v"}, 4096),
                page::Output::Command("nat", "NAT", {"iptables", "-t", "nat", "-n", "-L", "-v"}, 4096)});
    return pfw;
}

}  // namespace panelkit::pages
