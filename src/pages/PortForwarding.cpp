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

#include <cstdlib>
#include <map>

namespace panelkit::pages {

namespace {

using page::Call;
using page::Field;

const char* const kProtocols[] = {"tcp", "udp"};
const char* const kRuleFields[] = {"protocol", "sourcePort", "destinationIP", "destinationPort"};
// The user rules by protocol; a key holding nothing usable is skipped, and logged in these words.
const page::Table kStores[] = {{"net/portfwd/tcp", {"d_ip", "d_port"}, "PortForwarding load TCP values"},
                               {"net/portfwd/udp", {"d_ip", "d_port"}, "PortForwarding load UDP values"}};
// Destination by protocol (0 TCP, 1 UDP) and source port: every TCP rule before every UDP rule, each by port.
using Rules = std::map<std::pair<unsigned, unsigned>, std::pair<std::string, int>>;
// The preset rules every device has besides the VNC one.
const Rules kFixed = {{{0, 8002}, {"192.168.0.100", 8002}}, {{0, 8003}, {"192.168.0.101", 8003}},
                      {{0, 8800}, {"192.168.0.20", 80}}};

// The row of a source port: five digits, so that the store lists the rules in port order.
std::string Row(const std::string& port) { return std::string(port.size() < 5 ? 5 - port.size() : 0, '0') + port; }

Json::Value Listed(const Rules& rules)
{
    Json::Value list(Json::arrayValue);
    for (const auto& [key, destination] : rules) {
        Json::Value& rule = list.append(Json::objectValue);
        rule["protocol"] = kProtocols[key.first];
        rule["sourcePort"] = key.second;
        rule["destinationIP"] = destination.first;
        rule["destinationPort"] = destination.second;
    }
    return list;
}

// A fixed rule wins over the VNC rule on the same port.
Json::Value Presets()
{
    Rules rules = kFixed;
    const int vnc = util::Pardb::GetInt("net/vnc/port");
    if (util::Pardb::Exists("net/vnc/port"))
        rules.insert({{0, static_cast<unsigned>(vnc)}, {util::Pardb::GetString("net/vnc/ipaddr"), vnc}});
    else
        PK_WARNING() << "net/vnc parameters not set";
    return Listed(rules);
}

// A rule missing one of its keys still shows, with no address or port 0.
Json::Value UserRules()
{
    Rules rules;
    for (unsigned protocol = 0; protocol < 2; ++protocol)
        for (const auto& [row, values] : kStores[protocol].Load())
            rules[{protocol, static_cast<unsigned>(std::strtoul(row.c_str(), nullptr, 10))}] = {
                values.at("d_ip"), std::atoi(values.at("d_port").c_str())};
    return Listed(rules);
}

// Both tables, and the editing state that the request carries in its hidden fields.
void Show(Call& call)
{
    Json::Value& values = call.content.values;
    values["preset"] = Presets();
    values["user"] = UserRules();
    values["editing"] = call.app.HttpPost("editing") == "true";
    values["rowId"] = static_cast<Json::Int64>(std::strtol(call.app.HttpPost("rowId").c_str(), nullptr, 10));
}

// After a change: the rules shown again, and applied.
void Changed(Call& call, bool editing)
{
    call.content.values["editing"] = editing;
    call.content.values["user"] = UserRules();
    util::RunStatus({util::DevicePath("/etc/nat_setup.sh"), "web_forwarding"});
}

// No two rules forward the same protocol and source port; the row being edited may keep its own.
bool Unique(Call& call)
{
    for (const std::string table : {"Preset", "User"}) {
        const Json::Value& rules = call.content.values[table == "User" ? "user" : "preset"];
        for (Json::ArrayIndex i = 0; i < rules.size(); ++i) {
            if (rules[i]["protocol"] != call.form.Value("protocol") ||
                rules[i]["sourcePort"].asString() != call.form.Value("sourcePort") ||
                (table == "User" && static_cast<Json::Int64>(i) == call.content.values["rowId"].asInt64()))
                continue;
            call.content.message = data::Message::Error("Port forward rule not added. " + table +
                                                        " rule exists with same protocol and source port.");
            return false;
        }
    }
    return true;
}

// A saved row replaces its keys; failed writes are logged by the store, and the page reports the save regardless.
bool Write(Call& call)
{
    const page::Table& store = kStores[call.form.Value("protocol") == "tcp" ? 0 : 1];
    const std::string row = Row(call.form.Value("sourcePort"));
    if (call.content.posted == 1)
        store.Remove(row);
    store.Write(row, {{"d_ip", call.form.Value("destinationIP")}, {"d_port", call.form.Value("destinationPort")}});
    return true;
}

// Edit makes the posted row the edited one, its values also kept as the stored ones; Cancel ends the editing.
bool Edit(Call& call)
{
    call.content.values["editing"] = call.app.HttpPost("edit") == "Edit";
    call.form.load(call.app.request());
    for (const char* name : kRuleFields)
        call.form.Set(std::string(name) + "Old", call.app.HttpPost(name));
    return false;
}

bool Delete(Call& call)
{
    // A row id out of range finds no rule: nothing is deleted, and the rules are applied all the same.
    const Json::Value& user = call.content.values["user"];
    const Json::Int64 rowId = call.content.values["rowId"].asInt64();
    if (rowId >= 0 && rowId < static_cast<Json::Int64>(user.size())) {
        const Json::Value& rule = user[static_cast<Json::ArrayIndex>(rowId)];
        kStores[rule["protocol"] == "tcp" ? 0 : 1].Remove(Row(rule["sourcePort"].asString()));
    }
    Changed(call, false);
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
        .Also(Unique).SaveWith(Write)
        .After([](Call& call) { Changed(call, call.content.values["editing"].asBool()); })
        .EmptyAfterSave();
    pfw.Part("save", "Save");
    AddRuleFields(pfw, "cfg_pfw_", true);
    pfw.Add(Field::Submit("save", "cfg_pfw_save", "Save"))
        .Add(Field::Submit("cancel", "cfg_pfw_cancel", "Cancel"))
        .Invalid([](Call& call) {
            // The refused row shows its stored values again.
            PK_ERROR() << "PortForwarding row save failed validation";
            for (const char* name : kRuleFields)
                call.form.Set(name, call.form.Value(std::string(name) + "Old"));
        })
        .Also(Unique).SaveWith(Write)
        .After([](Call& call) { Changed(call, false); });
    pfw.On("edit", "Edit", Edit).On("delete", "Delete", Delete).On("cancel", "Cancel", Edit);
    pfw.Status("port_forwarding_status",
               {page::Output::Command("filtering", "Filtering", {"iptables", "-n", "-L", "-v"}, 4096),
                page::Output::Command("nat", "NAT", {"iptables", "-t", "nat", "-n", "-L", "-v"}, 4096)});
    return pfw;
}

}  // namespace panelkit::pages
