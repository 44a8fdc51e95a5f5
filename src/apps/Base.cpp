// panelkit apps: the base of every page controller: common page content, menus, request helpers, form safety.
#include "apps/Base.h"

#include "apps/Network.h"
#include "apps/Settings.h"
#include "page/Page.h"
#include "page/Runner.h"
#include "util/DevicePath.h"
#include "util/Environment.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "util/PluginManager.h"
#include "views/Registry.h"
#include "web/Form.h"
#include "web/Log.h"
#include "web/Request.h"
#include "web/Response.h"
#include "web/Settings.h"

#include <Poco/DigestEngine.h>

#include <openssl/crypto.h>
#include <sys/random.h>

#include <memory>
#include <utility>

namespace panelkit::apps {

namespace {

const char kTokenCookie[] = "panelkit_csrf";
const char kTokenField[] = "_csrf";
constexpr std::size_t kTokenBytes = 16;

std::string CookieValue(const std::string& header, const std::string& name)
{
    std::size_t at = 0;
    while (at < header.size()) {
        const auto end = std::min(header.find(';', at), header.size());
        std::string pair = header.substr(at, end - at);
        const auto first = pair.find_first_not_of(' ');
        pair = first == std::string::npos ? "" : pair.substr(first);
        const auto eq = pair.find('=');
        if (eq != std::string::npos && pair.compare(0, eq, name) == 0 && eq == name.size())
            return pair.substr(eq + 1);
        at = end + 1;
    }
    return "";
}

bool WellFormedToken(const std::string& token)
{
    if (token.size() != 2 * kTokenBytes)
        return false;
    for (char c : token)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f')))
            return false;
    return true;
}

std::string NewToken()
{
    // The kernel's generator: cheap per call, and it keeps OpenSSL's generator (and the
    // memory it takes) out of every page view.
    unsigned char bytes[kTokenBytes];
    if (::getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes))
        throw web::Error("no random bytes for a form token");
    return Poco::DigestEngine::digestToHex(Poco::DigestEngine::Digest(bytes, bytes + sizeof bytes));
}

bool SameToken(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

std::string WithLeadingSlash(std::string path)
{
    if (!path.empty() && path[0] != '/')
        path.insert(path.begin(), '/');
    return path;
}

}  // namespace

Base::Base(web::Service& service, const std::string& name) : web::Application(service), name_(name)
{
}

std::string Base::_FormToken()
{
    const std::string cookie = CookieValue(request().header("Cookie"), kTokenCookie);
    if (WellFormedToken(cookie))
        return cookie;
    // A strict same-site cookie: another site's page can neither read it nor send it along.
    const std::string token = NewToken();
    response().setHeader("Set-Cookie",
                         std::string(kTokenCookie) + "=" + token + "; Path=/; SameSite=Strict; HttpOnly");
    return token;
}

void Base::main(const std::string& url)
{
    token_ = _FormToken();
    if (request().method() == "POST" && !SameToken(request().post(kTokenField), token_)) {
        PK_WARNING() << "Refused a POST to " << request().path() << " without a valid form token";
        response().errorPage(403, "The form could not be accepted: its security token is missing or out of date. "
                                  "Reload the page and try again.");
        return;
    }
    web::Application::main(url);
}

void Base::Prepare(data::Base& content)
{
    auto& branding = content.branding;
    const web::Settings& config = settings();
    branding.footer_right_text = config.get("panelkit.branding.footer_right_text", "");
    branding.footer_left_text = config.get("panelkit.branding.footer_left_text", "");
    branding.banner_text = config.get("panelkit.branding.banner_text", "");
    branding.window_text = config.get("panelkit.branding.window_text", "");
    branding.banner_html = config.get("panelkit.branding.banner_html", "");
    branding.footer_html = config.get("panelkit.branding.footer_html", "");
    util::PluginManager& plugins = util::PluginManager::Instance();
    plugins.PopulateBranding(branding);
    plugins.PopulateMenuStartHook(content.menus);
    PrepareMenus(content.menus);
    plugins.PopulateMenuEndHook(content.menus);
    content.media_root = WithLeadingSlash(util::EnvOrSettings("MEDIA_ROOT", "panelkit.media_root", config));
    const std::string pluginMedia =
        WithLeadingSlash(util::EnvOrSettings("PLUGIN_MEDIA_ROOT", "panelkit.plugin_media_root", config));
    content.app_media_root = pluginMedia + "/" + name_;
    plugins.PopulateStyleSheets(pluginMedia, content.stylesheets);
    plugins.PopulateScripts(pluginMedia, content.scripts);
    content.build_date = __DATE__ __TIME__;
    content.reboot_required = util::IsRebootRequired();
    content.fw_base_alert = GetFWBaseAlertStatus();
    content.csrf_token = token_;
}

void Base::PrepareMenus(std::vector<data::Menu>& menus)
{
    // The built-in groups never change: made once from the controllers' page tables, copied into each page.
    static const std::vector<data::Menu> builtIn = {MenuGroup("Network", "/network", Network::Pages()),
                                                   MenuGroup("Settings", "/settings", Settings::Pages())};
    menus.insert(menus.end(), builtIn.begin(), builtIn.end());
}

int Base::GetFWBaseAlertStatus()
{
    std::string text;
    if (!util::ReadFileHead(util::DevicePath("/var/run/.fw_base_status"), 64 * 1024, text))
        return 0;
    Json::Value status;
    Json::CharReaderBuilder builder;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    reader->parse(text.data(), text.data() + text.size(), &status, &errors);
    try {
        const std::string state = status["status"].asString();
        if (!status["status"].isString())
            return 0;
        if (state == "mismatched_recovery_base")
            return 1;
        if (state == "fallback_to_wrong_base")
            return 2;
    } catch (const Json::Exception&) {
    }
    return 0;
}

bool Base::HttpGet()
{
    return request().method() == "GET";
}

bool Base::HttpPost()
{
    return request().method() == "POST";
}

bool Base::HttpPut()
{
    return request().method() == "PUT";
}

std::string Base::HttpGet(const std::string& name)
{
    return request().get(name);
}

std::string Base::HttpPost(const std::string& name)
{
    return request().post(name);
}

bool Base::ValidateForm(web::Form& form)
{
    form.load(request());
    return form.validate();
}

bool Base::UsingInternalServer()
{
    return settings().at("service.api").asString() == "http";
}

std::string Base::StatusUrl() const
{
    return "/" + settings().at("panelkit.root.async").asString() + "/" + settings().at("panelkit.root.rpc").asString();
}

void Base::render(const std::string& view, data::Base& content)
{
    views::Registry::Instance().Render(view, response().out(), content, *this);
}

void Base::Bind(const std::vector<page::Page>& pages)
{
    for (const auto& page : pages) {
        if (!page.Pattern().empty())
            mapper().assign(page.Name(), page.Pattern());
        for (const auto& expression : page.Expressions())
            dispatcher().add(expression, page.Groups(),
                             [this, &page](const std::vector<std::string>& args) { Serve(page, args); });
    }
}

void Base::Serve(const page::Page& page, const std::vector<std::string>& args)
{
    page::Runner::Serve(*this, page, args);
}

data::Menu Base::MenuGroup(const std::string& text, const std::string& mount, const std::vector<page::Page>& pages)
{
    data::Menu group(text);
    for (const auto& page : pages)
        if (!page.MenuText().empty())
            group << data::Menu(page.MenuText(), mount + page.Pattern());
    return group;
}

}  // namespace panelkit::apps
