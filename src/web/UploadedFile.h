// panelkit web layer: one file of a multipart upload, already streamed to a temporary file.
#pragma once

#include <cstdint>
#include <string>

namespace panelkit::web {

/// A received file: where it lies on disk and what the browser said of it.
struct UploadedFile {
    /// The form field the file was posted in.
    std::string field;
    /// The file name the browser sent (may be empty).
    std::string filename;
    /// The MIME type the browser sent.
    std::string mime;
    /// Bytes received.
    std::uint64_t size = 0;
    /// The temporary file holding the content; removed with the request unless moved away.
    std::string path;
    /// The SHA-256 of the content, taken while it streamed in: 64 lowercase hexadecimal digits.
    std::string sha256;
};

}  // namespace panelkit::web
