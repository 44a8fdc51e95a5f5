// panelkit web layer: static files of the media tree for the internal HTTP server.
#include "web/FileServer.h"

#include "web/Response.h"

#include <Poco/String.h>

#include <climits>
#include <cstdlib>
#include <map>
#include <sys/stat.h>

namespace panelkit::web {

namespace {

std::string RealPath(const std::string& path)
{
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) ? std::string(resolved) : std::string();
}

}  // namespace

FileServer::FileServer(const std::string& documentRoot) : root_(RealPath(documentRoot))
{
}

std::string FileServer::MimeType(const std::string& name)
{
    static const std::map<std::string, std::string> types = {
        {"html", "text/html; charset=utf-8"}, {"htm", "text/html; charset=utf-8"},
        {"css", "text/css; charset=utf-8"},   {"js", "application/javascript; charset=utf-8"},
        {"json", "application/json"},         {"txt", "text/plain; charset=utf-8"},
        {"png", "image/png"},                 {"gif", "image/gif"},
        {"jpg", "image/jpeg"},                {"jpeg", "image/jpeg"},
        {"svg", "image/svg+xml"},             {"ico", "image/x-icon"},
        {"woff", "font/woff"},                {"woff2", "font/woff2"},
        {"ttf", "font/ttf"},                  {"map", "application/json"},
    };
    const auto dot = name.rfind('.');
    const auto slash = name.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return "application/octet-stream";
    auto it = types.find(Poco::toLower(name.substr(dot + 1)));
    return it == types.end() ? "application/octet-stream" : it->second;
}

bool FileServer::serve(const std::string& path, Response& response) const
{
    if (root_.empty() || path.empty() || path[0] != '/' || path.find('\0') != std::string::npos)
        return false;
    // The resolved target must stay below the root: this refuses "..", and links leading out.
    const std::string target = RealPath(root_ + path);
    if (target.size() <= root_.size() || target.compare(0, root_.size(), root_) != 0 || target[root_.size()] != '/')
        return false;
    struct stat info {};
    if (::stat(target.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return false;
    response.sendFile(target, "", MimeType(target));
    return true;
}

}  // namespace panelkit::web
