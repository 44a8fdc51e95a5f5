// panelkit pages: the Advanced page: remote access, logs, passwords, erasing, the configuration listing and its restore.
#include "pages/Advanced.h"

#include "apps/Base.h"
#include "page/Content.h"
#include "page/Form.h"
#include "util/Commands.h"
#include "util/ConfigBackup.h"
#include "util/DeviceIdentity.h"
#include "util/DevicePath.h"
#include "util/Environment.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "util/Pardb.h"
#include "util/Passwords.h"
#include "util/Validation.h"
#include "web/Log.h"
#include "web/Response.h"
#include "web/widgets/Checkbox.h"
#include "web/widgets/File.h"
#include "web/widgets/Select.h"
#include "web/widgets/Text.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace panelkit::pages {

namespace {

using data::Message;
using web::widgets::BaseWidget;

const char kRealm[] = "Halvor Configuration Tool";
const int kBackupLimit = 1 << 20;
// The magic number of the ext2/3/4 file systems.
const long kExtMagic = 61267;

// A switch of the administration form and its key, stored as "yes" / "no".
struct Switch {
    const char* field;
    const char* key;
};
const Switch kRemoteAccess[] = {{"remoteSshEnabled", "system/remote/ssh_enabled"},
                                {"remoteWebEnabled", "system/remote/web_enabled"},
                                {"remoteIcmpEnabled", "system/remote/icmp_enabled"}};
const Switch kPersistentLog = {"persistentSysLog", "syslogd/persistent"};

// What the application reset deletes from the store.
const char* const kApplicationKeys[] = {"/deployment", "/components", "/component_types",
                                        "/connections", "/peers",      "/can"};

bool Succeeded(int status)
{
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void ApplyRemoteAccess()
{
    util::RunStatus({util::DevicePath("/etc/nat_setup.sh"), "web_advanced"});
}

void MarkReboot(page::Call& call)
{
    util::MarkRebootRequired();
    call.content.reboot_required = util::IsRebootRequired();
}

std::string SyslogPath()
{
    return util::Pardb::GetString("syslogd/persistent") == "yes" ? "/home/root/log/messages" : "/var/log/messages";
}

std::string Trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// Administration: every switch is written only when it changed, in order, each write only after the last succeeded.

// Writes the switch when its box differs from what is stored; false when that write failed.
bool SaveSwitch(page::Form& form, const Switch& which, bool& written)
{
    const bool on = form.Value(which.field) == "yes";
    written = (util::Pardb::GetString(which.key) == "yes") != on;
    return !written || util::Pardb::Set(which.key, on ? "yes" : "no");
}

bool SaveAdministration(page::Call& call)
{
    bool remoteChanged = false;
    for (const auto& which : kRemoteAccess) {
        bool written = false;
        if (!SaveSwitch(call.form, which, written))
            return false;
        remoteChanged = remoteChanged || written;
    }
    bool logWritten = false;
    if (!SaveSwitch(call.form, kPersistentLog, logWritten))
        return false;
    if (logWritten)
        MarkReboot(call);
    const bool debug = call.form.Value("gsmDebug") == "yes";
    if ((util::Pardb::GetInt("debug/seriald") >= 1) != debug && !util::Pardb::Set("debug/seriald", debug ? 5 : 0))
        return false;
    if (remoteChanged)
        ApplyRemoteAccess();
    return true;
}

// Passwords: computed here, so that no password reaches a shell, a command line or the log.

// Both entries must agree; otherwise both show why.
bool Matching(page::Call& call, const std::string& prefix)
{
    auto& password = call.form.Get<web::widgets::Text>(prefix + "_password");
    auto& confirm = call.form.Get<web::widgets::Text>(prefix + "_passwordConfirm");
    if (password.value() == confirm.value())
        return true;
    for (web::widgets::Text* entry : {&password, &confirm}) {
        entry->error_message("Passwords do not match");
        entry->valid(false);
        util::validation::AddClass(*entry, "cppcms_error_msg");
    }
    return false;
}

bool SaveWebPassword(page::Call& call)
{
    const std::string password = call.form.Value("web_password");
    const std::string digest = util::HttpDigestHash("admin", kRealm, password);
    if (digest.empty()) {
        call.content.message = Message::Error("Error: The web password could not be changed");
        return false;
    }
    if (!util::Pardb::Set("webman/digest/admin", digest))
        return false;
    util::RunWithInput({util::DevicePath("/usr/sbin/lighttpd_set_passwd.sh")}, "");
    ApplyRemoteAccess();
    return true;
}

bool SaveRootPassword(page::Call& call)
{
    const std::string hash = util::CryptSha512(call.form.Value("root_password"));
    if (hash.empty()) {
        call.content.message = Message::Error("Error: The root password could not be changed");
        return false;
    }
    if (!util::Pardb::Set("system/digest/root", hash))
        return false;
    util::RunWithInput({util::DevicePath("/usr/sbin/chpasswd"), "--encrypted"}, "root:" + hash + "\n");
    ApplyRemoteAccess();
    return true;
}

// Erasing.

std::string DeployerScript()
{
    const std::string applications = util::GetEnv("APPLICATION_DIR");
    const std::string script = "/etc/rcS.d/deployer";
    return applications.empty() ? util::DevicePath(script) : applications + script;
}

// Stops the deployer, deletes the applications' keys and starts it again; false when any step failed.
bool ResetApplication()
{
    const std::string deployer = DeployerScript();
    bool succeeded = !util::FileExists(deployer) || Succeeded(util::RunStatus({deployer, "stop"}));
    // The time the deployer takes to let go of the store.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    for (const char* key : kApplicationKeys)
        succeeded = Succeeded(util::RunStatus({util::DevicePath("/usr/bin/pardb"), "del", key})) && succeeded;
    if (util::FileExists(deployer))
        succeeded = Succeeded(util::RunStatus({deployer, "start"})) && succeeded;
    return succeeded;
}

// Removes the key-value server's dumps ("*rdb", as the shell's pattern matches them) and writes the folder's
// file system out; false when a dump stayed.
bool RemoveDumps(const std::string& folder)
{
    bool removed = true;
    for (const auto& name : util::FindFiles(folder, util::FindFilesType::Any, "^(rdb|[^.].*rdb)$"))
        removed = (::unlink((folder + "/" + name).c_str()) == 0 || errno == ENOENT) && removed;
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        removed = ::syncfs(fd) == 0 && removed;
        ::close(fd);
    }
    return removed;
}

void EraseAll()
{
    // The key-value server is told to keep its next dump in volatile memory, then to close the connection.
    const std::string nc = util::DevicePath("/usr/bin/nc");
    util::RunWithInput({nc, "localhost", "6379"}, "CONFIG SET dir \"/var/volatile/tmp\"\n");
    util::RunWithInput({nc, "localhost", "6379"}, "quit\n");
    // As designed, the erase goes on: the reboot still clears what the server holds.
    if (!RemoveDumps(util::DevicePath("/home/root/config")))
        PK_ERROR() << "Erasing config flash partition failed";
}

bool EraseConfiguration(page::Call& call)
{
    if (call.form.Value("eraseType") == "erase_sensors") {
        if (ResetApplication())
            return true;
        call.content.message = Message::Error("Error: Failure erasing persistent storage");
        return false;
    }
    EraseAll();
    MarkReboot(call);
    return true;
}

bool ErasePartition(page::Call& call)
{
    const bool log = call.form.Value("eraseWhich") == "erase_log";
    if (!Succeeded(util::RunStatus({util::DevicePath("/etc/erase/erase-partition"), log ? "log" : "data"}))) {
        call.content.message =
            Message::Error(log ? "Error: Failure erasing log partition." : "Error: Failure erasing data partition.");
        return false;
    }
    call.content.message = Message::OK(log ? "Success: The log partition was erased. Reboot now."
                                           : "Success: The data partition was erased. Reboot now.");
    MarkReboot(call);
    return true;
}

// The partitions: their lines label the choices, and one that cannot be read is reported on every request.

std::string OptionLabel(const std::string& label, const std::string& folder)
{
    const std::string line = PartitionLine(label, util::DevicePath(folder));
    return line == "unknown" ? label + " (unknown)" : line;
}

void ReportUnknownPartitions(page::Call& call)
{
    if (PartitionLine("Log Partition", util::DevicePath("/home/root/log")) == "unknown")
        call.content.message = Message::Error("Unknown log partition information", true);
    if (PartitionLine("Data Partition", util::DevicePath("/home/root/data")) == "unknown")
        call.content.message = Message::Error("Unknown data partition information", true);
}

// The configuration listing and its restore.

bool BackupConfiguration(page::Call& call)
{
    web::Response& response = call.app.response();
    response.contentType("text/plain");
    response.setHeader("Content-disposition", web::Response::Attachment("Config_" + util::SystemAssemblySN() + ".txt"));
    response.out() << util::ConfigBackup::Listing();
    return true;
}

bool RestoreConfiguration(page::Call& call)
{
    const web::UploadedFile* upload = call.form.Get<web::widgets::File>("configFile").value();
    std::string text;
    if (!upload || !util::ReadFileHead(upload->path, kBackupLimit + 1, text))
        return false;
    std::vector<util::ConfigBackup::Entry> entries;
    std::string error;
    if (!util::ConfigBackup::Parse(text, entries, error)) {
        call.content.message = Message::Error(error);
        return false;
    }
    std::size_t changed = 0;
    if (!util::ConfigBackup::Restore(entries, changed))
        return false;
    MarkReboot(call);
    call.content.message =
        Message::OK("Configuration restored: " + std::to_string(changed) + " keys changed. Reboot to take effect");
    return true;
}

// The logs.

bool DownloadSyslog(page::Call& call)
{
    call.app.response().sendFile(util::DevicePath(SyslogPath()),
                                 "ULM3_syslog_" + util::Pardb::GetString("net/hostname") + ".txt", "text/plain");
    return true;
}

// The device file an absolute path names, "" for anything else (a path climbing out of the device root too).
std::string DeviceFile(const std::string& path)
{
    if (path.empty() || path[0] != '/' || path.find('\n') != std::string::npos)
        return "";
    for (std::size_t at = 0; (at = path.find("/..", at)) != std::string::npos; ++at)
        if (at + 3 == path.size() || path[at + 3] == '/')
            return "";
    struct stat info {};
    const std::string file = util::DevicePath(path);
    return ::stat(file.c_str(), &info) == 0 && S_ISREG(info.st_mode) ? file : "";
}

// The tool writes the log into a file and prints its path, or prints why it could not.
bool DownloadDeployerLog(page::Call& call)
{
    const std::string output = Trimmed(util::Run({util::DevicePath("/usr/bin/logdeployer")}, 4096));
    const std::string path = DeviceFile(output);
    if (path.empty()) {
        call.content.message = Message::Error(output.empty() ? "Error: The deployer log could not be made" : output);
        return false;
    }
    web::Response& response = call.app.response();
    response.sendFile(path, output.substr(output.rfind('/') + 1), "text/plain");
    response.removeFileAfterSending();
    return true;
}

// The rows of one password, named with its prefix ("web", "root"); a root password has a shortest length.
void AddPassword(page::Page& page, const std::string& prefix, const std::string& caption, int shortest)
{
    using page::Field;
    Field password = Field::Password(prefix + "_password", "cfg_adv_passwd_" + prefix, "New Password");
    if (shortest > 0)
        password.MinLength(shortest);
    page.Add(password)
        .Add(Field::Password(prefix + "_passwordConfirm", "cfg_adv_passwd_cnfm_" + prefix, "Confirm Password"))
        .Add(Field::Submit("submit", "cfg_adv_passwd_save_" + prefix, caption))
        .Also([prefix](page::Call& call) { return Matching(call, prefix); });
}

}  // namespace

std::string PartitionUsage(const std::string& label, std::uint64_t blocks, std::uint64_t freeBlocks,
                           std::uint64_t blockSize)
{
    if (blocks == 0 || freeBlocks > blocks)
        return "unknown";
    // Kilobytes to gigabytes in single precision, as the device has always shown them.
    const float gigabytes = static_cast<float>(freeBlocks * (blockSize / 1024)) * 9.536743e-7f;
    const int used = static_cast<int>(100 * (blocks - freeBlocks) / blocks);
    char line[64];
    std::snprintf(line, sizeof line, "%s (%.1fGB free, %i%% used)", label.c_str(), static_cast<double>(gigabytes),
                  used);
    return line;
}

std::string PartitionLine(const std::string& label, const std::string& folder)
{
    struct statfs info {};
    if (::statfs(folder.c_str(), &info) != 0)
        return "unknown";
    // A simulated device lies on whatever file system the host has; the device's partitions are ext.
    if (util::DeviceRoot().empty() && static_cast<long>(info.f_type) != kExtMagic)
        return "unknown";
    return PartitionUsage(label, info.f_blocks, info.f_bfree, static_cast<std::uint64_t>(info.f_bsize));
}

page::Page Advanced()
{
    using page::Field;
    page::Page advanced("advanced", "Advanced Configuration Options");
    advanced.Menu("Advanced").Prepare(ReportUnknownPartitions);

    advanced.Form("advanced_administration", "Administration", "submit", "Save")
        .Add(Field::Check("remoteSshEnabled", "cfg_adv_remote_ssh", "Enable remote SSH (password)")
                 .Flag(kRemoteAccess[0].key))
        .Add(Field::Check("remoteWebEnabled", "cfg_adv_remote_web", "Enable remote web access (password)")
                 .Flag(kRemoteAccess[1].key))
        .Add(Field::Check("remoteIcmpEnabled", "cfg_adv_remote_icmp", "Enable remote ICMP (ping)")
                 .Flag(kRemoteAccess[2].key))
        .Add(Field::Check("persistentSysLog", "cfg_adv_persistent_syslog", "Enable persistent system log")
                 .Flag(kPersistentLog.key))
        // Shown from the store only: the save writes 5 or 0 its own way.
        .Add(Field::Check("gsmDebug", "cfg_adv_gsm_debug", "Enable Cellular debug log")
                 .Bind(
                     "debug/seriald",
                     [](BaseWidget& widget) {
                         static_cast<web::widgets::Checkbox&>(widget).value(util::Pardb::GetInt("debug/seriald") >= 1);
                     },
                     {}))
        .Add(Field::Submit("submit", "cfg_adv_save", "Save"))
        .SaveWith(SaveAdministration);

    advanced.Form("advanced_password", "Passwords", "submit", "Save Web Password");
    AddPassword(advanced, "web", "Save Web Password", 0);
    advanced.SaveWith(SaveWebPassword).Part("submit", "Save Root Password");
    AddPassword(advanced, "root", "Save Root Password", 5);
    advanced.SaveWith(SaveRootPassword);

    advanced.Form("advanced_configuration", "Configuration", "submit", "Erase")
        .Multipart()
        .Add(Field::Radio("eraseType", "cfg_adv_erase_type", "Erase persistent configuration",
                          {{"Application", "erase_sensors"}, {"All (requires reboot)", "erase_all"}})
                 .Required())
        .Add(Field::Submit("submit", "cfg_adv_erase", "Erase")
                 .Help("Requires reboot")
                 .Confirm("Erase the chosen persistent configuration? It cannot be brought back."))
        .SaveWith(EraseConfiguration)
        .Part("submit", "ErasePartition")
        .Add(Field::Radio("eraseWhich", "cfg_adv_erase_which", "Erase flash partition", {})
                 .Configure([](BaseWidget& widget) {
                     auto& which = static_cast<web::widgets::Select&>(widget);
                     which.add(OptionLabel("Log Partition", "/home/root/log"), "erase_log");
                     which.add(OptionLabel("Data Partition", "/home/root/data"), "erase_data");
                 })
                 .Required())
        .Add(Field::Submit("submit", "cfg_adv_erase_partition", "ErasePartition")
                 .Confirm("Erase everything on the chosen partition? It cannot be brought back."))
        .SaveWith(ErasePartition)
        .Part("submit", "Restore Configuration")
        .Add(Field::Submit("submit", "cfg_adv_backup", "Backup Configuration").Label("Configuration listing"))
        .Add(Field::File("configFile", "cfg_adv_restore_file", "Configuration backup").Length(1, kBackupLimit))
        .Add(Field::Submit("submit", "cfg_adv_restore", "Restore Configuration")
                 .Confirm("Replace the device's settings with those of the chosen backup?"))
        .SaveWith(RestoreConfiguration)
        .On("submit", "Backup Configuration", BackupConfiguration);

    advanced.Form("advanced_syslog", "System Log")
        .Multipart()
        .Add(Field::Submit("submit", "cfg_adv_syslog_download", "Download").Label("Download the system log"))
        .On("submit", "Download", DownloadSyslog)
        .StatusInTab("Recent Log Entries");
    advanced
        .Status("tail_syslog",
                {page::Output::Computed("tail", "",
                                        [] { return util::TailFile(util::DevicePath(SyslogPath()), 30, 8096); })},
                "advanced_syslog_dynamic")
        .StatusFailure("Error retrieving log: ");

    advanced.Form("advanced_deployerlog", "Deployer")
        .TabId("advanced_deployer_tab")
        .Multipart()
        .Add(Field::Submit("submit", "cfg_adv_deployer_download", "Download log").Label("Download the deployer log"))
        .On("submit", "Download log", DownloadDeployerLog);
    return advanced;
}

}  // namespace panelkit::pages
