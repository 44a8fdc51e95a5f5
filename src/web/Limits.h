// panelkit web layer: how much of a request body the front ends accept, and where uploads go.
#pragma once

#include <cstdint>
#include <string>

namespace panelkit::web {

class Settings;

/// Body limits from "security.*" and the folder that receives uploads.
struct Limits {
    /// Bytes accepted for a body that is not multipart ("security.content_length_limit", in KiB).
    std::uint64_t contentLength = 1024 * 1024;
    /// Bytes accepted for a multipart body ("security.multipart_form_data_limit", in KiB).
    std::uint64_t multipart = 320ull * 1024 * 1024;
    /// The folder uploaded files are streamed into.
    std::string uploadDirectory = "/tmp";

    /// Reads the limits from the settings; the upload folder is given by the caller.
    static Limits FromSettings(const Settings& settings, std::string uploadDirectory);
};

}  // namespace panelkit::web
