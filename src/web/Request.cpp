// panelkit web layer: one HTTP request as the pages see it, whichever front end received it.
#include "web/Request.h"

#include <Poco/String.h>

#include <unistd.h>

namespace panelkit::web {

namespace {

std::string First(const Poco::Net::NameValueCollection& values, const std::string& name)
{
    auto it = values.find(name);
    return it == values.end() ? std::string() : it->second;
}

}  // namespace

Request::~Request()
{
    for (const auto& file : files_)
        ::unlink(file.path.c_str());
}

void Request::setHead(std::string method, std::string path, std::string queryString, std::string remoteAddress)
{
    method_ = std::move(method);
    path_ = std::move(path);
    queryString_ = std::move(queryString);
    remoteAddress_ = std::move(remoteAddress);
}

std::string Request::header(const std::string& name) const
{
    return First(headers_, name);
}

std::string Request::get(const std::string& name) const
{
    return First(query_, name);
}

std::string Request::post(const std::string& name) const
{
    return First(form_, name);
}

bool Request::posted(const std::string& name) const
{
    return form_.has(name);
}

std::vector<std::string> Request::postAll(const std::string& name) const
{
    std::vector<std::string> values;
    for (auto it = form_.find(name); it != form_.end() && Poco::icompare(it->first, name) == 0; ++it)
        values.push_back(it->second);
    return values;
}

const UploadedFile* Request::file(const std::string& field) const
{
    for (const auto& file : files_)
        if (file.field == field)
            return &file;
    return nullptr;
}

}  // namespace panelkit::web
