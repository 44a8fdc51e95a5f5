// panelkit web layer: how much of a request body the front ends accept, and where uploads go.
#include "web/Limits.h"

#include "web/Settings.h"

namespace panelkit::web {

Limits Limits::FromSettings(const Settings& settings, std::string uploadDirectory)
{
    Limits limits;
    const auto kib = [&](const char* key, std::uint64_t fallback) {
        const long long value = settings.get(key, static_cast<long long>(fallback / 1024));
        return value < 0 ? 0 : static_cast<std::uint64_t>(value) * 1024;
    };
    limits.contentLength = kib("security.content_length_limit", limits.contentLength);
    limits.multipart = kib("security.multipart_form_data_limit", limits.multipart);
    limits.uploadDirectory = std::move(uploadDirectory);
    return limits;
}

}  // namespace panelkit::web
