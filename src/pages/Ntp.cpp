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

page::Page::Reply ChronydStatus()
{
    const std::string chronyc = util::DevicePath(kChronyc);
    page::Page::Reply reply{{"isChronyd", "true"}};
    const std::string tracking = util::Run({chronyc, "-n", "tracking"}, kLimit);
    if (!Has(tracking, "Reference ID")) {
        reply["state"] = "Stopped";
        return reply;
    }
    reply["state"] = "Running";
    reply["tracking"] = tracking;
    reply["sources"] = util::Run({chronyc, "-n", "sources", "-v"}, kLimit);
    reply["clients"] = util::Run({chronyc, "-n", "clients"}, kLimit);
    return reply;
}

page::Page::Reply NtpServerStatus()
{
    if (util::FileExists(util::DevicePath(kChronyc)))
        return ChronydStatus();
    // A fixed line: ntpq tells that the daemon is down on its standard error.
    return NtpdStatus(util::ShellCommand("ntpq -pn 2>&1", kLimit));
}

const char* Synchronised(bool sync)
{
    return sync ? "Synchronised" : "Not synchronised";
}

// The first group of the expression's first match in the text, "" when it does not match.
std::string FirstGroup(const Poco::RegularExpression& expression, const std::string& text)
{
    std::vector<std::string> groups;
    return expression.split(text, groups) > 1 ? groups[1] : "";
}

}  // namespace

page::Page::Reply NtpdStatus(const std::string& peers)
{
    page::Page::Reply reply{{"rawOutput", peers}};
    if (Has(peers, "Connection refused")) {
        reply["running"] = "No";
        return reply;
    }
    reply["running"] = "Yes";
    bool gpsSync = false;
    bool ppsSync = false;
    if (Has(peers, ".GPS")) {
        // A selected ("*") peer whose reference is the GPS.
        static const Poco::RegularExpression gps("(?m)^\\*[\\w\\.]+[\\s]+\\.GPS");
        // The tally code of the first PPS peer: selected ("*") or the pulse in use ("o").
        static const Poco::RegularExpression pps("(?m)^(.)[\\w\\.]+[\\s]+\\.PPS");
        Poco::RegularExpression::Match found;
        gpsSync = gps.match(peers, 0, found) > 0;
        const std::string tally = FirstGroup(pps, peers);
        ppsSync = tally == "*" || tally == "o";
        reply["gps"] = Synchronised(gpsSync);
        reply["pps"] = Synchronised(ppsSync);
    }
    static const Poco::RegularExpression selected("(?m)^\\*([\\w\\.]+)\\s+");
    if (gpsSync && ppsSync)
        reply["syncTo"] = "GPS with PPS";
    else if (gpsSync)
        reply["syncTo"] = "GPS";
    else if (ppsSync)
        reply["syncTo"] = "PPS";
    else
        reply["syncTo"] = FirstGroup(selected, peers);
    return reply;
}

page::Page Ntp()
{
    using page::Field;
    using page::Output;
    page::Page ntp("ntp", "NTP Servers");
    ntp.Menu("NTP Server").Form("ntpd_config", "", "submit", "Save");
    ntp.Add(Field::Check("ntpdEnabled", "ntpd_enabled", "Allow ntpd").Flag("system/ntpd/enabled"));
    // Any text is a server, stored as typed: the daemon itself tells a name it cannot reach.
    for (const std::string index : {"0", "1", "2", "3"})
        ntp.Add(Field::Text("server" + index, "cfg_ntpd_server" + index, "Server " + index + " Address")
                    .Key("system/ntpd/servers/" + index));
    ntp.Add(Field::Submit("submit", "cfg_ntpd_save", "Save")).SaveWith(SaveStopped).On("submit", kJump, JumpSystemTime);
    // One reading per reply: the daemon the device runs decides which blocks it has.
    ntp.Status("ntpd_status",
               {Output::Member("state", "State"),
                Output::Member("tracking", "Tracking")
                    .Button("status_ntp_manual_sync", "submit", kJump,
                            "(Synchronize system time immediately to a reachable source)"),
                Output::Member("sources", "Sources"), Output::Member("clients", "Clients"),
                Output::Member("running", "Running"), Output::Member("gps", "GPS"), Output::Member("pps", "PPS"),
                Output::Member("syncTo", "Synchronised To"), Output::Member("rawOutput", "Raw Output")})
        .StatusFrom(NtpServerStatus);
    return ntp;
}

}  // namespace panelkit::pages
