// panelkit pages: the Firmware page: installed versions, the image upload and the hand-over to the firmware tool.
#include "pages/Firmware.h"

#include "apps/Base.h"
#include "page/Content.h"
#include "page/Form.h"
#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Environment.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "web/Log.h"
#include "web/Response.h"
#include "web/Service.h"
#include "web/widgets/File.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace panelkit::pages {

namespace {

constexpr char kBaseVersion[] = "0.52";
constexpr char kPlatform[] = "kd4";
constexpr std::int64_t kLargestImage = 314572800;  // 300 MiB
// A FIT image is a flattened device tree: it begins with the tree's magic.
const std::string kImageMagic("\xD0\x0D\xFE\xED", 4);

// What both firmware pages show and their scripts need.
void _Describe(page::Call& call)
{
    page::Content& content = call.content;
    content.title = "Firmware";
    content.status_url = call.app.StatusUrl();
    std::string versions = util::Run({util::DevicePath("/usr/bin/ubi_get_volume_versions.sh")}, 4096);
    if (versions.empty()) {
        versions = "n/a";
        content.message = data::Message::Error("Unknown firmware version(s)");
    }
    content.sections = {{"Firmware Version(s)", versions},
                        {"FW Tool", util::Run({util::DevicePath("/usr/bin/fwtool"), "-s"}, 4096)},
                        {"Base", kBaseVersion}};
    Json::Value& values = content.values;
    values["statusUrl"] = content.status_url;
    values["internalServer"] = call.app.UsingInternalServer();
    values["platform"] = kPlatform;
    values["firmwareUrl"] = call.app.url("/settings/firmware");
    values["rebootUrl"] = call.app.url("/settings/reboot");
}

void _ShowProgress(page::Call& call)
{
    call.content.values["progress"] = true;
    call.app.render("FirmwareUpgradeProgress", call.content);
    call.content.answered = true;
}

// Claims "/tmp/firmware" and a number for the image, never through a link and never over another
// file, then moves the upload there.
bool _StoreImage(const web::UploadedFile& upload, std::string& target)
{
    for (int attempt = 0; attempt < 1000; ++attempt) {
        // Not seeded: the device's tool has always been given such names.
        const std::string candidate = util::DevicePath("/tmp/firmware" + std::to_string(std::rand() % 10000));
        const int fd = ::open(candidate.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd < 0 && errno == EEXIST)
            continue;
        if (fd < 0) {
            PK_ERROR() << "Cannot create " << candidate << ": " << std::strerror(errno);
            return false;
        }
        ::close(fd);
        if (!util::MoveFile(upload.path, candidate)) {
            PK_ERROR() << "Cannot move the firmware upload to " << candidate;
            ::unlink(candidate.c_str());
            return false;
        }
        target = candidate;
        return true;
    }
    PK_ERROR() << "No free firmware file name in " << util::DevicePath("/tmp");
    return false;
}

// A valid upload: store it, prepare the device, answer with the progress page and hand over to
// the main loop, which starts the tool once the service is down.
bool _StartUpgrade(page::Call& call)
{
    const web::UploadedFile* upload = call.form.Get<web::widgets::File>("fwupload").value();
    if (upload->mime != "application/octet-stream") {
        PK_ERROR() << "Unrecognized firmware MIME type " << upload->mime;
        return false;
    }
    std::string image;
    if (!_StoreImage(*upload, image))
        return false;
    util::RunStatus({"vigild", "--suspend", "socat"});
    ::unlink(util::DevicePath("/tmp/fwtool_status.txt").c_str());
    ::unlink(util::DevicePath("/var/volatile/tmp/fwtool_status.txt").c_str());
    if (call.app.UsingInternalServer())
        ::setenv("FWBOOT", "1", 1);
    util::FirmwareUpgradeFile() = image;
    PK_INFO() << "Firmware image " << image << " (" << upload->size << " bytes, SHA-256 " << upload->sha256
              << ") handed to the upgrade";
    call.content.values["sha256"] = upload->sha256;
    call.content.values["size"] = Json::UInt64(upload->size);
    _ShowProgress(call);
    util::MarkFirmwareUpgrade(true);
    util::MarkForceReload(true);
    call.app.service().shutdown();
    return true;
}

}  // namespace

page::Page Firmware()
{
    using page::Field;
    page::Page firmware("firmware", "Firmware");
    firmware.Menu("Firmware").View("Firmware").Form("component_config").Multipart();
    firmware.Add(Field::File("fwupload", "cfg_frw_file", "Load Firmware")
                     .Required()
                     .Upload(1, kLargestImage, "", ".*\\.(bin|itb)", kImageMagic)
                     .Attributes("accept=\".bin,.itb\"")
                     .Help("A .bin or .itb image for this device, at most 300 MiB")
                     .Error("Not a firmware image: choose a .bin or .itb image for this device, at most 300 MiB"))
        .Add(Field::Submit("submit", "cfg_frw_save", "Load Firmware"))
        .SaveWith(_StartUpgrade);
    firmware.Prepare([](page::Call& call) {
        _Describe(call);
        if (util::IsFirmareUpgradeInProgress())
            return _ShowProgress(call);
        if (call.app.HttpGet("type") == "failedUpgrade")
            call.content.message = data::Message::Error("Firmware upgrade failed");
    });
    return firmware;
}

page::Page FirmwareUpgradeStatus()
{
    page::Page status("firmware_upgrade_status", "Firmware");
    status.Prepare([](page::Call& call) {
        if (!util::IsFirmareUpgradeInProgress()) {
            call.app.response().redirect(call.app.url("/settings/firmware"));
            call.content.answered = true;
            return;
        }
        _Describe(call);
        _ShowProgress(call);
    });
    return status;
}

}  // namespace panelkit::pages
