// panelkit web layer: reads query, form fields, uploads and bodies into a Request, within the limits.
#pragma once

#include "web/Limits.h"

#include <cstdint>
#include <istream>
#include <string>

namespace panelkit::web {

class Request;

/// The one body parser both front ends use.
class RequestParser {
public:
    /// Fills the request's values from its query string and the body stream.
    /// contentLength is -1 when the client sent none. Returns 0 on success, or the
    /// HTTP status to answer with (400 malformed, 413 too large, 500 upload not stored) and a message;
    /// on failure every temporary file is already removed.
    static int Parse(Request& request, std::istream& body, std::int64_t contentLength, const Limits& limits,
                     std::string& message);
};

}  // namespace panelkit::web
