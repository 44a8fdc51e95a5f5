// panelkit web layer: where in the URL space an application tree is mounted.
#pragma once

#include "web/Pattern.h"

#include <string>

namespace panelkit::web {

/// An expression the whole request path must match, and the group that becomes the
/// URL the mounted application dispatches.
class MountPoint {
public:
    /// Mounts at the expression; group 0 passes the whole path.
    MountPoint(const std::string& expression, int group);
    /// True when the path matches; url receives the selected group ("" if it did not take part).
    bool match(const std::string& path, std::string& url) const;

private:
    Pattern expression_;
    int group_;
};

}  // namespace panelkit::web
