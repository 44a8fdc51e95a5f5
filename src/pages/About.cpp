// panelkit pages: the About page: the licence notices of the device's open-source packages, one of them opened.
#include "pages/About.h"

#include "page/Content.h"
#include "util/DevicePath.h"
#include "util/Files.h"

#include <dirent.h>
#include <strings.h>

namespace panelkit::pages {

namespace {

// One folder of licence files per package.
const char kLicenceDir[] = "/usr/share/common-licenses";

// Licence texts are a few kilobytes; the bound keeps a mistaken link (a device file) from filling the page.
constexpr std::size_t kMaxLicenceBytes = 1 << 20;

std::set<OSSFile> LicenceFiles(const std::string& dir)
{
    std::set<OSSFile> files;
    DIR* folder = ::opendir(dir.c_str());
    if (!folder)
        return files;
    while (const dirent* entry = ::readdir(folder))
        if ((entry->d_type == DT_REG || entry->d_type == DT_LNK) && entry->d_name[0] != '.')
            files.insert(OSSFile{entry->d_name, ""});
    ::closedir(folder);
    return files;
}

// The requested file, found without regard to case, gets its text; a name not listed changes nothing.
void Open(OSSPackages& packages, const std::string& package, const std::string& file)
{
    const auto listed = packages.find(package);
    if (listed == packages.end())
        return;
    auto& files = listed->second;
    const auto found = files.find(OSSFile{file, ""});
    if (found == files.end())
        return;
    // The stored name, not the requested one: the file system tells case apart.
    OSSFile opened{found->name, ""};
    const std::string path = std::string(kLicenceDir) + "/" + package + "/" + opened.name;
    if (!util::ReadFileHead(util::DevicePath(path), kMaxLicenceBytes, opened.text))
        opened.text = "Failed to access \"" + path + "\"";
    files.erase(found);
    files.insert(std::move(opened));
}

// Both routes show the list; the view finds each file as a section titled "package/file" with its text.
page::Page Notices(const std::string& name)
{
    page::Page about(name, "Open Source Software  Notices");
    about.View("About").Prepare([](page::Call& call) {
        OSSPackages packages;
        GetOSSFiles(util::DevicePath(kLicenceDir), packages);
        if (call.args.size() == 2)
            Open(packages, call.args[0], call.args[1]);
        for (const auto& [package, files] : packages)
            for (const auto& file : files)
                call.content.sections.emplace_back(package + "/" + file.name, file.text);
    });
    return about;
}

}  // namespace

bool OSSFile::operator<(const OSSFile& other) const
{
    return ::strcasecmp(name.c_str(), other.name.c_str()) < 0;
}

void GetOSSFiles(const std::string& dir, OSSPackages& out)
{
    for (const auto& package : util::FindFiles(dir, util::FindFilesType::Directory, ".*")) {
        std::set<OSSFile> files = LicenceFiles(dir + "/" + package);
        if (!files.empty())
            out.emplace(package, std::move(files));
    }
}

page::Page About()
{
    return Notices("about").Menu("About");
}

page::Page AboutFile()
{
    // Both names start with a letter or digit and hold no "/": no path leaves the licence folder.
    return Notices("about2").Route(
        "/about/{1}/{2}",
        {"/about/([A-Za-z0-9][A-Za-z0-9-\\+\\.]*)/([A-Za-z0-9][A-Za-z0-9-_\\+\\.]*)"}, {1, 2});
}

}  // namespace panelkit::pages
