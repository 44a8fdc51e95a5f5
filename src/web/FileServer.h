// panelkit web layer: static files of the media tree for the internal HTTP server.
#pragma once

#include <string>

namespace panelkit::web {

class Response;

/// Serves regular files below a document root, never anything outside it.
class FileServer {
public:
    /// Serves below the folder (resolved once, so links inside it are judged by their target).
    explicit FileServer(const std::string& documentRoot);
    /// Answers with the file at the decoded URL path; false when there is none to serve.
    bool serve(const std::string& path, Response& response) const;
    /// The MIME type for a file name, by its extension.
    static std::string MimeType(const std::string& name);

private:
    std::string root_;
};

}  // namespace panelkit::web
