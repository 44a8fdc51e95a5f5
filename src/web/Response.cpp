// panelkit web layer: the reply a page builds, written out by whichever front end received the request.
#include "web/Response.h"

#include "web/Html.h"

#include <Poco/Net/HTTPResponse.h>

#include <cstdio>

namespace panelkit::web {

Response::BodyBuffer::int_type Response::BodyBuffer::overflow(int_type ch)
{
    if (!traits_type::eq_int_type(ch, traits_type::eof()))
        target_.push_back(traits_type::to_char_type(ch));
    return traits_type::not_eof(ch);
}

std::streamsize Response::BodyBuffer::xsputn(const char* s, std::streamsize n)
{
    target_.append(s, static_cast<std::size_t>(n));
    return n;
}

namespace {

// A file handed over to be removed once sent.
void RemoveSent(bool remove, const std::string& file)
{
    if (remove && !file.empty())
        std::remove(file.c_str());
}

}  // namespace

Response::Response() : buffer_(body_), out_(&buffer_)
{
    // A page is a few KiB: one allocation instead of a dozen growing copies.
    body_.reserve(8 * 1024);
}

Response::~Response()
{
    RemoveSent(removeFile_, file_);
}

const char* Response::Reason(int code)
{
    return Poco::Net::HTTPResponse::getReasonForStatus(static_cast<Poco::Net::HTTPResponse::HTTPStatus>(code)).c_str();
}

void Response::setHeader(const std::string& name, const std::string& value)
{
    headers_.emplace_back(name, value);
}

void Response::reset()
{
    RemoveSent(removeFile_, file_);
    removeFile_ = false;
    status_ = 200;
    contentType_ = "text/html; charset=utf-8";
    headers_.clear();
    body_.clear();
    out_.clear();
    file_.clear();
}

void Response::errorPage(int code, const std::string& message)
{
    reset();
    status_ = code;
    const std::string title = std::to_string(code) + " " + Reason(code);
    out_ << "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" << title << "</title></head><body><h1>"
         << title << "</h1><p>" << Html::Escaped{message} << "</p></body></html>\n";
}

void Response::redirect(const std::string& location, int code)
{
    status_ = code;
    setHeader("Location", location);
}

void Response::sendFile(const std::string& path, const std::string& downloadName, const std::string& type)
{
    file_ = path;
    contentType_ = type;
    if (!downloadName.empty())
        setHeader("Content-disposition", Attachment(downloadName));
}

std::string Response::Attachment(const std::string& name)
{
    std::string safe;
    for (char c : name)
        if (c != '"' && c != '\\' && static_cast<unsigned char>(c) >= 0x20 && c != 0x7F)
            safe.push_back(c);
    return "attachment; filename=\"" + safe + "\"";
}

}  // namespace panelkit::web
