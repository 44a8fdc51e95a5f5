// panelkit util: the plugin manager: finds plugin libraries, media and branding on the mounted
// volumes, loads them, and lets the plugins extend menus and attach applications.
#include "util/PluginManager.h"

#include "util/Environment.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "web/Log.h"

#include <algorithm>
#include <dlfcn.h>
#include <functional>
#include <fstream>
#include <memory>
#include <tuple>

namespace panelkit::util {

namespace {

std::mutex g_lock;
PluginManager* g_instance = nullptr;

const char kPluginFolder[] = "/var/www/panelkit/plugins/";

std::string PluginFolder(const std::string& mountDir, const std::string& volume)
{
    return mountDir + "/" + volume + kPluginFolder;
}

using Factory = PluginInterface* (*)();

// Files of one kind found on the volumes: (file name, volume), sorted by file name only.
std::vector<std::pair<std::string, std::string>> Collect(const std::vector<std::string>& volumes,
                                                         const std::string& pattern,
                                                         const std::function<std::string(const std::string&)>& folder,
                                                         const char* what)
{
    std::vector<std::pair<std::string, std::string>> found;
    for (const auto& volume : volumes) {
        const std::string directory = folder(volume);
        if (what)
            PK_INFO() << what << directory;
        for (const auto& name : FindFiles(directory, FindFilesType::Regular, pattern))
            found.emplace_back(name, volume);
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return found;
}

}  // namespace

bool& PluginManager::ForceReload()
{
    static bool force = false;
    return force;
}

PluginManager& PluginManager::Instance()
{
    std::lock_guard<std::mutex> guard(g_lock);
    if (g_instance && !ForceReload())
        return *g_instance;
    if (g_instance) {
        g_instance->Unload();
        delete g_instance;
        g_instance = nullptr;
        PK_INFO() << "** Recreating plugin manager **";
    }
    g_instance = new PluginManager;
    const std::string mountDir = GetEnv("MOUNT_DIR");
    if (mountDir.empty()) {
        PK_WARNING() << "$MOUNT_DIR environemt not set, skipping loading plugins";
    } else if (!IsFirmareUpgradeInProgress()) {
        std::vector<std::string> volumes = FindFiles(mountDir, FindFilesType::Directory, ".*");
        std::sort(volumes.begin(), volumes.end());
        g_instance->LoadBranding(mountDir, volumes);
        g_instance->LoadMedia(mountDir, volumes);
        g_instance->LoadLibraries(mountDir, volumes);
    }
    ForceReload() = false;
    return *g_instance;
}

PluginManager::~PluginManager()
{
    Unload();
}

std::string PluginManager::MediaFolder(const std::string& mountDir, const std::string& volume)
{
    return PluginFolder(mountDir, volume) + "media";
}

void PluginManager::LoadLibraries(const std::string& mountDir, const std::vector<std::string>& volumes)
{
    struct Record {
        std::string file;
        std::string volume;
        std::string path;
    };
    std::vector<Record> records;
    for (const auto& volume : volumes) {
        const std::string directory = PluginFolder(mountDir, volume);
        PK_INFO() << "search plugins: " << directory;
        for (const auto& file : FindFiles(directory, FindFilesType::Regular, ".*-panelkit-plugin.so$"))
            records.push_back({file, volume, directory + file});
    }
    std::sort(records.begin(), records.end(), [](const Record& a, const Record& b) {
        return std::tie(a.file, a.volume, a.path) < std::tie(b.file, b.volume, b.path);
    });
    for (const auto& record : records) {
        void* handle = ::dlopen(record.path.c_str(), RTLD_NOW);
        if (!handle) {
            PK_ERROR() << "load plugin: " << ::dlerror();
            continue;
        }
        ::dlerror();
        auto factory = reinterpret_cast<Factory>(::dlsym(handle, "create_panelkit_plugin"));
        if (const char* error = ::dlerror()) {
            PK_ERROR() << "load plugin: " << error;
            ::dlclose(handle);
            continue;
        }
        plugins_.push_back({record.path, factory(), handle, record.volume + "/" + record.file});
        PK_INFO() << "load plugin OK: " << record.path;
    }
}

void PluginManager::LoadMedia(const std::string& mountDir, const std::vector<std::string>& volumes)
{
    const auto head = [&](const std::string& volume) { return MediaFolder(mountDir, volume) + "/head"; };
    for (const auto& [pattern, list] : {std::make_pair(".*.css$", &styleSheets_), std::make_pair(".*.js$", &scripts_)}) {
        const bool first = list == &styleSheets_;
        for (const auto& [file, volume] : Collect(volumes, pattern, head, first ? "search media: " : nullptr)) {
            PK_DEBUG() << "adding media: " << file;
            list->push_back("/" + volume + "/head/" + file);
        }
    }
}

void PluginManager::LoadBranding(const std::string& mountDir, const std::vector<std::string>& volumes)
{
    const auto folder = [&](const std::string& volume) { return PluginFolder(mountDir, volume); };
    for (const auto& [file, volume] : Collect(volumes, ".*branding.json$", folder, "search branding: ")) {
        const std::string path = PluginFolder(mountDir, volume) + file;
        std::ifstream in(path);
        Json::Value parsed;
        Json::CharReaderBuilder builder;
        std::string errors;
        if (in && Json::parseFromStream(builder, in, &parsed, &errors)) {
            branding_ = parsed;
            PK_INFO() << "load branding OK: " << path;
            continue;
        }
        // jsoncpp reports "* Line N, Column M" first.
        const auto at = errors.find("Line ");
        const std::string line = at == std::string::npos ? "0" : errors.substr(at + 5, errors.find(',', at) - at - 5);
        PK_ERROR() << "load branding ERROR, line: " << line << " in file " << path;
    }
}

void PluginManager::PopulateBranding(data::Base::Branding& branding)
{
    if (branding_.isNull() || !branding_.isObject())
        return;
    const Json::Value& texts = branding_["branding"];
    const auto text = [&](const char* name) {
        return texts.isObject() && texts[name].isString() ? texts[name].asString() : std::string();
    };
    branding.banner_text = text("banner_text");
    branding.window_text = text("window_text");
    branding.footer_left_text = text("footer_left_text");
    branding.footer_right_text = text("footer_right_text");
    branding.banner_html = text("banner_html");
    branding.footer_html = text("footer_html");
}

void PluginManager::PopulateMenuStartHook(std::vector<data::Menu>& menus)
{
    for (auto& plugin : plugins_)
        plugin.plugin->PopulateMenuStart(menus);
}

void PluginManager::PopulateMenuEndHook(std::vector<data::Menu>& menus)
{
    for (auto& plugin : plugins_)
        plugin.plugin->PopulateMenuEnd(menus);
}

void PluginManager::AttachSynchronousAppsHook(web::Application& root, web::Service& service)
{
    AttachEach(&PluginInterface::AttachSynchronousApps, root, service, "Failed to attach synchronous app in plugin: ");
}

void PluginManager::AttachAsynchronousAppsHook(web::Application& container, web::Service& service)
{
    AttachEach(&PluginInterface::AttachAsynchronousApps, container, service,
               "Failed to attach asynchronous app in plugin: ");
}

void PluginManager::AttachEach(AttachSlot slot, web::Application& app, web::Service& service, const char* failure)
{
    for (auto& plugin : plugins_) {
        try {
            (plugin.plugin->*slot)(app, service, plugin);
        } catch (const std::exception&) {
            PK_ERROR() << failure << plugin.name;
        }
    }
}

void PluginManager::PopulateStyleSheets(const std::string& root, std::vector<std::string>& out)
{
    for (const auto& sheet : styleSheets_)
        out.push_back(root + sheet);
}

void PluginManager::PopulateScripts(const std::string& root, std::vector<std::string>& out)
{
    for (const auto& script : scripts_)
        out.push_back(root + script);
}

void PluginManager::Unload()
{
    for (auto& plugin : plugins_) {
        PK_INFO() << "Unloading the plugins library";
        if (!plugin.handle) {
            PK_INFO() << "No plugin loaded, skipping unloadPlugin()";
            continue;
        }
        PK_INFO() << "Unloading " << plugin.name;
        delete plugin.plugin;
        plugin.plugin = nullptr;
        if (::dlclose(plugin.handle) != 0)
            PK_ERROR() << "Failed to unload the plugin library!!: " << ::dlerror();
        plugin.handle = nullptr;
        PK_INFO() << "Unloaded plugin OK";
    }
    plugins_.clear();
    ForceReload() = true;
}

}  // namespace panelkit::util
