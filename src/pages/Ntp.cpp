// panelkit pages: the NTP servers page: the time service's switch and upstream servers, and its daemon's state.
#include "pages/Ntp.h"

#include "page/Content.h"
#include "page/Form.h"
#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Files.h"

#include <Poco/RegularExpression.h>

namespace panelkit::pages {

namespace {

const std::size_t kLimit = 4096;
// The device runs chronyd when its client is installed, ntpd otherwise.
const char kChronyc[] = "/usr/bin/chronyc";
const char kJump[] = "Jump system time";

bool Has(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

// The daemon's init script; what it prints goes nowhere.
void Daemon(const char* action)
{
    util::RunWithInput({util::DevicePath("/etc/init.d/ntpd"), action}, "");
}

// The daemon must not read its settings half written: it is stopped around the writes, and started again
// whatever they did.
bool SaveStopped(page::Call& call)
{
    Daemon("stop");
    const bool saved = call.form.Save({});
    Daemon("start");
    // Whatever was written, the form shows what the daemon reads.
    call.form.Load();
    return saved;
}

// Tells chronyd its sources are online, which makes it step the clock to a reachable one at once.
bool JumpSystemTime(page::Call& call)
{
    call.content.selected_tab = 1;
    util::RunWithInput({util::DevicePath(kChronyc), "online"}, "");
    return false;
}

// chronyd's reply: whether it runs and, when it does, its tracking, sources and clients.
Json::Value ChronydStatus()
{
    const std::string chronyc = util::DevicePath(kChronyc);
    Json::Value reply(Json::objectValue);
    reply["isChronyd"] = true;
    const std::string tracking = util::Run({chronyc, "-n", "tracking"}, kLimit);
    const bool running = Has(tracking, "Reference ID");
    reply["running"] = running;
    if (!running)
        return reply;
    reply["tracking"] = tracking;
    reply["rawOutput"] = util::Run({chronyc, "-n", "sources", "-v"}, kLimit);
    reply["clients"] = util::Run({chronyc, "-n", "clients"}, kLimit);
    return reply;
}

Json::Value NtpServerStatus()
{
    if (util::FileExists(util::DevicePath(kChronyc)))
        return ChronydStatus();
    // ntpq tells that the daemon is down on its standard error.
    return NtpdStatus(util::RunMerged({"ntpq", "-pn"}, kLimit));
}

// The first group of the expression's first match in the text, "" when it does not match.
std::string FirstGroup(const Poco::RegularExpression& expression, const std::string& text)
{
    std::vector<std::string> groups;
    return expression.split(text, groups) > 1 ? groups[1] : "";
}

// The peer the daemon is synchronised to: its GPS, its PPS, both, or the selected ("*") peer's address.
std::string SyncTo(bool gpsSync, bool ppsSync, const std::string& peers)
{
    if (gpsSync && ppsSync)
        return "GPS with PPS";
    if (gpsSync)
        return "GPS";
    if (ppsSync)
        return "PPS";
    static const Poco::RegularExpression selected("(?m)^\\*([\\w\\.]+)\\s+");
    return FirstGroup(selected, peers);
}

}  // namespace

Json::Value NtpdStatus(const std::string& peers)
{
    Json::Value reply(Json::objectValue);
    const bool running = !Has(peers, "Connection refused");
    const bool hasGps = running && Has(peers, ".GPS");
    bool gpsSync = false;
    bool ppsSync = false;
    if (hasGps) {
        // A selected ("*") peer whose reference is the GPS.
        static const Poco::RegularExpression gps("(?m)^\\*[\\w\\.]+[\\s]+\\.GPS");
        // The tally code of the first PPS peer: selected ("*") or the pulse in use ("o").
        static const Poco::RegularExpression pps("(?m)^(.)[\\w\\.]+[\\s]+\\.PPS");
        Poco::RegularExpression::Match found;
        gpsSync = gps.match(peers, 0, found) > 0;
        const std::string tally = FirstGroup(pps, peers);
        ppsSync = tally == "*" || tally == "o";
    }
    reply["running"] = running;
    reply["hasGps"] = hasGps;
    reply["gpsSync"] = gpsSync;
    reply["ppsSync"] = ppsSync;
    reply["syncTo"] = running ? SyncTo(gpsSync, ppsSync, peers) : std::string();
    reply["rawOutput"] = peers;
    return reply;
}

page::Page Ntp()
{
    using page::Field;
    page::Page ntp("ntp", "NTP Servers");
    ntp.Menu("NTP Server").Form("ntpd_config", "", "submit", "Save");
    ntp.Add(Field::Check("ntpdEnabled", "ntpd_enabled", "Allow ntpd").Flag("system/ntpd/enabled"));
    // Any text is a server, stored as typed: the daemon itself tells a name it cannot reach.
    for (const std::string index : {"0", "1", "2", "3"})
        ntp.Add(Field::Text("server" + index, "cfg_ntpd_server" + index, "Server " + index + " Address")
                    .Key("system/ntpd/servers/" + index));
    ntp.Add(Field::Submit("submit", "cfg_ntpd_save", "Save")).SaveWith(SaveStopped).On("submit", kJump, JumpSystemTime);
    // One reading per reply: the daemon the device runs decides its members, and the page's script draws them.
    ntp.Status("ntpd_status", {}).StatusFrom(NtpServerStatus).Renderer("/js/ntp.js");
    return ntp;
}

}  // namespace panelkit::pages
